#include <qexioplugins/acclaim/scene/kqexasfhostindex.h>

#include <algorithm>
#include <new>

namespace qexsdk
{

KQexAsfTreeIndex::KQexAsfTreeIndex(KQexNode* pTop, ENamePart pPart)
{
    std::vector<int> lPath; // The nodes whose end is not known yet: the last node and its ancestors.
    for (KQexNode* lNode = pTop; lNode != nullptr; lNode = lNode->GetNextInTree(pTop))
    {
        const int lNumber = static_cast<int>(mNodes.size());
        while (!lPath.empty() && GetNode(lPath.back()) != lNode->GetParent())
        {
            mEnds[static_cast<std::size_t>(lPath.back())] = lNumber;
            lPath.pop_back();
        }
        lPath.push_back(lNumber);
        mNodes.push_back(lNode);
        mEnds.push_back(0);
        mNames[pPart == eWHOLE ? lNode->GetName() : lNode->GetBareName()].push_back(lNumber);
    }
    for (int lNumber : lPath)
    {
        mEnds[static_cast<std::size_t>(lNumber)] = static_cast<int>(mNodes.size());
    }
}

int KQexAsfTreeIndex::Find(const char* pName, int pAncestor) const
{
    const auto lName = mNames.find(pName);
    if (lName == mNames.end())
    {
        return -1;
    }
    const std::vector<int>& lNumbers = lName->second;
    const auto              lFound = std::upper_bound(lNumbers.begin(), lNumbers.end(), pAncestor);
    return lFound != lNumbers.end() && *lFound < mEnds[static_cast<std::size_t>(pAncestor)] ? *lFound : -1;
}

KQexNode* KQexAsfChildIndex::Find(const KQexNode& pParent, const char* pName)
{
    // For few children a linear search is faster.
    if (pParent.GetChildCount(false) <= 16)
    {
        return pParent.FindChild(pName, false, false);
    }
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
        KQexNode* lNext = lChildren.mLast != nullptr ? lChildren.mLast->GetNextSibling() : pParent.GetFirstChild();
        if (lNext == nullptr)
        {
            break;
        }
        lChildren.mFirst.emplace(lNext->GetName(), lNext);
        lChildren.mLast = lNext;
    }
    const auto lFound = lChildren.mFirst.find(pName);
    return lFound == lChildren.mFirst.end() ? nullptr : lFound->second;
}

} // namespace qexsdk
