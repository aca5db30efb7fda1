#ifndef KBASELIB_KBASE_KPATH_H
#define KBASELIB_KBASE_KPATH_H

#include <kbaselib/kbase/kletters.h>

#include <string>

namespace qexsdk
{

/// The file name in \p pPath without folder and extension; folders end at / or \. A leading dot does not start an extension.
inline std::string KPathStem(const std::string& pPath)
{
    const size_t      lSlash = pPath.find_last_of("/\\");
    const std::string lName = lSlash == std::string::npos ? pPath : pPath.substr(lSlash + 1);
    const size_t      lPoint = lName.rfind('.');
    return lPoint == std::string::npos || lPoint == 0 ? lName : lName.substr(0, lPoint);
}

/// The extension of \p pPath in lower case with its dot, "" without one; folders end at /.
inline std::string KPathExtension(const std::string& pPath)
{
    const size_t lSlash = pPath.find_last_of('/');
    const size_t lDot = pPath.find_last_of('.');
    const bool   lHas = lDot != std::string::npos && (lSlash == std::string::npos || lDot > lSlash);
    return lHas ? KToLower(pPath.substr(lDot)) : std::string();
}

} // namespace qexsdk

#endif
