#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kbase/kparallel.h>
#include <kbaselib/kmath/keulernearest.h>
#include <qexioplugins/motion/kqexfilebvh.h>
#include <qexioplugins/motion/kqexframewriter.h>
#include <qexioplugins/motion/kqexrestpose.h>
#include <qexioplugins/motion/kqexsafenames.h>
#include <qexscene/kqexsceneundo.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

namespace qexsdk
{

namespace
{

constexpr int kDecimals = 6;   ///< Digits behind the point, at most.
constexpr int kMaxIndent = 64; ///< Levels behind which indenting stops: a deep chain must not cost the square of its depth.

int IndentLevel(int pLevel)
{
    return std::min(pLevel, kMaxIndent);
}

/// A joint or an end site of the file.
struct KBvhJoint
{
    const KQexNode* mNode;
    int             mPose;   ///< Index in the pose of its tree.
    int             mTree;   ///< Index of its tree among the roots.
    int             mParent; ///< Index of the parent joint, -1 for a root.
    bool            mIsEndSite = false;
    bool            mHasPositions = false;
    bool            mIsStretched = false; ///< A scaling at it or above it is animated.
    bool            mIsSkewed = false;    ///< A scaling at it or above it differs from axis to axis.
    KgeRMatrix      mRestInv;             ///< Inverse of the rotation at rest, world space.
    double          mOffset[3];           ///< From the parent's place to this one's at rest, world axes, centimetres.
};

/// What evaluating one frame needs besides its result; one for each thread.
struct KBvhScratch
{
    std::vector<std::unique_ptr<KQexGlobalTransforms>> mPoses;  ///< One a tree.
    std::vector<KgeRMatrix>                            mFrames; ///< World rotations of the joints, relative to rest.
};

class KBvhWriter : private KQexFrameFormat
{
public:
    KBvhWriter(KQexFileBvh& pFile, const KQexBvhWriteOptions& pOptions);

    bool Prepare(const std::vector<KQexNode*>& pRoots);
    void WriteHierarchy();
    bool WriteMotion();

private:
    bool AddTree(KQexNode* pRoot, KQexGlobalTransforms& pRest);
    bool IsEndSite(const KQexNode* pNode) const;
    void SetScaling(KBvhJoint& pJoint) const;
    void AddScaling(const KQexNode* pNode, KBvhJoint& pJoint) const;
    bool HasMovingPlace(const KBvhJoint& pJoint) const;
    void SetRest(KBvhJoint& pJoint, const KQexGlobalTransforms& pRest) const;
    void NameJoint(const KBvhJoint& pJoint, KQexUniqueNames& pNames);
    void OpenJoint(size_t pJoint, int pLevel);
    void PrintVector(int pLevel, const char* pWord, const double* pVector);
    void PrintChannels(int pLevel, const KBvhJoint& pJoint);
    void CloseJoint(size_t pJoint, int pLevel);
    bool Evaluate(int pThread, KTime pTime, double* pValues) override;
    void Continue(double* pValues) override;
    void Format(long long pFrame, const double* pValues, std::string& pText) const override;
    void ToFileAxes(double* pVector) const;
    void ToFileAxes(KgeRMatrix& pRotation) const;

