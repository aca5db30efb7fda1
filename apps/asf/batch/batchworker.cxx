#include <apps/asf/batch/batchfile.h>

#include <apps/asf/report/messagelog.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/kpath.h>
#include <kbaselib/kbase/kprocess.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>

/// \file
/// The worker that makes a motion's outputs: asf convert in a process of its own.

namespace asfapp
{

namespace
{

namespace fs = std::filesystem;

/// \p pText with a path of the staging folder as the one that it stands for.
std::string Replace(std::string pText, const std::string& pFrom, const std::string& pTo)
{
    for (size_t lAt = pText.find(pFrom); lAt != std::string::npos; lAt = pText.find(pFrom, lAt + pTo.size()))
    {
        pText.replace(lAt, pFrom.size(), pTo);
    }
    return pText;
}

/// Takes that a format holds in files of their own get their names at the end.
std::string TemplateOf(const std::string& pStem, const std::string& pKind)
{
    const bool lHoldsAll = pKind == "glb" || pKind == "gltf" || pKind == "asf";
    return Replace(pStem, "{", "{{") + (lHoldsAll ? "." : "{-take}.") + pKind;
}

/// The last line of a text, which may end with a line's end.
std::string LastLine(std::string pText)
{
    while (!pText.empty() && (pText.back() == '\n' || pText.back() == '\r'))
    {
        pText.pop_back();
    }
    return pText.substr(pText.find_last_of('\n') + 1);
}

bool IsOutOfMemory(const std::string& pText)
{
    const std::string lText = qexsdk::KToLower(pText);
    return lText.find("out of memory") != std::string::npos || lText.find("cannot allocate memory") != std::string::npos;
}

} // namespace

std::vector<std::string> KBatchFile::WorkerArguments() const
{
    std::vector<std::string> lArguments = {mContext.mProgram, "convert", "--json", "--threads=1", "--search-above"};
    const std::string        lStem = (fs::path(mStaging) / fs::path(mOutput).filename()).string();
    for (const std::string& lKind : mOptions.mTo)
    {
        lArguments.push_back("--output=" + TemplateOf(lStem, lKind));
    }
    if (mOptions.mOnlyChecks)
    {
        lArguments.insert(lArguments.end(), {"--output=none", "--only-read"});
    }
    lArguments.insert(lArguments.end(), mOptions.mConvertArguments.begin(), mOptions.mConvertArguments.end());
    if (!mRate.empty() && qexsdk::KPathExtension(mPath) == ".amc")
    {
        lArguments.push_back("--source-fps=" + mRate);
    }
    if (!mOptions.mConvert.mMemory.empty())
    {
        lArguments.push_back("--memory=" + mOptions.mConvert.mMemory);
    }
    lArguments.insert(lArguments.end(), {"--", mPath});
    return lArguments;
}

/// An empty folder for the worker, and that of the outputs.
bool KBatchFile::MakeFolders()
{
    std::error_code lError;
    fs::create_directories(mStaging, lError);
    if (!lError)
    {
        fs::create_directories(fs::path(OutputPath(mOutput)).parent_path(), lError);
    }
    if (lError)
    {
        Fail(eEXIT_SYSTEM, "system", OutputPath(mOutput) + " cannot be written: " + lError.message());
    }
    return !lError;
}

void KBatchFile::Make()
{
    if (mOptions.mIsDry)
    {
        mResult.mStatus = eBATCH_PENDING;
        mResult.mLine["status"] = WordOf(mResult.mStatus);
        return;
    }
    if (mOptions.mOnlyChecks)
    {
        RunWorker();
    }
    else if (MakeFolders())
    {
        std::error_code lError;
        RunWorker();
        if (mResult.mStatus != eBATCH_MADE)
        {
            fs::remove_all(mStaging, lError); // Else it is empty, and the next motion's. A new folder each time costs 1 % more.
        }
    }
    if (mResult.mStatus == eBATCH_FAILED || mResult.mStatus == eBATCH_KEPT)
    {
        NoteFailure();
    }
}

void KBatchFile::RunWorker()
{
    qexsdk::KProcessOptions lOptions;
    KFileStamp              lStamp;
    ReadStamp(mPath, lStamp);
    lOptions.mArguments = WorkerArguments();
    lOptions.mSeconds = mOptions.mTimeout;
    lOptions.mIsCancelled = &mContext.mIsCancelled;
    const auto                   lStart = std::chrono::steady_clock::now();
    const qexsdk::KProcessResult lEnd = qexsdk::KRunProcess(lOptions);
    mResult.mBytes = lStamp.mSize;
    mResult.mSeconds = lEnd.mCpuSeconds;
    mResult.mLine["seconds"] = std::chrono::duration<double>(std::chrono::steady_clock::now() - lStart).count();
    mResult.mLine["cpuSeconds"] = lEnd.mCpuSeconds;
    mResult.mLine["peakMemory"] = lEnd.mPeakMemory;
    if (mContext.mIsCancelled)
    {
        mResult.mStatus = eBATCH_CANCELLED;
    }
    else if (lEnd.mError != 0)
    {
        Fail(eEXIT_SYSTEM, "system", "no worker could be started: " + std::generic_category().message(lEnd.mError));
    }
    else if (lEnd.mTimedOut)
    {
        Fail(eEXIT_INPUT, "timeout", "took longer than --timeout " + ShortText(mOptions.mTimeout));
    }
    else if (lEnd.mSignal != 0 || !ReadWorker(lEnd.mOut, lEnd.mExit))
    {
        const bool        lIsMemory = IsOutOfMemory(lEnd.mErr);
        const std::string lHow = lEnd.mSignal != 0 ? "signal " + std::to_string(lEnd.mSignal) : "status " + std::to_string(lEnd.mExit);
        Fail(lIsMemory ? eEXIT_SYSTEM : eEXIT_INPUT, lIsMemory ? "memory" : "crash",
             lIsMemory && !mOptions.mConvert.mMemory.empty()
                 ? "needs more memory than --memory " + mOptions.mConvert.mMemory
                 : "its worker ended with " + lHow + (lEnd.mErr.empty() ? "" : ": " + LastLine(lEnd.mErr)));
    }
    else if (NoteInputs() && mResult.mStatus != eBATCH_FAILED && CollectOutputs())
    {
        Commit();
    }
}

/// The worker's messages, with the outputs' places instead of the staging folder.
KJson KBatchFile::WorkerMessages() const
{
    KJson lMessages = mReport.value("messages", KJson::array());
    if (mOptions.mOnlyChecks)
    {
        return lMessages;
    }
    const std::string lPlace = fs::path(OutputPath(mOutput)).parent_path().string();
    for (KJson& lMessage : lMessages)
    {
        for (const char* lKey : {"file", "text"})
        {
            lMessage[lKey] = Replace(lMessage.value(lKey, ""), mStaging, lPlace);
        }
        lMessage["kind"] = qexsdk::KQexKindOfMessage(lMessage["text"].get<std::string>());
    }
    return lMessages;
}

/// Takes over what the worker reports. False if that is no report.
bool KBatchFile::ReadWorker(const std::string& pOut, int pExit)
{
    mReport = KJson::parse(pOut, nullptr, false);
    if (!mReport.is_object() || !mReport.value("outputs", KJson()).is_array())
    {
        return false;
    }
    mResult.mLine["options"] = OptionsText();
    mResult.mLine["version"] = QEX_VERSION;
    mResult.mLine["takes"] = mReport.value("takes", KJson::array());
    mResult.mLine["messages"] = WorkerMessages();
    if (pExit != 0)
    {
        std::string lText = "failed";
        for (const KJson& lMessage : mResult.mLine["messages"])
        {
            if (lMessage.value("severity", "") == "error")
            {
                lText = lMessage.value("text", lText);
                break;
            }
        }
        const bool lIsMemory = IsOutOfMemory(lText);
        Fail(pExit == eEXIT_SYSTEM ? eEXIT_SYSTEM : eEXIT_INPUT, lIsMemory ? "memory" : pExit == eEXIT_SYSTEM ? "system" : "input", lText);
    }
    return true;
}

/// Notes the inputs, by their paths from the motion's folder. False if one was changed while it was read.
bool KBatchFile::NoteInputs()
{
    const fs::path lFolder = fs::path(mPath).parent_path();
    mResult.mLine["inputs"] = KJson::array();
    for (const KJson& lInput : mReport.value("inputs", KJson::array()))
    {
        std::string lPath;
        KFileStamp  lThen;
        KFileStamp  lNow;
        if (!StampedFromJson(lInput, lPath, lThen) || (!ReadStamp(lPath, lNow) && lThen == KFileStamp() && lPath != mPath))
        {
            continue; // A buffer that a .gltf file does not have. A motion from a pipe has to be read each time.
        }
        if (lThen != lNow)
        {
            Fail(eEXIT_INPUT, "changed", lPath + " was changed while it was read: run again");
            return false;
        }
        const fs::path    lRelative = fs::path(lPath).lexically_relative(lFolder.empty() ? "." : lFolder);
        const std::string lName = lRelative.empty() ? fs::absolute(lPath).string() : lRelative.string();
        mResult.mLine["inputs"].push_back(JsonStamped(lName, lNow));
        if (mReport.value("skeleton", KJson()) == JsonPath(lPath))
        {
            mResult.mLine["skeleton"] = JsonPath(lName);
        }
    }
    return true;
}

/// Finds what the worker made. False if an output of that name must stay.
bool KBatchFile::CollectOutputs()
{
    std::vector<std::string> lNames;
    const std::string        lFolder = fs::path(mOutput).parent_path().generic_string();
    for (const KJson& lStaged : mReport["outputs"])
    {
        KOutput lOutput;
        if (PathFromJson(lStaged, lOutput.mStaged))
        {
            lOutput.mName = (lFolder.empty() ? "" : lFolder + "/") + fs::path(lOutput.mStaged).filename().string();
            lNames.push_back(lOutput.mName);
            mOutputs.push_back(std::move(lOutput));
        }
    }
    return CheckOutputs(lNames);
}

} // namespace asfapp
