#ifndef KBASELIB_KBASE_KOUTPUTNAMES_H
#define KBASELIB_KBASE_KOUTPUTNAMES_H

#include <string>

/// \file
/// Names of the files that an output writes. All may throw std::bad_alloc.

namespace qexsdk
{

/// How many names to try for a temporary file.
inline constexpr int kMaxTemporaryNames = 1000;

/// A name in the folder of \p pTarget, unique in this process.
std::string KTemporaryName(const std::string& pTarget);

/// Replaces \p pPath by its target while the last part is a symbolic link; the file itself need not exist. \return 0, or an errno
int KFollowLinks(std::string& pPath);

} // namespace qexsdk

#endif
