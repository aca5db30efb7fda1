#include <apps/asf/outputs.h>

#include <apps/asf/figure/loading.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kbase/ksystem.h>
#include <qexfigure/output/kqexoutputerror.h>

namespace asfapp
{

namespace
{

/// True if both paths lead to the same file, also through links. False for "-" and for files that do not exist.
bool IsSameFile(const std::string& pOne, const std::string& pOther)
{
    qexsdk::KFileInfo lOne;
    qexsdk::KFileInfo lOther;
    return pOne != "-" && pOther != "-" && qexsdk::KGetFileInfo(pOne, lOne) && qexsdk::KGetFileInfo(pOther, lOther) &&
           lOne.mDevice == lOther.mDevice && lOne.mIndex == lOther.mIndex;
}

} // namespace

void InstallSignals()
{
    qexsdk::KSystemInUse().mCatchEnd(qexsdk::KOutputFile::RemovePending);
}

bool CheckOutput(const std::string& pOutput, const std::vector<std::string>& pInputs, KConsole& pConsole)
{
    for (const std::string& lInput : pInputs)
    {
        if (IsSameFile(pOutput, lInput))
        {
            pConsole.Message(eERROR, pOutput, 0, "is also an input (" + lInput + "): choose another output");
            pConsole.Raise(eEXIT_USAGE);
            return false;
        }
    }
    return true;
}

void ReportOutputError(const qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole)
{
    qexsdk::KQexFigureReport lReport;
    qexsdk::KQexReportOutputError(pOut, pPath, lReport);
    PrintReport(lReport, pConsole);
}

bool OpenOutput(qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole)
{
    if (pOut.Open(pPath.c_str()))
    {
        return true;
    }
    ReportOutputError(pOut, pPath, pConsole);
    return false;
}

bool CheckArchive(qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole)
{
    qexsdk::KQexFigureReport lReport;
    const bool               lOk = qexsdk::KQexCheckArchive(pOut, pPath, kOutputOption, lReport);
    PrintReport(lReport, pConsole);
    return lOk;
}

bool CloseOutput(qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole)
{
    if (pOut.Close())
    {
        return true;
    }
    ReportOutputError(pOut, pPath, pConsole);
    return false;
}

void ReportWritten(const std::string& pPath, const std::string& pContents, KConsole& pConsole)
{
    pConsole.Report("wrote " + qexsdk::KQexDisplayOutput(pPath) + (pContents.empty() ? "" : ": ") + pContents);
}

std::string FramesText(long long pFrames, double pRate)
{
    return CountText(pFrames, "frame", "frames") + (pRate > 0 ? ", " + ShortText(pRate) + " a second" : "");
}

bool WriteOutput(const std::string& pPath, const std::string& pBytes, KConsole& pConsole)
{
    qexsdk::KOutputFile lOut;
    if (!OpenOutput(lOut, pPath, pConsole))
    {
        return false;
    }
    lOut.Write(pBytes.data(), pBytes.size());
    return CloseOutput(lOut, pPath, pConsole);
}

} // namespace asfapp
