#ifndef APPS_ASF_FIGURE_SKELETONFINDER_H
#define APPS_ASF_FIGURE_SKELETONFINDER_H

#include <apps/asf/console.h>
#include <apps/asf/inputfile.h>

#include <string>

namespace asfapp
{

/// Finds the skeleton of a motion, among the ASF files in its folder: the one named in its header; else the one whose name is the
/// longest prefix of the motion's (01.asf for 01_01.amc); else the only one. Case is ignored. Prints a note with the choice.
/// "" after an error that lists the candidates.
std::string FindSkeleton(const KInputFile& pMotion, KConsole& pConsole);

} // namespace asfapp

#endif
