#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/converter.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/outputs.h>
#include <apps/asf/report/filestamp.h>
#include <apps/asf/report/messagelog.h>
#include <kbaselib/kbase/kprocess.h>
#include <qexfigure/check/kqexsizehint.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <new>

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

/// Notes \p pInputs, as they are before they are read, so that a change meanwhile can be seen.
void DescribeInputs(const std::vector<std::string>& pInputs, KJson& pReport)
{
    for (const std::string& lInput : pInputs)
    {
        KFileStamp lStamp;
        ReadStamp(lInput, lStamp);
        pReport["inputs"].push_back(JsonStamped(lInput, lStamp));
    }
}

/// Converts, and describes in \p pReport, unless it is null, what was read and written.
void Convert(KConvertOptions& pOptions, KJson* pReport, KConsole& pConsole)
{
    if (pOptions.mMaxMemory > 0 && !qexsdk::KLimitMemory(pOptions.mMaxMemory))
    {
        throw std::bad_alloc();
    }
    qexsdk::KQexFigureFiles lFiles;
    if (!CheckOutputs(pOptions, pOptions.mFiles, pConsole) || !OpenFigure(lFiles, pOptions.mFiles, pOptions.mMotion, pConsole))
    {
        return;
    }
    std::vector<std::string> lInputs = PathsOf(lFiles);
    if (!pOptions.mSkeleton.empty())
    {
        lInputs.push_back(pOptions.mSkeleton);
    }
    if (pReport != nullptr)
    {
        DescribeInputs(lInputs, *pReport);
        if (lFiles.mFigure.GetFormat() == qexsdk::eFIGURE_ASF)
        {
            (*pReport)["skeleton"] = JsonPath(lFiles.mFigure.GetPath());
        }
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
        KConverter lConverter(pOptions, lFigure, lInputs, pConsole);
        if (lConverter.Run() && pReport != nullptr)
        {
            lConverter.Describe(*pReport);
        }
    }
}

/// Converts with the messages in the report, which it prints.
void ConvertWithJson(KConvertOptions& pOptions, KConsole& pConsole)
{
    KMessageLog lLog;
    KJson       lReport = {
              {"schema", kJsonSchema}, {"inputs", KJson::array()}, {"skeleton", nullptr}, {"takes", KJson::array()}, {"outputs", KJson::array()}};
    pConsole.Collect(&lLog);
    try
    {
        Convert(pOptions, &lReport, pConsole);
    }
    catch (const std::bad_alloc&)
    {
        pConsole.Fail(eEXIT_SYSTEM, "out of memory");
    }
    pConsole.Collect(nullptr);
    lReport["status"] = pConsole.GetExit();
    lReport["messages"] = lLog.ToJson();
    PrintJsonLine(lReport, pConsole);
}

void RunConvert(KConvertOptions& pOptions, KConsole& pConsole)
{
    if (!ParseConvertOptions(pOptions, pConsole))
    {
        return;
    }
    if (pOptions.mJson)
    {
        ConvertWithJson(pOptions, pConsole);
        return;
    }
    Convert(pOptions, nullptr, pConsole);
}

} // namespace

void SetUpConvert(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KConvertOptions>();
    AddConvertOptions(pCommand, *lOptions);
    pCommand.footer("Lengths are centimetres in BVH, unless --units says otherwise, and metres in glTF. Several AMC files become several "
                    "animations of one glTF file.\n"
                    "ASF and glTF keep degrees of freedom and limits; BVH cannot hold them. NPZ holds arrays of a take's transforms,\n"
                    "CSV the positions that asf positions writes.\n"
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
    pCommand.callback([lOptions, &pConsole] { RunConvert(*lOptions, pConsole); });
}

} // namespace asfapp
