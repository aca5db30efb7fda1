#include <apps/asf/commands/tablecommand.h>

#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/framelist.h>
#include <apps/asf/outputname.h>
#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>
#include <apps/asf/report/tablesink.h>
#include <apps/asf/usage.h>
#include <kbaselib/kbase/kpath.h>
#include <qexfigure/kqexfigurejoint.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <new>

namespace asfapp
{

namespace
{

bool FormatOf(const KTableOptions& pOptions, ETableFormat& pFormat, KConsole& pConsole)
{
    if (!CheckOutputName(pOptions.mOutput, pOptions.mCommand, {".csv", ".json", ".npy", ".npz"}, pConsole))
    {
        return false;
    }
    const std::string lExtension = qexsdk::KPathExtension(pOptions.mOutput);
    pFormat = lExtension == ".json"  ? eTABLE_JSON
              : lExtension == ".npy" ? eTABLE_NPY
              : lExtension == ".npz" ? eTABLE_NPZ
              : pOptions.mWide       ? eTABLE_CSV_WIDE
                                     : eTABLE_CSV;
    const bool lIsCsv = pFormat == eTABLE_CSV || pFormat == eTABLE_CSV_WIDE;
    if (lIsCsv && pOptions.mOutput != "-" && lExtension != ".csv" && !lExtension.empty() && pOptions.mOutput.compare(0, 5, "/dev/") != 0)
    {
        pConsole.Fail(eEXIT_USAGE, "--output: expected .csv, .json, .npy or .npz, not " + pOptions.mOutput);
        return false;
    }
    if (pOptions.mWide && !lIsCsv)
    {
        pConsole.Fail(eEXIT_USAGE, "--wide is for CSV only");
        return false;
    }
    return true;
}

std::string NamesPath(const std::string& pOutput)
{
    return pOutput.substr(0, pOutput.find_last_of('.')) + ".names.txt";
}

/// Indices of the joints that --joints names. False after an error.
bool FindJoints(const KTableOptions& pOptions, const std::vector<qexsdk::KQexFigureJoint>& pJoints, std::vector<size_t>& pPicked,
                KConsole& pConsole)
{
    for (const std::string& lName : pOptions.mJoints)
    {
        qexsdk::KQexFigureReport lReport;
        const int                lFound = qexsdk::FindFigureJoint(pJoints, lName, "--joints: ", lReport);
        PrintReport(lReport, pConsole);
        if (lFound < 0)
        {
            return false;
        }
        const auto lJoint = static_cast<size_t>(lFound);
        if (std::find(pPicked.begin(), pPicked.end(), lJoint) != pPicked.end())
        {
            pConsole.Fail(eEXIT_USAGE, "--joints: " + lName + " is given twice");
            return false;
        }
        pPicked.push_back(lJoint);
    }
    return true;
}

/// Indices of the joints to write: those of --joints, else all, or without the ends of leaf bones. False after an error.
bool PickJoints(const KTableOptions& pOptions, const KLoadedMotion& pMotion, std::vector<size_t>& pPicked, KConsole& pConsole)
{
    const std::vector<qexsdk::KQexFigureJoint>& lJoints = pMotion.GetJoints();
    for (size_t lIndex = 0; lIndex < lJoints.size() && pOptions.mJoints.empty(); ++lIndex)
    {
        if (pOptions.mEnds || !lJoints[lIndex].mIsEnd)
        {
            pPicked.push_back(lIndex);
        }
    }
    return FindJoints(pOptions, lJoints, pPicked, pConsole);
}

/// The times of a table's rows: those of frames, or even ones.
struct KRowTimes
{
    std::vector<qexsdk::KTime> mTimes; ///< Not used if mIsEven.
    bool                       mIsEven = false;
    qexsdk::KQexSampling       mSampling;

