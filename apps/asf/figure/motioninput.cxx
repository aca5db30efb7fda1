#include <apps/asf/figure/motioninput.h>

#include <apps/asf/figure/skeletonfile.h>
#include <apps/asf/figure/skeletonfinder.h>
#include <apps/asf/report/numbertext.h>

#include <CLI/CLI.hpp>

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

void AddMotionOptions(CLI::App& pCommand, KMotionOptions& pOptions)
{
    pCommand.add_option("--asf", pOptions.mAsf, "Skeleton of the motion; without it, it is looked for beside the motion")
        ->option_text("FILE");
    pCommand.add_option("--fps", pOptions.mFps, "Frames a second, as 120, 23.976 or 30000/1001; without it the file's own, else 120")
        ->option_text("RATE");
    pCommand.add_flag("-q,--quiet", pOptions.mQuiet, "Neither notes nor a progress bar");
}

bool TakeMotionOptions(KMotionOptions& pOptions, KConsole& pConsole)
{
    pConsole.SetQuiet(pOptions.mQuiet);
    if (!pOptions.mFps.empty() && !ParseRate(pOptions.mFps, pOptions.mSamples))
    {
        pConsole.Fail(eEXIT_CALL, "--fps: a number or a fraction above zero is expected, such as 120 or 30000/1001, not " + pOptions.mFps);
        return false;
    }
    return true;
}

bool KMotionInput::OpenSkeleton(const std::string& pPath, KConsole& pConsole)
{
    if (!mSkeleton.OpenAcclaim(pPath, pConsole))
    {
        return false;
    }
    if (mSkeleton.GetKind() != eKIND_ASF)
    {
        pConsole.Message(eERROR, mSkeleton.GetShown(), 0, "is a motion, where a skeleton is expected");
        pConsole.Raise(eEXIT_CALL);
        return false;
    }
    return true;
}

bool KMotionInput::OpenSkeletonOf(const KInputFile& pMotion, const KMotionOptions& pOptions, KConsole& pConsole)
{
    mMotion = pMotion;
    mHasMotion = true;
    const std::string lPath = pOptions.mAsf.empty() ? FindSkeleton(mMotion, pConsole) : pOptions.mAsf;
    return !lPath.empty() && OpenSkeleton(lPath, pConsole);
}

bool KMotionInput::Open(const std::vector<std::string>& pPaths, const KMotionOptions& pOptions, bool pMotionNeeded, KConsole& pConsole)
{
    KInputFile lFirst;
    if (!lFirst.OpenAcclaim(pPaths[0], pConsole))
    {
        return false;
    }
    if (pPaths.size() == 1 && lFirst.GetKind() == eKIND_AMC)
    {
        return OpenSkeletonOf(lFirst, pOptions, pConsole);
    }
    if (pPaths.size() == 1 && pMotionNeeded)
    {
        pConsole.Message(eERROR, lFirst.GetShown(), 0, "is a skeleton, where a motion is expected");
        pConsole.Raise(eEXIT_CALL);
        return false;
    }
    if (pPaths.size() == 1)
    {
        mSkeleton = lFirst;
        return true;
    }
    KInputFile lSecond;
    if (!lSecond.OpenAcclaim(pPaths[1], pConsole))
    {
        return false;
    }
    const bool lOrder = lFirst.GetKind() == eKIND_ASF && lSecond.GetKind() == eKIND_AMC;
    if (!pOptions.mAsf.empty() || (!lOrder && !(lFirst.GetKind() == eKIND_AMC && lSecond.GetKind() == eKIND_ASF)))
    {
        pConsole.Fail(eEXIT_CALL, "one skeleton and one motion are expected, not " + lFirst.GetShown() + " and " + lSecond.GetShown() +
                                      (pOptions.mAsf.empty() ? "" : " beside --asf"));
        return false;
    }
    mSkeleton = lOrder ? lFirst : lSecond;
    mMotion = lOrder ? lSecond : lFirst;
    mHasMotion = true;
    return true;
}

std::vector<std::string> KMotionInput::GetPaths() const
{
    std::vector<std::string> lPaths{mSkeleton.GetPath()};
    if (mHasMotion)
    {
        lPaths.push_back(mMotion.GetPath());
    }
    return lPaths;
}

void KMotionInput::RaiseFailure(KConsole& pConsole) const
{
    const bool lSystem = mSkeleton.FailsToRead() || (mHasMotion && mMotion.FailsToRead());
    pConsole.Raise(lSystem ? eEXIT_SYSTEM : eEXIT_INPUT);
}

void PrintMessages(const qexsdk::KQexImportAcclaimResult& pResult, KConsole& pConsole)
{
    for (const qexsdk::KQexImportMessage& lMessage : pResult.mMessages)
    {
        const bool lError = lMessage.mMessage.mSeverity == qexsdk::KQexTextMessage::eERROR;
        pConsole.Message(lError ? eERROR : eWARNING, ShownPath(lMessage.mPath.empty() ? "asf" : lMessage.mPath), lMessage.mMessage.mLine,
                         lMessage.mMessage.mText);
    }
}

void PrintTextMessages(const qexsdk::KQexTextFile& pFile, const std::string& pShown, KConsole& pConsole)
{
    KMessages lMessages;
    lMessages.mList = pFile.GetMessages();
    lMessages.mErrors = pFile.GetErrorCount();
    lMessages.mWarnings = pFile.GetWarningCount();
    lMessages.Print(pShown, pConsole);
}

void NoteRate(const KInputFile& pMotion, const qexsdk::KQexAmcInfo& pInfo, KConsole& pConsole)
{
    if (pInfo.mRateSource == qexsdk::eAMC_RATE_DEFAULT)
    {
        pConsole.Message(eNOTE, pMotion.GetShown(), 0,
                         "does not say how many frames a second it has: taken as " + Short(pInfo.mSamplesPerSecond));
    }
}

} // namespace asfapp
