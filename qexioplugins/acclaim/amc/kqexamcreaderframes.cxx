#include <kbaselib/kmath/maths.h>
#include <qexioplugins/acclaim/amc/kqexamcheader.h>
#include <qexioplugins/acclaim/amc/kqexamcreader.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qexsdk
{

namespace
{

const double kDefaultSamplesPerSecond = 120.0;

/// Frames between two calls of the progress function.
const long long kProgressStep = 64;

} // namespace

bool KQexAmcReader::BeginFrames()
{
    if (mInfo.mFrameCount > 0)
    {
        return true;
    }

    mInfo.mRateSource = eAMC_RATE_DEFAULT;
    mInfo.mSamplesPerSecond = kDefaultSamplesPerSecond;
    if (mOptions.mSamplesPerSecond != 0.0)
    {
        if (!IsAmcRate(mOptions.mSamplesPerSecond))
        {
            mFile.Error("Invalid rate: %g samples per second\n", mOptions.mSamplesPerSecond);
            mStopped = true;
            return false;
        }
        mInfo.mRateSource = eAMC_RATE_CALLER;
        mInfo.mSamplesPerSecond = mOptions.mSamplesPerSecond;
    }
    else if (GetAmcRate(mHeader) > 0.0)
    {
        mInfo.mRateSource = eAMC_RATE_FILE;
        mInfo.mSamplesPerSecond = GetAmcRate(mHeader);
    }
    mTicks = AmcFrameTicks(mInfo.mSamplesPerSecond);
    WarnAboutRates();

    const double lUnit = mAsfScene->mLengthUnit;
    mFrame.mLengthFactor = lUnit > 0.0 ? kCentimetresPerInch / lUnit : 1.0;
    mFrame.mAngleFactor = mHeader.mAngle == eAMC_ANGLE_DEGREES   ? 1.0
                          : mHeader.mAngle == eAMC_ANGLE_RADIANS ? kDegreesPerRadian
                                                                 : mAsfScene->mAngleUnit;
    return true;
}

void KQexAmcReader::WarnAboutRates()
{
    if (mInfo.mRateSource == eAMC_RATE_FILE && mHeader.mCommentRate > 0.0 && AmcFrameTicks(mHeader.mCommentRate) != mTicks)
    {
        mFile.Warning("The rate of :SAMPLES-PER-SECOND (%g) wins over that of the comment (%g)\n", mHeader.mSamplesPerSecond,
                      mHeader.mCommentRate);
    }
}

bool KQexAmcReader::ComputeTime(long long pNumber, KTime& pTime) const
{
    long long lFrames = 0;
    if (__builtin_sub_overflow(pNumber, mInfo.mFirstFrame, &lFrames))
    {
        return false;
    }
    if (mTicks == std::floor(mTicks) && mTicks < 9e18)
    {
        long long lTime = 0;
        // One more frame must fit: a motion of a single frame ends one frame later.
        if (__builtin_mul_overflow(lFrames, static_cast<long long>(mTicks), &lTime) ||
            lTime > std::numeric_limits<long long>::max() - static_cast<long long>(mTicks))
        {
            return false;
        }
        pTime = KTime(lTime);
        return true;
    }
    const long double lTime = static_cast<long double>(lFrames) * static_cast<long double>(mTicks);
    if (std::fabs(lTime) > 9e18L)
    {
        return false;
    }
    pTime = KTime(std::llround(lTime));
    return true;
}

bool KQexAmcReader::CommitFrame()
{
    mInFrame = false;
    mFrame.mIndex = mInfo.mFrameCount;
    for (const int lBone : mPresent)
    {
        mBones.mBones[static_cast<size_t>(lBone)].mFrame = mFrame.mIndex;
    }
    WarnAbsent();
    if (!mVisitor.Frame(mFrame))
    {
        mStopped = true;
        return false;
    }

    ++mInfo.mFrameCount;
    if (mFrame.mNumber <= mInfo.mLowestFrame)
    {
        mInfo.mLowestFrame = mFrame.mNumber;
        mInfo.mStart = mFrame.mTime;
    }
    if (mFrame.mNumber >= mInfo.mHighestFrame)
    {
        mInfo.mHighestFrame = mFrame.mNumber;
        mInfo.mStop = mFrame.mTime;
    }
    mPreviousNumber = mFrame.mNumber;
    mPreviousPresent.swap(mPresent);
    return ReportProgress();
}

/// Warns when a bone is absent for the first time. Linear in the file: scanning mAlwaysPresent costs at most the frame's lines plus the
/// bones that are then removed from it.
void KQexAmcReader::WarnAbsent()
{
    if (mPresent.size() == mBones.mBones.size())
    {
        return;
    }
    std::vector<int> lStillPresent;
    bool             lHasAbsent = false;
    for (const int lBone : mAlwaysPresent)
    {
        lHasAbsent = lHasAbsent || mBones.mBones[static_cast<size_t>(lBone)].mFrame != mFrame.mIndex;
    }
    if (!lHasAbsent)
    {
        return;
    }
    lStillPresent.reserve(mAlwaysPresent.size());
    for (const int lBone : mAlwaysPresent)
    {
        const KQexAmcBone& lAmcBone = mBones.mBones[static_cast<size_t>(lBone)];
        if (lAmcBone.mFrame == mFrame.mIndex)
        {
            lStillPresent.push_back(lBone);
        }
        else
        {
            mFile.Warning("Bone %s is not in frame %lld, it holds its %s\n", lAmcBone.mNode->mName, mFrame.mNumber,
                          lAmcBone.mFrame < 0 ? "rest pose" : "last value");
        }
    }
    mAlwaysPresent.swap(lStillPresent);
}

bool KQexAmcReader::ReportProgress()
{
    if (!mOptions.mProgress || mInfo.mFrameCount % kProgressStep != 0)
    {
        return true;
    }
    if (mOptions.mProgress(mFile.GetFraction()))
    {
        return true;
    }
    mInfo.mCancelled = true;
    mStopped = true;
    return false;
}

/// Whether the end of the file cut the last frame short. A guess when its last line is complete: its bones are then a proper prefix of
/// the previous frame's.
bool KQexAmcReader::IsCutShort() const
{
    if (mCutShort)
    {
        return true;
    }
    if (mPresent.empty())
    {
        return !mBones.mBones.empty();
    }
    if (mInfo.mFrameCount == 0 || mPresent.size() >= mPreviousPresent.size())
    {
        return false;
    }
    return std::equal(mPresent.begin(), mPresent.end(), mPreviousPresent.begin());
}

/// Compares the bones that have lines with those of the skeleton, the root apart.
void KQexAmcReader::FinishMatch()
{
    KQexSkeletonMatch& lMatch = mInfo.mMatch;
    for (size_t i = 1; i < mBones.mLines.size(); ++i)
    {
        const KQexAmcLine& lLine = mBones.mLines[i];
        if (lLine.mBone >= 0 && mBones.Find(lLine.mName) == static_cast<int>(i))
        {
            ++lMatch.mInSkeleton;
            if (!lLine.mIsInMotion)
            {
                KQexSkeletonMatch::AddName(lMatch.mOnlyInSkeleton, std::string(lLine.mName));
            }
        }
        lMatch.mMatched += lLine.mIsInMotion ? 1 : 0;
    }
    lMatch.mInMotion = lMatch.mMatched + mUnknownNames;
}

void KQexAmcReader::FinishFile()
{
    if (mInFrame && IsCutShort())
    {
        mInFrame = false;
        mFile.Warning("Frame %lld is cut short by the end of the file and dropped\n", mFrame.mNumber);
    }
    if (mInFrame)
    {
        CommitFrame();
    }
}

} // namespace qexsdk
