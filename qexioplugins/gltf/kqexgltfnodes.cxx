#include <qexioplugins/gltf/kqexgltfnames.h>
#include <qexioplugins/gltf/kqexgltfwriter.h>

#include <unordered_map>

namespace qexsdk
{

namespace
{

/// Whether a node's local rest transform differs from identity.
bool HasTransform(KQexNode* pNode)
{
    const KQexNodePose lPose(pNode, nullptr);
    double             lT[3];
    double             lS[3];
    KQexQuaternion     lR;
    lPose.GetTranslation(KTime(0), lT);
    lPose.GetRotation(KTime(0), lR);
    lPose.GetScaling(KTime(0), lS);
    return lT[0] != 0.0 || lT[1] != 0.0 || lT[2] != 0.0 || lR.mData[3] != 1.0 || lS[0] != 1.0 || lS[1] != 1.0 || lS[2] != 1.0;
}

} // namespace

/// Adds the tree at \p pRoot and its ancestors, so that global transforms are kept. The scene's root node is left out when its
/// transform is identity.
void KQexGltfWriter::AddTree(KQexNode* pRoot, const KQexFrame& pRest)
{
    const KQexNode*        lSceneRoot = pRoot->GetScene()->GetRootNode();
    const int              lTree = static_cast<int>(mTreeStarts.size());
    std::vector<KQexNode*> lAncestors;
    const auto             lAdd = [&](KQexNode* pNode, int pParent)
    {
        mNodes.push_back(KQexGltfNode{pNode, pParent, lTree, pRest.GetWorld(static_cast<size_t>(pRest.GetNodes().Find(pNode)))});
        return static_cast<int>(mNodes.size()) - 1;
    };
    for (KQexNode* lNode = pRoot->GetParent(); lNode != nullptr; lNode = lNode->GetParent())
    {
        if (lNode != lSceneRoot || HasTransform(lNode))
        {
            lAncestors.push_back(lNode);
        }
    }
    mTreeStarts.push_back(mNodes.size());
    int lAbove = -1;
    for (size_t i = lAncestors.size(); i > 0; --i)
    {
        lAbove = lAdd(lAncestors[i - 1], lAbove);
    }
    std::unordered_map<const KQexNode*, int> lIndices;
    for (KQexNode* lNode = pRoot; lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
    {
        lIndices[lNode] = lAdd(lNode, lNode == pRoot ? lAbove : lIndices.at(lNode->GetParent()));
    }
}

std::string KQexGltfWriter::SafeName(KQexUniqueNames& pNames, const std::string& pName, const char* pIfEmpty)
{
    const bool        lIsUtf8 = IsUtf8(pName);
    const std::string lNew = pNames.Make(
        MakeSafeName(pName, pIfEmpty, [lIsUtf8](char pC) { return (lIsUtf8 || static_cast<signed char>(pC) >= 0) && pC != '\0'; }));
    if (lNew != pName)
    {
        mFile.Report(KQexTextMessage::eWARNING, "Name changed (" + lNew + "), from (" + pName + ")");
    }
    return lNew;
}

void KQexGltfWriter::AddNodes()
{
    for (size_t i = 0; i < mNodes.size(); ++i)
    {
        const KQexGltfNode&  lFrom = mNodes[i];
        const KQexNodePose   lPose(lFrom.mNode, nullptr);
        KQexGltfModel::KNode lNode;
        double               lT[3];
        double               lS[3];
        KQexQuaternion       lR;
        lPose.GetTranslation(KTime(0), lT);
        lPose.GetRotation(KTime(0), lR);
        lPose.GetScaling(KTime(0), lS);
        lNode.mName = SafeName(mNodeNames, lFrom.mNode->GetName(), "node");
        lNode.mTranslation = {lT[0] * mOptions.mScale, lT[1] * mOptions.mScale, lT[2] * mOptions.mScale};
        lNode.mRotation.assign(lR.mData, lR.mData + 4);
        if (lS[0] != 1.0 || lS[1] != 1.0 || lS[2] != 1.0)
        {
            lNode.mScale = {lS[0], lS[1], lS[2]};
        }
        lNode.mSource = lFrom.mNode;
        mModel.mNodes.push_back(lNode);
        (lFrom.mParent < 0 ? mModel.mRootNodes : mModel.mNodes[static_cast<size_t>(lFrom.mParent)].mChildren)
            .push_back(static_cast<int>(i));
    }
}

} // namespace qexsdk
