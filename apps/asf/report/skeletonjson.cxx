#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/skeletoninfo.h>
#include <kbaselib/kmath/kdofcodes.h>

#include <algorithm>

namespace asfapp
{

namespace
{

const char* OrderWord(int pCode)
{
    static const char* const sWords[] = {"XYZ", "XZY", "YZX", "YXZ", "ZXY", "ZYX"};
    return pCode >= 0 && pCode < 12 && pCode % 2 == 0 ? sWords[pCode / 2] : "";
}

template <class KVector>
KJson JsonVector(const KVector& pVector)
{
    return KJson::array({pVector[0], pVector[1], pVector[2]});
}

/// The rows of the matrix for column vectors; the model stores the images of the axes, its columns.
KJson JsonMatrix(const qexsdk::KgeRMatrix& pMatrix)
{
    KJson lRows = KJson::array();
    for (int lRow = 0; lRow < 3; ++lRow)
    {
        lRows.push_back(KJson::array({pMatrix.mData[0][lRow], pMatrix.mData[1][lRow], pMatrix.mData[2][lRow]}));
    }
    return lRows;
}

KJson JsonDofs(const qexsdk::KQexAsfNode& pNode)
{
    KJson lDofs = KJson::array();
    for (int lIndex = 0; lIndex < pNode.mOrderCount; ++lIndex)
    {
        const int     lCode = pNode.mOrderBuf[lIndex];
        const bool*   lActive = pNode.mLimitsActive[lCode];
        const double* lLimit = pNode.mLimitsBuf[lCode];
        lDofs.push_back({{"dof", qexsdk::kDofWords[lCode]},
                         {"min", lActive[0] ? KJson(lLimit[0]) : KJson(nullptr)},
                         {"max", lActive[1] ? KJson(lLimit[1]) : KJson(nullptr)}});
    }
    return lDofs;
}

KJson JsonBone(const qexsdk::KQexRestBone& pBone, double pScale)
{
    const qexsdk::KQexAsfNode& lNode = *pBone.mNode;
    KJson                      lBone;
    lBone["name"] = lNode.mName;
    lBone["parent"] = pBone.mParent < 0 ? KJson(nullptr) : KJson(pBone.mParent);
    lBone["depth"] = pBone.mDepth;
    lBone["length"] = lNode.mLength;
    lBone["lengthInFile"] = lNode.mLength / pScale;
    lBone["direction"] = JsonVector(lNode.mDirectionV);
    lBone["dofs"] = JsonDofs(lNode);
    lBone["axisAngles"] = JsonVector(lNode.mOrientationV);
    lBone["axisOrder"] = OrderWord(lNode.mOrientationOrder);
    lBone["axisMatrix"] = JsonMatrix(lNode.mAxisRM);
    lBone["vector"] = JsonVector(lNode.mPositionV);
    lBone["localTranslation"] = JsonVector(lNode.mLT);
    lBone["localRotation"] = JsonVector(lNode.mLR);
    lBone["start"] = JsonPoint(pBone.mStart);
    lBone["end"] = JsonPoint(pBone.mEnd);
    return lBone;
}

KJson JsonSkeleton(const qexsdk::KQexSkeletonFile& pSkeleton)
{
    const qexsdk::KQexAsfScene& lScene = *pSkeleton.GetScene();
    KJson                       lBones = KJson::array();
    long long                   lDofs = 0;
    int                         lDepth = 0;
    for (const qexsdk::KQexRestBone& lBone : pSkeleton.GetBones())
    {
        lBones.push_back(JsonBone(lBone, pSkeleton.GetCentimetresPerUnit()));
        lDofs += lBone.mNode->mOrderCount;
        lDepth = std::max(lDepth, lBone.mDepth);
    }
    KPoint lMin;
    KPoint lMax;
    pSkeleton.GetBounds(lMin, lMax);
    KJson lResult;
    lResult["name"] = lScene.mName;
    lResult["units"] = {{"mass", lScene.mMassUnit}, {"length", lScene.mLengthUnit}, {"angle", lScene.mAngleUnit == 1.0 ? "deg" : "rad"}};
    lResult["degreesPerAngleUnit"] = lScene.mAngleUnit;
    lResult["centimetresPerUnit"] = pSkeleton.GetCentimetresPerUnit();
    lResult["boneCount"] = lBones.empty() ? 0 : lBones.size() - 1;
    lResult["dofCount"] = lDofs;
    lResult["depth"] = lDepth;
    lResult["height"] = lMax.mY - lMin.mY;
    lResult["bounds"] = {{"min", JsonPoint(lMin)}, {"max", JsonPoint(lMax)}};
    lResult["bones"] = lBones;
    return lResult;
}

} // namespace

void WriteSkeletonJson(const qexsdk::KQexFigureFile& pFile, const qexsdk::KQexSkeletonFile& pSkeleton, KConsole& pConsole)
{
    KJson lObject = JsonHead("skeleton", pFile.GetPath(), pSkeleton.IsOk(), pSkeleton.GetMessages());
    lObject["skeleton"] = pSkeleton.GetBones().empty() ? KJson(nullptr) : JsonSkeleton(pSkeleton);
    PrintJsonLine(lObject, pConsole);
}

} // namespace asfapp
