#include <qexioplugins/motion/kqexsafenames.h>

namespace qexsdk
{

std::string KQexUniqueNames::Make(std::string_view pName)
{
    std::string lName(mMaxLength > 0 ? pName.substr(0, mMaxLength) : pName);
    if (mUsed.insert(lName).second)
    {
        return lName;
    }
    const std::string lStem = lName;
    int&              lNext = mNext.try_emplace(lStem, 2).first->second;
    do
    {
        const std::string lSuffix = "_" + std::to_string(lNext++);
        lName = lStem;
        if (mMaxLength > 0 && lName.size() + lSuffix.size() > mMaxLength)
        {
            lName.resize(mMaxLength - lSuffix.size());
        }
        lName += lSuffix;
    } while (!mUsed.insert(lName).second);
    return lName;
}

} // namespace qexsdk
