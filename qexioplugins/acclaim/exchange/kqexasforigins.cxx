#include <qexioplugins/acclaim/exchange/kqexasforigins.h>

#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <algorithm>
#include <cstring>

namespace qexsdk
{

namespace
{

/// A bone on the current path.
struct KPathBone
{
    KQexNode* mNode; ///< Its node; for a dummy that of its parent.
    KQexNode* mNext; ///< Child of mNode at which the search for the next bone starts.
};

bool IsDummy(const KQexAsfNode& pBone)
{
    return pBone.mOrderCount == 0;
}

/// Whether extraction gave the name of \p pNode to \p pBone, which may have been cut.
bool IsNamedAfter(const KQexAsfNode& pBone, const KQexNode* pNode)
{
    const size_t lRoom = sizeof pBone.mName - 1;
    if (!IsDummy(pBone))
    {
        return std::strncmp(pBone.mName, pNode->GetBareName(), lRoom) == 0;
    }
    return BareName(pNode).substr(0, lRoom - std::strlen(kDummySuffix)) + kDummySuffix == pBone.mName;
}

/// Extraction keeps the order of children and the clean-up only removes some, so a bone's node is the next sibling with its name.
KQexNode* FindNext(const KPathBone& pParent, const KQexAsfNode& pBone)
{
    KQexNode* lNode = pParent.mNext;
    while (lNode != nullptr && !IsNamedAfter(pBone, lNode))
    {
        lNode = lNode->GetNextSibling();
    }
    return lNode;
}

/// The bone ends at the first child, unless dummies lead to the children.
KQexNode* EndOf(const KQexAsfNode& pBone, const KQexNode* pNode)
{
    const bool lHasDummies = pBone.mChildBuf.GetCount() > 0 && IsDummy(*pBone.mChildBuf[0]);
    return pNode != nullptr && !lHasDummies ? pNode->GetFirstChild() : nullptr;
}

} // namespace

std::vector<KQexAsfOrigin> FindAsfOrigins(HKQexAsfNode pBone, KQexNode* pRoot)
{
    std::vector<KQexAsfOrigin> lOrigins;
    std::vector<KPathBone>     lPath;
    KQexAsfWalk                lWalk(pBone);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lPath.pop_back();
            continue;
        }
        if (lPath.empty())
        {
            lOrigins.push_back(KQexAsfOrigin{lBone, pRoot, EndOf(*lBone, pRoot)});
            lPath.push_back(KPathBone{pRoot, pRoot->GetFirstChild()});
            continue;
        }
        KPathBone& lParent = lPath.back();
        KQexNode*  lNode = FindNext(lParent, *lBone);
        lParent.mNext = lNode != nullptr ? lNode->GetNextSibling() : nullptr;
        if (IsDummy(*lBone))
        {
            // It has no node; its child, where there is one, is made for the node that it leads to.
            lOrigins.push_back(KQexAsfOrigin{lBone, nullptr, lNode});
            lPath.push_back(KPathBone{lParent.mNode, lNode});
        }
        else
        {
            lOrigins.push_back(KQexAsfOrigin{lBone, lNode, EndOf(*lBone, lNode)});
            lPath.push_back(KPathBone{lNode, lNode != nullptr ? lNode->GetFirstChild() : nullptr});
        }
    }
    return lOrigins;
}

} // namespace qexsdk