    qexsdk::KQexFrameTimes Get() const { return mIsEven ? qexsdk::KQexFrameTimes(mSampling) : qexsdk::KQexFrameTimes(mTimes); }
};

/// The rows that the options ask for. False after an error.
bool ResolveRows(const KTableOptions& pOptions, const KLoadedMotion& pMotion, KRowTimes& pRows, KConsole& pConsole)
{
    std::vector<size_t> lFrames;
    const std::string   lError = PickFrames(pOptions.mFrames.empty() ? "first-last" : pOptions.mFrames, pMotion.GetFrames(), lFrames);
    if (!lError.empty())
    {
        pConsole.Fail(eEXIT_USAGE, "--frames: " + lError);
        return false;
    }
    pRows.mIsEven = pOptions.mMotion.mRate > 0;
    if (pRows.mIsEven)
    {
        return CheckOneRange(lFrames, pConsole) &&
               pMotion.Sample(lFrames.front(), lFrames.back(), pOptions.mMotion.mRate, pRows.mSampling, pConsole);
    }
    std::transform(lFrames.begin(), lFrames.end(), std::back_inserter(pRows.mTimes),
                   [&pMotion](size_t pFrame) { return pMotion.GetTime(pFrame); });
    return true;
}

/// Evaluates all frames into \p pSink.
void RunFrames(KLoadedMotion& pMotion, const qexsdk::KQexFrameTimes& pTimes, KTableSink& pSink, const KConsole& pConsole)
{
    KProgress                    lProgress("writing", pConsole);
    qexsdk::KQexFrameSink*       lSinks[] = {&pSink};
    const qexsdk::KQexAnimLayer* lLayer = qexsdk::KQexLayerOf(pMotion.GetTake()->mStack);
    if (qexsdk::KQexRunFrames(pMotion.GetFigure().GetRoots(), lLayer, pTimes, lSinks, 1, 0, lProgress.GetFunction()) ==
        qexsdk::KQexRunResult::eOUT_OF_MEMORY)
    {
        throw std::bad_alloc();
    }
    pSink.Finish();
}

/// Closes both files; neither target is replaced until both are complete. False after an error.
bool CloseBoth(qexsdk::KOutputFile& pOut, const std::string& pPath, qexsdk::KOutputFile& pNames, const std::string& pNamesPath,
               KConsole& pConsole)
{
    if (!pOut.Prepare() || !pNames.Prepare())
    {
        const bool lFirst = pOut.HasFailed();
        ReportOutputError(lFirst ? pOut : pNames, lFirst ? pPath : pNamesPath, pConsole);
        pOut.Discard();
        pNames.Discard();
        return false;
    }
    return CloseOutput(pNames, pNamesPath, pConsole) && CloseOutput(pOut, pPath, pConsole);
}

/// Closes the table, with the names of an .npy file's items next to it. False after an error.
bool CloseTable(const KTableOptions& pOptions, ETableFormat pFormat, const qexsdk::KQexTable& pTable, qexsdk::KOutputFile& pOut,
                KConsole& pConsole)
{
    if (pFormat != eTABLE_NPY)
    {
        return CloseOutput(pOut, pOptions.mOutput, pConsole);
    }
    qexsdk::KOutputFile lOut;
    std::string         lNames;
    for (const qexsdk::KQexTableItem& lItem : pTable.mItems)
    {
        lNames += lItem.mName + "\n";
    }
    if (!OpenOutput(lOut, NamesPath(pOptions.mOutput), pConsole))
    {
        return false;
    }
    lOut.Write(lNames.data(), lNames.size());
    return CloseBoth(pOut, pOptions.mOutput, lOut, NamesPath(pOptions.mOutput), pConsole);
}

/// Opens the table's file. False after an error.
bool OpenTable(const KTableOptions& pOptions, ETableFormat pFormat, qexsdk::KOutputFile& pOut, KConsole& pConsole)
{
    return OpenOutput(pOut, pOptions.mOutput, pConsole) && (pFormat != eTABLE_NPZ || CheckArchive(pOut, pOptions.mOutput, pConsole));
}

/// The head of the table, but for its items.
qexsdk::KQexTable HeadOf(const KTableOptions& pOptions, const qexsdk::KQexFigureFiles& pFiles, const KLoadedMotion& pMotion,
                         const KRowTimes& pRows)
{
    qexsdk::KQexTable lTable;
    lTable.mKind = pOptions.mCommand;
    lTable.mSkeleton = pFiles.mFigure.GetPath();
    lTable.mMotion = pFiles.mMotions.empty() ? lTable.mSkeleton : pFiles.mMotions.front().GetPath();
    lTable.mRate = pRows.mIsEven ? pOptions.mMotion.mRate : pMotion.GetRate();
    lTable.mFrameCount = static_cast<size_t>(pRows.Get().GetCount());
    return lTable;
}

void WriteTable(const KTableOptions& pOptions, ETableFormat pFormat, const qexsdk::KQexFigureFiles& pFiles, const KMakeTable& pMake,
                KLoadedMotion& pMotion, KConsole& pConsole)
{
    KRowTimes           lRows;
    std::vector<size_t> lJoints;
    if (!ResolveRows(pOptions, pMotion, lRows, pConsole) || !PickJoints(pOptions, pMotion, lJoints, pConsole))
    {
        return;
    }
    const qexsdk::KQexFrameTimes                   lTimes = lRows.Get();
    qexsdk::KQexTable                              lTable = HeadOf(pOptions, pFiles, pMotion, lRows);
    const std::unique_ptr<qexsdk::KQexTableValues> lValues = pMake(pMotion, lJoints, lTable);
    qexsdk::KOutputFile                            lOut;
    if (lValues == nullptr || !OpenTable(pOptions, pFormat, lOut, pConsole))
    {
        return;
    }
    RunFrames(pMotion, lTimes, *MakeTableSink(pFormat, lTable, pMotion, lTimes, *lValues, lOut), pConsole);
    if (CloseTable(pOptions, pFormat, lTable, lOut, pConsole) && pOptions.mOutput != "-")
    {
        const auto        lCount = static_cast<long long>(lTable.mItems.size());
        const std::string lItems =
            lTable.mHasDofs ? CountText(lCount, "degree of freedom", "degrees of freedom") : CountText(lCount, "joint", "joints");
        ReportAfterCommit(
            [&] {
                ReportWritten(pOptions.mOutput, lItems + ", " + FramesText(static_cast<long long>(lTable.mFrameCount), lTable.mRate),
                              pConsole);
            });
    }
}

} // namespace

void AddTableOptions(CLI::App& pCommand, KTableOptions& pOptions, bool pHasEnds)
{
    pOptions.mCommand = pCommand.get_name();
    pCommand.add_option("FILE", pOptions.mFiles, "ASF and AMC, AMC alone, BVH, GLB or glTF; \"-\" is standard input")
        ->required()
        ->expected(1, 2)
        ->option_text(" ");
    pCommand.add_option("-o,--output", pOptions.mOutput, "File to write: .csv, .json, .npy or .npz (default: CSV to standard output)")
        ->option_text("FILE");
    pCommand.add_option("--frames", pOptions.mFrames, "Frames to write, such as 1,100-200,last or 1-last:10 (default: all)")
        ->option_text("LIST");
    pCommand.add_option("--joints", pOptions.mJoints, "Joints to write, in this order, such as lfoot,rfoot (default: all)")
        ->delimiter(',')
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("NAME,...");
    pCommand.add_option("--take", pOptions.mTake, "Take to write if there are several (default: the first)")->option_text("NAME");
    pCommand.add_flag("--wide", pOptions.mWide, "CSV with one row per frame");
    if (pHasEnds)
    {
        pCommand.add_flag("--ends", pOptions.mEnds, "Include the ends of leaf bones, named BONE_End");
    }
    AddFormatOption(pCommand, pOptions.mMotion.mFrom);
    AddRate(pCommand, "Frames per second to write, such as 30, 23.976 or 30000/1001 (default: the file's frames)", pOptions.mMotion);
    AddMotionOptions(pCommand, pOptions.mMotion);
}

void RunTable(KTableOptions& pOptions, const KMakeTable& pMake, KConsole& pConsole)
{
    qexsdk::KQexFigureFiles lFiles;
    ETableFormat            lFormat = eTABLE_CSV;
    if (!ApplyMotionOptions(pOptions.mMotion, pConsole) || !FormatOf(pOptions, lFormat, pConsole) ||
        !OpenFigure(lFiles, pOptions.mFiles, pOptions.mMotion, pConsole) || !CheckOutput(pOptions.mOutput, PathsOf(lFiles), pConsole) ||
        (lFormat == eTABLE_NPY && !CheckOutput(NamesPath(pOptions.mOutput), PathsOf(lFiles), pConsole)))
    {
        return;
    }
    // The samples begin at the first frame: those of a part would lie between them.
    pOptions.mMotion.mSampleRate = pOptions.mFrames.empty() ? pOptions.mMotion.mRate : 0;
    KLoadedMotion lMotion;
    if (lMotion.Load(lFiles, pOptions.mMotion, pOptions.mTake, pConsole))
    {
        SetFileUnit(pOptions.mWorld, lFiles, lMotion.GetFigure());
        HoldInPlace(pOptions.mWorld, lMotion.GetFigure());
        WriteTable(pOptions, lFormat, lFiles, pMake, lMotion, pConsole);
    }
}

void AddJointItems(const KLoadedMotion& pMotion, const std::vector<size_t>& pPicked, int pDecimals, qexsdk::KQexTable& pTable)
{
    std::vector<int> lItems(pMotion.GetJoints().size(), -1); // Of each joint.
    for (size_t i = 0; i < pPicked.size(); ++i)
    {
        lItems[pPicked[i]] = static_cast<int>(i);
    }
    for (const size_t lJoint : pPicked)
    {
        qexsdk::KQexTableItem lItem;
        lItem.mName = lItem.mBone = pMotion.GetJoints()[lJoint].mName;
        lItem.mDecimals = pDecimals;
        int lParent = pMotion.GetJoints()[lJoint].mParent;
        while (lParent >= 0 && lItems[static_cast<size_t>(lParent)] < 0)
        {
            lParent = pMotion.GetJoints()[static_cast<size_t>(lParent)].mParent;
        }
        lItem.mParent = lParent >= 0 ? lItems[static_cast<size_t>(lParent)] : -1;
        pTable.mItems.push_back(lItem);
    }
}

} // namespace asfapp
