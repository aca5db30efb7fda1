#include <apps/asf/batch/batchrun.h>

#include <apps/asf/outputs.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kbase/kprocess.h>
#include <kbaselib/kbase/ksystem.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <thread>

namespace asfapp
{

namespace
{

namespace fs = std::filesystem;

/// Of the folder in which a part's files are made; the part and the process follow. A worker that outlives its killed run writes to none
/// that is used again.
constexpr const char* kMakingPrefix = "making-";

/// \p pPart: KShard::GetWord().
std::string ManifestName(const std::string& pPart)
{
    return "made-" + pPart + ".jsonl";
}

} // namespace

KBatchRun::KBatchRun(const KBatchOptions& pOptions, KConsole& pConsole)
    : mOptions(pOptions), mConsole(pConsole), mContext{mOptions, mCollection, mIndex, "", "", {}, {}, nullptr}, mProgress(pConsole)
{
    mContext.mAppend = [this](const KJson& pLine, std::string& pReason)
    {
        const std::lock_guard<std::mutex> lLock(mMutex);
        const bool                        lOk = mFolder.empty() || mOptions.mIsDry || mManifest.Append(pLine, pReason);
        mIsStopped = mIsStopped || !lOk; // Without it, no file that is made would be known.
        return lOk;
    };
}

void KBatchRun::Run()
{
    if (FindMotions() && Prepare() && OpenReport())
    {
        RunSlots();
        Finish();
    }
}

bool KBatchRun::FindMotions()
{
    std::vector<std::string> lInputs = mOptions.mInputs;
    if (!mOptions.mList.empty() && !ReadList(mOptions.mList, mOptions.mIsNull, lInputs, mConsole))
    {
        return false;
    }
    std::error_code lError;
    for (const std::string& lInput : lInputs)
    {
        if (!mOptions.mOutput.empty() && fs::equivalent(lInput, mOptions.mOutput, lError))
        {
            mConsole.Fail(eEXIT_USAGE, "--output: " + mOptions.mOutput + " is also an input: choose another folder; it may be inside");
            return false;
        }
    }
    mCollection.Add(lInputs, mOptions.mOutput, mConsole);
    mCollection.Finish(mOptions.mCollision == "suffix");
    for (size_t i = 0; i < mCollection.GetFiles().size(); ++i)
    {
        if (mOptions.mShard.Has(mCollection.GetFiles()[i].mName))
        {
            mSelected.push_back(i);
        }
    }
    if (mCollection.GetFiles().empty())
    {
        mConsole.Fail(eEXIT_INPUT, "no motion was found: AMC, BVH, GLB or glTF");
    }
    return !mCollection.GetFiles().empty();
}

/// Reads what earlier runs have made, and makes the folders.
bool KBatchRun::Prepare()
{
    mContext.mProgram = qexsdk::KProgramPath();
    if (mContext.mProgram.empty())
    {
        mConsole.Fail(eEXIT_SYSTEM, "the path of this program cannot be found");
        return false;
    }
    if (mOptions.mOnlyChecks)
    {
        return true;
    }
    mFolder = (fs::path(mOptions.mOutput) / kBatchFolder).string();
    mContext.mStaging =
        (fs::path(mFolder) / (kMakingPrefix + mOptions.mShard.GetWord() + "." + std::to_string(qexsdk::KSystemInUse().mProcessId())))
            .string();
    return (mOptions.mIsDry || OpenManifest()) && mIndex.Read(mFolder, mConsole);
}

bool KBatchRun::OpenManifest()
{
    std::error_code lError;
    fs::create_directories(mFolder, lError);
    if (lError)
    {
        mConsole.Message(eERROR, mOptions.mOutput, 0, "cannot be written: " + lError.message());
        mConsole.Raise(eEXIT_SYSTEM);
        return false;
    }
    const bool lOk = mManifest.Open((fs::path(mFolder) / ManifestName(mOptions.mShard.GetWord())).string(), mConsole);
    if (lOk)
    {
        RemoveLeftovers();
    }
    return lOk;
}

/// Removes what runs left that were killed: of this part, and of others, which nobody may do again if the collection is now divided
/// otherwise.
void KBatchRun::RemoveLeftovers()
{
    std::error_code          lError;
    std::vector<std::string> lFolders;
    fs::directory_iterator   lEntry(mFolder, lError);
    for (const fs::directory_iterator lEnd; !lError && lEntry != lEnd; lEntry.increment(lError))
    {
        const std::string lName = lEntry->path().filename().string();
        if (lName.rfind(kMakingPrefix, 0) == 0)
        {
            lFolders.push_back(lName);
        }
    }
    for (const std::string& lFolder : lFolders)
    {
        const size_t      lStart = std::strlen(kMakingPrefix);
        const std::string lPart = lFolder.substr(lStart, lFolder.find('.') - lStart);
        qexsdk::KFileLock lLock; // A run of another part would have it.
        if (lPart == mOptions.mShard.GetWord() || lLock.Lock((fs::path(mFolder) / ManifestName(lPart)).string()))
        {
            fs::remove_all(fs::path(mFolder) / lFolder, lError);
        }
    }
}

bool KBatchRun::OpenReport()
{
    return mOptions.mReport.empty() || OpenOutput(mReport, mOptions.mReport, mConsole);
}

void KBatchRun::RunSlots()
{
    std::vector<std::thread> lThreads;
    mProgress.Start(mSelected.size());
    qexsdk::KSystemInUse().mPostponeEnd(&mContext.mIsCancelled);
    const size_t lJobs = mOptions.mIsDry ? 1 : static_cast<size_t>(mOptions.mJobs); // One keeps the order of a list.
    const int    lCount = static_cast<int>(std::min(lJobs, mSelected.size()));
    try
    {
        for (int lSlot = 1; lSlot < lCount; ++lSlot)
        {
            lThreads.emplace_back([this, lSlot] { RunSlot(lSlot); });
        }
    }
    catch (const std::exception&)
    {
        mConsole.Report("the system allows only " + std::to_string(lThreads.size() + 1) + " jobs at a time");
    }
    RunSlot(0);
    for (std::thread& lThread : lThreads)
    {
        lThread.join();
    }
    mProgress.Clear();
    std::error_code lError;
    fs::remove_all(mContext.mStaging, lError);
}

bool KBatchRun::NextFile(const KCollection::KFile*& pFile)
{
    const std::lock_guard<std::mutex> lLock(mMutex);
    if (mNext == mSelected.size() || mContext.mIsCancelled || mIsStopped)
    {
        return false;
    }
    pFile = &mCollection.GetFiles()[mSelected[mNext++]];
    return true;
}

void KBatchRun::RunSlot(int pSlot)
{
    const KCollection::KFile* lFile = nullptr;
    while (NextFile(lFile))
    {
        KBatchResult lResult;
        try
        {
            lResult = KBatchFile(mContext, *lFile, pSlot).Run();
        }
        catch (const std::exception& lError)
        {
            lResult.mStatus = eBATCH_FAILED;
            lResult.mExit = eEXIT_SYSTEM;
            lResult.mError = lError.what();
            lResult.mLine = {{"schema", kJsonSchema},
                             {"file", JsonPath(lFile->mName)},
                             {"status", WordOf(eBATCH_FAILED)},
                             {"cause", "system"},
                             {"error", lResult.mError}};
        }
        Count(*lFile, lResult);
    }
}

void KBatchRun::Count(const KCollection::KFile& pFile, const KBatchResult& pResult)
{
    const std::lock_guard<std::mutex> lLock(mMutex);
    if (pResult.mStatus == eBATCH_CANCELLED)
    {
        return;
    }
    if (pResult.mExit != eEXIT_SUCCESS)
    {
        mProgress.Clear();
        mConsole.Message(eERROR, mCollection.PathOf(pFile), 0, pResult.mError);
        mConsole.Raise(pResult.mExit);
    }
    const KJson lMessages = pResult.mLine.value("messages", KJson::array());
    mWarned += std::any_of(lMessages.begin(), lMessages.end(), [](const KJson& pMessage) { return pMessage["severity"] == "warning"; });
    if (mOptions.mIsDry && pResult.mStatus == eBATCH_PENDING)
    {
        mConsole.Out(Printable(mCollection.PathOf(pFile)) + "\n");
    }
    if (!mOptions.mReport.empty())
    {
        const std::string lLine = JsonLine(pResult.mLine);
        mReport.Write(lLine.data(), lLine.size());
    }
    mProgress.Count(pResult);
}

void KBatchRun::Finish()
{
    if (!mOptions.mReport.empty())
    {
        CloseOutput(mReport, mOptions.mReport, mConsole);
    }
    const std::string lDone = mProgress.GetDone() < mProgress.GetTotal() ? std::to_string(mProgress.GetDone()) + " of " : "";
    const std::string lPart = mOptions.mShard.mCount > 1 ? " (part " + std::to_string(mOptions.mShard.mIndex) + " of " +
                                                               std::to_string(mOptions.mShard.mCount) + ")"
                                                         : "";
    mConsole.Report(lDone + CountText(static_cast<long long>(mProgress.GetTotal()), "motion", "motions") + lPart + " in " +
                    mProgress.GetTime() + ": " + mProgress.GetCounts() +
                    (mWarned > 0
                         ? "; " + std::to_string(mWarned) + " with warnings" + (mOptions.mReport.empty() ? " (--report lists them)" : "")
                         : ""));
    mConsole.Report("also found " + CountText(mCollection.GetSkeletons(), "skeleton", "skeletons") + ", " +
                    CountText(mCollection.GetOthers(), "file", "files") + " of other kinds");
    if (mContext.mIsCancelled)
    {
        mConsole.Report("stopped; the same call goes on from here");
        qexsdk::KSystemInUse().mEndByPostponed();
    }
    qexsdk::KSystemInUse().mPostponeEnd(nullptr);
}

} // namespace asfapp
