#ifndef APPS_ASF_REPORT_SKELETONINFO_H
#define APPS_ASF_REPORT_SKELETONINFO_H

#include <apps/asf/console.h>
#include <apps/asf/figure/point.h>
#include <qexfigure/check/kqexskeletonfile.h>

namespace asfapp
{

/// Prints a summary of a skeleton and its bone tree, one line per bone, as text.
void WriteSkeletonInfo(const qexsdk::KQexFigureFile& pFile, const qexsdk::KQexSkeletonFile& pSkeleton, KConsole& pConsole);

/// Prints the full model as one JSON object on one line (docs/json.md), also for a failed read.
void WriteSkeletonJson(const qexsdk::KQexFigureFile& pFile, const qexsdk::KQexSkeletonFile& pSkeleton, KConsole& pConsole);

} // namespace asfapp

#endif
