#ifndef APPS_ASF_FIGURE_SKELETONFINDER_H
#define APPS_ASF_FIGURE_SKELETONFINDER_H

#include <apps/asf/console.h>
#include <apps/asf/inputfile.h>

#include <string>

namespace asfapp
{

/// The skeleton that a motion given without one belongs to: the file that its header names; else, of the ASF files beside it, the
/// one with the longest name that begins the motion's own name (01.asf for 01_01.amc); else the only one there. Case is ignored.
/// Says which it took. "" after an error that lists the candidates.
std::string FindSkeleton(const KInputFile& pMotion, KConsole& pConsole);

} // namespace asfapp

#endif
