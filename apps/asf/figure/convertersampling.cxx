#include <apps/asf/figure/converter.h>
#include <apps/asf/figure/nametemplate.h>
#include <apps/asf/report/numbertext.h>

#include <algorithm>
#include <cmath>
#include <new>

/// \file
/// The takes to convert, and the frames of each.

namespace asfapp
{

namespace
{

using qexsdk::KQexFigureTake;
using qexsdk::KTime;

double SecondsOf(const KQexFigureTake& pTake, KTime pTime)
{
    return pTime.GetSeconds() - pTake.mOrigin.GetSeconds();
}

/// "walk, which has frames 1 to 241 (0 to 2 seconds)"
std::string RangeText(const KQexFigureTake& pTake)
{
    return pTake.mName + ", which has frames " + std::to_string(pTake.GetNumber(pTake.mStart)) + " to " +
           std::to_string(pTake.GetNumber(pTake.mEnd)) + " (" + ShortText(SecondsOf(pTake, pTake.mStart)) + " to " +
           ShortText(SecondsOf(pTake, pTake.mEnd)) + " seconds)";
}

/// Seconds from one frame of the file to the next.
double StepOf(const KQexFigureTake& pTake)
{
    return pTake.mHasNumbers || pTake.mStep.Get() <= 0 ? 1 / pTake.mRate : pTake.mStep.GetSeconds();
}

/// The time of frame \p pNumber: exactly that of the file's frame, if it has one.
KTime TimeOfFrame(const qexsdk::KQexFigure& pFigure, const KQexFigureTake& pTake, double pNumber)
{
    qexsdk::KQexFigureFrames lFrames;
    if (!pFigure.CollectFrames(pTake, lFrames))
    {
        throw std::bad_alloc();
    }
    const auto lFound = std::lower_bound(lFrames.mNumbers.begin(), lFrames.mNumbers.end(), std::llround(pNumber));
    if (lFound != lFrames.mNumbers.end() && static_cast<double>(*lFound) == pNumber)
    {
        return lFrames.mTimes[static_cast<size_t>(lFound - lFrames.mNumbers.begin())];
    }
    return KTime::FromSeconds(pTake.mOrigin.GetSeconds() + (pNumber - static_cast<double>(pTake.mOriginNumber)) * StepOf(pTake));
}

/// The time in the scene for an option. False if it is outside the take; half a frame of seconds is not.
bool FindTime(const qexsdk::KQexFigure& pFigure, const KQexFigureTake& pTake, const KTakeTime& pWanted, KTime& pTime)
{
    if (pWanted.mIsFrame)
    {
        pTime = TimeOfFrame(pFigure, pTake, pWanted.mValue);
        return pWanted.mValue >= static_cast<double>(pTake.GetNumber(pTake.mStart)) &&
               pWanted.mValue <= static_cast<double>(pTake.GetNumber(pTake.mEnd));
    }
    const double lSlack = StepOf(pTake) / 2;
    pTime = KTime::FromSeconds(pTake.mOrigin.GetSeconds() + pWanted.mValue);
    return pWanted.mValue >= SecondsOf(pTake, pTake.mStart) - lSlack && pWanted.mValue <= SecondsOf(pTake, pTake.mEnd) + lSlack;
}

} // namespace

bool KConverter::SampleTakes()
{
    for (const KQexFigureTake& lTake : mFigure.GetTakes())
    {
        KSampledTake lSampled;
        lSampled.mTake = &lTake;
        lSampled.mName = FileNamePart(lTake.mGivenName, "take");
        mTakes.push_back(lSampled);
    }
    if (mTakes.empty())
    {
        mTakes.emplace_back();
        mTakes.back().mName = "rest";
    }
    for (KSampledTake& lTake : mTakes)
    {
        if (!FindPart(lTake))
        {
            return false;
        }
        qexsdk::KQexAnimStack* lStack = lTake.mTake != nullptr ? lTake.mTake->mStack : nullptr;
        if (!qexsdk::MakeSampling(mFigure.GetRoots(), lStack, lTake.mRequest, lTake.mSampling))
        {
            mConsole.Fail(eEXIT_USAGE, "--start, --end and --fps leave no frames of " + lTake.mName);
            return false;
        }
        qexsdk::KQexFigureReport lReport;
        if (lTake.mTake != nullptr && !qexsdk::KQexFigure::CheckSpan(*lTake.mTake, lTake.mSampling, lReport))
        {
            PrintReport(lReport, mConsole);
            return false;
        }
    }
    return true;
}

/// Sets the request to the part that the options ask for. False after an error.
bool KConverter::FindPart(KSampledTake& pTake)
{
    pTake.mRequest.mFramesPerSecond = mOptions.mMotion.mRate;
    pTake.mRequest.mEvery = mOptions.mEvery;
    pTake.mRequest.mHasStart = mOptions.mStartTime.mIsSet;
    pTake.mRequest.mHasEnd = mOptions.mEndTime.mIsSet || pTake.mTake == nullptr || pTake.mTake->mIsSingle;
    if (pTake.mTake == nullptr)
    {
        const bool lOk = !mOptions.mStartTime.mIsSet && !mOptions.mEndTime.mIsSet;
        if (!lOk)
        {
            mConsole.Fail(eEXIT_USAGE, "--start and --end need a motion");
        }
        return lOk;
    }
    const KQexFigureTake& lTake = *pTake.mTake;
    KTime                 lStart = lTake.mStart;
    KTime                 lEnd = lTake.mEnd;
    const bool            lHasStart = !mOptions.mStartTime.mIsSet || FindTime(mFigure, lTake, mOptions.mStartTime, lStart);
    if (!lHasStart || (mOptions.mEndTime.mIsSet && !FindTime(mFigure, lTake, mOptions.mEndTime, lEnd)))
    {
        mConsole.Fail(eEXIT_USAGE, std::string(lHasStart ? "--end " : "--start ") + (lHasStart ? mOptions.mEnd : mOptions.mStart) +
                                       " is outside " + RangeText(lTake));
        return false;
    }
    if (lEnd.Get() < lStart.Get())
    {
        mConsole.Fail(eEXIT_USAGE, "--start and --end leave no frames of " + RangeText(lTake));
        return false;
    }
    pTake.mRequest.mStart = KTime(std::max(lStart.Get(), lTake.mStart.Get()));
    pTake.mRequest.mEnd = KTime(std::min(lEnd.Get(), lTake.mEnd.Get()));
    return true;
}

} // namespace asfapp
