#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/motioninput.h>
#include <apps/asf/figure/skeletonedit.h>
#include <apps/asf/inputfile.h>
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
        const size_t      lSign = lRename.find('=');
        const std::string lWhy = lSign == std::string::npos ? std::string("OLD=NEW is expected")
                                                            : pEdit.Rename(lRename.substr(0, lSign), lRename.substr(lSign + 1));
        if (!lWhy.empty())
        {
            pConsole.Fail(eEXIT_CALL, "--rename " + lRename + ": " + lWhy);
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

qexsdk::KQexAsfSceneOwner ReadModel(const KInputFile& pFile, qexsdk::KQexImportAcclaimResult& pResult, KConsole& pConsole)
{
    if (pFile.GetKind() != eKIND_ASF)
    {
        pConsole.Message(eERROR, pFile.GetShown(), 0, "is no ASF file, where one is expected");
        pConsole.Raise(eEXIT_CALL);
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
    KInputFile lFile;
    if (!CheckOutput(pOptions.mOutput, {pOptions.mFile}, pConsole) || !lFile.Open(pOptions.mFile, pConsole))
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
        pConsole.Message(eWARNING, lFile.GetShown(), 0, lWarning);
    }
    WriteOutput(pOptions.mOutput, TextOf(*lScene), pConsole);
}

} // namespace

void AddEditCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KEditOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("edit", "Change a skeleton: names, size, limits, needless bones");
    lCommand->add_option("FILE", lOptions->mFile, "ASF file; \"-\" is standard input")->required()->option_text(" ");
    lCommand->add_option("-o,--output", lOptions->mOutput, "ASF file to write")->required()->option_text("FILE");
    lCommand->add_option("--rename", lOptions->mRenames, "Give a bone another name; may be given again")
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("OLD=NEW");
    lCommand->add_option("--scale", lOptions->mScale, "Factor of all lengths")->check(CLI::Range(1e-9, 1e9))->option_text("FACTOR");
    lCommand->add_flag("--drop-limits", lOptions->mDropLimits, "Take all joint limits away");
    lCommand->add_flag("--remove-dummies", lOptions->mRemoveDummies,
                       "Take out bones without degrees of freedom, where no other joint is moved by that");
    lCommand->add_flag("-q,--quiet", lOptions->mQuiet, "No notes");
    lCommand->footer("Renaming is done in the order of the call, so that A=C B=A C=B swaps two names. Motions name bones, too: a motion\n"
                     "of the old skeleton fits the new one as long as its names do.\n"
                     "\n"
                     "Examples:\n"
                     "  asf edit old.asf -o new.asf --rename lhip=left_hip --rename rhip=right_hip\n"
                     "  asf edit old.asf -o half.asf --scale 0.5 --drop-limits");
    lCommand->callback([lOptions, &pConsole] { RunEdit(*lOptions, pConsole); });
}

} // namespace asfapp
