// Nodes and curves from a clip.

#include <kbaselib/kmath/keulerorder.h>
#include <qexclip/kqexclipedit.h>
#include <qexscene/kqexscene.h>
#include <qexscene/kqexsceneundo.h>

#include <new>

namespace qexsdk
{

namespace
{

/// The order code of each joint's rotations: bones with fewer than three keep these in it.
std::vector<int> OrdersOf(const KQexClipData& pData)
{
    std::vector<int> lOrders;
    std::vector<int> lCodes;
    auto             lDof = pData.mDofs.begin();
    for (int lJoint = 0; lJoint < static_cast<int>(pData.mNames.size()); ++lJoint)
    {
        lCodes.clear();
        for (; lDof != pData.mDofs.end() && lDof->mJoint == lJoint; ++lDof)
        {
            lCodes.push_back(KDofCodeOf(lDof->mDof.mWord));
        }
        lOrders.push_back(EulerOrderFromOrderBuf(lCodes.data(), static_cast<int>(lCodes.size())));
    }
    return lOrders;
}

qexVectorTemplate3<double> ToVector(const float* pNumbers)
{
    return {static_cast<double>(pNumbers[0]), static_cast<double>(pNumbers[1]), static_cast<double>(pNumbers[2])};
}

/// Makes the nodes and curves of a clip in a scene. Every operation is false when memory runs out.
class KQexClipNodes
{
public:
    KQexClipNodes(const KQexClipData& pData, KQexScene* pScene, const char* pTakeName)
        : mData(pData), mScene(pScene), mTake(pTakeName), mOrders(OrdersOf(pData))
    {
    }

    bool Make(std::vector<KQexNode*>& pRoots)
    {
        for (size_t lJoint = 0; lJoint < mData.mNames.size(); ++lJoint)
        {
            if (!MakeNode(lJoint) || !MakeRotationCurves(lJoint))
            {
                return false;
            }
            if (mData.mParents[lJoint] < 0)
            {
                pRoots.push_back(mNodes[lJoint]);
                mScene->GetRootNode()->AddChild(mNodes[lJoint]);
            }
            else
            {
                mNodes[static_cast<size_t>(mData.mParents[lJoint])]->AddChild(mNodes[lJoint]);
            }
        }
        return MakeVectorCurves(mData.mMovingJoints, mData.mTranslations, &KQexNode::mLocalTranslation) &&
               MakeVectorCurves(mData.mScaledJoints, mData.mScalings, &KQexNode::mLocalScaling);
    }

private:
    using KVectorProperty = KQexTypedProperty<qexVectorTemplate3<double>>;

    bool MakeNode(size_t pJoint)
    {
        KQexNode*     lNode = KQexNode::Create(mScene, mData.mNames[pJoint].c_str());
        KQexSkeleton* lSkeleton = lNode != nullptr ? KQexSkeleton::Create(mScene, "") : nullptr;
        if (lSkeleton == nullptr || !lNode->SetNodeAttribute(lSkeleton))
        {
            return false;
        }
        lSkeleton->SetSkeletonType(KQexSkeleton::eSKELETON_JOINT);
        lNode->SetRotationActive(true);
        lNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(mOrders[pJoint] / 2));
        const KQexJointTransform& lRest = mData.mRest[pJoint];
        double                    lAngles[3] = {0.0, 0.0, 0.0};
        KToQuaternion(lRest.mRotation).ToEuler(mOrders[pJoint], lAngles, lAngles);
        lNode->mLocalTranslation.Set(ToVector(lRest.mTranslation));
        lNode->mLocalRotation.Set(qexVectorTemplate3<double>(lAngles[0], lAngles[1], lAngles[2]));
        lNode->mLocalScaling.Set(ToVector(lRest.mScaling));
        mNodes.push_back(lNode);
        return true;
    }

    /// Connects three empty curves to \p pProperty.
    bool MakeCurves(KQexProperty& pProperty, KQexAnimCurve* (&pCurves)[3])
    {
        KQexAnimCurveNode* lCurveNode = pProperty.GetCurveNode(true, mTake);
        for (unsigned int i = 0; i < 3; ++i)
        {
            pCurves[i] = lCurveNode != nullptr ? KQexAnimCurve::Create(mScene, "") : nullptr;
            if (pCurves[i] == nullptr || !lCurveNode->ConnectToChannel(pCurves[i], i, true))
            {
                return false;
            }
        }
        return true;
    }

    bool MakeRotationCurves(size_t pJoint)
    {
        if (!mData.mIsEnd.empty() && mData.mIsEnd[pJoint] != 0)
        {
            return true;
        }
        KQexAnimCurve* lCurves[3];
        if (!MakeCurves(mNodes[pJoint]->mLocalRotation, lCurves))
        {
            return false;
        }
        const qexVectorTemplate3<double> lRest = mNodes[pJoint]->mLocalRotation.Get();
        double                           lAngles[3] = {lRest.mData[0], lRest.mData[1], lRest.mData[2]};
        const float*                     lRotation = mData.mRotations.data() + pJoint * 4;
        for (long long lFrame = 0; lFrame < mData.mSampling.mCount; ++lFrame, lRotation += mData.mNames.size() * 4)
        {
            KToQuaternion(lRotation).ToEuler(mOrders[pJoint], lAngles, lAngles);
            for (int i = 0; i < 3; ++i)
            {
                if (!lCurves[i]->AppendSample(mData.mSampling.GetTime(lFrame), static_cast<float>(lAngles[i])))
                {
                    return false;
                }
            }
        }
        return true;
    }

    bool MakeVectorCurves(const std::vector<int>& pJoints, const std::vector<float>& pValues, KVectorProperty KQexNode::*pProperty)
    {
        for (size_t lIndex = 0; lIndex < pJoints.size(); ++lIndex)
        {
            KQexAnimCurve* lCurves[3];
            if (!MakeCurves(mNodes[static_cast<size_t>(pJoints[lIndex])]->*pProperty, lCurves))
            {
                return false;
            }
            for (long long lFrame = 0; lFrame < mData.mSampling.mCount; ++lFrame)
            {
                const float* lValue = pValues.data() + (static_cast<size_t>(lFrame) * pJoints.size() + lIndex) * 3;
                for (int i = 0; i < 3; ++i)
                {
                    if (!lCurves[i]->AppendSample(mData.mSampling.GetTime(lFrame), lValue[i]))
                    {
                        return false;
                    }
                }
            }
        }
        return true;
    }

    const KQexClipData&    mData;
    KQexScene*             mScene;
    const char*            mTake;
    const std::vector<int> mOrders; ///< By joint: codes of their rotation orders.
    std::vector<KQexNode*> mNodes;  ///< By joint.
};

} // namespace

bool KQexClip::ToScene(KQexScene* pScene, const char* pTakeName, std::vector<KQexNode*>& pRoots) const
{
    if (mData.mNames.empty() || pScene == nullptr || pTakeName == nullptr || *pTakeName == '\0' ||
        pScene->FindAnimStack(pTakeName) != nullptr)
    {
        return false;
    }
    KQexSceneUndo lUndo(pScene);
    try
    {
        std::vector<KQexNode*> lRoots;
        if (!KQexClipNodes(mData, pScene, pTakeName).Make(lRoots))
        {
            return false;
        }
        pRoots.swap(lRoots);
        lUndo.Keep();
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

} // namespace qexsdk
