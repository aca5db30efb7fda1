#include <qexioplugins/motion/kqexsides.h>

#include <kbaselib/kbase/kletters.h>

#include <initializer_list>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace qexsdk
{

namespace
{

using KKnownNames = std::unordered_set<std::string>;

/// Words for left and right. Single letters count only at the start or the end of a name, or as a word.
const std::pair<const char*, const char*> kSideWords[] = {{"left", "right"}, {"Left", "Right"}, {"LEFT", "RIGHT"}};
const std::pair<char, char>               kSideLetters[] = {{'l', 'r'}, {'L', 'R'}};

bool IsLetter(char pCharacter)
{
    const char lLower = KToLower(pCharacter);
    return lLower >= 'a' && lLower <= 'z';
}

/// The part of a name that two counterparts share apart from the side: without the prefix, and without the number at the end, which
/// some programs give to every bone.
std::string Stem(const std::string& pName)
{
    const std::string_view lName = std::string_view(pName).substr(pName.rfind(':') + 1);
    const size_t           lLast = lName.find_last_not_of("0123456789._- ");
    return std::string(lLast == std::string_view::npos ? lName : lName.substr(0, lLast + 1));
}

/// Whether \p pStem with \p pTo in place of the \p pSize characters at \p pPosition is one of \p pKnown.
bool IsKnown(const std::string& pStem, size_t pPosition, size_t pSize, std::string_view pTo, const KKnownNames& pKnown)
{
    std::string lOther = pStem;
    lOther.replace(pPosition, pSize, pTo);
    return pKnown.count(lOther) != 0;
}

/// Position of the first \p pLetter that has no letter next to it; npos without one.
size_t FindWord(const std::string& pStem, char pLetter)
{
    for (size_t lAt = pStem.find(pLetter); lAt != std::string::npos; lAt = pStem.find(pLetter, lAt + 1))
    {
        const bool lStarts = lAt == 0 || !IsLetter(pStem[lAt - 1]);
        if (lStarts && (lAt + 1 == pStem.size() || !IsLetter(pStem[lAt + 1])))
        {
            return lAt;
        }
    }
    return std::string::npos;
}

bool HasCounterpart(const std::string& pStem, bool pLeft, const KKnownNames& pKnown)
{
    for (const auto& [lLeft, lRight] : kSideWords)
    {
        const std::string_view lFrom = pLeft ? lLeft : lRight;
        const size_t           lAt = pStem.find(lFrom);
        if (lAt != std::string::npos && IsKnown(pStem, lAt, lFrom.size(), pLeft ? lRight : lLeft, pKnown))
        {
            return true;
        }
    }
    for (const auto& [lLeft, lRight] : kSideLetters)
    {
        const char             lFrom = pLeft ? lLeft : lRight;
        const std::string_view lTo(pLeft ? &lRight : &lLeft, 1);
        for (const size_t lAt : {size_t(0), pStem.size() - 1, FindWord(pStem, lFrom)})
        {
            if (lAt < pStem.size() && pStem[lAt] == lFrom && IsKnown(pStem, lAt, 1, lTo, pKnown))
            {
                return true;
            }
        }
    }
    return false;
}

} // namespace

std::vector<KQexSide> SidesOf(const std::vector<std::string>& pNames)
{
    std::vector<std::string> lStems;
    lStems.reserve(pNames.size());
    for (const std::string& lName : pNames)
    {
        lStems.push_back(Stem(lName));
    }
    const KKnownNames     lKnown(lStems.begin(), lStems.end());
    std::vector<KQexSide> lSides;
    lSides.reserve(lStems.size());
    for (const std::string& lStem : lStems)
    {
        lSides.push_back(HasCounterpart(lStem, true, lKnown)    ? eSIDE_LEFT
                         : HasCounterpart(lStem, false, lKnown) ? eSIDE_RIGHT
                                                                : eSIDE_MIDDLE);
    }
    return lSides;
}

unsigned SideColor(KQexSide pSide)
{
    return pSide == eSIDE_LEFT ? 0xe2725b : pSide == eSIDE_RIGHT ? 0x2f87b7 : 0x5b6070;
}

} // namespace qexsdk
