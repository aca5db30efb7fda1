#include <qexioplugins/acclaim/exchange/kqexasfuneven.h>

#include <qexioplugins/acclaim/amc/kqexamcframes.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <unordered_map>

namespace qexsdk
{

namespace
{

void SetVector(KQexAsfNode& pBone, const double* pVector)
{
    pBone.mPositionV = pVector;
    pBone.mLength = KmVlength(pVector) / kCentimetresPerInch;
    KmVnorm(pBone.mDirectionV.mData, pVector);
}

} // namespace

void SetRestVectors(const std::vector<KQexAsfOrigin>& pOrigins, KQexNode* pRoot, double pScale)
{
    const KQexFrameNodes lNodes({pRoot}, pRoot->GetScene()->GetEvaluator()->GetLayer());
    KQexFrame            lFrame(lNodes, eFRAME_WORLD);
    KQexJointFrames      lFrames;
    lFrame.Evaluate(0, KTime(0));
    lFrames.Set(lFrame);
    const auto lPositionOf = [&](const KQexNode* pNode) -> const double*
    {
        const int lIndex = lNodes.Find(pNode);
        return lIndex >= 0 ? lFrames.GetFrame(static_cast<size_t>(lIndex)).mPosition : nullptr;
    };
    // The skeleton's rest pose is relative to the root's node.
    KgeRMatrix lToRoot;
    KgeInverse(lToRoot, lFrames.GetFrame(static_cast<size_t>(lNodes.Find(pRoot))).mRotation);
    std::unordered_map<const KQexAsfNode*, const KQexNode*> lNodeOf;
    for (const KQexAsfOrigin& lOrigin : pOrigins)
    {
        // A dummy starts where its parent bone does, which has no length.
        const auto      lParent = lNodeOf.find(lOrigin.mBone->mParent);
        const KQexNode* lStart = lOrigin.mNode != nullptr ? lOrigin.mNode : lParent != lNodeOf.end() ? lParent->second : nullptr;
        lNodeOf[lOrigin.mBone] = lStart;
        const double* lFrom = lPositionOf(lStart);
        const double* lTo = lPositionOf(lOrigin.mEnd);
        if (lFrom != nullptr && lTo != nullptr)
        {
            double lVector[3];
            for (int i = 0; i < 3; ++i)
            {
                lVector[i] = (lTo[i] - lFrom[i]) * pScale;
            }
            KmRV(lVector, lToRoot.mData, lVector);
            SetVector(*lOrigin.mBone, lVector);
        }
    }
}

} // namespace qexsdk
