#include <apps/asf/batch/pathpattern.h>

#include <algorithm>
#include <vector>

namespace asfapp
{

namespace
{

constexpr const char* kWildcards = "*?[";

/// One step of a pattern: a wildcard, or a character.
struct KStep
{
    enum EKind
    {
        eCHARACTER,
        eSET,
        eANY_IN_NAME,
        eANY,
        eANY_FOLDERS
    };

    EKind            mKind = eCHARACTER;
    char             mCharacter = 0;
    std::string_view mSet; ///< What is between the brackets.
};

/// Reads the step at \p pAt and goes past it.
KStep NextStep(std::string_view pPattern, size_t& pAt)
{
    KStep lStep;
    lStep.mCharacter = pPattern[pAt++];
    if (lStep.mCharacter == '*')
    {
        const bool lIsDouble = pAt < pPattern.size() && pPattern[pAt] == '*';
        lStep.mKind = lIsDouble ? KStep::eANY : KStep::eANY_IN_NAME;
        const bool lIsName = pAt == 1 || pPattern[pAt - 2] == '/'; // A name by itself.
        pAt += lIsDouble ? 1 : 0;
        if (lIsDouble && lIsName && pAt < pPattern.size() && pPattern[pAt] == '/')
        {
            lStep.mKind = KStep::eANY_FOLDERS;
            ++pAt;
        }
    }
    const size_t lFirst = pAt + (pPattern.substr(pAt, 1) == "!" ? 2 : 1); // A bracket at the start of a set belongs to it.
    const size_t lEnd = lStep.mCharacter == '[' ? pPattern.find(']', std::min(lFirst, pPattern.size())) : std::string_view::npos;
    if (lStep.mCharacter == '?' || lEnd != std::string_view::npos)
    {
        lStep.mKind = KStep::eSET;
        lStep.mSet = lEnd != std::string_view::npos ? pPattern.substr(pAt, lEnd - pAt) : std::string_view("!");
        pAt = lEnd != std::string_view::npos ? lEnd + 1 : pAt;
    }
    return lStep;
}

/// The step **/: goes on after any of the slashes, or where it is.
void ReachFolders(std::string_view pPath, std::vector<char>& pReached)
{
    bool lIsReached = false;
    for (size_t i = 0; i < pReached.size(); ++i)
    {
        const bool lIsHere = pReached[i] != 0;
        pReached[i] = lIsHere || (lIsReached && pPath[i - 1] == '/') ? 1 : 0;
        lIsReached = lIsReached || lIsHere;
    }
}

bool IsInSet(char pCharacter, std::string_view pSet)
{
    const bool lIsNegated = !pSet.empty() && pSet.front() == '!';
    bool       lIsIn = false;
    for (size_t i = lIsNegated ? 1 : 0; i < pSet.size(); ++i)
    {
        if (i + 2 < pSet.size() && pSet[i + 1] == '-')
        {
            lIsIn = lIsIn || (pSet[i] <= pCharacter && pCharacter <= pSet[i + 2]);
            i += 2;
        }
        else
        {
            lIsIn = lIsIn || pSet[i] == pCharacter;
        }
    }
    return pCharacter != '/' && lIsIn != lIsNegated;
}

} // namespace

bool IsPattern(const std::string& pText)
{
    return pText.find_first_of(kWildcards) != std::string::npos;
}

std::string FolderOfPattern(const std::string& pPattern)
{
    const size_t lSlash = pPattern.rfind('/', pPattern.find_first_of(kWildcards));
    return lSlash == std::string::npos ? std::string() : lSlash == 0 ? std::string("/") : pPattern.substr(0, lSlash);
}

bool MatchesPattern(std::string_view pPath, std::string_view pPattern)
{
    // lReached[i]: the steps so far match the first i characters.
    std::vector<char> lReached(pPath.size() + 1, 0);
    lReached[0] = 1;
    for (size_t lAt = 0; lAt < pPattern.size();)
    {
        const KStep lStep = NextStep(pPattern, lAt);
        if (lStep.mKind == KStep::eANY_FOLDERS)
        {
            ReachFolders(pPath, lReached);
            continue;
        }
        const bool lRepeats = lStep.mKind == KStep::eANY || lStep.mKind == KStep::eANY_IN_NAME;
        char       lBefore = lReached[0]; // Whether the steps before matched one character less.
        lReached[0] = lRepeats && lReached[0] != 0 ? 1 : 0;
        for (size_t i = 1; i <= pPath.size(); ++i)
        {
            const char lCharacter = pPath[i - 1];
            const char lHere = lReached[i];
            const bool lFits = lStep.mKind == KStep::eANY           ? true
                               : lStep.mKind == KStep::eANY_IN_NAME ? lCharacter != '/'
                               : lStep.mKind == KStep::eSET         ? IsInSet(lCharacter, lStep.mSet)
                                                                    : lCharacter == lStep.mCharacter;
            lReached[i] = lRepeats ? (lHere != 0 || (lFits && lReached[i - 1] != 0)) : (lFits && lBefore != 0);
            lBefore = lHere;
        }
    }
    return lReached.back() != 0;
}

} // namespace asfapp
