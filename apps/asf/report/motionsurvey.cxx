#include <apps/asf/report/motionsurvey.h>

#include <apps/asf/figure/loading.h>
#include <apps/asf/progress.h>
#include <kbaselib/kmath/kdofcodes.h>

#include <algorithm>
#include <cmath>

namespace asfapp
{

namespace
{

/// Files have about six digits: a value that exceeds a limit by less than this is at the limit.
constexpr double kTolerance = 1e-6;

double Distance(const KPoint& pOne, const KPoint& pOther)
{
    return std::hypot(pOne.mX - pOther.mX, pOne.mY - pOther.mY, pOne.mZ - pOther.mZ);
}

/// The root's translation, in centimetres.
KPoint RootPosition(const qexsdk::KQexAmcBone& pRoot, double pFactor)
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

bool KBoneSurvey::Moves() const
{
    return std::any_of(mDofs.begin(), mDofs.end(), [](const KDofSurvey& pDof) { return pDof.mHighest - pDof.mLowest > kTolerance; });
}

bool KMotionSurvey::Read(const qexsdk::KQexFigureFiles& pFiles, const KMotionOptions& pOptions, bool pAllErrors, KConsole& pConsole)
{
    qexsdk::KQexImportAcclaimResult lResult;
    qexsdk::KQexAsfSceneOwner       lSkeleton =
        qexsdk::KQexImporterAcclaim::ReadSkeleton(pFiles.mFigure.GetSource(), qexsdk::KQexImportAcclaimOptions(), lResult);
    if (lSkeleton == nullptr)
    {
        PrintMessages(lResult, pConsole);
        pConsole.Raise(pFiles.FailsToRead() ? eEXIT_SYSTEM : eEXIT_INPUT);
        mMessages.Add(qexsdk::KQexTextMessage::eERROR, 0, "The motion cannot be read without its skeleton");
        return false;
    }
    KProgress                  lProgress("reading", pConsole);
    qexsdk::KQexAmcReadOptions lOptions;
    lOptions.mSamplesPerSecond = pOptions.mMotionRate;
    lOptions.mFindMoreErrors = pAllErrors;
    lOptions.mSkeletonNotes = lResult.mSkeletonNotes;
    lOptions.mProgress = [&lProgress](double pFraction)
    {
        return lProgress.Show(pFraction);
    };
    qexsdk::KQexFileAcclaimAmc lReader(false);
    mOk = pFiles.mMotions.front().OpenFor(lReader) && lReader.ReadFrames(lSkeleton.get(), lOptions, *this);
    mInfo = lReader.GetInfo();
    mMessages.Take(lReader);
    if (mOk && !pOptions.mAllowUnmatched && !mInfo.mMatch.IsPlausible())
    {
        // The error replaces a warning for each bone.
        mMessages = KMessages();
        mMessages.Add(qexsdk::KQexTextMessage::eERROR, 0, mInfo.mMatch.Describe());
        NoteAllowUnmatched(pConsole);
        mOk = false;
    }
    if (!mOk)
    {
        pConsole.Raise(pFiles.FailsToRead() ? eEXIT_SYSTEM : eEXIT_INPUT);
    }
    return mOk;
}

bool KMotionSurvey::Frame(const qexsdk::KQexAmcFrame& pFrame)
{
    if (mBones.empty())
    {
        AddBones(pFrame);
    }
    for (const int lBone : *pFrame.mPresent)
    {
        AddValues(pFrame, static_cast<size_t>(lBone));
    }
    AddRootPosition(pFrame);
    return true;
}

void KMotionSurvey::AddBones(const qexsdk::KQexAmcFrame& pFrame)
{
    for (const qexsdk::KQexAmcBone& lBone : *pFrame.mBones)
    {
        KBoneSurvey lSurvey;
        lSurvey.mName = lBone.mNode->mName;
        for (int lIndex = 0; lIndex < lBone.mNode->mOrderCount; ++lIndex)
        {
            KDofSurvey lDof;
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

void KMotionSurvey::AddValues(const qexsdk::KQexAmcFrame& pFrame, size_t pBone)
{
    KBoneSurvey&               lBone = mBones[pBone];
    const qexsdk::KQexAmcBone& lValues = (*pFrame.mBones)[pBone];
    for (size_t lIndex = 0; lIndex < lBone.mDofs.size(); ++lIndex)
    {
        KDofSurvey&  lDof = lBone.mDofs[lIndex];
        const double lValue = lValues.mValues[lIndex] * (qexsdk::KIsTranslationDof(lDof.mCode) ? 1.0 : pFrame.mAngleFactor);
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

void KMotionSurvey::AddRootPosition(const qexsdk::KQexAmcFrame& pFrame)
{
    if (pFrame.mBones->empty() || pFrame.mBones->front().mNode->mParent != nullptr)
    {
        return;
    }
    const KPoint lPosition = RootPosition(pFrame.mBones->front(), pFrame.mLengthFactor);
    if (pFrame.mIndex == 0)
    {
        mRootFirst = lPosition;
        mRootLast = lPosition;
    }
    mRootPathLength += Distance(mRootLast, lPosition);
    mRootLast = lPosition;
}

double KMotionSurvey::GetSeconds() const
{
    return mInfo.mSamplesPerSecond > 0 ? static_cast<double>(mInfo.mHighestFrame - mInfo.mLowestFrame) / mInfo.mSamplesPerSecond : 0;
}

double KMotionSurvey::GetRootTravel() const
{
    return Distance(mRootFirst, mRootLast);
}

int KMotionSurvey::CountMoving() const
{
    return static_cast<int>(std::count_if(mBones.begin(), mBones.end(), [](const KBoneSurvey& pBone) { return pBone.Moves(); }));
}

} // namespace asfapp
