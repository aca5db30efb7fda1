#include <qexclip/kqexclip.h>

#include <algorithm>
#include <new>
#include <utility>

namespace qexsdk
{

bool KQexClip::Copy(KQexClip& pClip) const
{
    try
    {
        KQexClipData lData = mData;
        pClip.mData = std::move(lData);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

KQexClipData KQexClip::TakeData() noexcept
{
    return std::exchange(mData, KQexClipData());
}

double KQexClip::GetRate() const
{
    return mData.mSampling.mCount > 0 ? 1.0 / mData.mSampling.mStep.GetSeconds() : 0.0;
}

double KQexClip::GetDuration() const
{
    return mData.mSampling.mCount > 0 ? static_cast<double>(mData.mSampling.mCount - 1) * mData.mSampling.mStep.GetSeconds() : 0.0;
}

int KQexClip::FindJoint(const std::string& pName) const
{
    const auto lFound = std::find(mData.mNames.begin(), mData.mNames.end(), pName);
    return lFound != mData.mNames.end() ? static_cast<int>(lFound - mData.mNames.begin()) : -1;
}

} // namespace qexsdk
