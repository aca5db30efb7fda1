#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/figure/skeletonedit.h>
#include <apps/asf/outputname.h>
#include <apps/asf/outputs.h>
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
    std::string              mFile;
    std::string              mOutput;
    std::vector<std::string> mRenames;
    double                   mScale = 1;
    bool                     mDropLimits = false;
    bool                     mRemoveDummies = false;
    bool                     mQuiet = false;
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

std::string TextOf(qexsdk::KQexAsfScene& pScene)
{
    std::string                lText;
    qexsdk::KQexFileAcclaimAsf lWriter(false);
    if (!lWriter.OpenWriteBuffer(&lText))
    {
        throw std::bad_alloc();
    }
    lWriter.Write(&pScene);
    if (!lWriter.Close())
    {
        throw std::bad_alloc();
    }
    return lText;
}

qexsdk::KQexAsfSceneOwner ReadModel(const qexsdk::KQexFigureFile& pFile, qexsdk::KQexImportAcclaimResult& pResult, KConsole& pConsole)
{
    if (pFile.GetFormat() != qexsdk::eFIGURE_ASF)
    {
        pConsole.Message(eERROR, pFile.GetDisplayPath(), 0, "is not an ASF file");
        pConsole.Raise(eEXIT_USAGE);
        return nullptr;
    }
    qexsdk::KQexAsfSceneOwner lScene = qexsdk::KQexImporterAcclaim::ReadSkeleton(pFile.GetSource(), {}, pResult);
    PrintMessages(pResult, pConsole);
    if (!lScene)
    {
        pConsole.Raise(pFile.FailsToRead() ? eEXIT_SYSTEM : eEXIT_INPUT);
    }
    return lScene;
}

void RunEdit(const KEditOptions& pOptions, KConsole& pConsole)
{
    pConsole.SetQuiet(pOptions.mQuiet);
    qexsdk::KQexFigureFile lFile;
    if (!CheckOutput(pOptions.mOutput, {pOptions.mFile}, pConsole) || !CheckOutputName(pOptions.mOutput, "edit", {".asf"}, pConsole) ||
        !OpenFile(lFile, pOptions.mFile, pConsole))
    {
        return;
    }
    qexsdk::KQexImportAcclaimResult lResult;
    const qexsdk::KQexAsfSceneOwner lScene = ReadModel(lFile, lResult, pConsole);
    if (!lScene)
    {
        return;
    }
    KSkeletonEdit lEdit(*lScene);
    if (!RenameAll(pOptions, lEdit, pConsole))
    {
        return;
    }
    lEdit.Scale(pOptions.mScale);
    if (pOptions.mDropLimits)
    {
        lEdit.DropLimits();
    }
    if (pOptions.mRemoveDummies)
    {
        lEdit.RemoveDummies();
    }
    lEdit.MakeWritable(lResult.mSkeletonNotes);
    for (const std::string& lWarning : lEdit.GetWarnings())
    {
        pConsole.Message(eWARNING, lFile.GetDisplayPath(), 0, lWarning);
    }
    WriteOutput(pOptions.mOutput, TextOf(*lScene), pConsole);
}

} // namespace

void AddEditCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KEditOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("edit", "Change a skeleton: names, size, limits, dummy bones");
    lCommand->add_option("FILE", lOptions->mFile, "ASF file; \"-\" is standard input")->required()->option_text(" ");
    lCommand->add_option("-o,--output", lOptions->mOutput, "ASF file to write")->required()->option_text("FILE");
    lCommand->add_option("--rename", lOptions->mRenames, "Rename a bone; may be repeated")
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("OLD=NEW");
    lCommand->add_option("--scale", lOptions->mScale, "Factor for all lengths")->check(CLI::Range(1e-9, 1e9))->option_text("FACTOR");
    lCommand->add_flag("--drop-limits", lOptions->mDropLimits, "Remove all joint limits");
    lCommand->add_flag("--remove-dummies", lOptions->mRemoveDummies,
                       "Remove bones without degrees of freedom if that moves no other joint");
    lCommand->add_flag("-q,--quiet", lOptions->mQuiet, "No notes");
    lCommand->footer("Renames are applied in the order given, so that A=C B=A C=B swaps two names. Motions refer to bones by name: a\n"
                     "motion of the old skeleton fits the new one only if its names still match.\n"
                     "\n"
                     "Examples:\n"
                     "  asf edit old.asf -o new.asf --rename lhip=left_hip --rename rhip=right_hip\n"
                     "  asf edit old.asf -o half.asf --scale 0.5 --drop-limits");
    lCommand->callback([lOptions, &pConsole] { RunEdit(*lOptions, pConsole); });
}

} // namespace asfapp
