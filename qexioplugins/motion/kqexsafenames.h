#ifndef QEXIOPLUGINS_MOTION_KQEXSAFENAMES_H
#define QEXIOPLUGINS_MOTION_KQEXSAFENAMES_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace qexsdk
{

/// Gives out names that no other name given out equals. Linear in all names together, also when every one is the same.
class QEX_API KQexUniqueNames
{
public:
    /// \p pMaxLength: characters that a name may have at most; 0: any number.
    explicit KQexUniqueNames(size_t pMaxLength = 0) : mMaxLength(pMaxLength) {}

    /// \p pName, cut to the greatest length, and with "_2", "_3", … behind it when it is taken. It is taken from now on.
    std::string Make(std::string_view pName);

    /// Whether \p pName was given out.
    bool IsTaken(const std::string& pName) const { return mTaken.count(pName) != 0; }

private:
    size_t                               mMaxLength;
    std::unordered_set<std::string>      mTaken;
    std::unordered_map<std::string, int> mNext; ///< Number to try next behind a name that was asked for more than once.
};

/// \p pName with each character that \p pIsAllowed refuses as an underscore, and \p pIfEmpty for an empty one.
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
