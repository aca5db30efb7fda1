#include <apps/asf/picture/picture.h>

#include <unordered_set>
#include <utility>

namespace asfapp
{

namespace
{

/// Words for left and right. Single letters count only at the start or the end of a name.
const std::pair<const char*, const char*> kSideWords[] = {{"left", "right"}, {"Left", "Right"}, {"LEFT", "RIGHT"}};
const std::pair<const char*, const char*> kLetters[] = {{"l", "r"}, {"L", "R"}};

/// Whether \p pName with \p pTo in place of \p pFrom at \p pPosition is one of \p pKnown.
bool IsCounterpartKnown(const std::string& pName, size_t pPosition, const std::string& pFrom, const std::string& pTo,
                        const std::unordered_set<std::string>& pKnown)
{
    if (pPosition == std::string::npos || pName.compare(pPosition, pFrom.size(), pFrom) != 0)
    {
        return false;
    }
    std::string lOther = pName;
    lOther.replace(pPosition, pFrom.size(), pTo);
    return pKnown.count(lOther) != 0;
}

bool HasCounterpart(const std::string& pName, bool pLeft, const std::unordered_set<std::string>& pKnown)
{
    for (const auto& [lLeft, lRight] : kSideWords)
    {
        const std::string lFrom = pLeft ? lLeft : lRight;
        if (IsCounterpartKnown(pName, pName.find(lFrom), lFrom, pLeft ? lRight : lLeft, pKnown))
        {
            return true;
        }
    }
    for (const auto& [lLeft, lRight] : kLetters)
    {
        const std::string lFrom = pLeft ? lLeft : lRight;
        const std::string lTo = pLeft ? lRight : lLeft;
        if (!pName.empty() &&
            (IsCounterpartKnown(pName, 0, lFrom, lTo, pKnown) || IsCounterpartKnown(pName, pName.size() - 1, lFrom, lTo, pKnown)))
        {
            return true;
        }
    }
    return false;
}

} // namespace

std::vector<ESide> SidesOf(const std::vector<std::string>& pNames)
{
    const std::unordered_set<std::string> lKnown(pNames.begin(), pNames.end());
    std::vector<ESide>                    lSides;
    lSides.reserve(pNames.size());
    for (const std::string& lName : pNames)
    {
        lSides.push_back(HasCounterpart(lName, true, lKnown)    ? eSIDE_LEFT
                         : HasCounterpart(lName, false, lKnown) ? eSIDE_RIGHT
                                                                : eSIDE_MIDDLE);
    }
    return lSides;
}

} // namespace asfapp
