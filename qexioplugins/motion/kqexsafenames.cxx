#include <qexioplugins/motion/kqexsafenames.h>

#include <algorithm>

namespace qexsdk
{

namespace
{

/// \p pName cut to at most \p pLength bytes, at the start of a UTF-8 character.
std::string_view Cut(std::string_view pName, size_t pLength)
{
    if (pName.size() <= pLength)
    {
        return pName;
    }
    while (pLength > 0 && (static_cast<unsigned char>(pName[pLength]) & 0xC0) == 0x80)
    {
        --pLength;
    }
    return pName.substr(0, pLength);
}

} // namespace

std::string KQexUniqueNames::Make(std::string_view pName)
{
    std::string lName(mMaxLength > 0 ? Cut(pName, mMaxLength) : pName);
    if (mUsed.insert(lName).second)
    {
        return lName;
    }
    const std::string lStem = lName;
    int&              lNext = mNext.try_emplace(lStem, 2).first->second;
    do
    {
        const std::string lSuffix = "_" + std::to_string(lNext++);
        lName = mMaxLength > 0 ? Cut(lStem, mMaxLength - std::min(mMaxLength, lSuffix.size())) : lStem;
        lName += lSuffix;
    } while (!mUsed.insert(lName).second);
    return lName;
}

} // namespace qexsdk
