#include <kbaselib/kbase/kpath.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigurechannels.h>
#include <qexfigure/kqexfigurecurves.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

#include <algorithm>
#include <new>
#include <utility>

/// \file
/// Loading figures from Acclaim and BVH files.

namespace qexsdk
{

namespace
{

/// A file's name without its folder and extension; "motion" for standard input.
std::string FileStem(const std::string& pPath)
{
    return pPath == "-" ? "motion" : KPathStem(pPath);
}

KQexImportAcclaimOptions AcclaimOptions(const KQexFigureOptions& pOptions)
{
    // Pre-rotations stay off: positions are then exact to single precision. Limits are kept beside the scene.
    KQexImportAcclaimOptions lOptions;
    lOptions.mRemoveDummies = pOptions.mRemoveDummies;
    lOptions.mSetLimits = false;
    lOptions.mKeepAsfScene = true;
    lOptions.mKeepDofValues = pOptions.mKeepDofValues;
    lOptions.mSamplesPerSecond = pOptions.mMotionRate;
    lOptions.mRotationFilter = pOptions.mFilter;
    lOptions.mUseConstantKeyReducer = pOptions.mReduce;
    lOptions.mKeepGoodFrames = pOptions.mKeepGoodFrames;
    lOptions.mAllowUnmatched = pOptions.mAllowUnmatched;
    lOptions.mProgress = pOptions.mProgress;
    return lOptions;
}

/// Adds the reader's messages, and how many it dropped.
void AddTextMessages(const KQexTextFile& pReader, const std::string& pPath, KQexFigureReport& pReport)
{
    for (const KQexTextMessage& lMessage : pReader.GetMessages())
    {
        pReport.Add(pPath, lMessage);
    }
    const long long lOmitted =
        static_cast<long long>(pReader.GetErrorCount()) + pReader.GetWarningCount() - static_cast<long long>(pReader.GetMessages().size());
    if (lOmitted > 0)
    {
        pReport.Add(KQexFigureMessage::eWARNING, pPath, 0, std::to_string(lOmitted) + " further warnings are not shown");
    }
}

/// Records why a read failed. \return false
bool ReportFailure(bool pIsCancelled, bool pIsSystemError, KQexFigureReport& pReport)
{
    if (pIsCancelled)
    {
        pReport.SetCancelled();
        return false;
    }
    pReport.Raise(pIsSystemError ? eFIGURE_SYSTEM : eFIGURE_INPUT);
    return false;
}

} // namespace

bool KQexFigure::LoadAcclaim(const KQexFigureFiles& pFiles, const KQexFigureOptions& pOptions, KQexFigureReport& pReport)
{
    std::vector<KQexAcclaimSource> lMotions;
    for (const KQexFigureFile& lMotion : pFiles.mMotions)
    {
        lMotions.push_back(lMotion.GetSource());
        lMotions.back().mTakeName = pFiles.mMotions.size() == 1 ? pOptions.mTake : "";
    }
    KQexImportAcclaimResult lResult;
    KQexImporterAcclaim::Import(mScene, pFiles.mFigure.GetSource(), lMotions, AcclaimOptions(pOptions), lResult);
    for (const KQexImportMessage& lMessage : lResult.mMessages)
    {
        pReport.Add(lMessage.mPath == "-" ? "<stdin>" : lMessage.mPath, lMessage.mMessage);
    }
    if (lResult.mIsMismatch)
    {
        pReport.SetMismatch();
    }
    if (!lResult.mOk)
    {
        return ReportFailure(lResult.mCancelled, pFiles.FailsToRead(), pReport);
    }
    for (size_t lIndex = 0; lIndex < lResult.mTakes.size(); ++lIndex)
    {
        AddAcclaimTake(lResult.mTakes[lIndex], pFiles.mMotions[lIndex], pReport);
        mTakes.back().mGivenName = lMotions[lIndex].mTakeName.empty() ? FileStem(lMotions[lIndex].mPath) : mTakes.back().mName;
    }
    mRoots.assign(1, lResult.mRootNode);
    mSkeleton = std::move(lResult.mAsfScene);
    mSkeletonNotes = std::move(lResult.mSkeletonNotes);
    mDofs = KQexExporterAcclaim::GetBoneDofs(mSkeleton.get());
    if (mDofs.empty())
    {
        throw std::bad_alloc(); // A skeleton has at least a root.
    }
    mHasDofs = true;
    return true;
}

void KQexFigure::AddAcclaimTake(const KQexImportedTake& pTake, const KQexFigureFile& pMotion, KQexFigureReport& pReport)
{
    const KQexAmcInfo& lInfo = pTake.mInfo;
    KQexFigureTake     lTake;
    lTake.mName = pTake.mName;
    lTake.mStack = mScene->FindAnimStack(pTake.mName.c_str());
    lTake.mRate = lInfo.mSamplesPerSecond;
    lTake.mIsDefaultRate = lInfo.mRateSource == eAMC_RATE_DEFAULT;
    lTake.mIsSingle = lInfo.mLowestFrame == lInfo.mHighestFrame;
    lTake.mHasNumbers = true;
    lTake.mFrames = lInfo.mFrameCount;
    lTake.mOriginNumber = lInfo.mFirstFrame;
    lTake.mStart = lInfo.mStart;
    lTake.mEnd = lTake.mIsSingle ? lInfo.mStart : lInfo.mStop;
    lTake.mDofValues = pTake.mDofValues;
    mTakes.push_back(lTake);
    if (lTake.mIsDefaultRate)
    {
        pReport.Add(KQexFigureMessage::eNOTE, pMotion.GetDisplayPath(), 0, kDefaultRateNote);
    }
}

bool KQexFigure::LoadBvh(const KQexFigureFile& pFile, const KQexFigureOptions& pOptions, KQexFigureReport& pReport)
{
    KQexFileBvh        lReader(false);
    KQexBvhReadOptions lOptions;
    KQexBvhReadResult  lResult;
    lOptions.mTakeName = pOptions.mTake.empty() ? FileStem(pFile.GetPath()) : pOptions.mTake;
    lOptions.mKeepGoodFrames = pOptions.mKeepGoodFrames;
    lOptions.mProgress = pOptions.mProgress;
    const bool lOk = pFile.OpenFor(lReader) && lReader.Read(mScene, lOptions, lResult);
    AddTextMessages(lReader, pFile.GetDisplayPath(), pReport);
    if (!lOk)
    {
        return ReportFailure(lResult.mCancelled, pFile.FailsToRead(), pReport);
    }
    mRoots = lResult.mRoots;
    if (KQexAnimStack* lStack = mScene->FindAnimStack(lOptions.mTakeName.c_str()))
    {
        KQexFigureTake lTake;
        lTake.mName = lTake.mGivenName = lOptions.mTakeName;
        lTake.mStack = lStack;
        lTake.mFrames = lResult.mFrames;
        lTake.mStep = lResult.mStep;
        lTake.mEnd = KTime(std::max(lResult.mFrames - 1, 0LL) * lResult.mStep.Get());
        lTake.mRate = lResult.mStep.Get() > 0 ? 1.0 / lResult.mStep.GetSeconds() : 0.0;
        const KQexAnimLayer* lLayer = KQexLayerOf(lStack);
        if (pOptions.mKeepDofValues)
        {
            lTake.mDofValues = KeepChannels(mRoots, lLayer);
        }
        if (pOptions.mFilter != eROTATION_FILTER_NONE)
        {
            UnrollChannels(mRoots, lLayer, pOptions.mFilter == eROTATION_FILTER_GIMBAL);
        }
        mTakes.push_back(lTake);
    }
    return true;
}

} // namespace qexsdk
