// Reads figures of any format with the installed library; fails when one of them cannot be read or has no root.

#include <qexfigure/kqexfigure.h>

#include <cstdio>

int main(int pCount, char** pArguments)
{
    for (int lIndex = 1; lIndex < pCount; ++lIndex)
    {
        qexsdk::KQexFigure       lFigure;
        qexsdk::KQexFigureReport lReport;
        if (!lFigure.Load({pArguments[lIndex]}, qexsdk::KQexFigureOptions(), lReport) || lFigure.GetJoints().empty())
        {
            return 1;
        }
        std::printf("%s: %d joints\n", pArguments[lIndex], static_cast<int>(lFigure.GetJoints().size()));
    }
    return pCount > 1 ? 0 : 1;
}
