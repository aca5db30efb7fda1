// A clip from a take of a scene.

#include <kbaselib/kbase/kparallel.h>
#include <qexclip/kqexclip.h>
#include <qexscene/kqexnodepose.h>
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

constexpr long long kBlock = 256; ///< Frames that a thread evaluates at a time.

/// Fills a clip's arrays from a take.
class KQexClipBuilder
{
public:
    KQexClipBuilder(const KQexAnimLayer* pLayer, const KQexSampling& pSampling, KQexClipData& pData) : mLayer(pLayer), mData(pData)
    {
        mData.mSampling = pSampling;
    }

    void AddTree(KQexNode* pRoot, const KQexBoneDofs* pDofs)
    {
        for (KQexNode* lNode = pRoot; lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
        {
            AddJoint(lNode, lNode == pRoot ? -1 : mIndices.at(lNode->GetParent()), pDofs);
        }
    }

    bool Evaluate(const KQexClipOptions& pOptions)
    {
        const size_t lFrames = static_cast<size_t>(mData.mSampling.mCount);
        mData.mRotations.resize(lFrames * mPoses.size() * 4);
        mData.mTranslations.resize(lFrames * mData.mMovingJoints.size() * 3);
        mData.mScalings.resize(lFrames * mData.mScaledJoints.size() * 3);
        const int       lThreads = KThreadCount(pOptions.mThreads);
        const long long lRound = kBlock * lThreads;
        for (long long lFirst = 0; lFirst < mData.mSampling.mCount; lFirst += lRound)
        {
            if (pOptions.mProgress && !pOptions.mProgress(static_cast<double>(lFirst) / static_cast<double>(mData.mSampling.mCount)))
            {
                return false;
            }
            KParallelFor(lThreads, lThreads, [this, lFirst](int pThread) { EvaluateBlock(lFirst + pThread * kBlock); });
        }
        MakeContinuous();
        return true;
    }

private:
    void AddJoint(KQexNode* pNode, int pParent, const KQexBoneDofs* pDofs)
    {
        const int lJoint = static_cast<int>(mPoses.size());
        mIndices.emplace(pNode, lJoint);
        mPoses.emplace_back(pNode, mLayer);
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
        const bool lIsEnd = !lMoves && !lIsScaled && IsEnd(pNode, pParent);
        mData.mIsEnd.push_back(static_cast<char>(lIsEnd));
        const auto lDofs = pDofs != nullptr ? pDofs->find(pNode->GetName()) : KQexBoneDofs::const_iterator();
        if (pDofs != nullptr && lDofs != pDofs->end())
        {
            for (const KQexBoneDof& lDof : lDofs->second)
            {
                mData.mDofs.push_back(KQexClipDof{lJoint, lDof});
            }
        }
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
        ToFloats(lRotation.mData, 4, lRest.mRotation);
        return lRest;
    }

    static void ToFloats(const double* pFrom, int pCount, float* pTo)
    {
        std::transform(pFrom, pFrom + pCount, pTo, [](double pNumber) { return static_cast<float>(pNumber); });
    }

    void EvaluateBlock(long long pFirst)
    {
        const long long lEnd = std::min(pFirst + kBlock, mData.mSampling.mCount);
        for (long long lFrame = pFirst; lFrame < lEnd; ++lFrame)
        {
            EvaluateFrame(static_cast<size_t>(lFrame), mData.mSampling.GetTime(lFrame));
        }
    }

    void EvaluateFrame(size_t pFrame, KTime pTime)
    {
        float*         lRotations = mData.mRotations.data() + pFrame * mPoses.size() * 4;
        KQexQuaternion lRotation;
        for (const KQexNodePose& lPose : mPoses)
        {
            lPose.GetRotation(pTime, lRotation);
            ToFloats(lRotation.mData, 4, lRotations);
            lRotations += 4;
        }
        double lNumbers[3];
        float* lTranslations = mData.mTranslations.data() + pFrame * mData.mMovingJoints.size() * 3;
        for (const int lJoint : mData.mMovingJoints)
        {
            mPoses[static_cast<size_t>(lJoint)].GetTranslation(pTime, lNumbers);
            ToFloats(lNumbers, 3, lTranslations);
            lTranslations += 3;
        }
        float* lScalings = mData.mScalings.data() + pFrame * mData.mScaledJoints.size() * 3;
        for (const int lJoint : mData.mScaledJoints)
        {
            mPoses[static_cast<size_t>(lJoint)].GetScaling(pTime, lNumbers);
            ToFloats(lNumbers, 3, lScalings);
            lScalings += 3;
        }
    }

    /// Of q and -q, takes in every frame the one nearer to the frame before, so that the numbers do not jump.
    void MakeContinuous()
    {
        const size_t lRow = mPoses.size() * 4;
        for (size_t i = lRow; i < mData.mRotations.size(); i += 4)
        {
            float*       lThis = &mData.mRotations[i];
            const float* lLast = lThis - lRow;
            if (lThis[0] * lLast[0] + lThis[1] * lLast[1] + lThis[2] * lLast[2] + lThis[3] * lLast[3] < 0.0F)
            {
                std::transform(lThis, lThis + 4, lThis, [](float pNumber) { return -pNumber; });
            }
        }
    }

    const KQexAnimLayer*                     mLayer;
    KQexClipData&                            mData;
    std::vector<KQexNodePose>                mPoses;
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
        KQexClipData    lData;
        KQexClipBuilder lBuilder(pStack != nullptr ? pStack->GetMember<KQexAnimLayer>(0) : nullptr, pSampling, lData);
        for (KQexNode* lRoot : pRoots)
        {
            lBuilder.AddTree(lRoot, pOptions.mBoneDofs);
        }
        return lBuilder.Evaluate(pOptions) && FromArrays(std::move(lData), pClip);
    }
    catch (const std::exception&)
    {
        return false; // bad_alloc, or length_error from sizes that no memory has.
    }
}

} // namespace qexsdk
