#include <qexioplugins/acclaim/kqexskeletonmatch.h>

#include <algorithm>

namespace qexsdk
{

namespace
{

std::string ListOf(const std::vector<std::string>& pNames)
{
    std::string lList;
    for (const std::string& lName : pNames)
    {
        lList += (lList.empty() ? "" : ", ") + lName;
    }
    return lList;
}

} // namespace

bool KQexSkeletonMatch::IsPlausible() const
{
    return 2 * mMatched >= std::min(mInSkeleton, mInMotion);
}

void KQexSkeletonMatch::AddName(std::vector<std::string>& pNames, const std::string& pName)
{
    if (pNames.size() < kNamed)
    {
        pNames.push_back(pName);
    }
}

std::string KQexSkeletonMatch::Describe() const
{
    return "Not a motion of this skeleton: " + std::to_string(mMatched) + " of " + std::to_string(std::min(mInSkeleton, mInMotion)) +
           " moving joints match; only the motion has " + ListOf(mOnlyInMotion) + "; only the skeleton has " + ListOf(mOnlyInSkeleton);
}

} // namespace qexsdk
