#include <qexfigure/check/kqexmotionsurvey.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <qexfigure/check/kqexbounds.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

/// Files have about six digits: a value that exceeds a limit by less than this is at the limit.
constexpr double kTolerance = 1e-6;

/// The root's translation, in centimetres.
KQexFigurePoint RootPositionOf(const KQexAmcBone& pRoot, double pFactor)
{
    double lPosition[3] = {0, 0, 0};
    for (int lIndex = 0; lIndex < pRoot.mNode->mOrderCount; ++lIndex)
    {
        const int lCode = pRoot.mNode->mOrderBuf[lIndex];
        if (lCode < 3)
        {
            lPosition[lCode] += pRoot.mValues[lIndex] * pFactor;
        }
    }
    return {lPosition[0], lPosition[1], lPosition[2]};
}

} // namespace

bool KQexBoneSurvey::Moves() const
{
    return std::any_of(mDofs.begin(), mDofs.end(), [](const KQexDofSurvey& pDof) { return pDof.mHighest - pDof.mLowest > kTolerance; });
}

bool KQexMotionSurvey::Read(const KQexFigureFiles& pFiles, const KQexMotionSurveyOptions& pOptions, KQexFigureReport& pReport) noexcept
{
    mOk = false;
    mBones.clear();
    return RunGuarded(pReport, [&] { return ReadMotion(pFiles, pOptions, pReport); });
}

bool KQexMotionSurvey::ReadMotion(const KQexFigureFiles& pFiles, const KQexMotionSurveyOptions& pOptions, KQexFigureReport& pReport)
{
    mMessages = KQexFileMessages();
    mRootPathLength = 0;
    if (pFiles.mMotions.empty())
    {
        return pReport.Fail(eFIGURE_USAGE, pFiles.mFigure.GetDisplayPath(), "has no motion");
    }
    KQexImportAcclaimResult lResult;
    KQexAsfSceneOwner       lSkeleton = KQexImporterAcclaim::ReadSkeleton(pFiles.mFigure.GetSource(), KQexImportAcclaimOptions(), lResult);
    if (lSkeleton == nullptr)
    {
        for (const KQexImportMessage& lMessage : lResult.mMessages)
        {
            pReport.Add(lMessage.mPath, lMessage.mMessage);
        }
        pReport.Raise(pFiles.FailsToRead() ? eFIGURE_SYSTEM : eFIGURE_INPUT);
        mMessages.Add(KQexTextMessage::eERROR, 0, "The motion cannot be read without its skeleton");
        return false;
    }
    KQexAmcReadOptions lOptions;
    lOptions.mSamplesPerSecond = pOptions.mMotionRate;
    lOptions.mFindMoreErrors = pOptions.mFindMoreErrors;
    lOptions.mSkeletonNotes = lResult.mSkeletonNotes;
    lOptions.mProgress = pOptions.mProgress;
    KQexFileAcclaimAmc lReader(false);
    mIsOutOfMemory = false;
    mOk = pFiles.mMotions.front().OpenFor(lReader) && lReader.ReadFrames(lSkeleton.get(), lOptions, *this);
    mInfo = lReader.GetInfo();
    mMessages.Take(lReader);
    if (mIsOutOfMemory)
    {
        throw std::bad_alloc();
    }
    if (mOk && !pOptions.mAllowUnmatched && !mInfo.mMatch.IsPlausible())
    {
        // The error replaces a warning for each bone.
        mMessages = KQexFileMessages();
        mMessages.Add(KQexTextMessage::eERROR, 0, mInfo.mMatch.Describe());
        pReport.SetMismatch();
        mOk = false;
    }
    if (!mOk)
    {
        pReport.Raise(pFiles.FailsToRead() ? eFIGURE_SYSTEM : eFIGURE_INPUT);
    }
    return mOk;
}

