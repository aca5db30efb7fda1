#include <kbaselib/kmath/kmath.h>
#include <qexioplugins/gltf/kqexgltfwriter.h>

#include <cmath>

namespace qexsdk
{

namespace
{

constexpr size_t kMaxJoints = 65535; ///< Limit of a vertex's 16-bit joint index.

/// Writes the inverse of an affine transform, its translation scaled by pScale, in column-major order; identity when it is singular.
void WriteInverse(const KQexMatrix& pTransform, double pScale, float* pOut)
{
    const double* lA = pTransform.mData[0].mData;
    const double* lB = pTransform.mData[1].mData;
    const double* lC = pTransform.mData[2].mData;
    double        lRows[3][3];
    KmV(lRows[0], lB[1] * lC[2] - lB[2] * lC[1], lB[2] * lC[0] - lB[0] * lC[2], lB[0] * lC[1] - lB[1] * lC[0]);
    KmV(lRows[1], lC[1] * lA[2] - lC[2] * lA[1], lC[2] * lA[0] - lC[0] * lA[2], lC[0] * lA[1] - lC[1] * lA[0]);
    KmV(lRows[2], lA[1] * lB[2] - lA[2] * lB[1], lA[2] * lB[0] - lA[0] * lB[2], lA[0] * lB[1] - lA[1] * lB[0]);
    const double lDeterminant = lA[0] * lRows[0][0] + lA[1] * lRows[0][1] + lA[2] * lRows[0][2];
    const bool   lIsSingular = !(std::fabs(lDeterminant) > 1e-30);
    for (int lColumn = 0; lColumn < 4; ++lColumn)
    {
        for (int lRow = 0; lRow < 4; ++lRow)
        {
            double lValue = lRow == lColumn ? 1.0 : 0.0;
            if (!lIsSingular && lRow < 3 && lColumn < 3)
            {
                lValue = lRows[lRow][lColumn] / lDeterminant;
            }
            else if (!lIsSingular && lRow < 3)
            {
                const double* lT = pTransform.mData[3].mData;
                lValue = -pScale * (lRows[lRow][0] * lT[0] + lRows[lRow][1] * lT[1] + lRows[lRow][2] * lT[2]) / lDeterminant;
            }
            pOut[4 * lColumn + lRow] = static_cast<float>(lValue);
        }
    }
}

} // namespace

void KQexGltfWriter::GetPosition(const KQexGltfNode& pNode, double* pPosition) const
{
    KmVN(pPosition, pNode.mRest.mData[3].mData, mOptions.mScale);
}

void KQexGltfWriter::AddInverseBinds(const std::vector<size_t>& pJoints, KQexGltfModel::KSkin& pSkin)
{
    pSkin.mInverseBinds = mBuffer.AddFloats(eGLTF_MAT4, pJoints.size());
    float* lOut = mBuffer.GetFloats(pSkin.mInverseBinds);
    for (const size_t lJoint : pJoints)
    {
        WriteInverse(mNodes[lJoint].mRest, mOptions.mScale, lOut);
        lOut += 16;
    }
    mBuffer.SetBounds(pSkin.mInverseBinds);
}

/// Adds a skin of the tree's skeleton nodes, or of all its nodes when it has none.
void KQexGltfWriter::AddSkin(int pTree)
{
    std::vector<size_t> lJoints;
    std::vector<size_t> lAll;
    for (size_t i = mTreeStarts[static_cast<size_t>(pTree)]; i < mNodes.size() && mNodes[i].mTree == pTree; ++i)
    {
        lAll.push_back(i);
        if (mNodes[i].mNode->GetSkeleton() != nullptr)
        {
            lJoints.push_back(i);
        }
    }
    if (lJoints.empty())
    {
        lJoints = lAll;
    }
    if (lJoints.size() > kMaxJoints)
    {
        mFile.Report(KQexTextMessage::eWARNING, "Skin not written: more than 65535 joints");
        return;
    }
    KQexGltfModel::KSkin lSkin;
    lSkin.mName = mModel.mNodes[lJoints.front()].mName;
    lSkin.mSkeleton = static_cast<int>(mTreeStarts[static_cast<size_t>(pTree)]);
    lSkin.mJoints.assign(lJoints.begin(), lJoints.end());
    AddInverseBinds(lJoints, lSkin);
    mModel.mSkins.push_back(lSkin);
    if (mOptions.mBoneMesh)
    {
        AddMesh(pTree, lJoints, static_cast<int>(mModel.mSkins.size()) - 1);
    }
}

} // namespace qexsdk
