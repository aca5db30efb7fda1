#include <qexioplugins/bvh/kqexbvhbuilder.h>

#include <algorithm>
#include <limits>

namespace qexsdk
{

bool KQexBvhBuilder::ReadFrameCount()
{
    if (!mTokens.Accept("Frames"))
    {
        return Expected("Frames:");
    }
    return mTokens.NextCount(mDeclared) || Expected("Number of frames");
}

bool KQexBvhBuilder::ReadFrameTime()
{
    if (!mTokens.Accept("Frame") || !mTokens.Accept("Time"))
    {
        return Expected("Frame Time:");
    }
    double lSeconds = 0.0;
    if (!mTokens.NextNumber(lSeconds))
    {
        return Expected("Frame time");
    }
    if (mOptions.mFramesPerSecond > 0.0)
    {
        lSeconds = 1.0 / mOptions.mFramesPerSecond;
    }
    else if (!(lSeconds > 0.0))
    {
        mFile.Warning("Frame time is not above zero (%g), using 120 frames a second\n", lSeconds);
        lSeconds = 1.0 / 120.0;
    }
    mStep = NearestFrameStep(lSeconds).Get();
    if (mStep <= 0)
    {
        mFile.Error("Frame time out of range (%g)\n", lSeconds);
        return false;
    }
    return true;
}

bool KQexBvhBuilder::AppendFrame()
{
    if (mFrames > (std::numeric_limits<long long>::max() - mStep) / mStep)
    {
        mFile.Error("Too many frames for this frame time (%lld)\n", mFrames);
        return false;
    }
    const KTime lTime(mFrames * mStep);
    for (size_t i = 0; i < mChannels.size(); ++i)
    {
        if (!mChannels[i].mCurve->AppendSample(lTime, static_cast<float>(mFrame[i] * mChannels[i].mFactor)))
        {
            return OutOfMemory();
        }
    }
    ++mFrames;
    return true;
}

/// Reads one frame and appends it once all its values are read, so curves hold complete frames only. Sets pAtEnd when there is none.
bool KQexBvhBuilder::ReadFrame(bool& pAtEnd)
{
    pAtEnd = mTokens.Peek().empty() && !mFile.HasFailed();
    if (pAtEnd)
    {
        return true;
    }
    for (size_t i = 0; i < mFrame.size(); ++i)
    {
        if (!mTokens.NextNumber(mFrame[i]))
        {
            const std::string_view lFound = mTokens.Offending();
            if (!mFile.HasFailed())
            {
                mFile.Error("Frame %lld, value %zu of %zu: number expected, found (%.*s)\n", mFrames + 1, i + 1, mFrame.size(),
                            QEX_PRINTF_VIEW(lFound));
            }
            return false;
        }
    }
    return AppendFrame();
}

bool KQexBvhBuilder::ReadFrames()
{
    // Without channels frames have no values: there is nothing to read, whatever count is declared.
    bool lAtEnd = mFrame.empty();
    while (!lAtEnd)
    {
        if (!ReadFrame(lAtEnd))
        {
            return false;
        }
        if (mOptions.mProgress && mFrames % 256 == 0 &&
            !mOptions.mProgress(mDeclared > 0 ? std::min(1.0, static_cast<double>(mFrames) / static_cast<double>(mDeclared)) : 0.0))
        {
            mCancelled = true;
            return false;
        }
    }
    if (mFrame.empty() ? !mTokens.Peek().empty() : mFrames != mDeclared)
    {
        mFile.Warning("%lld frames declared, %lld found\n", mDeclared, mFrames);
    }
    return true;
}

bool KQexBvhBuilder::ReadMotion(KQexBvhReadResult& pResult)
{
    if (mTokens.Peek().empty() && !mFile.HasFailed())
    {
        mFile.Warning("No MOTION section, using the rest pose\n");
        return true;
    }
    if (!mTokens.Accept("MOTION"))
    {
        return Expected("ROOT or MOTION");
    }
    if (!ReadFrameCount() || !ReadFrameTime())
    {
        return false;
    }
    mFrame.resize(mChannels.size());
    const bool lOk = ReadFrames() || (mOptions.mKeepGoodFrames && !mCancelled && HasFrames());
    pResult.mCancelled = mCancelled;
    return lOk;
}

} // namespace qexsdk
