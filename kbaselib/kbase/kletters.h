#ifndef KBASELIB_KBASE_KLETTERS_H
#define KBASELIB_KBASE_KLETTERS_H

#include <algorithm>
#include <string>
#include <string_view>

/// \file
/// Letter case of the words in files: A to Z only, independent of the locale.

namespace qexsdk
{

/// The lower-case letter for A to Z; any other character unchanged.
constexpr char KToLower(char pCharacter)
{
    return pCharacter >= 'A' && pCharacter <= 'Z' ? static_cast<char>(pCharacter - 'A' + 'a') : pCharacter;
}

/// \p pText in lower case.
inline std::string KToLower(std::string pText)
{
    for (char& lCharacter : pText)
    {
        lCharacter = KToLower(lCharacter);
    }
    return pText;
}

/// Whether two texts are equal when case is ignored.
inline bool KEqualsIgnoreCase(std::string_view pFirst, std::string_view pSecond)
{
    return std::equal(pFirst.begin(), pFirst.end(), pSecond.begin(), pSecond.end(),
                      [](char pA, char pB) { return KToLower(pA) == KToLower(pB); });
}

} // namespace qexsdk

#endif
