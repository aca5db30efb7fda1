#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <qexioplugins/acclaim/scene/kqexasfhostindex.h>

#include <new>
#include <vector>

namespace qexsdk
{

namespace
{

/// A paired bone on the current path, and the number of its host node in the index.
struct KPair
{
    KQexAsfNode* mAsfNode;
    int          mNumber;
};

} // namespace

bool KQexAsfScene::MergeQEXToASF(KQexNode* pRootNode)
{
    if (!mRoot)
    {
        return true;
    }
    mRoot->GetCurveNodePointers(pRootNode);
    return RecursiveMerge(pRootNode, mRoot, mRoot);
}

bool KQexAsfScene::RecursiveMerge(KQexNode* pQexNode, KQexAsfNode* pAsfNode, KQexAsfNode* pAsfReferenceNode)
try
{
    const KQexAsfTreeIndex lIndex(pQexNode);
    std::vector<KPair>     lPath = {{pAsfReferenceNode, 0}};
    KQexAsfWalk            lWalk(pAsfNode);
    while (KQexAsfNode* lNode = lWalk.Next())
    {
        if (lNode == pAsfNode)
        {
            continue;
        }
        if (!lWalk.IsEntering())
        {
            if (lPath.back().mAsfNode == lNode)
            {
                lPath.pop_back();
            }
            continue;
        }
        // A bone without a node is skipped: its children are searched below the same node and get the same parent axis.
        const int lNumber = lIndex.Find(lNode->mName, lPath.back().mNumber);
        if (lNumber < 0)
        {
            continue;
        }
        KgeSet(lNode->mParentAxisRM, lPath.back().mAsfNode->mAxisRM);
        KgeSet(lNode->mParentAxisRMInv, lPath.back().mAsfNode->mAxisRMInv);
        lNode->GetCurveNodePointers(lIndex.GetNode(lNumber));
        lPath.push_back({lNode, lNumber});
    }
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

} // namespace qexsdk
