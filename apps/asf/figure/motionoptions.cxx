#include <apps/asf/figure/motionoptions.h>

#include <charconv>
#include <cmath>

namespace asfapp
{

bool ParseNumber(const std::string& pText, double& pValue)
{
    const char* lEnd = pText.data() + pText.size();
    const auto  lResult = std::from_chars(pText.data(), lEnd, pValue);
    return lResult.ec == std::errc() && lResult.ptr == lEnd && std::isfinite(pValue);
}

bool ParseRate(const std::string& pText, double& pRate)
{
    const size_t lSlash = pText.find('/');
    double       lRate = 0;
    double       lDivisor = 1;
    if (!ParseNumber(pText.substr(0, lSlash), lRate) || (lSlash != std::string::npos && !ParseNumber(pText.substr(lSlash + 1), lDivisor)))
    {
        return false;
    }
    lRate /= lDivisor;
    if (!(lRate >= 1e-3 && lRate <= 1e6))
    {
        return false;
    }
    pRate = lRate;
    return true;
}

bool ApplyMotionOptions(KMotionOptions& pOptions, KConsole& pConsole)
{
    pConsole.SetQuiet(pOptions.mQuiet);
    if (!pOptions.mFps.empty() && !ParseRate(pOptions.mFps, pOptions.mMotionRate))
    {
        pConsole.Fail(eEXIT_USAGE, "--fps: expected a positive number or fraction, such as 120 or 30000/1001, not " + pOptions.mFps);
        return false;
    }
    return true;
}

qexsdk::KQexFigureFilesOptions FilesOptions(const KMotionOptions& pOptions)
{
    qexsdk::KQexFigureFilesOptions lOptions;
    lOptions.mSkeleton = pOptions.mAsf;
    lOptions.mFormat = pOptions.mFrom;
    lOptions.mSkeletonOption = "--asf";
    return lOptions;
}

} // namespace asfapp
