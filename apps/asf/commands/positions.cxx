#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/commands/framelist.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/outputname.h>
#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>
#include <apps/asf/report/positionwriter.h>
#include <kbaselib/kbase/kpath.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace asfapp
{

namespace
{

struct KPositionsOptions
{
    std::vector<std::string> mFiles;
    std::string              mOutput = "-";
    std::string              mFrames;
    std::string              mTake;
    bool                     mWide = false;
    bool                     mEnds = false;
    KMotionOptions           mMotion;
    KWorldOptions            mWorld;
};

bool FormatOf(const KPositionsOptions& pOptions, EPositionFormat& pFormat, KConsole& pConsole)
{
    if (!CheckOutputName(pOptions.mOutput, "positions", {".csv", ".json", ".npy"}, pConsole))
    {
        return false;
    }
    const std::string lExtension = qexsdk::KPathExtension(pOptions.mOutput);
    const bool        lCsv = pOptions.mOutput == "-" || (lExtension != ".json" && lExtension != ".npy");
    if (lCsv && pOptions.mOutput != "-" && lExtension != ".csv" && !lExtension.empty() && pOptions.mOutput.compare(0, 5, "/dev/") != 0)
    {
        pConsole.Fail(eEXIT_USAGE, "--output: expected .csv, .json or .npy, not " + pOptions.mOutput);
        return false;
    }
    if (pOptions.mWide && !lCsv)
    {
        pConsole.Fail(eEXIT_USAGE, "--wide is for CSV only");
        return false;
    }
    pFormat = lExtension == ".json" ? eFORMAT_JSON : lExtension == ".npy" ? eFORMAT_NPY : pOptions.mWide ? eFORMAT_CSV_WIDE : eFORMAT_CSV;
    return true;
}

std::string NamesPath(const std::string& pOutput)
{
    return pOutput.substr(0, pOutput.find_last_of('.')) + ".names.txt";
}

/// Indices of the joints to write: all, or without the ends of leaf bones.
std::vector<size_t> PickJoints(const KLoadedMotion& pMotion, bool pEnds)
{
    std::vector<size_t> lPicked;
    for (size_t lIndex = 0; lIndex < pMotion.GetJoints().size(); ++lIndex)
    {
        if (pEnds || !pMotion.GetJoints()[lIndex].mIsEnd)
        {
            lPicked.push_back(lIndex);
        }
    }
    return lPicked;
}

bool ResolveFrames(const KPositionsOptions& pOptions, const KLoadedMotion& pMotion, std::vector<size_t>& pFrames, KConsole& pConsole)
{
    const std::string lError = PickFrames(pOptions.mFrames.empty() ? "first-last" : pOptions.mFrames, pMotion.GetFrames(), pFrames);
    if (!lError.empty())
    {
        pConsole.Fail(eEXIT_USAGE, "--frames: " + lError);
    }
    return lError.empty();
}

/// The times of a table's rows: those of frames, or even ones.
struct KRowTimes
{
    std::vector<size_t>  mFrames; ///< Indices of frames; not used if mIsEven.
    bool                 mIsEven = false;
    qexsdk::KQexSampling mSampling;

    size_t        GetCount() const { return mIsEven ? static_cast<size_t>(mSampling.mCount) : mFrames.size(); }
    qexsdk::KTime GetTime(size_t pRow, const KLoadedMotion& pMotion) const
    {
        return mIsEven ? mSampling.GetTime(static_cast<long long>(pRow)) : pMotion.GetTime(mFrames[pRow]);
    }
};

/// The rows that the options ask for. False after an error.
bool ResolveRows(const KPositionsOptions& pOptions, const KLoadedMotion& pMotion, KRowTimes& pRows, KConsole& pConsole)
{
    pRows.mIsEven = pOptions.mMotion.mRate > 0;
    return ResolveFrames(pOptions, pMotion, pRows.mFrames, pConsole) &&
           (!pRows.mIsEven ||
            (CheckOneRange(pRows.mFrames, pConsole) &&
             pMotion.Sample(pRows.mFrames.front(), pRows.mFrames.back(), pOptions.mMotion.mRate, pRows.mSampling, pConsole)));
}

void WriteFrames(KLoadedMotion& pMotion, const KRowTimes& pRows, const std::vector<size_t>& pJoints, double pFactor,
                 KPositionWriter& pWriter, const qexsdk::KOutputFile& pOut, const KConsole& pConsole)
{
    KProgress           lProgress("writing", pConsole);
    std::vector<KPoint> lAll;
    std::vector<KPoint> lPicked(pJoints.size());
    for (size_t lRow = 0; lRow < pRows.GetCount() && !pOut.HasFailed(); ++lRow)
    {
        const qexsdk::KTime lTime = pRows.GetTime(lRow, pMotion);
        pMotion.Evaluate(lTime, lAll);
        for (size_t lJoint = 0; lJoint < pJoints.size(); ++lJoint)
        {
            const KPoint& lAt = lAll[pJoints[lJoint]];
            lPicked[lJoint] = {lAt.mX * pFactor, lAt.mY * pFactor, lAt.mZ * pFactor};
        }
        pWriter.Frame(pMotion.GetNumberText(lTime), pMotion.GetSeconds(lTime), lPicked);
        lProgress.Show(static_cast<double>(lRow) / static_cast<double>(pRows.GetCount()));
    }
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

void WriteTable(const KPositionsOptions& pOptions, EPositionFormat pFormat, const qexsdk::KQexFigureFiles& pFiles, KLoadedMotion& pMotion,
                KConsole& pConsole)
{
    KRowTimes lRows;
    if (!ResolveRows(pOptions, pMotion, lRows, pConsole))
    {
        return;
    }
    const std::vector<size_t> lJoints = PickJoints(pMotion, pOptions.mEnds);
    KPositionTable            lTable;
    std::string               lNames;
    lTable.mSkeleton = pFiles.mFigure.GetPath();
    lTable.mMotion = pFiles.mMotions.empty() ? lTable.mSkeleton : pFiles.mMotions.front().GetPath();
    lTable.mRate = lRows.mIsEven ? pOptions.mMotion.mRate : pMotion.GetRate();
    lTable.mFrameCount = lRows.GetCount();
    lTable.mUnit = pOptions.mWorld.mUnits.empty() ? "cm" : pOptions.mWorld.mUnits;
    lTable.mDecimals = DecimalsOf(pOptions.mWorld.GetFactor());
    for (const size_t lJoint : lJoints)
    {
        lTable.mJoints.push_back(pMotion.GetJoints()[lJoint].mName);
        lNames += lTable.mJoints.back() + "\n";
    }

    qexsdk::KOutputFile lOut;
    if (!OpenOutput(lOut, pOptions.mOutput, pConsole))
    {
        return;
    }
    const std::unique_ptr<KPositionWriter> lWriter = MakePositionWriter(pFormat, lOut);
    lWriter->Begin(lTable);
    WriteFrames(pMotion, lRows, lJoints, pOptions.mWorld.GetFactor(), *lWriter, lOut, pConsole);
    lWriter->End();
    qexsdk::KOutputFile lNamesOut;
    bool                lOk = false;
    if (pFormat != eFORMAT_NPY)
    {
        lOk = CloseOutput(lOut, pOptions.mOutput, pConsole);
    }
    else if (OpenOutput(lNamesOut, NamesPath(pOptions.mOutput), pConsole))
    {
        lNamesOut.Write(lNames.data(), lNames.size());
        lOk = CloseBoth(lOut, pOptions.mOutput, lNamesOut, NamesPath(pOptions.mOutput), pConsole);
    }
    if (lOk && pOptions.mOutput != "-")
    {
        ReportAfterCommit(
            [&]
            {
                ReportWritten(pOptions.mOutput,
                              Count(static_cast<long long>(lTable.mJoints.size()), "joint", "joints") + ", " +
                                  FramesText(static_cast<long long>(lTable.mFrameCount), lTable.mRate),
                              pConsole);
            });
    }
}

void RunPositions(KPositionsOptions& pOptions, KConsole& pConsole)
{
    qexsdk::KQexFigureFiles lFiles;
    EPositionFormat         lFormat = eFORMAT_CSV;
    if (!ApplyMotionOptions(pOptions.mMotion, pConsole) || !FormatOf(pOptions, lFormat, pConsole) ||
        !OpenFigure(lFiles, pOptions.mFiles, pOptions.mMotion, pConsole) || !CheckOutput(pOptions.mOutput, PathsOf(lFiles), pConsole) ||
        (lFormat == eFORMAT_NPY && !CheckOutput(NamesPath(pOptions.mOutput), PathsOf(lFiles), pConsole)))
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
        TurnUp(pOptions.mWorld, true, lMotion.GetFigure());
        WriteTable(pOptions, lFormat, lFiles, lMotion, pConsole);
    }
}

} // namespace

void AddPositionsCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KPositionsOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("positions", "Write the positions of all joints in every frame");
    lCommand->add_option("FILE", lOptions->mFiles, "ASF and AMC, AMC alone, BVH, GLB or glTF; \"-\" is standard input")
        ->required()
        ->expected(1, 2)
        ->option_text(" ");
    lCommand->add_option("-o,--output", lOptions->mOutput, "File to write: .csv, .json or .npy (default: CSV to standard output)")
        ->option_text("FILE");
    lCommand->add_option("--frames", lOptions->mFrames, "Frames to write, such as 1,100-200,last or 1-last:10 (default: all)")
        ->option_text("LIST");
    lCommand->add_option("--take", lOptions->mTake, "Take to write if there are several (default: the first)")->option_text("NAME");
    lCommand->add_flag("--wide", lOptions->mWide, "CSV with one row per frame instead of one per joint");
    lCommand->add_flag("--ends", lOptions->mEnds, "Include the ends of leaf bones, named BONE_End");
    AddFormatOption(*lCommand, lOptions->mMotion.mFrom);
    AddRate(*lCommand, "Frames per second to write, such as 30, 23.976 or 30000/1001 (default: the file's frames)", lOptions->mMotion);
    AddMotionOptions(*lCommand, lOptions->mMotion);
    AddWorldOptions(*lCommand, lOptions->mWorld);
    lCommand->footer("Positions are in world space: x to the figure's left at rest, y up, z forward; in centimetres unless --units says\n"
                     "otherwise. A joint is at the start of its bone. CSV has the columns frame,time,bone,x,y,z; time is in seconds from\n"
                     "the file's first frame. With --fps, frame is the number in the file, with decimals between two frames, and\n"
                     "--frames is one range. An .npy file holds float32 of shape (frames, joints, 3); the joint names go to\n"
                     "OUT.names.txt next to it.\n"
                     "\n"
                     "Examples:\n"
                     "  asf positions walk.amc -o walk.csv\n"
                     "  asf positions walker.asf walk.amc --frames 1,100-200,last --wide\n"
                     "  asf positions dance.bvh -o dance.npy\n"
                     "  asf positions walk.amc --asf walker.asf --source-fps 30000/1001 --ends -o walk.npy");
    lCommand->callback([lOptions, &pConsole] { RunPositions(*lOptions, pConsole); });
}

} // namespace asfapp
