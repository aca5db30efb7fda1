#include <qexfigure/output/kqexoutputerror.h>

namespace qexsdk
{

std::string KQexDisplayOutput(const std::string& pPath)
{
    return pPath == "-" ? "standard output" : pPath;
}

bool KQexReportOutputError(const KOutputFile& pOut, const std::string& pPath, KQexFigureReport& pReport)
{
    return !pOut.IsBrokenPipe() && pReport.Fail(eFIGURE_SYSTEM, KQexDisplayOutput(pPath), "cannot be written: " + pOut.GetReason());
}

bool KQexCheckArchive(KOutputFile& pOut, const std::string& pPath, const std::string& pOption, KQexFigureReport& pReport)
{
    if (pOut.CanWriteAt())
    {
        return true;
    }
    pOut.Discard();
    return pReport.Fail(eFIGURE_USAGE, "",
                        (pOption.empty() ? "" : pOption + ": ") + "NPZ is written to a file, not to " + KQexDisplayOutput(pPath) +
                            ": its arrays grow side by side");
}

} // namespace qexsdk
