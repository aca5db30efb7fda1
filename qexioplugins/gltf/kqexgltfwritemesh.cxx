#include <qexioplugins/gltf/kqexgltfwriter.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

/// A colour 0xRRGGBB, sRGB, as glTF has it: linear, 0 to 1, opaque. Four decimals, so that the file does not depend on the last bit of
/// pow().
std::vector<double> LinearColor(unsigned pColor)
{
    std::vector<double> lLinear;
    for (const int lShift : {16, 8, 0})
    {
        const double lValue = (pColor >> lShift & 255) / 255.0;
        const double lComponent = lValue <= 0.04045 ? lValue / 12.92 : std::pow((lValue + 0.055) / 1.055, 2.4);
        lLinear.push_back(std::round(lComponent * 1e4) / 1e4);
    }
    lLinear.push_back(1.0);
    return lLinear;
}

/// The largest side of the bounding box of the bones, of which there is at least one.
double SizeOf(const std::vector<KQexGltfBone>& pBones)
{
    double lSize = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        double lMin = pBones.front().mStart[i];
        double lMax = lMin;
        for (const KQexGltfBone& lBone : pBones)
        {
            lMin = std::min({lMin, lBone.mStart[i], lBone.mEnd[i]});
            lMax = std::max({lMax, lBone.mStart[i], lBone.mEnd[i]});
        }
        lSize = std::max(lSize, lMax - lMin);
    }
    return lSize;
}

} // namespace

int KQexGltfWriter::GetMaterial(KQexSide pSide)
{
    static const char* const sNames[kSideCount] = {"bone", "bone_left", "bone_right"};
    int&                     lMaterial = mMaterials[pSide];
    if (lMaterial < 0)
    {
        lMaterial = static_cast<int>(mModel.mMaterials.size());
        mModel.mMaterials.push_back({sNames[pSide], LinearColor(SideColor(pSide)), 0.0, 0.8});
    }
    return lMaterial;
}

void KQexGltfWriter::AddPrimitive(const KQexGltfBoneMesh& pBones, KQexSide pSide, KQexGltfModel::KMesh& pMesh)
{
    const size_t              lCount = pBones.GetVertexCount();
    KQexGltfModel::KPrimitive lPrimitive;
    const auto                lAddFloats = [&](const char* pWord, KQexGltfElement pElement, const std::vector<float>& pValues)
    {
        const int lAccessor = mBuffer.AddFloats(pElement, lCount, eGLTF_ARRAY_BUFFER);
        std::copy(pValues.begin(), pValues.end(), mBuffer.GetFloats(lAccessor));
        mBuffer.SetBounds(lAccessor);
        lPrimitive.mAttributes[pWord] = lAccessor;
    };
    std::vector<float> lWeights(4 * lCount, 0.0F);
    for (size_t i = 0; i < lCount; ++i)
    {
        lWeights[4 * i] = 1.0F;
    }
    lAddFloats("POSITION", eGLTF_VEC3, pBones.GetPositions());
    lAddFloats("NORMAL", eGLTF_VEC3, pBones.GetNormals());
    lAddFloats("WEIGHTS_0", eGLTF_VEC4, lWeights);
    lPrimitive.mAttributes["JOINTS_0"] = mBuffer.AddJoints(pBones.GetJoints());
    lPrimitive.mMaterial = GetMaterial(pSide);
    pMesh.mPrimitives.push_back(lPrimitive);
}

/// A bone from each joint to each of its children; a child without children need not be a joint itself.
void KQexGltfWriter::CollectBones(int pTree, const std::vector<size_t>& pJoints, std::vector<KQexGltfBone>& pBones) const
{
    constexpr size_t    kNone = SIZE_MAX;
    std::vector<size_t> lJointOf(mNodes.size(), kNone);
    for (size_t i = 0; i < pJoints.size(); ++i)
    {
        lJointOf[pJoints[i]] = i;
    }
    for (size_t i = mTreeStarts[static_cast<size_t>(pTree)]; i < mNodes.size() && mNodes[i].mTree == pTree; ++i)
    {
        const size_t lParent = mNodes[i].mParent >= 0 ? static_cast<size_t>(mNodes[i].mParent) : i;
        const bool   lIsEnd = lJointOf[i] != kNone || mNodes[i].mNode->GetChildCount() == 0;
        if (lParent != i && lIsEnd && lJointOf[lParent] != kNone)
        {
            KQexGltfBone lBone;
            lBone.mJoint = lJointOf[lParent];
            GetPosition(mNodes[lParent], lBone.mStart);
            GetPosition(mNodes[i], lBone.mEnd);
            pBones.push_back(lBone);
        }
    }
}

/// Adds a mesh of the tree's bones, coloured by the sides of the joints at their starts.
void KQexGltfWriter::AddMesh(int pTree, const std::vector<size_t>& pJoints, int pSkin)
{
    std::vector<KQexGltfBone> lBones;
    CollectBones(pTree, pJoints, lBones);
    std::vector<std::string> lNames;
    for (const size_t lJoint : pJoints)
    {
        lNames.emplace_back(mNodes[lJoint].mNode->GetName());
    }
    const std::vector<KQexSide>   lSides = SidesOf(lNames);
    std::vector<KQexGltfBoneMesh> lMeshes(kSideCount, KQexGltfBoneMesh(lBones.empty() ? 0.0 : SizeOf(lBones)));
    for (const KQexGltfBone& lBone : lBones)
    {
        lMeshes[lSides[lBone.mJoint]].AddBone(lBone.mStart, lBone.mEnd, static_cast<std::uint16_t>(lBone.mJoint));
    }
    KQexGltfModel::KMesh lMesh;
    lMesh.mName = mNodeNames.Make(mModel.mSkins[static_cast<size_t>(pSkin)].mName + "_bones");
    for (const KQexSide lSide : {eSIDE_MIDDLE, eSIDE_LEFT, eSIDE_RIGHT})
    {
        if (!lMeshes[lSide].IsEmpty())
        {
            AddPrimitive(lMeshes[lSide], lSide, lMesh);
        }
    }
    if (lMesh.mPrimitives.empty())
    {
        return;
    }
    KQexGltfModel::KNode lNode;
    lNode.mName = lMesh.mName;
    lNode.mMesh = static_cast<int>(mModel.mMeshes.size());
    lNode.mSkin = pSkin;
    mModel.mMeshes.push_back(lMesh);
    mModel.mNodes.push_back(lNode);
    mModel.mRootNodes.push_back(static_cast<int>(mModel.mNodes.size()) - 1);
}

} // namespace qexsdk