bool KQexMotionSurvey::Frame(const KQexAmcFrame& pFrame)
{
    try
    {
        if (mBones.empty())
        {
            AddBones(pFrame);
        }
    }
    catch (const std::bad_alloc&)
    {
        // The reader's calls do not throw.
        mIsOutOfMemory = true;
        return false;
    }
    for (const int lBone : *pFrame.mPresent)
    {
        AddValues(pFrame, static_cast<size_t>(lBone));
    }
    AddRootPosition(pFrame);
    return true;
}

void KQexMotionSurvey::AddBones(const KQexAmcFrame& pFrame)
{
    for (const KQexAmcBone& lBone : *pFrame.mBones)
    {
        KQexBoneSurvey lSurvey;
        lSurvey.mName = lBone.mNode->mName;
        for (int lIndex = 0; lIndex < lBone.mNode->mOrderCount; ++lIndex)
        {
            KQexDofSurvey lDof;
            lDof.mCode = lBone.mNode->mOrderBuf[lIndex];
            lDof.mHasMin = lBone.mNode->mLimitsActive[lDof.mCode][0];
            lDof.mHasMax = lBone.mNode->mLimitsActive[lDof.mCode][1];
            lDof.mMin = lDof.mHasMin ? lBone.mNode->mLimitsBuf[lDof.mCode][0] : 0;
            lDof.mMax = lDof.mHasMax ? lBone.mNode->mLimitsBuf[lDof.mCode][1] : 0;
            lSurvey.mDofs.push_back(lDof);
        }
        mBones.push_back(lSurvey);
    }
}

void KQexMotionSurvey::AddValues(const KQexAmcFrame& pFrame, size_t pBone)
{
    KQexBoneSurvey&    lBone = mBones[pBone];
    const KQexAmcBone& lValues = (*pFrame.mBones)[pBone];
    for (size_t lIndex = 0; lIndex < lBone.mDofs.size(); ++lIndex)
    {
        KQexDofSurvey& lDof = lBone.mDofs[lIndex];
        const double   lValue = lValues.mValues[lIndex] * (KIsTranslationDof(lDof.mCode) ? 1.0 : pFrame.mAngleFactor);
        lDof.mLowest = lBone.mFrames == 0 ? lValue : std::min(lDof.mLowest, lValue);
        lDof.mHighest = lBone.mFrames == 0 ? lValue : std::max(lDof.mHighest, lValue);
        if ((lDof.mHasMin && lValue < lDof.mMin - kTolerance) || (lDof.mHasMax && lValue > lDof.mMax + kTolerance))
        {
            lDof.mFirstOutside = lDof.mOutside == 0 ? pFrame.mNumber : lDof.mFirstOutside;
            ++lDof.mOutside;
        }
    }
    ++lBone.mFrames;
}

void KQexMotionSurvey::AddRootPosition(const KQexAmcFrame& pFrame)
{
    if (pFrame.mBones->empty() || pFrame.mBones->front().mNode->mParent != nullptr)
    {
        return;
    }
    const KQexFigurePoint lPosition = RootPositionOf(pFrame.mBones->front(), pFrame.mLengthFactor);
    if (pFrame.mIndex == 0)
    {
        mRootFirst = lPosition;
        mRootLast = lPosition;
    }
    mRootPathLength += DistanceOf(mRootLast, lPosition);
    mRootLast = lPosition;
}

double KQexMotionSurvey::GetSeconds() const
{
    return mInfo.mSamplesPerSecond > 0 ? static_cast<double>(mInfo.mHighestFrame - mInfo.mLowestFrame) / mInfo.mSamplesPerSecond : 0;
}

double KQexMotionSurvey::GetRootTravel() const
{
    return DistanceOf(mRootFirst, mRootLast);
}

int KQexMotionSurvey::CountMoving() const
{
    return static_cast<int>(std::count_if(mBones.begin(), mBones.end(), [](const KQexBoneSurvey& pBone) { return pBone.Moves(); }));
}

} // namespace qexsdk
