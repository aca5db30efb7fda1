// A clip from a take of a scene.

#include <kbaselib/kmath/kquaternion.h>
#include <qexclip/kqexclipedit.h>
#include <qexscene/kqexframesink.h>
#include <qexscene/kqexrestpose.h>
#include <qexscene/kqexscene.h>

#include <algorithm>
#include <exception>
#include <unordered_map>
#include <utility>

namespace qexsdk
{

namespace
{

void ToFloats(const double* pFrom, size_t pCount, float* pTo)
{
    std::transform(pFrom, pFrom + pCount, pTo, [](double pNumber) { return static_cast<float>(pNumber); });
}

/// Fills a clip's arrays from a take.
class KQexClipBuilder : public KQexFrameSink
{
public:
    KQexClipBuilder(const KQexAnimLayer* pLayer, const KQexSampling& pSampling, KQexClipData& pData) : mLayer(pLayer), mData(pData)
    {
        mData.mSampling = pSampling;
    }

    void AddTree(KQexNode* pRoot)
    {
        for (KQexNode* lNode = pRoot; lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
        {
            AddJoint(lNode, lNode == pRoot ? -1 : mIndices.at(lNode->GetParent()));
        }
    }

    void AddDofs(const KQexBoneDofs& pDofs)
    {
        for (size_t i = 0; i < mData.mNames.size(); ++i)
        {
            const auto lDofs = pDofs.find(mData.mNames[i]);
            if (lDofs != pDofs.end())
            {
                std::for_each(lDofs->second.begin(), lDofs->second.end(),
                              [&](const KQexBoneDof& pDof) {
                                  mData.mDofs.push_back(KQexClipDof{static_cast<int>(i), pDof});
                              });
            }
        }
    }

    void AddTracks(const std::vector<KQexDofTrack>& pTracks)
    {
        std::vector<std::vector<const KQexDofTrack*>> lTracksOf(mNodes.size());
        for (const KQexDofTrack& lTrack : pTracks)
        {
            const auto lJoint = mIndices.find(lTrack.mNode);
            if (lJoint != mIndices.end())
            {
                lTracksOf[static_cast<size_t>(lJoint->second)].push_back(&lTrack);
            }
        }
        for (size_t i = 0; i < mNodes.size(); ++i)
        {
            for (const KQexDofTrack* lTrack : lTracksOf[i])
            {
                mData.mDofs.push_back(KQexClipDof{static_cast<int>(i), lTrack->mDof});
                mTracks.push_back(lTrack);
            }
        }
    }

    void Begin(const KQexFrameNodes& pNodes, int) override
    {
        const size_t lFrames = static_cast<size_t>(mData.mSampling.mCount);
        KReserveFrames(mData);
        mData.mRotations.resize(lFrames * mNodes.size() * 4);
        mData.mTranslations.resize(lFrames * mData.mMovingJoints.size() * 3);
        mData.mScalings.resize(lFrames * mData.mScaledJoints.size() * 3);
        mData.mDofValues.resize(lFrames * mTracks.size());
        for (const KQexNode* lNode : mNodes)
        {
            mInFrame.push_back(static_cast<size_t>(pNodes.Find(lNode)));
        }
    }

    unsigned int GetParts() const override { return eFRAME_ROTATIONS; }

    size_t GetValueCount() const override { return 0; } // The arrays have space for every frame.

    void Compute(int, const KQexFrame& pFrame, double*) noexcept override
    {
        const size_t lFrame = static_cast<size_t>(pFrame.GetIndex());
        double       lNumbers[3];
        float*       lOut = mData.mRotations.data() + lFrame * mNodes.size() * 4;
        for (const size_t lNode : mInFrame)
        {
            KPutQuaternion(pFrame.GetRotation(lNode), lOut);
            lOut += 4;
        }
        lOut = mData.mTranslations.data() + lFrame * mData.mMovingJoints.size() * 3;
        for (const int lJoint : mData.mMovingJoints)
        {
            pFrame.GetTranslation(mInFrame[static_cast<size_t>(lJoint)], lNumbers);
            ToFloats(lNumbers, 3, lOut);
            lOut += 3;
        }
        lOut = mData.mScalings.data() + lFrame * mData.mScaledJoints.size() * 3;
        for (const int lJoint : mData.mScaledJoints)
        {
            ToFloats(pFrame.GetScaling(mInFrame[static_cast<size_t>(lJoint)]), 3, lOut);
            lOut += 3;
        }
        KQexKeyTimes::KCursor lCursor;
        std::transform(mTracks.begin(), mTracks.end(), mData.mDofValues.data() + lFrame * mTracks.size(),
                       [&](const KQexDofTrack* pTrack) { return static_cast<float>(pTrack->Evaluate(pFrame.GetTime(), lCursor)); });
    }

    bool Write(const KQexFrameBlock&) override { return true; }

    /// Of q and -q, takes in every frame the one nearer to the frame before, so that the numbers do not jump.
    void MakeSignsContinuous()
    {
        const size_t lRow = mNodes.size() * 4;
        for (size_t i = lRow; i < mData.mRotations.size(); i += 4)
        {
            kChooseNearer(&mData.mRotations[i], &mData.mRotations[i - lRow]);
        }
    }

private:
    void AddJoint(KQexNode* pNode, int pParent)
    {
        const int lJoint = static_cast<int>(mNodes.size());
        mIndices.emplace(pNode, lJoint);
        mNodes.push_back(pNode);
        mData.mNames.emplace_back(pNode->GetName());
        mData.mParents.push_back(pParent);
        mData.mRest.push_back(GetRest(pNode));
        const bool lMoves = DiffersFromRest(pNode->mLocalTranslation, mLayer);
        const bool lIsScaled = DiffersFromRest(pNode->mLocalScaling, mLayer);
        if (lMoves)
        {
            mData.mMovingJoints.push_back(lJoint);
        }
        if (lIsScaled)
        {
            mData.mScaledJoints.push_back(lJoint);
        }
        mData.mIsEnd.push_back(static_cast<char>(!lMoves && !lIsScaled && IsEnd(pNode, pParent)));
    }

    bool IsEnd(const KQexNode* pNode, int pParent) const
    {
        return pParent >= 0 && pNode->GetFirstChild() == nullptr && pNode->GetParent()->GetChildCount() == 1 &&
               mData.mNames[static_cast<size_t>(pParent)] + "_End" == pNode->GetName() && !DiffersFromRest(pNode->mLocalRotation, mLayer);
    }

    static KQexJointTransform GetRest(KQexNode* pNode)
    {
        const KQexNodePose lPose(pNode, nullptr);
        KQexJointTransform lRest;
        double             lNumbers[3];
        KQexQuaternion     lRotation;
        lPose.GetTranslation(KTime(0), lNumbers);
        ToFloats(lNumbers, 3, lRest.mTranslation);
        lPose.GetScaling(KTime(0), lNumbers);
        ToFloats(lNumbers, 3, lRest.mScaling);
        lPose.GetRotation(KTime(0), lRotation);
        KPutQuaternion(lRotation, lRest.mRotation);
        return lRest;
    }

    const KQexAnimLayer*                     mLayer;
    KQexClipData&                            mData;
    std::vector<const KQexNode*>             mNodes;   ///< One for each joint.
    std::vector<size_t>                      mInFrame; ///< Their indices in a frame.
    std::vector<const KQexDofTrack*>         mTracks;  ///< One for each of mData.mDofs, or none.
    std::unordered_map<const KQexNode*, int> mIndices;
};

} // namespace

bool KQexClip::FromScene(const std::vector<KQexNode*>& pRoots, KQexAnimStack* pStack, const KQexSampling& pSampling,
                         const KQexClipOptions& pOptions, KQexClip& pClip)
{
    if (pRoots.empty() || pSampling.mCount < 1 || pSampling.mStep.Get() <= 0)
    {
        return false;
    }
    try
    {
        const KQexAnimLayer* const lLayer = KQexLayerOf(pStack);
        KQexClipData               lData;
        KQexClipBuilder            lBuilder(lLayer, pSampling, lData);
        KQexFrameSink* const       lSink = &lBuilder;
        std::for_each(pRoots.begin(), pRoots.end(), [&](KQexNode* pRoot) { lBuilder.AddTree(pRoot); });
        if (pOptions.mDofTracks != nullptr)
        {
            lBuilder.AddTracks(*pOptions.mDofTracks);
        }
        else if (pOptions.mBoneDofs != nullptr)
        {
            lBuilder.AddDofs(*pOptions.mBoneDofs);
        }
        if (KQexRunFrames(pRoots, lLayer, pSampling, &lSink, 1, pOptions.mThreads, pOptions.mProgress) != KQexRunResult::eDONE)
        {
            return false;
        }
        lBuilder.MakeSignsContinuous();
        return FromArrays(std::move(lData), pClip);
    }
    catch (const std::exception&)
    {
        return false; // bad_alloc, or length_error from sizes that no memory has.
    }
}

} // namespace qexsdk
