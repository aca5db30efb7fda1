#ifndef APPS_ASF_OUTPUTNAME_H
#define APPS_ASF_OUTPUTNAME_H

#include <apps/asf/console.h>

#include <string>
#include <vector>

namespace asfapp
{

/// False, after an error that says what to type instead, if the ending of \p pPath is that of another format than those that are
/// written: a file named x.png that holds SVG opens nowhere. True for an unknown ending, for none, and for "-".
/// \param pWriter who writes: a command, perhaps with an option
/// \param pEndings endings of the formats that it writes, with their dots; the first is suggested
bool CheckOutputName(const std::string& pPath, const std::string& pWriter, const std::vector<std::string>& pEndings, KConsole& pConsole);

/// \p pPath with \p pEnding, such as ".svg", in place of its own.
std::string WithEnding(const std::string& pPath, const std::string& pEnding);

} // namespace asfapp

#endif
