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

namespace
{

/// False, with an error, if \p pText is neither empty nor a rate.
bool ParseRateOption(const char* pOption, const std::string& pText, double& pRate, KConsole& pConsole)
{
    const bool lOk = pText.empty() || ParseRate(pText, pRate);
    if (!lOk)
    {
        pConsole.Fail(eEXIT_USAGE,
                      std::string(pOption) + ": expected a positive number or fraction, such as 120 or 30000/1001, not " + pText);
    }
    return lOk;
}

} // namespace

bool ParseBytes(const std::string& pText, uint64_t& pBytes)
{
    static const std::string sUnits = "KMGT";
    const size_t             lUnit = pText.empty() ? std::string::npos : sUnits.find(pText.back());
    const bool               lHasUnit = lUnit != std::string::npos;
    double                   lNumber = 0;
    if (!ParseNumber(lHasUnit ? pText.substr(0, pText.size() - 1) : pText, lNumber))
    {
        return false;
    }
    const double lBytes = std::ldexp(lNumber, lHasUnit ? 10 * (static_cast<int>(lUnit) + 1) : 0);
    if (lBytes < 1 || lBytes > 1e18)
    {
        return false;
    }
    pBytes = static_cast<uint64_t>(lBytes);
    return true;
}

bool ApplyMotionOptions(KMotionOptions& pOptions, KConsole& pConsole)
{
    pConsole.SetQuiet(pOptions.mQuiet);
    if (!ParseRateOption("--fps", pOptions.mFps, pOptions.mRate, pConsole) ||
        !ParseRateOption("--source-fps", pOptions.mSourceFps, pOptions.mMotionRate, pConsole))
    {
        return false;
    }
    if (!pOptions.mHasRate && !pOptions.mFps.empty())
    {
        pConsole.Fail(eEXIT_USAGE,
                      "--fps is the rate of the output, and this command writes no motion; for an AMC file that does not say its "
                      "rate, type --source-fps " +
                          pOptions.mFps);
        return false;
    }
    return true;
}

qexsdk::KQexFigureFilesOptions FilesOptions(const KMotionOptions& pOptions)
{
    qexsdk::KQexFigureFilesOptions lOptions;
    lOptions.mSkeleton = pOptions.mAsf;
    lOptions.mFormat = pOptions.mFrom;
    lOptions.mSearchesAbove = pOptions.mSearchesAbove;
    lOptions.mSkeletonOption = "--asf";
    return lOptions;
}

} // namespace asfapp
