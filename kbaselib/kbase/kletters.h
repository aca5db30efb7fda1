#ifndef KBASELIB_KBASE_KLETTERS_H
#define KBASELIB_KBASE_KLETTERS_H

#include <algorithm>
#include <string>
#include <string_view>

/// \file
/// Capital and small letters of the words that files are made of: A to Z alone, whatever the process's locale says.

namespace qexsdk
{

/// The small letter of A to Z; any other character is returned as it is.
constexpr char KToLower(char pCharacter)
{
    return pCharacter >= 'A' && pCharacter <= 'Z' ? static_cast<char>(pCharacter - 'A' + 'a') : pCharacter;
}

/// \p pText with KToLower() of each of its characters.
inline std::string KToLower(std::string pText)
{
    for (char& lCharacter : pText)
    {
        lCharacter = KToLower(lCharacter);
    }
    return pText;
}

/// Whether two texts differ in nothing but the case of letters.
inline bool KEqualsFolded(std::string_view pFirst, std::string_view pSecond)
{
    return std::equal(pFirst.begin(), pFirst.end(), pSecond.begin(), pSecond.end(),
                      [](char pA, char pB) { return KToLower(pA) == KToLower(pB); });
}

} // namespace qexsdk

#endif
