#include <apps/asf/picture/pictureoutput.h>

#include <apps/asf/figure/loading.h>
#include <apps/asf/outputname.h>
#include <apps/asf/outputs.h>
#include <apps/asf/picture/picturepng.h>
#include <kbaselib/kbase/kpath.h>

#include <cmath>
#include <vector>

namespace asfapp
{

namespace
{

bool IsPngName(const std::string& pPath)
{
    return qexsdk::KPathExtension(pPath) == ".png";
}

std::string PixelText(const qexsdk::KQexSvg& pSvg)
{
    return std::to_string(std::llround(pSvg.mWidth)) + " x " + std::to_string(std::llround(pSvg.mHeight)) + " pixels";
}

/// False after an error.
bool Draw(const KDrawFunction& pDraw, int pWidth, qexsdk::KQexSvg& pSvg, KConsole& pConsole)
{
    qexsdk::KQexFigureReport lReport;
    const bool               lOk = pDraw(pWidth, pSvg, lReport);
    PrintReport(lReport, pConsole);
    return lOk;
}

/// Reduces \p pSvg to the size that a PNG can have. False, after an error, if \p pWidth asks for more, or if too little would be left.
bool FitPng(const KDrawFunction& pDraw, int pWidth, const std::string& pPath, qexsdk::KQexSvg& pSvg, KConsole& pConsole)
{
    const int lMax = MaxPngWidth(pSvg.mWidth, pSvg.mHeight);
    if (lMax >= pSvg.mWidth)
    {
        return true;
    }
    if (pWidth == 0 && lMax >= kMinPictureWidth)
    {
        const std::string lWanted = PixelText(pSvg);
        if (!Draw(pDraw, lMax, pSvg, pConsole))
        {
            return false;
        }
        pConsole.Message(eNOTE, pPath, 0, "reduced from " + lWanted + ", which is too large for a PNG, to " + PixelText(pSvg));
        return true;
    }
    const std::string lHint = lMax >= kMinPictureWidth ? "use --width " + std::to_string(lMax) + " or less, " : "";
    pConsole.Message(eERROR, pPath, 0, PixelText(pSvg) + " are too large for a PNG: " + lHint + "draw fewer frames, or write .svg");
    pConsole.Raise(eEXIT_USAGE);
    return false;
}

/// Writes and reports the picture's bytes.
void WriteBytes(const std::string& pContents, const std::string& pPath, const std::string& pBytes, KConsole& pConsole)
{
    if (WriteOutput(pPath, pBytes, pConsole) && pPath != "-")
    {
        ReportAfterCommit([&] { ReportWritten(pPath, pContents, pConsole); });
    }
}

void WritePng(const KDrawFunction& pDraw, const std::string& pContents, int pWidth, const std::string& pPath, qexsdk::KQexSvg& pSvg,
              KConsole& pConsole)
{
    if (!FitPng(pDraw, pWidth, pPath, pSvg, pConsole))
    {
        return;
    }
    std::string       lPng;
    const std::string lError = DrawPng(pSvg, lPng);
    if (!lError.empty())
    {
        pConsole.Message(eERROR, pPath, 0, "cannot be drawn: " + lError + "; write .svg");
        pConsole.Raise(eEXIT_SYSTEM);
        return;
    }
    WriteBytes(pContents, pPath, lPng, pConsole);
}

} // namespace

bool CheckPictureName(const std::string& pPath, bool pHasPng, KConsole& pConsole)
{
    if (IsPngName(pPath) && !pHasPng)
    {
        pConsole.Fail(eEXIT_USAGE,
                      "--output: this build writes no PNG: it was made without librsvg; write .svg: type -o " + WithEnding(pPath, ".svg"));
        return false;
    }
    std::vector<std::string> lEndings{".svg"};
    if (pHasPng)
    {
        lEndings.emplace_back(".png");
    }
    return CheckOutputName(pPath, "draw", lEndings, pConsole);
}

void WritePicture(const KDrawFunction& pDraw, const std::string& pContents, int pWidth, const std::string& pPath, KConsole& pConsole)
{
    qexsdk::KQexSvg lSvg;
    if (!Draw(pDraw, pWidth, lSvg, pConsole))
    {
        return;
    }
    if (IsPngName(pPath))
    {
        WritePng(pDraw, pContents, pWidth, pPath, lSvg, pConsole);
    }
    else
    {
        WriteBytes(pContents, pPath, lSvg.mText, pConsole);
    }
}

} // namespace asfapp