    KQexFileBvh&               mFile;
    const KQexBvhWriteOptions& mOptions;
    const KQexAnimLayer*       mLayer;
    const int                  mCode; ///< Order code of the rotation channels.
    const int                  mThreads;
    std::vector<KQexNode*>     mRoots;
    std::vector<KBvhJoint>     mJoints;         ///< Each tree in pre-order.
    std::vector<std::string>   mNames;          ///< One a joint; empty for an end site.
    size_t                     mValueCount = 0; ///< Values of a frame.
    std::vector<KBvhScratch>   mScratch;        ///< One a thread.
    std::vector<double>        mLast;           ///< Values of the frame before.
};

KBvhWriter::KBvhWriter(KQexFileBvh& pFile, const KQexBvhWriteOptions& pOptions)
    : mFile(pFile),
      mOptions(pOptions),
      mLayer(pOptions.mStack != nullptr ? pOptions.mStack->GetMember<KQexAnimLayer>(0) : nullptr),
      mCode(pOptions.mOrder <= eEULER_ZYX ? 2 * static_cast<int>(pOptions.mOrder) : 0),
      mThreads(KThreadCount(pOptions.mThreads))
{
}

/// A leaf named after its parent with "_End" and standing still is what BVH has end sites for; any other leaf is a joint, whose
/// name would be lost otherwise.
bool KBvhWriter::IsEndSite(const KQexNode* pNode) const
{
    const KQexNode* lParent = pNode->GetParent();
    if (pNode->GetFirstChild() != nullptr || lParent->GetChildCount(false) != 1 ||
        std::string(lParent->GetName()) + "_End" != pNode->GetName())
    {
        return false;
    }
    return !LeavesRest(pNode->mLocalTranslation, mLayer) && !LeavesRest(pNode->mLocalRotation, mLayer);
}

void KBvhWriter::SetRest(KBvhJoint& pJoint, const KQexGlobalTransforms& pRest) const
{
    pRest.GetTransform(pJoint.mPose).GetRotation(pJoint.mRestInv);
    KgeInverse(pJoint.mRestInv, pJoint.mRestInv);
    KmV(pJoint.mOffset, 0.0, 0.0, 0.0);
    if (pJoint.mParent >= 0)
    {
        const double* lPlace = pRest.GetTransform(pJoint.mPose).mData[3].mData;
        const double* lParent = pRest.GetTransform(mJoints[static_cast<size_t>(pJoint.mParent)].mPose).mData[3].mData;
        KmV(pJoint.mOffset, lPlace[0] - lParent[0], lPlace[1] - lParent[1], lPlace[2] - lParent[2]);
    }
}

/// Appends a number and a blank.
void AppendNumber(std::string& pText, double pValue)
{
    KNumberAppendFixed(pText, pValue, kDecimals);
    pText += ' ';
}

/// What the node's scaling, and those above it, do to the places below it.
void KBvhWriter::SetScaling(KBvhJoint& pJoint) const
{
    const KQexNode* lAbove = pJoint.mNode;
    if (pJoint.mParent >= 0)
    {
        const KBvhJoint& lParent = mJoints[static_cast<size_t>(pJoint.mParent)];
        pJoint.mIsStretched = lParent.mIsStretched;
        pJoint.mIsSkewed = lParent.mIsSkewed;
        AddScaling(lAbove, pJoint);
        return;
    }
    for (; lAbove != nullptr; lAbove = lAbove->GetParent())
    {
        AddScaling(lAbove, pJoint);
    }
}

void KBvhWriter::AddScaling(const KQexNode* pNode, KBvhJoint& pJoint) const
{
    const auto lScaling = pNode->mLocalScaling.Get();
    pJoint.mIsStretched = pJoint.mIsStretched || LeavesRest(pNode->mLocalScaling, mLayer);
    pJoint.mIsSkewed = pJoint.mIsSkewed || lScaling.mData[0] != lScaling.mData[1] || lScaling.mData[1] != lScaling.mData[2];
}

/// Whether the joint's place changes as seen from its parent's rotation: by its own translation, by a scaling that changes, or
/// by one that a rotation between turns against its axes.
bool KBvhWriter::HasMovingPlace(const KBvhJoint& pJoint) const
{
    const KBvhJoint& lParent = mJoints[static_cast<size_t>(pJoint.mParent)];
    const bool       lIsSkewed = lParent.mParent >= 0 ? mJoints[static_cast<size_t>(lParent.mParent)].mIsSkewed : lParent.mIsSkewed;
    return lParent.mIsStretched || lIsSkewed || LeavesRest(pJoint.mNode->mLocalTranslation, mLayer);
}

bool KBvhWriter::AddTree(KQexNode* pRoot, KQexGlobalTransforms& pRest)
{
    if (!pRoot->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(pRoot, KTime(0), pRest))
    {
        return false;
    }
    const size_t lFirst = mJoints.size();
    for (int i = 0; i < pRest.GetCount(); ++i)
    {
        const KQexNode* lNode = pRest.GetNode(i);
        KBvhJoint       lJoint;
        lJoint.mNode = lNode;
        lJoint.mPose = i;
        lJoint.mTree = static_cast<int>(mRoots.size());
        lJoint.mParent = i > 0 ? static_cast<int>(lFirst) + pRest.GetParentIndex(i) : -1;
        lJoint.mIsEndSite = i > 0 && IsEndSite(lNode);
        SetScaling(lJoint);
        lJoint.mHasPositions = i == 0 || (!lJoint.mIsEndSite && HasMovingPlace(lJoint));
        SetRest(lJoint, pRest);
        mJoints.push_back(lJoint);
    }
    mRoots.push_back(pRoot);
    return true;
}

/// Gives the joint a name that every reader takes as one word.
void KBvhWriter::NameJoint(const KBvhJoint& pJoint, KQexUniqueNames& pNames)
{
    const std::string lOld = pJoint.mNode->GetName();
    const std::string lNew = pNames.Make(MakeSafeName(
        lOld, "joint", [](char pC) { return static_cast<unsigned char>(pC) > ' ' && pC != '{' && pC != '}' && pC != '\x7f'; }));
    if (lNew != lOld)
    {
        mFile.Warning("Joint renamed (%.60s), from (%.60s)\n", lNew.c_str(), lOld.c_str());
    }
    mNames.push_back(lNew);
}

bool KBvhWriter::Prepare(const std::vector<KQexNode*>& pRoots)
{
    KQexUniqueNames      lNames;
    KQexGlobalTransforms lRest;
    for (KQexNode* lRoot : pRoots)
    {
        if (!AddTree(lRoot, lRest))
        {
            return false;
        }
    }
    for (const KBvhJoint& lJoint : mJoints)
    {
        if (lJoint.mIsEndSite)
        {
            mNames.emplace_back();
            continue;
        }
        NameJoint(lJoint, lNames);
        mValueCount += lJoint.mHasPositions ? 6 : 3;
    }
    mScratch.resize(static_cast<size_t>(mThreads));
    for (KBvhScratch& lScratch : mScratch)
    {
        lScratch.mFrames.resize(mJoints.size());
        for (size_t i = 0; i < mRoots.size(); ++i)
        {
            lScratch.mPoses.push_back(std::make_unique<KQexGlobalTransforms>());
        }
    }
    return true;
}

/// From y up to z up: a quarter turn about x.
void KBvhWriter::ToFileAxes(double* pVector) const
{
    if (mOptions.mZUp)
    {
        KmV(pVector, pVector[0], -pVector[2], pVector[1]);
    }
}

/// The same rotation seen from the turned axes: T R inverse(T), so both the images and the axes they belong to are turned.
void KBvhWriter::ToFileAxes(KgeRMatrix& pRotation) const
{
    if (!mOptions.mZUp)
    {
        return;
    }
    const KgeRMatrix lOld(pRotation);
    KmVset(pRotation.mData[0], lOld.mData[0]);
    KmVneg(pRotation.mData[1], lOld.mData[2]);
    KmVset(pRotation.mData[2], lOld.mData[1]);
    for (int i = 0; i < 3; ++i)
    {
        ToFileAxes(pRotation.mData[i]);
    }
}

void KBvhWriter::PrintVector(int pLevel, const char* pWord, const double* pVector)
{
    std::string lLine(static_cast<size_t>(2 * pLevel), ' ');
    lLine += pWord;
    for (int i = 0; i < 3; ++i)
    {
        lLine += ' ';
        KNumberAppendFixed(lLine, pVector[i] * mOptions.mScale, kDecimals);
    }
    mFile.Print(0, "%s\n", lLine.c_str());
}

void KBvhWriter::PrintChannels(int pLevel, const KBvhJoint& pJoint)
{
    static const char* const sAxes = "XYZ";
    const int*               lRow = KmEulerAxis[mCode];
    mFile.Print(pLevel, "CHANNELS %d%s %crotation %crotation %crotation\n", pJoint.mHasPositions ? 6 : 3,
                pJoint.mHasPositions ? " Xposition Yposition Zposition" : "", sAxes[lRow[2]], sAxes[lRow[1]], sAxes[lRow[0]]);
}

void KBvhWriter::OpenJoint(size_t pJoint, int pLevel)
{
    const KBvhJoint& lJoint = mJoints[pJoint];
    double           lOffset[3];
    KmVset(lOffset, lJoint.mOffset);
    ToFileAxes(lOffset);
    if (lJoint.mIsEndSite)
    {
        mFile.Print(IndentLevel(pLevel), "End Site\n");
    }
    else
    {
        mFile.Print(IndentLevel(pLevel), "%s %s\n", lJoint.mParent < 0 ? "ROOT" : "JOINT", mNames[pJoint].c_str());
    }
    mFile.Print(IndentLevel(pLevel), "{\n");
    PrintVector(IndentLevel(pLevel + 1), "OFFSET", lOffset);
    if (!lJoint.mIsEndSite)
    {
        PrintChannels(IndentLevel(pLevel + 1), lJoint);
    }
}

/// Closes a joint's braces; one without children gets the end site that readers expect at every tip.
void KBvhWriter::CloseJoint(size_t pJoint, int pLevel)
{
    const KBvhJoint& lJoint = mJoints[pJoint];
    if (!lJoint.mIsEndSite && lJoint.mNode->GetFirstChild() == nullptr)
    {
        const double lZero[3] = {0.0, 0.0, 0.0};
        mFile.Print(IndentLevel(pLevel + 1), "End Site\n");
        mFile.Print(IndentLevel(pLevel + 1), "{\n");
        PrintVector(IndentLevel(pLevel + 2), "OFFSET", lZero);
        mFile.Print(IndentLevel(pLevel + 1), "}\n");
    }
    mFile.Print(IndentLevel(pLevel), "}\n");
}

void KBvhWriter::WriteHierarchy()
{
    mFile.Print(0, "HIERARCHY\n");
    std::vector<size_t> lOpen;
    for (size_t i = 0; i <= mJoints.size(); ++i)
    {
        const int lParent = i < mJoints.size() ? mJoints[i].mParent : -1;
        while (!lOpen.empty() && static_cast<int>(lOpen.back()) != lParent)
        {
            CloseJoint(lOpen.back(), static_cast<int>(lOpen.size()) - 1);
            lOpen.pop_back();
        }
        if (i < mJoints.size())
        {
            OpenJoint(i, static_cast<int>(lOpen.size()));
            lOpen.push_back(i);
        }
    }
}

bool KBvhWriter::Evaluate(int pThread, KTime pTime, double* pValues)
{
    KBvhScratch& lScratch = mScratch[static_cast<size_t>(pThread)];
    for (size_t i = 0; i < mRoots.size(); ++i)
    {
        if (!mRoots[i]->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(mRoots[i], pTime, *lScratch.mPoses[i]))
        {
            return false;
        }
    }
    KgeRMatrix lParentInv;
    KgeRMatrix lLocal;
    for (size_t i = 0; i < mJoints.size(); ++i)
    {
        const KBvhJoint& lJoint = mJoints[i];
        if (lJoint.mIsEndSite)
        {
            continue;
        }
        const KQexGlobalTransforms& lPose = *lScratch.mPoses[static_cast<size_t>(lJoint.mTree)];
        const KQexMatrix&           lPlace = lPose.GetTransform(lJoint.mPose);
        KgeRMatrix&                 lFrame = lScratch.mFrames[i];
        lPlace.GetRotation(lFrame);
        KgeMult(lFrame, lFrame, lJoint.mRestInv);
        const bool lIsRoot = lJoint.mParent < 0;
        if (!lIsRoot)
        {
            KgeInverse(lParentInv, lScratch.mFrames[static_cast<size_t>(lJoint.mParent)]);
            KgeMult(lLocal, lParentInv, lFrame);
        }
        if (lJoint.mHasPositions)
        {
            KmVset(pValues, lPlace.mData[3].mData);
            if (!lIsRoot)
            {
                const double* lParent = lPose.GetTransform(mJoints[static_cast<size_t>(lJoint.mParent)].mPose).mData[3].mData;
                const double  lReach[3] = {pValues[0] - lParent[0], pValues[1] - lParent[1], pValues[2] - lParent[2]};
                KmRV(pValues, lParentInv.mData, lReach);
            }
            ToFileAxes(pValues);
            KmVN(pValues, pValues, mOptions.mScale);
            pValues += 3;
        }
        if (lIsRoot)
        {
            KgeSet(lLocal, lFrame);
        }
        ToFileAxes(lLocal);
        KmRtoVord(pValues, lLocal.mData, mCode);
        pValues += 3;
    }
    return true;
}

/// Makes every rotation the triple nearest to the one of the frame before.
void KBvhWriter::Continue(double* pValues)
{
    double* lLast = mLast.data();
    for (const KBvhJoint& lJoint : mJoints)
    {
        if (lJoint.mIsEndSite)
        {
            continue;
        }
        const int lSkip = lJoint.mHasPositions ? 3 : 0;
        KmNearestEuler(pValues + lSkip, lLast + lSkip, mCode);
        KmVset(lLast + lSkip, pValues + lSkip);
        pValues += lSkip + 3;
        lLast += lSkip + 3;
    }
}

/// The triples stand in order of application and are written last applied first.
void KBvhWriter::Format(long long, const double* pValues, std::string& pText) const
{
    for (const KBvhJoint& lJoint : mJoints)
    {
        if (lJoint.mIsEndSite)
        {
            continue;
        }
        for (int i = lJoint.mHasPositions ? 3 : 0; i > 0; --i)
        {
            AppendNumber(pText, *pValues++);
        }
        for (int i = 2; i >= 0; --i)
        {
            AppendNumber(pText, pValues[i]);
        }
        pValues += 3;
    }
    pText.back() = '\n';
}

bool KBvhWriter::WriteMotion()
{
    const long long lCount = mOptions.mSampling.mCount;
    char            lStep[kNumberBufferSize];
    char*           lEnd = KNumberPrint(lStep, lStep + sizeof lStep, mOptions.mSampling.mStep.GetSeconds(), 'g', 10);
    mFile.Print(0, "MOTION\nFrames: %lld\nFrame Time: %.*s\n", lCount, static_cast<int>(lEnd - lStep), lStep);
    mLast.assign(mValueCount, 0.0);
    const KFrameRun lRun = WriteFrames(*this, mOptions.mSampling, mValueCount, mThreads, mFile.GetOutput(), mOptions.mProgress);
    if (lRun == KFrameRun::eOUT_OF_MEMORY)
    {
        mFile.Error("Out of memory\n");
    }
    return lRun == KFrameRun::eDONE;
}

} // namespace

bool KQexFileBvh::Write(const std::vector<KQexNode*>& pRoots, const KQexBvhWriteOptions& pOptions)
{
    if (pRoots.empty() || pOptions.mSampling.mCount < 1)
    {
        Error("Nothing to write\n");
        return false;
    }
    KQexAnimEvaluator* lEvaluator = pRoots.front()->GetScene()->GetEvaluator();
    KQexContextGuard   lContext(lEvaluator);
    try
    {
        KBvhWriter lWriter(*this, pOptions);
        lEvaluator->SetContext(nullptr);
        if (!lWriter.Prepare(pRoots))
        {
            Error("Out of memory\n");
            return false;
        }
        lEvaluator->SetContext(pOptions.mStack);
        lWriter.WriteHierarchy();
        const bool lOk = lWriter.WriteMotion();
        if (!lOk && GetOutput().HasFailed())
        {
            Error("Can't write %s (%s)\n", GetPath().c_str(), GetOutput().GetReason().c_str());
        }
        return lOk;
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
        return false;
    }
}

} // namespace qexsdk
