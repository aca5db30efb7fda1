#ifndef APPS_ASF_REPORT_MOTIONINFO_H
#define APPS_ASF_REPORT_MOTIONINFO_H

#include <apps/asf/console.h>
#include <qexfigure/check/kqexmotionsurvey.h>

namespace asfapp
{

/// Prints a summary of a motion and the table of its degrees of freedom, as text.
void WriteMotionInfo(const qexsdk::KQexFigureFiles& pFiles, const qexsdk::KQexMotionSurvey& pSurvey, KConsole& pConsole);

/// The same as one JSON object on one line (docs/json.md), also for a read that failed.
void WriteMotionJson(const qexsdk::KQexFigureFiles& pFiles, const qexsdk::KQexMotionSurvey& pSurvey, KConsole& pConsole);

} // namespace asfapp

#endif
