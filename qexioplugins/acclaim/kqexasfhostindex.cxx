#include <qexioplugins/acclaim/kqexasfhostindex.h>

#include <algorithm>
#include <new>

namespace qexsdk
{

KQexAsfTreeIndex::KQexAsfTreeIndex(KQexNode* pTop)
{
    NumberNodes(pTop);
    SortByName();
}

void KQexAsfTreeIndex::NumberNodes(KQexNode* pTop)
{
    std::vector<int> lOpen; // the nodes whose end is not known yet: the last one's ancestors and itself
    for (KQexNode* lNode = pTop; lNode; lNode = lNode->GetNextInTree(pTop))
    {
        const int lNumber = static_cast<int>(mNodes.size());
        while (!lOpen.empty() && GetNode(lOpen.back()) != lNode->GetParent())
        {
            mEnds[static_cast<std::size_t>(lOpen.back())] = lNumber;
            lOpen.pop_back();
        }
        lOpen.push_back(lNumber);
        mNodes.push_back(lNode);
        mEnds.push_back(0);
    }
    for (int lNumber : lOpen)
        mEnds[static_cast<std::size_t>(lNumber)] = static_cast<int>(mNodes.size());
}

void KQexAsfTreeIndex::SortByName()
{
    // Counted, then dealt out: nodes of one name stay in ascending order.
    std::vector<std::size_t> lNames;
    lNames.reserve(mNodes.size());
    for (const KQexNode* lNode : mNodes)
        lNames.push_back(static_cast<std::size_t>(mNames.emplace(lNode->GetName(), static_cast<int>(mNames.size())).first->second));
    mStarts.assign(mNames.size() + 1, 0);
    for (std::size_t lName : lNames)
        mStarts[lName + 1]++;
    for (std::size_t lName = 0; lName + 1 < mStarts.size(); lName++)
        mStarts[lName + 1] += mStarts[lName];
    std::vector<int> lNext(mStarts.begin(), mStarts.end() - 1);
    mByName.resize(mNodes.size());
    for (std::size_t lNumber = 0; lNumber < lNames.size(); lNumber++)
        mByName[static_cast<std::size_t>(lNext[lNames[lNumber]]++)] = static_cast<int>(lNumber);
}

int KQexAsfTreeIndex::Find(const char* pName, int pWhere) const
{
    const auto lName = mNames.find(pName);
    if (lName == mNames.end())
        return -1;
    const auto lFirst = mByName.begin() + mStarts[static_cast<std::size_t>(lName->second)];
    const auto lLast = mByName.begin() + mStarts[static_cast<std::size_t>(lName->second) + 1];
    const auto lFound = std::upper_bound(lFirst, lLast, pWhere);
    return lFound != lLast && *lFound < mEnds[static_cast<std::size_t>(pWhere)] ? *lFound : -1;
}

KQexNode* KQexAsfChildIndex::Find(const KQexNode& pParent, const char* pName)
{
    // Few children are searched faster than indexed.
    if (pParent.GetChildCount(false) <= 16)
        return pParent.FindChild(pName, false, false);
    try
    {
        return FindIndexed(pParent, pName);
    }
    catch (const std::bad_alloc&)
    {
        return pParent.FindChild(pName, false, false);
    }
}

KQexNode* KQexAsfChildIndex::FindIndexed(const KQexNode& pParent, const char* pName)
{
    KChildren& lChildren = mParents[&pParent];
    for (;;)
    {
        KQexNode* lNext = lChildren.mLast ? lChildren.mLast->GetNextSibling() : pParent.GetFirstChild();
        if (!lNext)
            break;
        lChildren.mFirst.emplace(lNext->GetName(), lNext);
        lChildren.mLast = lNext;
    }
    const auto lFound = lChildren.mFirst.find(pName);
    return lFound == lChildren.mFirst.end() ? nullptr : lFound->second;
}

} // namespace qexsdk
