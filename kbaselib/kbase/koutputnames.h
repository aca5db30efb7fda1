#ifndef KBASELIB_KBASE_KOUTPUTNAMES_H
#define KBASELIB_KBASE_KOUTPUTNAMES_H

#include <string>

/// \file
/// Names of the files that an output goes through on its way. All may throw std::bad_alloc.

namespace qexsdk
{

/// Names to try for a temporary file.
inline constexpr int kMaxTemporaryNames = 1000;

/// A name in the folder of \p pTarget that no other output of this process has.
std::string KTemporaryName(const std::string& pTarget);

/// What \p pPath stands for when its last part is a symbolic link, and links behind that, whether or not the file exists.
/// 0, or an errno.
int KFollowLinks(std::string& pPath);

} // namespace qexsdk

#endif
