#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/commands/editfiles.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/figure/motionedit.h>
#include <apps/asf/figure/skeletonedit.h>
#include <apps/asf/outputs.h>
#include <apps/asf/usage.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <new>
#include <string>
#include <vector>

namespace asfapp
{

namespace
{

struct KEditOptions
{
    std::vector<std::string> mFiles;
    std::vector<std::string> mOutputs;
    std::vector<std::string> mRenames;
    double                   mScale = 1;
    bool                     mDropLimits = false;
    bool                     mRemoveDummies = false;
    KMotionOptions           mMotion; ///< Only --allow-unmatched and --quiet.
};

bool RenameAll(const KEditOptions& pOptions, KSkeletonEdit& pEdit, KConsole& pConsole)
{
    for (const std::string& lRename : pOptions.mRenames)
    {
        const size_t      lEquals = lRename.find('=');
        const std::string lError = lEquals == std::string::npos ? std::string("expected OLD=NEW")
                                                                : pEdit.Rename(lRename.substr(0, lEquals), lRename.substr(lEquals + 1));
        if (!lError.empty())
        {
            pConsole.Fail(eEXIT_USAGE, "--rename " + lRename + ": " + lError);
            return false;
        }
    }
    return true;
}

std::string TextOf(qexsdk::KQexAsfScene& pScene, const std::vector<std::string>& pAddedEnds)
{
    std::string                lText;
    qexsdk::KQexFileAcclaimAsf lWriter(false);
    if (!lWriter.OpenWriteBuffer(&lText))
    {
        throw std::bad_alloc();
    }
    lWriter.SetAddedEnds(pAddedEnds);
    lWriter.Write(&pScene);
    if (!lWriter.Close())
    {
        throw std::bad_alloc();
    }
    return lText;
}

qexsdk::KQexAsfSceneOwner ReadModel(const qexsdk::KQexFigureFile& pFile, qexsdk::KQexImportAcclaimResult& pResult, KConsole& pConsole)
{
    qexsdk::KQexAsfSceneOwner lScene = qexsdk::KQexImporterAcclaim::ReadSkeleton(pFile.GetSource(), {}, pResult);
    PrintMessages(pResult, pConsole);
    if (!lScene)
    {
        pConsole.Raise(pFile.FailsToRead() ? eEXIT_SYSTEM : eEXIT_INPUT);
    }
    return lScene;
}

/// The second model of a file whose messages are printed.
qexsdk::KQexAsfSceneOwner ReadAgain(const qexsdk::KQexFigureFile& pFile, KConsole& pConsole)
{
    qexsdk::KQexImportAcclaimResult lResult;
    qexsdk::KQexAsfSceneOwner       lScene = qexsdk::KQexImporterAcclaim::ReadSkeleton(pFile.GetSource(), {}, lResult);
    if (!lScene)
    {
        PrintMessages(lResult, pConsole);
        pConsole.Raise(eEXIT_SYSTEM);
    }
    return lScene;
}

bool EditSkeleton(const KEditOptions& pOptions, KSkeletonEdit& pEdit, KConsole& pConsole)
{
    if (!RenameAll(pOptions, pEdit, pConsole))
    {
        return false;
    }
    pEdit.Scale(pOptions.mScale);
    if (pOptions.mDropLimits)
    {
        pEdit.DropLimits();
    }
    if (pOptions.mRemoveDummies)
    {
        pEdit.RemoveDummies();
    }
    return true;
}

void PrintWarnings(const KEditFiles& pFiles, const KSkeletonEdit& pEdit, const KMotionEdit& pMotionEdit, KConsole& pConsole)
{
    for (const std::string& lWarning : pEdit.GetWarnings())
    {
        pConsole.Message(eWARNING, pFiles.mSkeleton.GetDisplayPath(), 0, lWarning);
    }
    const std::string lObstacles = pMotionEdit.GetObstacles();
    if (pFiles.mMotions.empty() && !lObstacles.empty())
    {
        pConsole.Message(eWARNING, pFiles.mSkeleton.GetDisplayPath(), 0,
                         "Its motions do not fit the new skeleton (" + lObstacles +
                             "): edit them in the same call, as in asf edit OLD.asf WALK.amc -o NEW.asf NEW.amc");
    }
}

bool WriteText(const std::string& pText, const std::string& pPath, qexsdk::KOutputFile& pOut, KConsole& pConsole)
{
    if (!OpenOutput(pOut, pPath, pConsole))
    {
        return false;
    }
    if (!pOut.Write(pText.data(), pText.size()) || !pOut.Prepare())
    {
        ReportOutputError(pOut, pPath, pConsole);
        return false;
    }
    return true;
}

bool WriteMotion(const qexsdk::KQexFigureFile& pMotion, const std::string& pPath, const std::string& pAsfPath, KMotionEdit& pEdit,
                 qexsdk::KOutputFile& pOut, KConsole& pConsole)
{
    const std::string lAsfName = pAsfPath == "-" ? std::string() : pAsfPath.substr(pAsfPath.find_last_of('/') + 1);
    if (!OpenOutput(pOut, pPath, pConsole) || !pEdit.Write(pMotion, lAsfName, pOut, pConsole))
    {
        return false;
    }
    if (!pOut.Prepare())
    {
        ReportOutputError(pOut, pPath, pConsole);
        return false;
    }
    return true;
}

/// Replaces the targets once all are complete.
void WriteAll(const KEditFiles& pFiles, const std::string& pSkeleton, KMotionEdit& pEdit, KConsole& pConsole)
{
    std::vector<std::unique_ptr<qexsdk::KOutputFile>> lOwned;
    std::vector<qexsdk::KOutputFile*>                 lOutputs;
    for (size_t lOutput = 0; lOutput <= pFiles.mMotions.size(); ++lOutput)
    {
        lOwned.push_back(std::make_unique<qexsdk::KOutputFile>());
        lOutputs.push_back(lOwned.back().get());
        const bool lOk = lOutput == 0 ? WriteText(pSkeleton, pFiles.mSkeletonOutput, *lOutputs[0], pConsole)
                                      : WriteMotion(pFiles.mMotions[lOutput - 1], pFiles.mMotionOutputs[lOutput - 1],
                                                    pFiles.mSkeletonOutput, pEdit, *lOutputs[lOutput], pConsole);
        if (!lOk)
        {
            return;
        }
    }
    if (const qexsdk::KOutputFile* lFailed = qexsdk::KOutputFile::CommitAll(lOutputs.data(), lOutputs.size()))
    {
        ReportOutputError(*lFailed, lFailed->GetPath(), pConsole);
        return;
    }
    for (size_t lOutput = 0; lOutput <= pFiles.mMotions.size(); ++lOutput)
    {
        const std::string& lPath = lOutput == 0 ? pFiles.mSkeletonOutput : pFiles.mMotionOutputs[lOutput - 1];
        if (lPath != "-")
        {
            ReportAfterCommit([&] { ReportWritten(lPath, "", pConsole); });
        }
    }
}

void RunEdit(const KEditOptions& pOptions, KConsole& pConsole)
{
    pConsole.SetQuiet(pOptions.mMotion.mQuiet);
    KEditFiles lFiles;
    if (!lFiles.Open(pOptions.mFiles, pOptions.mOutputs, pConsole))
    {
        return;
    }
    qexsdk::KQexImportAcclaimResult lResult;
    const qexsdk::KQexAsfSceneOwner lOld = ReadModel(lFiles.mSkeleton, lResult, pConsole);
    const qexsdk::KQexAsfSceneOwner lNew = lOld ? ReadAgain(lFiles.mSkeleton, pConsole) : nullptr;
    if (!lNew)
    {
        return;
    }
    KMotionEdit   lMotionEdit(*lOld, lResult.mSkeletonNotes, *lNew, pOptions.mScale, pOptions.mMotion.mAllowUnmatched);
    KSkeletonEdit lEdit(*lNew);
    lEdit.SetAddedEnds(lResult.mSkeletonNotes.mAddedEnds);
    if (!EditSkeleton(pOptions, lEdit, pConsole))
    {
        return;
    }
    lEdit.MakeWritable(lResult.mSkeletonNotes);
    PrintWarnings(lFiles, lEdit, lMotionEdit, pConsole);
    WriteAll(lFiles, TextOf(*lNew, lEdit.GetAddedEnds()), lMotionEdit, pConsole);
}

} // namespace

void SetUpEdit(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KEditOptions>();
    pCommand.add_option("FILE", lOptions->mFiles, "ASF file and its AMC files, if any; \"-\" is standard input")
        ->required()
        ->option_text("...");
    pCommand
        .add_option("-o,--output", lOptions->mOutputs,
                    "ASF file to write, then an AMC file for each that is read, or one with {name} in its name for all of them")
        ->required()
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("FILE...");
    pCommand.add_option("--rename", lOptions->mRenames, "Rename a bone; may be repeated")
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("OLD=NEW");
    pCommand.add_option("--scale", lOptions->mScale, "Factor for all lengths")->check(NumberFrom(1e-9, 1e9))->option_text("FACTOR");
    pCommand.add_flag("--drop-limits", lOptions->mDropLimits, "Remove all joint limits");
    pCommand.add_flag("--remove-dummies", lOptions->mRemoveDummies, "Remove bones without degrees of freedom if that moves no other joint");
    AddAllowUnmatched(pCommand, lOptions->mMotion);
    pCommand.add_flag("-q,--quiet", lOptions->mMotion.mQuiet, "No notes");
    pCommand.footer("Renames are applied in the order given, so that A=C B=A C=B swaps two names. Motions refer to bones by name and hold\n"
                    "lengths: renaming and scaling change them, too. All files are replaced together, or none.\n"
                    "\n"
                    "Examples:\n"
                    "  asf edit old.asf -o new.asf --drop-limits\n"
                    "  asf edit old.asf walk.amc run.amc -o new.asf new_walk.amc new_run.amc --rename lhip=left_hip\n"
                    "  asf edit old.asf *.amc -o half/new.asf 'half/{name}.amc' --scale 0.5");
    pCommand.callback([lOptions, &pConsole] { RunEdit(*lOptions, pConsole); });
}

} // namespace asfapp
