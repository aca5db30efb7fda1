#include <qexioplugins/gltf/kqexgltfwriter.h>

#include <qexioplugins/gltf/kqexgltfnames.h>

namespace qexsdk
{

namespace
{

/// Whether a node's own transform at rest is anything but identity.
bool IsMovedAway(KQexNode* pNode)
{
    const KGltfNodePose lPose(pNode, nullptr);
    double              lT[3];
    double              lS[3];
    KQuaternion         lR;
    lPose.GetTranslation(KTime(0), lT);
    lPose.GetRotation(KTime(0), lR);
    lPose.GetScaling(KTime(0), lS);
    return lT[0] != 0.0 || lT[1] != 0.0 || lT[2] != 0.0 || lR.mData[3] != 1.0 || lS[0] != 1.0 || lS[1] != 1.0 || lS[2] != 1.0;
}

/// Null, which the file's writer leaves out, when it does not hold.
tinygltf::Value LimitValue(bool pActive, double pValue)
{
    return pActive ? tinygltf::Value(pValue) : tinygltf::Value();
}

tinygltf::Value AnglesValue(const KQexVector4& pAngles)
{
    return tinygltf::Value(tinygltf::Value::Array{tinygltf::Value(pAngles[0]), tinygltf::Value(pAngles[1]), tinygltf::Value(pAngles[2])});
}

/// The bounds that are active: {"x": …, "z": …}.
tinygltf::Value BoundsValue(const bool pActive[3], const KQexVector4& pBounds)
{
    static const char* const sAxes[3] = {"x", "y", "z"};
    tinygltf::Value::Object  lBounds;
    for (int i = 0; i < 3; ++i)
    {
        if (pActive[i])
        {
            lBounds[sAxes[i]] = tinygltf::Value(pBounds[i]);
        }
    }
    return tinygltf::Value(lBounds);
}

/// {"min": {…}, "max": {…}}, by axis.
tinygltf::Value LimitsValue(const KQexLimits& pLimits)
{
    bool lMinActive[3];
    bool lMaxActive[3];
    pLimits.GetLimitMinActive(lMinActive[0], lMinActive[1], lMinActive[2]);
    pLimits.GetLimitMaxActive(lMaxActive[0], lMaxActive[1], lMaxActive[2]);
    return tinygltf::Value(tinygltf::Value::Object{{"min", BoundsValue(lMinActive, pLimits.GetLimitMin())},
                                                   {"max", BoundsValue(lMaxActive, pLimits.GetLimitMax())}});
}

} // namespace

/// Adds the tree at \p pRoot. Ancestors that move it out of its place come along, so that global transforms stay what they are.
bool KGltfWriter::AddTree(KQexNode* pRoot)
{
    const KQexNode*        lSceneRoot = pRoot->GetScene()->GetRootNode();
    std::vector<KQexNode*> lAbove;
    for (KQexNode* lNode = pRoot->GetParent(); lNode != nullptr; lNode = lNode->GetParent())
    {
        if (lNode != lSceneRoot || IsMovedAway(lNode))
        {
            lAbove.push_back(lNode);
        }
    }
    const int lTree = static_cast<int>(mTops.size());
    mTops.push_back(mNodes.size());
    KQexAnimEvaluator* lEvaluator = pRoot->GetScene()->GetEvaluator();
    for (size_t i = lAbove.size(); i > 0; --i)
    {
        const int lParent = i == lAbove.size() ? -1 : static_cast<int>(mNodes.size()) - 1;
        mNodes.push_back(KGltfNode{lAbove[i - 1], lParent, lTree, lEvaluator->GetNodeGlobalTransform(lAbove[i - 1], KTime(0))});
    }
    KQexGlobalTransforms lRest;
    if (!lEvaluator->EvaluateGlobalTransforms(pRoot, KTime(0), lRest))
    {
        return false;
    }
    const int lFirst = static_cast<int>(mNodes.size());
    for (int i = 0; i < lRest.GetCount(); ++i)
    {
        const int lParent = i > 0 ? lFirst + lRest.GetParentIndex(i) : lAbove.empty() ? -1 : lFirst - 1;
        mNodes.push_back(KGltfNode{lRest.GetNode(i), lParent, lTree, lRest.GetTransform(i)});
    }
    return true;
}

std::string KGltfWriter::SafeName(KQexUniqueNames& pNames, const std::string& pName, const char* pIfEmpty)
{
    const bool        lIsText = IsUtf8(pName);
    const std::string lNew = pNames.Make(
        MakeSafeName(pName, pIfEmpty, [lIsText](char pC) { return (lIsText || static_cast<signed char>(pC) >= 0) && pC != '\0'; }));
    if (lNew != pName)
    {
        const std::string lOld = MakeSafeName(pName, "", [lIsText](char pC) { return lIsText || static_cast<signed char>(pC) >= 0; });
        mFile.Report(KQexTextMessage::eWARNING, "Name changed (" + lNew + "), from (" + lOld + ")");
    }
    return lNew;
}

/// What glTF itself has no place for: the rotation order and the frame in which the angles count, the node's limits, and the bone's degrees of freedom with theirs.
tinygltf::Value KGltfWriter::MakeExtras(const KQexNode* pNode) const
{
    tinygltf::Value::Object  lExtras;
    static const char* const sOrders[] = {"XYZ", "XZY", "YZX", "YXZ", "ZXY", "ZYX"};
    if (pNode->GetRotationActive() && pNode->GetRotationOrder() <= eEULER_ZYX)
    {
        lExtras["rotationOrder"] = tinygltf::Value(std::string(sOrders[pNode->GetRotationOrder()]));
    }
    if (pNode->GetRotationActive() && pNode->GetPreRotation().Length() > 0.0)
    {
        lExtras["preRotation"] = AnglesValue(pNode->GetPreRotation());
    }
    if (pNode->GetRotationActive() && pNode->GetPostRotation().Length() > 0.0)
    {
        lExtras["postRotation"] = AnglesValue(pNode->GetPostRotation());
    }
    tinygltf::Value::Object lLimits;
    if (pNode->GetLimits().GetTranslationLimitActive())
    {
        lLimits["translation"] = LimitsValue(pNode->GetLimits().mTranslationLimits);
    }
    if (pNode->GetLimits().GetRotationLimitActive())
    {
        lLimits["rotation"] = LimitsValue(pNode->GetLimits().mRotationLimits);
    }
    if (!lLimits.empty())
    {
        lExtras["limits"] = tinygltf::Value(lLimits);
    }
    const KQexBoneDofs* lKnown = mOptions.mBoneDofs;
    const auto          lFound = lKnown != nullptr ? lKnown->find(pNode->GetName()) : KQexBoneDofs::const_iterator();
    if (lKnown != nullptr && lFound != lKnown->end())
    {
        tinygltf::Value::Array lDofs;
        for (const KQexBoneDof& lDof : lFound->second)
        {
            lDofs.push_back(tinygltf::Value(tinygltf::Value::Object{{"dof", tinygltf::Value(lDof.mWord)},
                                                                    {"min", LimitValue(lDof.mHasMin, lDof.mMin)},
                                                                    {"max", LimitValue(lDof.mHasMax, lDof.mMax)}}));
        }
        lExtras["dofs"] = tinygltf::Value(lDofs);
    }
    return lExtras.empty() ? tinygltf::Value() : tinygltf::Value(lExtras);
}

void KGltfWriter::AddNodes()
{
    KQexUniqueNames lNames;
    mModel.scenes.emplace_back();
    mModel.defaultScene = 0;
    for (size_t i = 0; i < mNodes.size(); ++i)
    {
        const KGltfNode&    lFrom = mNodes[i];
        const KGltfNodePose lPose(lFrom.mNode, nullptr);
        tinygltf::Node      lNode;
        double              lT[3];
        double              lS[3];
        KQuaternion         lR;
        lPose.GetTranslation(KTime(0), lT);
        lPose.GetRotation(KTime(0), lR);
        lPose.GetScaling(KTime(0), lS);
        lNode.name = SafeName(lNames, lFrom.mNode->GetName(), "node");
        lNode.translation = {lT[0] * mOptions.mScale, lT[1] * mOptions.mScale, lT[2] * mOptions.mScale};
        lNode.rotation.assign(lR.mData, lR.mData + 4);
        if (lS[0] != 1.0 || lS[1] != 1.0 || lS[2] != 1.0)
        {
            lNode.scale = {lS[0], lS[1], lS[2]};
        }
        lNode.extras = MakeExtras(lFrom.mNode);
        mModel.nodes.push_back(lNode);
        (lFrom.mParent < 0 ? mModel.scenes[0].nodes : mModel.nodes[static_cast<size_t>(lFrom.mParent)].children)
            .push_back(static_cast<int>(i));
    }
}

} // namespace qexsdk
