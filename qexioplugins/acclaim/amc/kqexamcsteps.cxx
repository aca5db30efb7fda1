#include <qexioplugins/acclaim/amc/kqexamcsteps.h>

#include <algorithm>

namespace qexsdk
{

namespace
{

constexpr double kUnscaled[3] = {1.0, 1.0, 1.0};

bool IsUnscaled(const KQexNode& pNode, const KQexAnimLayer* pLayer)
{
    KQexChannel lChannels[3];
    KQexChannel::Find(lChannels, pNode.mLocalScaling, pLayer);
    return std::all_of(lChannels, lChannels + 3, [](const KQexChannel& pChannel) { return pChannel.IsConstantAt(1.0); });
}

void CopyRotation(KgeRMatrix& pRotation, const KQexMatrix& pTransform)
{
    for (int i = 0; i < 3; ++i)
    {
        KmVset(pRotation.mData[i], pTransform.mData[i].mData);
    }
}

} // namespace

void KQexAmcSteps::Prepare(KQexNode* pRoot, const std::vector<KQexAmcJoint>& pJoints)
{
    const KQexAnimStack* lStack = pRoot->GetScene()->GetEvaluator()->GetContext();
    mRoot = pRoot;
    mJoints = pJoints;
    FindSpans(lStack != nullptr ? lStack->GetMember<KQexAnimLayer>(0) : nullptr, 1 + static_cast<size_t>(pRoot->GetChildCount(true)));
}

/// Collects the links of all joints. Falls back to global transforms when a node is scaled or when there are about twice as many links
/// as nodes: many bones may share one long chain of nodes without bones.
void KQexAmcSteps::FindSpans(const KQexAnimLayer* pLayer, size_t pNodes)
{
    mLinks.clear();
    mSpans.clear();
    mIsLocal = true;
    for (size_t i = 0; i < mJoints.size() && mIsLocal; ++i)
    {
        const int lFrom = mJoints[i].mParent;
        mIsLocal = AddSpan(mJoints[i], lFrom >= 0 ? mJoints[static_cast<size_t>(lFrom)].mNode : nullptr, pLayer, 2 * pNodes + 16);
    }
}

bool KQexAmcSteps::AddSpan(const KQexAmcJoint& pJoint, const KQexNode* pFrom, const KQexAnimLayer* pLayer, size_t pMaxLinks)
{
    KSpan lSpan;
    lSpan.mFirst = mLinks.size();
    lSpan.mIsTranslationFixed = true;
    const KQexNode* lNode = pJoint.mNode;
    for (; lNode != nullptr && lNode != pFrom; lNode = lNode->GetParent())
    {
        KLink lLink;
        lLink.mNode = lNode;
        KQexChannel::Find(lLink.mChannels, lNode->mLocalTranslation, pLayer);
        KQexChannel::Find(lLink.mChannels + 3, lNode->mLocalRotation, pLayer);
        if (mLinks.size() == pMaxLinks || !IsUnscaled(*lNode, pLayer))
        {
            return false;
        }
        // The last node's rotation moves its descendants, not the node itself.
        const int lMoving = lNode == pJoint.mNode ? 3 : 6;
        lSpan.mIsTranslationFixed =
            lSpan.mIsTranslationFixed &&
            std::none_of(lLink.mChannels, lLink.mChannels + lMoving, [](const KQexChannel& pChannel) { return pChannel.IsAnimated(); });
        mLinks.push_back(lLink);
    }
    std::reverse(mLinks.begin() + static_cast<std::ptrdiff_t>(lSpan.mFirst), mLinks.end());
    lSpan.mEnd = mLinks.size();
    mSpans.push_back(lSpan);
    return pJoint.mNode == nullptr || lNode == pFrom;
}

bool KQexAmcSteps::Begin(KTime pTime, KQexAmcStepState& pState) const
{
    pState.mTime = pTime;
    return mIsLocal || pState.mFrames.Evaluate(mRoot, pTime);
}

void KQexAmcSteps::Get(size_t pJoint, KQexAmcStepState& pState, KQexAmcStep& pStep) const
{
    if (mIsLocal)
    {
        GetLocal(mSpans[pJoint], pState, pStep);
    }
    else
    {
        GetGlobal(pJoint, pState.mFrames, pStep);
    }
}

void KQexAmcSteps::GetLocal(const KSpan& pSpan, KQexAmcStepState& pState, KQexAmcStep& pStep) const
{
    KQexMatrix lStep;
    for (size_t i = pSpan.mFirst; i < pSpan.mEnd; ++i)
    {
        const KLink& lLink = mLinks[i];
        double       lValues[6];
        KQexMatrix   lLocal;
        for (int k = 0; k < 6; ++k)
        {
            lValues[k] = lLink.mChannels[k].Evaluate(pState.mTime, pState.mKeyCursor);
        }
        lLink.mNode->ComposeLocalTransform(i == pSpan.mFirst ? lStep : lLocal, lValues, lValues + 3, kUnscaled);
        if (i > pSpan.mFirst)
        {
            lStep = lStep * lLocal;
        }
    }
    CopyRotation(pStep.mRotation, lStep);
    KmVset(pStep.mTranslation, lStep.mData[3].mData);
}

void KQexAmcSteps::GetGlobal(size_t pJoint, const KQexJointFrames& pFrames, KQexAmcStep& pStep) const
{
    const KQexJointFrame& lFrame = pFrames.GetFrame(mJoints[pJoint].mPose);
    KgeSet(pStep.mRotation, lFrame.mRotation);
    KmVset(pStep.mTranslation, lFrame.mPosition);
    const int lParent = mJoints[pJoint].mParent;
    if (lParent >= 0)
    {
        const KQexJointFrame& lFrom = pFrames.GetFrame(mJoints[static_cast<size_t>(lParent)].mPose);
        KgeRMatrix            lFromInv;
        KgeInverse(lFromInv, lFrom.mRotation);
        KgeMult(pStep.mRotation, lFromInv, pStep.mRotation);
        KmV(pStep.mTranslation, pStep.mTranslation[0] - lFrom.mPosition[0], pStep.mTranslation[1] - lFrom.mPosition[1],
            pStep.mTranslation[2] - lFrom.mPosition[2]);
        KmRV(pStep.mTranslation, lFromInv.mData, pStep.mTranslation);
    }
}

void KQexAmcSteps::GetAngles(size_t pJoint, KQexAmcStepState& pState, double* pAngles) const
{
    const KQexChannel* lChannels = mLinks[mSpans[pJoint].mFirst].mChannels + 3;
    for (int i = 0; i < 3; ++i)
    {
        pAngles[i] = lChannels[i].Evaluate(pState.mTime, pState.mKeyCursor);
    }
}

} // namespace qexsdk
