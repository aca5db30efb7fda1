// Exchanges left and right of a motion and writes it as BVH: mirror walker.asf walk.amc mirrored.bvh

#include <qex/clip.h>
#include <qex/figure.h>

#include <cstdio>

using namespace qexsdk;

int main(int pCount, char** pArguments)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    KQexClip         lClip;
    const char*      lPath = pArguments[pCount - 1];
    if (pCount < 3 || !lFigure.Load({pArguments + 1, pArguments + pCount - 1}, {}, lReport) || lFigure.GetTakes().empty() ||
        !lFigure.MakeClip(&lFigure.GetTakes()[0], 0.0, {}, lClip, lReport) ||
        !KQexClipMirror(lClip, KQexMirrorPairs(lClip.GetData()), lClip) || // or what your program does with the arrays
        !lFigure.Assign(lClip, "mirrored", lReport) ||
        !KQexWriteFigure(lFigure, {{lPath, eOUTPUT_BVH, {}}}, {}, lReport)) // any number of files in any formats: all or none
    {
        for (const KQexFigureMessage& lMessage : lReport.GetMessages())
        {
            std::printf("%s: %s\n", lMessage.mPath.c_str(), lMessage.mText.c_str());
        }
        return 1;
    }
    std::printf("%s: %lld frames\n", lPath, lClip.GetFrameCount());
    return 0;
}
