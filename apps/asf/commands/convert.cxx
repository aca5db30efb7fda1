#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/converter.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/outputs.h>
#include <qexfigure/check/kqexsizehint.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace asfapp
{

namespace
{

/// False, with an error, if an output is one of \p pInputs. First called before reading, so that the error comes at once.
bool CheckOutputs(const KConvertOptions& pOptions, const std::vector<std::string>& pInputs, KConsole& pConsole)
{
    for (const KConvertOutput& lOutput : pOptions.mTargets)
    {
        if (!CheckOutput(lOutput.mPath, pInputs, pConsole))
        {
            return false;
        }
    }
    return true;
}

void RunConvert(KConvertOptions& pOptions, KConsole& pConsole)
{
    qexsdk::KQexFigureFiles lFiles;
    if (!ParseConvertOptions(pOptions, pConsole) || !CheckOutputs(pOptions, pOptions.mFiles, pConsole) ||
        !OpenFigure(lFiles, pOptions.mFiles, pOptions.mMotion, pConsole))
    {
        return;
    }
    std::vector<std::string> lInputs = PathsOf(lFiles);
    if (!pOptions.mSkeleton.empty())
    {
        lInputs.push_back(pOptions.mSkeleton);
    }
    qexsdk::KQexFigure lFigure;
    if (!CheckOutputs(pOptions, lInputs, pConsole) || !LoadFigure(lFigure, lFiles, FigureOptions(pOptions), pConsole))
    {
        return;
    }
    if (pOptions.mWorld.mScale == 1)
    {
        PrintSizeHint(lFiles.mFigure, qexsdk::SizeHint(lFiles.mFigure, lFigure, kScaleOption), pConsole);
    }
    SetFileUnit(pOptions.mWorld, lFiles, lFigure);
    if (CheckLengthUnit(pOptions.mWorld, pOptions.mLengthUnit, true, pConsole))
    {
        HoldInPlace(pOptions.mWorld, lFigure);
        KConverter(pOptions, lFigure, lInputs, pConsole).Run();
    }
}

} // namespace

void AddConvertCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KConvertOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("convert", "Convert between ASF and AMC, BVH and glTF, and to NumPy arrays");
    AddConvertOptions(*lCommand, *lOptions);
    lCommand->footer("Lengths are centimetres in BVH, unless --units says otherwise, and metres in glTF. Several AMC files become several "
                     "animations of one glTF file.\n"
                     "ASF and glTF keep degrees of freedom and limits; BVH cannot hold them. NPZ holds arrays of a take's transforms.\n"
                     "\n"
                     "Examples:\n"
                     "  asf convert walk.amc -o walk.glb\n"
                     "  asf convert walker.asf walk.amc run.amc -o {name}.bvh --fps 30\n"
                     "  asf convert dance.bvh -o dance.asf dance.amc\n"
                     "  asf convert dance.bvh --skeleton performer.asf -o dance.amc\n"
                     "  asf convert old.asf -o new.asf --length-unit 1\n"
                     "  asf convert walk.amc -o walk.bvh --up z --units m --in-place\n"
                     "  asf convert walk.amc -o walk.npz --preset motion-imitation\n"
                     "  asf convert walk.amc -o part.bvh --start 1.5 --end 300f --every 4");
    lCommand->callback([lOptions, &pConsole] { RunConvert(*lOptions, pConsole); });
}

} // namespace asfapp
