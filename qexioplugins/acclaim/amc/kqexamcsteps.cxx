#include <qexioplugins/acclaim/amc/kqexamcsteps.h>

#include <algorithm>

namespace qexsdk
{

namespace
{

constexpr double kUnscaled[3] = {1.0, 1.0, 1.0};

/// Whether one of the channels pFirst to pEnd - 1 of a node has keys.
bool HasKeys(const KQexNodePose& pPose, int pFirst, int pEnd)
{
    return std::any_of(pPose.GetChannels() + pFirst, pPose.GetChannels() + pEnd,
                       [](const KQexChannel& pChannel) { return pChannel.IsAnimated(); });
}

bool IsUnscaled(const KQexNodePose& pPose)
{
    return std::all_of(pPose.GetChannels() + 6, pPose.GetChannels() + 9,
                       [](const KQexChannel& pChannel) { return pChannel.IsConstantAt(1.0); });
}

void CopyRotation(KgeRMatrix& pRotation, const KQexMatrix& pTransform)
{
    for (int i = 0; i < 3; ++i)
    {
        KmVset(pRotation.mData[i], pTransform.mData[i].mData);
    }
}

} // namespace

void KQexAmcSteps::Prepare(const KQexFrameNodes& pNodes, const std::vector<KQexAmcJoint>& pJoints)
{
    mJoints = pJoints;
    for (KQexAmcJoint& lJoint : mJoints)
    {
        lJoint.mPose = lJoint.mNode != nullptr ? pNodes.Find(lJoint.mNode) : -1;
    }
    FindSpans(pNodes);
}

/// Collects the links of all joints. Falls back to world transforms when a node is scaled or when there are about twice as many links
/// as nodes: many bones may share one long chain of nodes without bones.
void KQexAmcSteps::FindSpans(const KQexFrameNodes& pNodes)
{
    mLinks.clear();
    mSpans.clear();
    mIsLocal = true;
    for (size_t i = 0; i < mJoints.size() && mIsLocal; ++i)
    {
        const int lFrom = mJoints[i].mParent;
        mIsLocal = AddSpan(mJoints[i], lFrom >= 0 ? mJoints[static_cast<size_t>(lFrom)].mNode : nullptr, pNodes);
    }
}

bool KQexAmcSteps::AddSpan(const KQexAmcJoint& pJoint, const KQexNode* pFrom, const KQexFrameNodes& pNodes)
{
    KSpan lSpan;
    lSpan.mFirst = mLinks.size();
    lSpan.mIsTranslationFixed = true;
    const KQexNode* lNode = pJoint.mNode;
    for (; lNode != nullptr && lNode != pFrom; lNode = lNode->GetParent())
    {
        const KLink         lLink{lNode, static_cast<size_t>(pNodes.Find(lNode))};
        const KQexNodePose& lPose = pNodes.GetPose(lLink.mIndex);
        if (mLinks.size() == 2 * pNodes.GetCount() + 16 || !IsUnscaled(lPose))
        {
            return false;
        }
        // The last node's rotation moves its descendants, not the node itself.
        lSpan.mIsTranslationFixed = lSpan.mIsTranslationFixed && !HasKeys(lPose, 0, lNode == pJoint.mNode ? 3 : 6);
        mLinks.push_back(lLink);
    }
    std::reverse(mLinks.begin() + static_cast<std::ptrdiff_t>(lSpan.mFirst), mLinks.end());
    lSpan.mEnd = mLinks.size();
    mSpans.push_back(lSpan);
    return pJoint.mNode == nullptr || lNode == pFrom;
}

void KQexAmcSteps::Begin(const KQexFrame& pFrame, KQexAmcStepState& pState) const
{
    pState.mFrame = &pFrame;
    if (!mIsLocal)
    {
        pState.mFrames.Set(pFrame);
    }
}

void KQexAmcSteps::Get(size_t pJoint, const KQexAmcStepState& pState, KQexAmcStep& pStep) const
{
    if (mIsLocal)
    {
        GetLocal(mSpans[pJoint], *pState.mFrame, pStep);
    }
    else
    {
        GetGlobal(pJoint, pState.mFrames, pStep);
    }
}

void KQexAmcSteps::GetLocal(const KSpan& pSpan, const KQexFrame& pFrame, KQexAmcStep& pStep) const
{
    KQexMatrix lStep;
    for (size_t i = pSpan.mFirst; i < pSpan.mEnd; ++i)
    {
        const double* lChannels = pFrame.GetChannels(mLinks[i].mIndex);
        KQexMatrix    lLocal;
        mLinks[i].mNode->ComposeLocalTransform(i == pSpan.mFirst ? lStep : lLocal, lChannels, lChannels + 3, kUnscaled);
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
    const KQexJointFrame& lFrame = pFrames.GetFrame(static_cast<size_t>(mJoints[pJoint].mPose));
    KgeSet(pStep.mRotation, lFrame.mRotation);
    KmVset(pStep.mTranslation, lFrame.mPosition);
    const int lParent = mJoints[pJoint].mParent;
    if (lParent >= 0)
    {
        const KQexJointFrame& lFrom = pFrames.GetFrame(static_cast<size_t>(mJoints[static_cast<size_t>(lParent)].mPose));
        KgeRMatrix            lFromInv;
        KgeInverse(lFromInv, lFrom.mRotation);
        KgeMult(pStep.mRotation, lFromInv, pStep.mRotation);
        KmV(pStep.mTranslation, pStep.mTranslation[0] - lFrom.mPosition[0], pStep.mTranslation[1] - lFrom.mPosition[1],
            pStep.mTranslation[2] - lFrom.mPosition[2]);
        KmRV(pStep.mTranslation, lFromInv.mData, pStep.mTranslation);
    }
}

void KQexAmcSteps::GetAngles(size_t pJoint, const KQexAmcStepState& pState, double* pAngles) const
{
    std::copy_n(pState.mFrame->GetAngles(mLinks[mSpans[pJoint].mFirst].mIndex), 3, pAngles);
}

} // namespace qexsdk
