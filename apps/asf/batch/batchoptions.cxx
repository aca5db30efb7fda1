#include <apps/asf/batch/batchoptions.h>

#include <apps/asf/figure/motionoptions.h>
#include <kbaselib/kbase/kpath.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>

namespace asfapp
{

namespace
{

constexpr uint32_t kMaxShards = 1000000;

bool ParseWhole(const std::string& pText, uint32_t& pValue)
{
    const char* lEnd = pText.data() + pText.size();
    const auto  lResult = std::from_chars(pText.data(), lEnd, pValue);
    return lResult.ec == std::errc() && lResult.ptr == lEnd;
}

/// Reads a number, unless it is not set. False if it is something else.
bool FromEnvironment(const char* pName, uint32_t& pValue)
{
    const char* lText = std::getenv(pName);
    return lText == nullptr || ParseWhole(lText, pValue);
}

/// The part of a Slurm array's task, whose numbers may begin anywhere and leave gaps.
bool FindArrayShard(KShard& pShard, KConsole& pConsole)
{
    uint32_t   lCount = 0;
    uint32_t   lTask = 0;
    uint32_t   lMin = 0;
    uint32_t   lStep = 1;
    const bool lOk = std::getenv("SLURM_ARRAY_TASK_ID") != nullptr && FromEnvironment("SLURM_ARRAY_TASK_ID", lTask) &&
                     FromEnvironment("SLURM_ARRAY_TASK_COUNT", lCount) && FromEnvironment("SLURM_ARRAY_TASK_MIN", lMin) &&
                     FromEnvironment("SLURM_ARRAY_TASK_STEP", lStep);
    lStep = std::max(lStep, 1U);
    if (!lOk || lCount == 0 || lCount > kMaxShards || lTask < lMin || (lTask - lMin) % lStep != 0 || (lTask - lMin) / lStep >= lCount)
    {
        return pConsole.Refuse("--shard auto: this is no task of a Slurm array (SLURM_ARRAY_TASK_ID and SLURM_ARRAY_TASK_COUNT)");
    }
    pShard = {(lTask - lMin) / lStep + 1, lCount};
    return true;
}

bool ParseShard(KBatchOptions& pOptions, KConsole& pConsole)
{
    if (pOptions.mShardText.empty() || pOptions.mShardText == "auto")
    {
        return pOptions.mShardText.empty() || FindArrayShard(pOptions.mShard, pConsole);
    }
    const size_t lSlash = pOptions.mShardText.find('/');
    KShard&      lPart = pOptions.mShard;
    const bool   lOk = lSlash != std::string::npos && ParseWhole(pOptions.mShardText.substr(0, lSlash), lPart.mIndex) &&
                     ParseWhole(pOptions.mShardText.substr(lSlash + 1), lPart.mCount) && lPart.mIndex >= 1 &&
                     lPart.mIndex <= lPart.mCount && lPart.mCount <= kMaxShards;
    return lOk || pConsole.Refuse("--shard: expected a part such as 3/8, or auto, not " + pOptions.mShardText);
}

/// The formats, and what convert's own options say about them.
bool ParseFormats(KBatchOptions& pOptions, KConsole& pConsole)
{
    pOptions.mOnlyChecks = pOptions.mTo == std::vector<std::string>{"none"};
    if (pOptions.mOnlyChecks)
    {
        pOptions.mTo.clear();
    }
    if (std::find(pOptions.mTo.begin(), pOptions.mTo.end(), "none") != pOptions.mTo.end())
    {
        return pConsole.Refuse("--to none stands alone: it writes nothing");
    }
    // In whatever order they are given, the same are made.
    std::sort(pOptions.mTo.begin(), pOptions.mTo.end());
    pOptions.mTo.erase(std::unique(pOptions.mTo.begin(), pOptions.mTo.end()), pOptions.mTo.end());
    for (const std::string& lKind : pOptions.mTo)
    {
        pOptions.mConvert.mOutputs.push_back("x." + lKind);
    }
    pOptions.mConvert.mOnlyRead = pOptions.mOnlyChecks;
    pOptions.mConvert.mMotion.mQuiet = pOptions.mQuiet;
    return ParseConvertOptions(pOptions.mConvert, pConsole);
}

/// A report must not be written over a motion, an output or a manifest.
bool CheckReport(const KBatchOptions& pOptions, KConsole& pConsole)
{
    const std::filesystem::path lPath(pOptions.mReport);
    if (lPath.parent_path().filename() == kBatchFolder)
    {
        return pConsole.Refuse("--report: " + pOptions.mReport + " is among the manifests: choose another folder");
    }
    static const std::set<std::string> sOthers = {".asf", ".amc", ".bvh", ".glb", ".gltf", ".bin", ".npz", ".csv"};
    return sOthers.count(qexsdk::KPathExtension(pOptions.mReport)) == 0 ||
           pConsole.Refuse("--report: expected a name such as report.jsonl, not " + pOptions.mReport);
}

bool CheckWhatIsGiven(const KBatchOptions& pOptions, KConsole& pConsole)
{
    if (pOptions.mInputs.empty() && pOptions.mList.empty())
    {
        return pConsole.Refuse("INPUT is required: folders, files or patterns, or a list with --list");
    }
    if (pOptions.mOutput.empty() && !pOptions.mOnlyChecks)
    {
        return pConsole.Refuse("--output is required: write the folder's name after -o");
    }
    if (pOptions.mTo.empty() && !pOptions.mOnlyChecks)
    {
        return pConsole.Refuse("--to is required: the formats to write, such as glb or bvh,npz; or none to check only");
    }
    return true;
}

} // namespace

bool ParseBatchOptions(KBatchOptions& pOptions, KConsole& pConsole)
{
    pConsole.SetQuiet(pOptions.mQuiet);
    if (pOptions.mJobs == 0)
    {
        pOptions.mJobs = static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U));
    }
    return ParseShard(pOptions, pConsole) && ParseFormats(pOptions, pConsole) && CheckWhatIsGiven(pOptions, pConsole) &&
           CheckReport(pOptions, pConsole) && (pOptions.mRates.empty() || pOptions.mRateTable.Read(pOptions.mRates, pConsole));
}

} // namespace asfapp
