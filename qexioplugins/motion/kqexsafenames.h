#ifndef QEXIOPLUGINS_MOTION_KQEXSAFENAMES_H
#define QEXIOPLUGINS_MOTION_KQEXSAFENAMES_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace qexsdk
{

/// Makes names unique among all names it has made. Linear in their total length, even when all are the same.
class QEX_API KQexUniqueNames
{
public:
    /// \p pMaxLength: longest name allowed, in bytes; 0: no limit.
    explicit KQexUniqueNames(size_t pMaxLength = 0) : mMaxLength(pMaxLength) {}

    /// \p pName, cut to the maximum length between two UTF-8 characters, with "_2", "_3", … appended if that name was made before.
    std::string Make(std::string_view pName);

private:
    size_t                               mMaxLength;
    std::unordered_set<std::string>      mUsed;
    std::unordered_map<std::string, int> mNext; ///< Next suffix to try for a name requested more than once.
};

/// \p pName, or \p pIfEmpty if it is empty, with each character that \p pIsAllowed rejects replaced by an underscore.
template <typename TIsAllowed>
std::string MakeSafeName(std::string_view pName, std::string_view pIfEmpty, const TIsAllowed& pIsAllowed)
{
    std::string lName(pName.empty() ? pIfEmpty : pName);
    for (char& lC : lName)
    {
        if (!pIsAllowed(lC))
        {
            lC = '_';
        }
    }
    return lName;
}

} // namespace qexsdk

#endif
