#include <apps/asf/figure/nametemplate.h>

#include <qexioplugins/motion/kqexsafenames.h>

#include <algorithm>
#include <functional>
#include <iterator>

namespace asfapp
{

namespace
{

const char* const kWords[] = {"name", "take", "skeleton", "n", "-take"};

/// Calls \p pSee with every word in braces, and appends what that returns and the text around to a new name.
std::string Replace(const std::string& pName, const std::function<std::string(const std::string&)>& pSee)
{
    std::string lResult;
    size_t      lPosition = 0;
    for (size_t lOpen = pName.find('{'); lOpen != std::string::npos; lOpen = pName.find('{', lPosition))
    {
        if (pName.compare(lOpen, 2, "{{") == 0)
        {
            lResult += pName.substr(lPosition, lOpen + 1 - lPosition);
            lPosition = lOpen + 2;
            continue;
        }
        const size_t lClose = pName.find('}', lOpen);
        if (lClose == std::string::npos)
        {
            break;
        }
        lResult += pName.substr(lPosition, lOpen - lPosition) + pSee(pName.substr(lOpen + 1, lClose - lOpen - 1));
        lPosition = lClose + 1;
    }
    return lResult + pName.substr(lPosition);
}

} // namespace

bool CheckNameTemplate(const std::string& pName, KConsole& pConsole)
{
    std::string lUnknown;
    bool        lOk = true;
    Replace(pName,
            [&](const std::string& pWord)
            {
                const bool lKnown = std::find(std::begin(kWords), std::end(kWords), pWord) != std::end(kWords);
                lUnknown = lOk && !lKnown ? pWord : lUnknown;
                lOk = lOk && lKnown;
                return std::string();
            });
    if (!lOk)
    {
        pConsole.Fail(eEXIT_USAGE, "--output: " + pName + " has {" + lUnknown + "}; known are {name}, {take}, {skeleton} and {n}");
    }
    return lOk;
}

bool NamesTake(const std::string& pName)
{
    bool lNames = false;
    Replace(pName,
            [&](const std::string& pWord)
            {
                lNames = lNames || pWord == "name" || pWord == "take" || pWord == "-take" || pWord == "n";
                return std::string();
            });
    return lNames;
}

std::string FillName(const std::string& pName, const KNameWords& pWords)
{
    return Replace(pName,
                   [&](const std::string& pWord)
                   {
                       return pWord == "skeleton" ? pWords.mSkeleton
                              : pWord == "-take"  ? pWords.mSuffix
                              : pWord == "n"      ? std::to_string(pWords.mNumber)
                                                  : pWords.mTake;
                   });
}

std::string FileNamePart(const std::string& pText, const char* pIfEmpty)
{
    const std::string lPart = qexsdk::MakeSafeName(pText, pIfEmpty,
                                                   [](char pC)
                                                   {
                                                       const unsigned char lByte = static_cast<unsigned char>(pC);
                                                       return pC != '/' && lByte >= 0x20 && lByte != 0x7f;
                                                   });
    // "-" alone would be standard output, "." and ".." folders.
    return lPart == "-" || lPart == "." || lPart == ".." ? "_" : lPart;
}

} // namespace asfapp
