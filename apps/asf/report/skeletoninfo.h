#ifndef APPS_ASF_REPORT_SKELETONINFO_H
#define APPS_ASF_REPORT_SKELETONINFO_H

#include <apps/asf/console.h>
#include <apps/asf/figure/skeletonfile.h>
#include <apps/asf/inputfile.h>

namespace asfapp
{

/// Prints what a skeleton is and its tree, a line a bone, for people.
void WriteSkeletonInfo(const KInputFile& pFile, const KSkeletonFile& pSkeleton, KConsole& pConsole);

/// Prints everything the skeleton's model holds as one JSON object on one line (docs/json.md), also for a read that failed.
void WriteSkeletonJson(const KInputFile& pFile, const KSkeletonFile& pSkeleton, KConsole& pConsole);

} // namespace asfapp

#endif
