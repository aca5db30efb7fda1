#ifndef APPS_ASF_COMMANDS_FRAMELIST_H
#define APPS_ASF_COMMANDS_FRAMELIST_H

#include <apps/asf/console.h>

#include <string>
#include <vector>

namespace asfapp
{

/// Picks frames of a motion. \p pText is a comma-separated list of frame numbers and ranges: 1,100-200,last. "first" and "last" may
/// replace numbers; a range may have a step, 1-last:10. Numbers may be negative.
/// \param pNumbers the motion's frame numbers, ascending
/// \param pIndices receives the indices of the picked frames in \p pNumbers, in the order of the list
/// \return "", or an error text; pIndices is empty then
std::string PickFrames(const std::string& pText, const std::vector<long long>& pNumbers, std::vector<size_t>& pIndices);

/// True if \p pIndices, not empty, are one range without gaps, as the option \p pOption needs it. Else false, after an error.
bool CheckOneRange(const std::vector<size_t>& pIndices, KConsole& pConsole, const char* pOption = "--fps");

} // namespace asfapp

#endif
