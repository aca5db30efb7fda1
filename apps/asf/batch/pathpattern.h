#ifndef APPS_ASF_BATCH_PATHPATTERN_H
#define APPS_ASF_BATCH_PATHPATTERN_H

#include <string>
#include <string_view>

namespace asfapp
{

/// True if \p pText has one of the wildcards *, ? and [.
bool IsPattern(const std::string& pText);

/// The folder part of \p pPattern before its first wildcard, without the last slash; empty if it has none.
std::string FolderOfPattern(const std::string& pPattern);

/// Whether \p pPath matches: * stands for any characters but a slash, ** for any, **/ for any folders or none, ? for one character but a
/// slash, [a-z] and [!a-z] for one of a set.
/// An opening bracket without a closing one stands for itself. Takes time in proportion to the product of both lengths.
bool MatchesPattern(std::string_view pPath, std::string_view pPattern);

} // namespace asfapp

#endif
