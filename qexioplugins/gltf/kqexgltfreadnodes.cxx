#include <qexioplugins/gltf/kqexgltfreader.h>
#include <qexioplugins/gltf/kqexgltfvectors.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

namespace qexsdk
{

namespace
{

/// Whether an extension only concerns meshes, materials or lights, which are ignored anyway.
bool IsHarmless(const std::string& pExtension)
{
    static const char* const sHarmless[] = {"KHR_materials_",        "KHR_texture_", "KHR_draco_mesh_compression",
                                            "KHR_mesh_quantization", "KHR_lights_",  "EXT_texture_",
                                            "MSFT_texture_"};
    return std::any_of(std::begin(sHarmless), std::end(sHarmless),
                       [&pExtension](const char* pBegin) { return pExtension.compare(0, std::strlen(pBegin), pBegin) == 0; });
}

std::string NodeText(size_t pIndex)
{
    return "nodes[" + std::to_string(pIndex) + "]";
}

} // namespace

KQexGltfReader::KQexGltfReader(KQexFileGltf& pFile, KQexGltfSource& pSource, KQexScene* pScene, const KQexGltfReadOptions& pOptions)
    : mFile(pFile),
      mSource(pSource),
      mScene(pScene),
      mOptions(pOptions),
      mRoot(pSource.GetJson().GetRoot()),
      mAccessors(pSource),
      mAnimations(GltfMembers(mRoot["animations"], "animations"))
{
}

void KQexGltfReader::CheckExtensions()
{
    for (const KQexGltfJson::KValue& lExtension : GltfMembers(mRoot["extensionsRequired"], "extensionsRequired"))
    {
        const std::string lName = lExtension.GetText();
        if (!IsHarmless(lName))
        {
            Warn("Extension (" + lName.substr(0, 100) + ") is required but not supported, ignored");
        }
    }
}

void KQexGltfReader::LinkNodes()
{
    for (const KQexGltfJson::KValue& lFrom : GltfMembers(mRoot["nodes"], "nodes"))
    {
        mNodes.emplace_back();
        mNodes.back().mFrom = lFrom;
    }
    for (size_t i = 0; i < mNodes.size(); ++i)
    {
        const std::string lName = NodeText(i) + ".children";
        for (const KQexGltfJson::KValue& lFrom : GltfMembers(mNodes[i].mFrom["children"], lName))
        {
            const int         lIndex = GltfIndex(lFrom, mNodes.size(), lName);
            KQexGltfReadNode& lChild = mNodes[static_cast<size_t>(lIndex)];
            if (lChild.mParent >= 0)
            {
                throw KQexGltfError(lName + ": " + NodeText(static_cast<size_t>(lIndex)) + " already has a parent, " +
                                    NodeText(static_cast<size_t>(lChild.mParent)));
            }
            lChild.mParent = static_cast<int>(i);
            mNodes[i].mChildren.push_back(lIndex);
        }
    }
    CheckCycles();
}

/// Each node has at most one parent, so following parents either ends at a root or runs into a cycle.
void KQexGltfReader::CheckCycles() const
{
    std::vector<size_t> lSeen(mNodes.size(), 0); // Number of the walk that visited the node first, from 1.
    for (size_t i = 0; i < mNodes.size(); ++i)
    {
        int lNode = static_cast<int>(i);
        while (lNode >= 0 && lSeen[static_cast<size_t>(lNode)] == 0)
        {
            lSeen[static_cast<size_t>(lNode)] = i + 1;
            lNode = mNodes[static_cast<size_t>(lNode)].mParent;
        }
        if (lNode >= 0 && lSeen[static_cast<size_t>(lNode)] == i + 1)
        {
            throw KQexGltfError(NodeText(static_cast<size_t>(lNode)) + " is its own ancestor");
        }
    }
}

/// Marks the joints of skins; all nodes when there is no skin.
void KQexGltfReader::MarkJoints()
{
    const std::vector<KQexGltfJson::KValue> lSkins = GltfMembers(mRoot["skins"], "skins");
    for (size_t i = 0; i < lSkins.size(); ++i)
    {
        const std::string lName = "skins[" + std::to_string(i) + "]";
        GltfIndex(lSkins[i]["skeleton"], mNodes.size(), lName + ".skeleton");
        for (const KQexGltfJson::KValue& lJoint : GltfMembers(lSkins[i]["joints"], lName + ".joints"))
        {
            mNodes[static_cast<size_t>(GltfIndex(lJoint, mNodes.size(), lName + ".joints"))].mIsJoint = true;
        }
    }
    for (size_t i = 0; i < mNodes.size(); ++i)
    {
        GltfIndex(mNodes[i].mFrom["skin"], lSkins.size(), NodeText(i) + ".skin");
        mNodes[i].mIsJoint = mNodes[i].mIsJoint || lSkins.empty();
    }
}

void KQexGltfReader::MarkAnimated()
{
    for (size_t i = 0; i < mAnimations.size(); ++i)
    {
        const std::string lName = "animations[" + std::to_string(i) + "].channels";
        for (const KQexGltfJson::KValue& lChannel : GltfMembers(mAnimations[i]["channels"], lName))
        {
            const int lNode = GltfIndex(lChannel["target"]["node"], mNodes.size(), lName);
            if (lNode >= 0)
            {
                mNodes[static_cast<size_t>(lNode)].mIsAnimated = true;
            }
        }
    }
}

/// Whether a node only holds a skinned mesh. The joints alone position such a mesh, so its node carries no motion.
bool KQexGltfReader::IsMeshOnly(const KQexGltfReadNode& pNode) const
{
    return pNode.mFrom["mesh"].IsValid() && pNode.mFrom["skin"].IsValid() && pNode.mChildren.empty() && !pNode.mIsJoint &&
           !pNode.mIsAnimated;
}

/// The root nodes of the file's scene; of the whole file when it has no scenes.
std::vector<int> KQexGltfReader::FindRoots()
{
    const std::vector<KQexGltfJson::KValue> lScenes = GltfMembers(mRoot["scenes"], "scenes");
    const int                               lScene = GltfIndex(mRoot["scene"], lScenes.size(), "scene");
    std::vector<int>                        lRoots;
    if (lScenes.empty())
    {
        for (size_t i = 0; i < mNodes.size(); ++i)
        {
            if (mNodes[i].mParent < 0)
            {
                lRoots.push_back(static_cast<int>(i));
            }
        }
        return lRoots;
    }
    const std::string lName = "scenes[" + std::to_string(std::max(lScene, 0)) + "].nodes";
    std::vector<bool> lSeen(mNodes.size(), false);
    for (const KQexGltfJson::KValue& lFrom : GltfMembers(lScenes[static_cast<size_t>(std::max(lScene, 0))]["nodes"], lName))
    {
        const int lRoot = GltfIndex(lFrom, mNodes.size(), lName);
        if (mNodes[static_cast<size_t>(lRoot)].mParent >= 0 || lSeen[static_cast<size_t>(lRoot)])
        {
            throw KQexGltfError(lName + ": " + NodeText(static_cast<size_t>(lRoot)) +
                                (lSeen[static_cast<size_t>(lRoot)] ? " appears twice" : " has a parent"));
        }
        lSeen[static_cast<size_t>(lRoot)] = true;
        lRoots.push_back(lRoot);
    }
    return lRoots;
}

void KQexGltfReader::ReadNodes()
{
    CheckExtensions();
    LinkNodes();
    MarkJoints();
    MarkAnimated();
    for (const int lRoot : FindRoots())
    {
        MakeTree(lRoot);
    }
    if (mRoots.empty())
    {
        throw KQexGltfError("The file's scene has no nodes");
    }
}

/// Creates a tree in pre-order, with an explicit stack. Each node is added to its parent before it has children, when that is cheap.
void KQexGltfReader::MakeTree(int pRoot)
{
    std::vector<int> lOpen(1, pRoot);
    while (!lOpen.empty())
    {
        const int lIndex = lOpen.back();
        lOpen.pop_back();
        if (IsMeshOnly(mNodes[static_cast<size_t>(lIndex)]))
        {
            continue;
        }
        MakeNode(lIndex);
        const std::vector<int>& lChildren = mNodes[static_cast<size_t>(lIndex)].mChildren;
        lOpen.insert(lOpen.end(), lChildren.rbegin(), lChildren.rend());
    }
}

void KQexGltfReader::MakeNode(int pIndex)
{
    KQexGltfReadNode& lNode = mNodes[static_cast<size_t>(pIndex)];
    const std::string lText = lNode.mFrom["name"].GetText();
    const std::string lName = lText.empty() ? "node_" + std::to_string(pIndex) : lText;
    // Reserve first: push_back() must not throw between creating the node and storing it.
    if (mRoots.size() == mRoots.capacity())
    {
        mRoots.reserve(2 * mRoots.size() + 8);
    }
    KQexNode* lSceneNode = KQexNode::Create(mScene, lName.c_str());
    if (lSceneNode == nullptr)
    {
        throw std::bad_alloc();
    }
    lNode.mNode = lSceneNode;
    KQexNode* lParent = lNode.mParent >= 0 ? mNodes[static_cast<size_t>(lNode.mParent)].mNode : nullptr;
    if (lParent == nullptr)
    {
        mRoots.push_back(lSceneNode);
    }
    else
    {
        lParent->AddChild(lSceneNode);
    }
    if (lNode.mIsJoint)
    {
        KQexSkeleton* lSkeleton = KQexSkeleton::Create(mScene, "");
        if (lSkeleton == nullptr)
        {
            throw std::bad_alloc();
        }
        lSkeleton->SetSkeletonType(KQexSkeleton::eSKELETON_JOINT);
        lSceneNode->SetNodeAttribute(lSkeleton);
    }
    lSceneNode->SetRotationActive(true);
    ReadExtras(lNode);
    SetTransform(lNode, NodeText(static_cast<size_t>(pIndex)));
}

void KQexGltfReader::Finish(KQexGltfReadResult& pResult)
{
    pResult.mRoots = mRoots;
    pResult.mTakes.swap(mTakes);
    pResult.mBoneDofs.swap(mBoneDofs);
    KQexNode* lParent = mOptions.mParentNode != nullptr ? mOptions.mParentNode : mScene->GetRootNode();
    for (KQexNode* lRoot : mRoots)
    {
        lParent->AddChild(lRoot);
    }
    mRoots.clear();
}

} // namespace qexsdk
