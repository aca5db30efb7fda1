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

bool SetRestVectors(const std::vector<KQexAsfOrigin>& pOrigins, KQexNode* pRoot, double pScale)
{
    KQexJointFrames lFrames;
    if (!lFrames.Evaluate(pRoot, KTime(0)))
    {
        return false;
    }
    std::unordered_map<const KQexNode*, const double*> lPositions;
    for (int i = 0; i < lFrames.GetCount(); ++i)
    {
        lPositions[lFrames.GetNode(i)] = lFrames.GetFrame(i).mPosition;
    }
    // The skeleton's rest pose is relative to the root's node.
    KgeRMatrix lToRoot;
    KgeInverse(lToRoot, lFrames.GetFrame(0).mRotation);
    std::unordered_map<const KQexAsfNode*, const KQexNode*> lNodeOf;
    for (const KQexAsfOrigin& lOrigin : pOrigins)
    {
        // A dummy starts where its parent bone does, which has no length.
        const auto      lParent = lNodeOf.find(lOrigin.mBone->mParent);
        const KQexNode* lStart = lOrigin.mNode != nullptr ? lOrigin.mNode : lParent != lNodeOf.end() ? lParent->second : nullptr;
        lNodeOf[lOrigin.mBone] = lStart;
        const auto lFrom = lPositions.find(lStart);
        const auto lTo = lPositions.find(lOrigin.mEnd);
        if (lFrom != lPositions.end() && lTo != lPositions.end())
        {
            double lVector[3];
            for (int i = 0; i < 3; ++i)
            {
                lVector[i] = (lTo->second[i] - lFrom->second[i]) * pScale;
            }
            KmRV(lVector, lToRoot.mData, lVector);
            SetVector(*lOrigin.mBone, lVector);
        }
    }
    return true;
}

} // namespace qexsdk
