#ifndef APPS_ASF_REPORT_FIGUREINFO_H
#define APPS_ASF_REPORT_FIGUREINFO_H

#include <apps/asf/console.h>
#include <qexfigure/check/kqexfiguresurvey.h>

namespace asfapp
{

/// Prints a summary of a figure, its takes and its joints, as text.
void WriteFigureInfo(const qexsdk::KQexFigureFile& pFile, const qexsdk::KQexFigureSurvey& pSurvey, KConsole& pConsole);

/// The same as one JSON object on one line (docs/json.md), also for a read that failed.
void WriteFigureJson(const qexsdk::KQexFigureFile& pFile, const qexsdk::KQexFigureSurvey& pSurvey, KConsole& pConsole);

} // namespace asfapp

#endif
