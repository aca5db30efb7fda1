#include <apps/asf/batch/gather.h>

#include <apps/asf/batch/checksum.h>
#include <apps/asf/batch/collection.h>
#include <apps/asf/outputs.h>
#include <apps/asf/report/filestamp.h>
#include <apps/asf/report/numbertext.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <vector>

namespace asfapp
{

namespace
{

namespace fs = std::filesystem;

/// Adds up the manifests of one OUTDIR.
class KGathering
{
public:
    KGathering(const KBatchOptions& pOptions, const std::string& pFolder, KConsole& pConsole)
        : mOptions(pOptions), mFolder(pFolder), mConsole(pConsole)
    {
    }

    bool Read();
    bool OpenReport() { return mOptions.mReport.empty() || OpenOutput(mReport, mOptions.mReport, mConsole); }
    void SeeAll();
    void SeeInputs(const std::vector<std::string>& pInputs);
    void SeeParts();
    void Report();

private:
    void        CheckInputs(const std::string& pName, const std::string& pPath, const KJson& pLine);
    void        See(const std::string& pName, const KJson& pLine);
    std::string CheckOutput(const KJson& pOutput) const;

    const KBatchOptions&               mOptions;
    const std::string                  mFolder;
    KConsole&                          mConsole;
    KManifestIndex                     mIndex;
    qexsdk::KOutputFile                mReport;
    std::map<std::string, std::string> mProblems; ///< By motion.
    size_t                             mMade = 0;
};

bool KGathering::Read()
{
    std::error_code lError;
    const fs::path  lManifests = fs::path(mFolder) / kBatchFolder;
    if (!fs::is_directory(lManifests, lError))
    {
        mConsole.Message(eERROR, mFolder, 0, "has no manifest: asf batch has written nothing there");
        mConsole.Raise(eEXIT_INPUT);
        return false;
    }
    return mIndex.Read(lManifests.string(), mConsole);
}

/// What is wrong with an output; empty if nothing is.
std::string KGathering::CheckOutput(const KJson& pOutput) const
{
    std::string lName;
    KFileStamp  lThen;
    KFileStamp  lNow;
    if (!StampedFromJson(pOutput, lName, lThen))
    {
        return "the manifest does not say what was made";
    }
    const std::string lPath = (fs::path(mFolder) / lName).string();
    uint32_t          lSum = 0;
    if (!ReadStamp(lPath, lNow))
    {
        return lPath + " is missing";
    }
    const bool lIsSame = !mOptions.mVerify
                             ? lThen == lNow
                             : lThen.mSize == lNow.mSize && ReadChecksum(lPath, lSum) && lSum == pOutput.value("crc32", uint32_t(0));
    return lIsSame ? "" : lPath + " was changed since it was made";
}

void KGathering::See(const std::string& pName, const KJson& pLine)
{
    if (mReport.IsOpen())
    {
        const std::string lText = JsonLine(pLine);
        mReport.Write(lText.data(), lText.size());
    }
    std::string lProblem = pLine.value("status", "") == "made" ? "" : pLine.value("error", "failed");
    for (const KJson& lOutput : lProblem.empty() ? pLine.value("outputs", KJson::array()) : KJson::array())
    {
        lProblem = lProblem.empty() ? CheckOutput(lOutput) : lProblem;
    }
    mMade += lProblem.empty() ? 1 : 0;
    if (!lProblem.empty())
    {
        mProblems[pName] = lProblem;
    }
}

void KGathering::SeeAll()
{
    mIndex.ForEach([this](const std::string& pName, const KJson& pLine) { See(pName, pLine); });
}

/// Some number of parts must be complete: motions of parts that never ran are in no manifest.
void KGathering::SeeParts()
{
    std::map<uint32_t, std::set<uint32_t>> lParts; // By their number.
    std::error_code                        lError;
    fs::directory_iterator                 lEntry(fs::path(mFolder) / kBatchFolder, lError);
    for (const fs::directory_iterator lEnd; !lError && lEntry != lEnd; lEntry.increment(lError))
    {
        unsigned lIndex = 0;
        unsigned lCount = 0;
        if (std::sscanf(lEntry->path().filename().c_str(), "made-%u-of-%u.jsonl", &lIndex, &lCount) == 2 &&
            fs::file_size(*lEntry, lError) > 0)
        {
            lParts[lCount].insert(lIndex);
        }
    }
    const auto lIsComplete = [](const auto& pParts)
    {
        return pParts.second.size() == pParts.first;
    };
    if (lParts.empty() || std::any_of(lParts.begin(), lParts.end(), lIsComplete))
    {
        return;
    }
    const auto& [lCount, lRun] = *lParts.rbegin();
    mConsole.Message(eERROR, mFolder, 0, "only " + std::to_string(lRun.size()) + " of " + std::to_string(lCount) + " parts have been run");
    mConsole.Raise(eEXIT_INPUT);
}

void KGathering::Report()
{
    if (mReport.IsOpen())
    {
        CloseOutput(mReport, mOptions.mReport, mConsole);
    }
    for (const auto& [lName, lProblem] : mProblems)
    {
        mConsole.Message(eERROR, lName, 0, lProblem);
        mConsole.Raise(eEXIT_INPUT);
    }
    mConsole.Report(mFolder + ": " + CountText(static_cast<long long>(mMade), "motion", "motions") + " made, " +
                    std::to_string(mProblems.size()) + " missing or failed");
}

/// \p pPath: of the motion. Inputs that changed since have to be made again.
void KGathering::CheckInputs(const std::string& pName, const std::string& pPath, const KJson& pLine)
{
    for (const KJson& lInput : pLine.value("inputs", KJson::array()))
    {
        std::string lFile;
        KFileStamp  lThen;
        KFileStamp  lNow;
        if (StampedFromJson(lInput, lFile, lThen) &&
            !(ReadStamp((fs::path(pPath).parent_path() / lFile).string(), lNow) && lNow == lThen) && mProblems.count(pName) == 0)
        {
            mProblems[pName] = lFile + " was changed since it was read: run again";
            --mMade;
        }
    }
}

/// Only the motions of \p pInputs count: those that failed and are no longer there do not.
void KGathering::SeeInputs(const std::vector<std::string>& pInputs)
{
    KCollection lCollection;
    lCollection.Add(pInputs, mFolder, mConsole);
    lCollection.Finish(mOptions.mCollision == "suffix");
    for (const KCollection::KFile& lFile : lCollection.GetFiles())
    {
        KJson             lLine;
        const std::string lName = lCollection.RecordOf(lFile);
        if (mIndex.Find(lName, lLine))
        {
            See(lName, lLine);
            CheckInputs(lName, lCollection.PathOf(lFile), lLine);
        }
        else
        {
            mProblems[lName] = "no run has done it";
        }
    }
}

} // namespace

void GatherBatch(const KBatchOptions& pOptions, KConsole& pConsole)
{
    std::vector<std::string> lInputs = pOptions.mInputs;
    if (!pOptions.mList.empty() && !ReadList(pOptions.mList, pOptions.mIsNull, lInputs, pConsole))
    {
        return;
    }
    // `asf batch --gather out` names only the folder; `asf batch --gather subjects -o out` the motions, too.
    const std::string lFolder = !pOptions.mOutput.empty() ? pOptions.mOutput : lInputs.size() == 1 ? lInputs.front() : "";
    if (lFolder.empty())
    {
        pConsole.Fail(eEXIT_USAGE, "--gather: expected the folder of one collection, or its inputs and -o with the folder");
        return;
    }
    KGathering lGathering(pOptions, lFolder, pConsole);
    if (lGathering.Read() && lGathering.OpenReport())
    {
        const bool lHasInputs = !pOptions.mOutput.empty() && !lInputs.empty();
        if (lHasInputs)
        {
            lGathering.SeeInputs(lInputs);
        }
        else
        {
            lGathering.SeeAll();
            lGathering.SeeParts();
        }
        lGathering.Report();
    }
}

} // namespace asfapp
