#include <qexioplugins/acclaim/exchange/kqeximportrun.h>

#include <kbaselib/kbase/kpath.h>
#include <qexioplugins/acclaim/asf/kqexasflock.h>
#include <qexioplugins/acclaim/exchange/kqexasfwarnings.h>
#include <qexioplugins/acclaim/exchange/kqeximportnodes.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <cstring>
#include <new>
#include <utility>

namespace qexsdk
{

namespace
{

const char kDefaultTakeName[] = "Take 001";

bool Open(KQexTextFile& pFile, const KQexAcclaimSource& pSource)
{
    return pSource.mData != nullptr ? pFile.OpenReadBuffer(pSource.mData, pSource.mSize) : pFile.OpenRead(pSource.mPath.c_str());
}

/// Destroys the curves of all bones at and below mRoot when it goes out of scope.
struct KCurveGuard
{
    HKQexAsfNode mRoot;

    ~KCurveGuard() { KQexAsfCurves::Destroy(mRoot); }
};

/// Whether the node to merge at is itself the skeleton's root; FindChild() searches only below a node.
bool IsRootNode(const KQexAsfScene& pAsfScene, const KQexNode& pNode)
{
    return pNode.GetParent() != nullptr && pNode.GetSkeleton() != nullptr && std::strcmp(pNode.GetName(), pAsfScene.mRoot->mName) == 0;
}

} // namespace

KQexImportRun::KQexImportRun(KQexScene* pScene, const KQexImportAcclaimOptions& pOptions, KQexImportAcclaimResult& pResult)
    : mScene(pScene),
      mUndo(pScene),
      mOptions(pOptions),
      mResult(pResult),
      mSettings(pOptions.mRotationFilter, pOptions.mUseConstantKeyReducer)
{
}

KQexImportRun::~KQexImportRun()
{
    // Curves that bones own are destroyed through them, before mUndo destroys the rest.
    if (mUndo.IsArmed() && mBorrowedRoot != nullptr)
    {
        KQexAsfCurves::Destroy(mBorrowedRoot);
    }
}

KQexAsfSceneOwner KQexImportRun::ReadSkeleton(const KQexAcclaimSource& pSource)
{
    KQexAsfSceneOwner lAsfScene(QexSdkNew<KQexAsfScene>());
    if (lAsfScene == nullptr)
    {
        throw std::bad_alloc();
    }
    KQexFileAcclaimAsf lFile(mOptions.mVerbose);
    // Dummies are removed in a separate step, after their names are recorded.
    bool lOk = Open(lFile, pSource);
    if (lOk)
    {
        const std::lock_guard<std::mutex> lLock(AsfReaderLock());
        lOk = lFile.Read(lAsfScene.get(), false, mOptions.mSetRotatePivotOffet, mOptions.mSetPreRotation);
    }
    AddMessages(lFile, pSource.mPath);
    if (!lOk)
    {
        if (lFile.GetErrorCount() == 0)
        {
            mResult.mMessages.push_back({pSource.mPath, ExplainSilentFailure(pSource, lFile.GetLineNumber())});
        }
        return nullptr;
    }

    std::vector<KQexTextMessage> lWarnings;
    WarnAboutSkeleton(*lAsfScene, mOptions, lWarnings);
    for (KQexTextMessage& lWarning : lWarnings)
    {
        mResult.mMessages.push_back({pSource.mPath, std::move(lWarning)});
    }
    mResult.mSkeletonNotes.mLengthDofs = lFile.GetLengthDofs();
    mResult.mSkeletonNotes.mAddedEnds = lFile.GetAddedEnds();
    if (mOptions.mRemoveDummies)
    {
        RemoveDummies(*lAsfScene);
    }
    return lAsfScene;
}

void KQexImportRun::RemoveDummies(KQexAsfScene& pAsfScene)
{
    KQexAsfWalk lWalk(pAsfScene.mRoot);
    while (const HKQexAsfNode lBone = lWalk.Next())
    {
        if (lWalk.IsEntering() && lBone != pAsfScene.mRoot && lBone->mOrderCount == 0)
        {
            mResult.mSkeletonNotes.mRemovedBones.push_back(lBone->mName);
        }
    }
    if (!pAsfScene.mRoot->RemoveDummy(mOptions.mSetRotatePivotOffet, mOptions.mSetPreRotation))
    {
        throw std::bad_alloc();
    }
}

bool KQexImportRun::ReadMotions(KQexAsfScene& pAsfScene, const std::vector<KQexAcclaimSource>& pSources)
{
    if (mScene == nullptr)
    {
        return Fail("There is no scene to import into");
    }
    for (size_t i = 0; i < pSources.size(); ++i)
    {
        for (size_t k = 0; k < i && !pSources[i].mTakeName.empty(); ++k)
        {
            if (pSources[i].mTakeName == pSources[k].mTakeName)
            {
                return Fail(("Two motions for the take " + pSources[i].mTakeName).c_str());
            }
        }
    }
    mCurves.reserve(pSources.size());
    bool lOk = ReportProgress(0.0);
    for (size_t i = 0; i < pSources.size() && lOk; ++i)
    {
        lOk = ReadMotion(pAsfScene, pSources[i], i, pSources.size()) &&
              ReportProgress(static_cast<double>(i + 1) / static_cast<double>(pSources.size()));
    }
    return lOk;
}

KQexAmcReadOptions KQexImportRun::ReadOptions(size_t pIndex, size_t pCount) const
{
    KQexAmcReadOptions lOptions;
    lOptions.mSamplesPerSecond = mOptions.mSamplesPerSecond;
    lOptions.mSetRotatePivotOffet = mOptions.mSetRotatePivotOffet;
    lOptions.mSetPreRotation = mOptions.mSetPreRotation;
    lOptions.mKeepGoodFrames = mOptions.mKeepGoodFrames;
    lOptions.mSkeletonNotes = mResult.mSkeletonNotes;
    if (mOptions.mProgress)
    {
        lOptions.mProgress = [this, pIndex, pCount](double pFraction)
        {
            return mOptions.mProgress((static_cast<double>(pIndex) + pFraction) / static_cast<double>(pCount));
        };
    }
    return lOptions;
}

bool KQexImportRun::ReadMotion(KQexAsfScene& pAsfScene, const KQexAcclaimSource& pSource, size_t pIndex, size_t pCount)
{
    KQexImportedTake   lTake;
    KQexFileAcclaimAmc lFile(mOptions.mVerbose);
    lTake.mName = ChooseTakeName(pSource);
    lTake.mPath = pSource.mPath;
    KQexAmcReadOptions lOptions = ReadOptions(pIndex, pCount);
    if (mOptions.mKeepDofValues)
    {
        const auto lValues = std::make_shared<KQexDofValues>();
        lOptions.mDofValues = lValues.get();
        lTake.mDofValues = lValues;
    }
    const bool lOk = Open(lFile, pSource) && lFile.Read(&pAsfScene, mScene, lOptions);
    // In case memory runs out before the curves are moved out: a caller's skeleton would keep them.
    const KCurveGuard lGuard{lOk ? pAsfScene.mRoot : nullptr};
    lTake.mInfo = lFile.GetInfo();
    mResult.mCancelled = mResult.mCancelled || lTake.mInfo.mCancelled;
    if (lOk && !IsAccepted(lTake))
    {
        return false;
    }
    AddMessages(lFile, pSource.mPath);
    if (!lOk)
    {
        return false;
    }

    mResult.mTakes.push_back(std::move(lTake));
    mCurves.emplace_back().MoveFrom(pAsfScene.mRoot);
    return true;
}

/// Refuses a motion of another skeleton. The error replaces a warning for each of its bones.
bool KQexImportRun::IsAccepted(const KQexImportedTake& pTake)
{
    if (mOptions.mAllowUnmatched || pTake.mInfo.mMatch.IsPlausible())
    {
        return true;
    }
    mResult.mIsMismatch = true;
    mResult.mMessages.push_back({pTake.mPath, {KQexTextMessage::eERROR, 0, pTake.mInfo.mMatch.Describe()}});
    return false;
}

std::string KQexImportRun::ChooseTakeName(const KQexAcclaimSource& pSource) const
{
    if (!pSource.mTakeName.empty())
    {
        return pSource.mTakeName;
    }
    if (mResult.mTakes.empty() && !mOptions.mTakeName.empty())
    {
        return mOptions.mTakeName;
    }

    // A generated name must not overwrite an existing take.
    const std::string lFileStem = KPathStem(pSource.mPath);
    const std::string lStem = lFileStem.empty() || lFileStem == "-" ? kDefaultTakeName : lFileStem;
    std::string       lName = lStem;
    for (int i = 2; IsInUse(lName); ++i)
    {
        lName = lStem + " " + std::to_string(i);
    }
    return lName;
}

bool KQexImportRun::IsInUse(const std::string& pTakeName) const
{
    for (const KQexImportedTake& lTake : mResult.mTakes)
    {
        if (lTake.mName == pTakeName)
        {
            return true;
        }
    }
    return mScene->FindAnimStack(pTakeName.c_str()) != nullptr;
}

void KQexImportRun::AddMessages(const KQexTextFile& pFile, const std::string& pPath)
{
    for (const KQexTextMessage& lMessage : pFile.GetMessages())
    {
        mResult.mMessages.push_back({pPath, lMessage});
    }
}

bool KQexImportRun::ReportProgress(double pFraction)
{
    if (!mOptions.mProgress || mOptions.mProgress(pFraction))
    {
        return true;
    }
    mResult.mCancelled = true;
    return false;
}

bool KQexImportRun::Attach(KQexAsfScene& pAsfScene)
{
    const KQexAddedEndGuard lGuard(pAsfScene.mRoot, mResult.mSkeletonNotes.mAddedEnds);
    return Complete(pAsfScene, mOptions.mMergeRoot != nullptr ? Bind(pAsfScene, mOptions.mMergeRoot) : Build(pAsfScene));
}

bool KQexImportRun::AttachToExisting(KQexAsfScene& pAsfScene)
{
    const KQexAddedEndGuard lGuard(pAsfScene.mRoot, mResult.mSkeletonNotes.mAddedEnds);
    mBorrowedRoot = pAsfScene.mRoot;
    return Complete(pAsfScene, Bind(pAsfScene, mOptions.mMergeRoot != nullptr ? mOptions.mMergeRoot : mScene->GetRootNode()));
}

bool KQexImportRun::Complete(KQexAsfScene& pAsfScene, KQexNode* pRootNode)
{
    // Curves left on the bones mean that memory ran out.
    if (pRootNode == nullptr || KQexAsfCurves::HasAny(pAsfScene.mRoot))
    {
        throw std::bad_alloc();
    }
    mResult.mRootNode = pRootNode;
    for (KQexImportedTake& lTake : mResult.mTakes)
    {
        // Made by the bones' curves; a motion without any still is a take.
        lTake.mStack = mScene->CreateAnimStack(lTake.mName.c_str());
        if (lTake.mStack == nullptr)
        {
            throw std::bad_alloc();
        }
    }
    mUndo.Keep();
    return true;
}

KQexNode* KQexImportRun::Build(KQexAsfScene& pAsfScene)
{
    const HKQexAsfNode lRoot = pAsfScene.mRoot;
    const bool         lHasMotion = !mCurves.empty();
    if (lHasMotion)
    {
        mCurves.front().MoveTo(lRoot);
    }
    const char* lFirstTake = lHasMotion ? mResult.mTakes.front().mName.c_str() : "";
    KQexNode* lNode = pAsfScene.ASFToQEX(mScene, lFirstTake, mOptions.mSetLimits, mOptions.mSetRotatePivotOffet, mOptions.mSetPreRotation);
    KQexNode* lParent = mOptions.mParentNode != nullptr ? mOptions.mParentNode : mScene->GetRootNode();
    if (lNode == nullptr || !lParent->AddChild(lNode))
    {
        return nullptr;
    }

    for (size_t i = 1; i < mCurves.size(); ++i)
    {
        if (KQexAsfCurves::HasAny(lRoot))
        {
            return nullptr;
        }
        mCurves[i].MoveTo(lRoot);
        ConnectCurves(lRoot, lNode, mResult.mTakes[i].mName.c_str());
    }
    return lNode;
}

KQexNode* KQexImportRun::Bind(KQexAsfScene& pAsfScene, KQexNode* pBelow)
{
    if (mCurves.empty() && !BindTake(pAsfScene, pBelow, ""))
    {
        return nullptr;
    }
    for (size_t i = 0; i < mCurves.size(); ++i)
    {
        if (KQexAsfCurves::HasAny(pAsfScene.mRoot))
        {
            return nullptr;
        }
        mCurves[i].MoveTo(pAsfScene.mRoot);
        if (!BindTake(pAsfScene, pBelow, mResult.mTakes[i].mName.c_str()))
        {
            return nullptr;
        }
    }
    return IsRootNode(pAsfScene, *pBelow) ? pBelow : pBelow->FindChild(pAsfScene.mRoot->mName, true, false);
}

bool KQexImportRun::BindTake(KQexAsfScene& pAsfScene, KQexNode* pBelow, const char* pTakeName)
{
    const bool lLimits = mOptions.mSetLimits;
    const bool lOffset = mOptions.mSetRotatePivotOffet;
    const bool lPreRotation = mOptions.mSetPreRotation;
    if (IsRootNode(pAsfScene, *pBelow))
    {
        return pAsfScene.mRoot->MergeASFToQEX(mScene, pBelow->GetParent(), pTakeName, lLimits, lOffset, lPreRotation);
    }
    return pAsfScene.MergeASFToQEX(mScene, pBelow, pTakeName, lLimits, lOffset, lPreRotation);
}

bool KQexImportRun::Fail(const char* pText)
{
    mResult.mMessages.push_back({"", {KQexTextMessage::eERROR, 0, pText}});
    return false;
}

} // namespace qexsdk
