#ifndef APPS_ASF_FIGURE_FRAMELIST_H
#define APPS_ASF_FIGURE_FRAMELIST_H

#include <string>
#include <vector>

namespace asfapp
{

/// Picks frames out of a motion. \p pText is a list of frame numbers and ranges with commas between: 1,100-200,last. "first" and
/// "last" stand for numbers; a range may have a step, 1-last:10. Numbers may be negative.
/// \param pNumbers the motion's frame numbers, ascending
/// \param pIndices gets the places of the picked frames in \p pNumbers, in the order of the list
/// \return "", or what is wrong with the list; pIndices is empty then
std::string PickFrames(const std::string& pText, const std::vector<long long>& pNumbers, std::vector<size_t>& pIndices);

} // namespace asfapp

#endif
