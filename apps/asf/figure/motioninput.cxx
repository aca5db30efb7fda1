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
    pCommand.add_option("--asf", pOptions.mAsf, "Skeleton of the motion (default: searched for in the motion's folder)")
        ->option_text("FILE");
    pCommand
        .add_option("--fps", pOptions.mFps, "Frames per second, such as 120, 23.976 or 30000/1001 (default: the file's rate, else 120)")
        ->option_text("RATE");
    pCommand.add_flag("-q,--quiet", pOptions.mQuiet, "No notes, no progress bar");
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

bool KMotionInput::OpenSkeleton(const std::string& pPath, KConsole& pConsole)
{
    if (!mSkeleton.OpenAcclaim(pPath, pConsole))
    {
        return false;
    }
    if (mSkeleton.GetKind() != eKIND_ASF)
    {
        pConsole.Message(eERROR, mSkeleton.GetDisplayPath(), 0, "is a motion, but a skeleton is expected");
        pConsole.Raise(eEXIT_USAGE);
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
        pConsole.Message(eERROR, lFirst.GetDisplayPath(), 0, "is a skeleton, but a motion is expected");
        pConsole.Raise(eEXIT_USAGE);
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
    const bool lIsSkeletonFirst = lFirst.GetKind() == eKIND_ASF && lSecond.GetKind() == eKIND_AMC;
    if (!pOptions.mAsf.empty() || (!lIsSkeletonFirst && !(lFirst.GetKind() == eKIND_AMC && lSecond.GetKind() == eKIND_ASF)))
    {
        pConsole.Fail(eEXIT_USAGE, "expected one skeleton and one motion, not " + lFirst.GetDisplayPath() + " and " +
                                       lSecond.GetDisplayPath() + (pOptions.mAsf.empty() ? "" : " with --asf"));
        return false;
    }
    mSkeleton = lIsSkeletonFirst ? lFirst : lSecond;
    mMotion = lIsSkeletonFirst ? lSecond : lFirst;
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
    const bool lIsSystemError = mSkeleton.FailsToRead() || (mHasMotion && mMotion.FailsToRead());
    pConsole.Raise(lIsSystemError ? eEXIT_SYSTEM : eEXIT_INPUT);
}

void PrintMessages(const qexsdk::KQexImportAcclaimResult& pResult, KConsole& pConsole)
{
    for (const qexsdk::KQexImportMessage& lMessage : pResult.mMessages)
    {
        pConsole.Message(SeverityOf(lMessage.mMessage), DisplayPath(lMessage.mPath.empty() ? "asf" : lMessage.mPath),
                         lMessage.mMessage.mLine, lMessage.mMessage.mText);
    }
}

void PrintTextMessages(const qexsdk::KQexTextFile& pFile, const std::string& pDisplayPath, KConsole& pConsole)
{
    KMessages lMessages;
    lMessages.mList = pFile.GetMessages();
    lMessages.mErrors = pFile.GetErrorCount();
    lMessages.mWarnings = pFile.GetWarningCount();
    lMessages.Print(pDisplayPath, pConsole);
}

void NoteRate(const KInputFile& pMotion, const qexsdk::KQexAmcInfo& pInfo, KConsole& pConsole)
{
    if (pInfo.mRateSource == qexsdk::eAMC_RATE_DEFAULT)
    {
        pConsole.Message(eNOTE, pMotion.GetDisplayPath(), 0,
                         "has no frame rate, using " + Short(pInfo.mSamplesPerSecond) + " frames per second");
    }
}

} // namespace asfapp
