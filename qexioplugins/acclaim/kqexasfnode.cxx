#include <qexioplugins/acclaim/kqexasfnode.h>

#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <cstring>

namespace qexsdk
{

namespace
{

void DestroyCurve(KQexAnimCurve*& pCurve)
{
    if (pCurve == nullptr)
    {
        return;
    }
    pCurve->Destroy(false, false);
    pCurve = nullptr;
}

void DestroyCurves(KQexAsfNode& pNode)
{
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        DestroyCurve(pNode.mLTData[lIter]);
        DestroyCurve(pNode.mLRData[lIter]);
    }
}

} // namespace

KQexAsfNode::KQexAsfNode()
    : mName{},
      mOrderCount(0),
      mLimitsActive{},
      mOrientationOrder(0),
      mLength(0.0),
      mParent(nullptr),
      mLTNode(nullptr),
      mLRNode(nullptr),
      mLSNode(nullptr),
      mLTData{},
      mLRData{},
      mInvalidateRLimits(false),
      mScene(nullptr),
      mWalkIndex(0),
      mWalkParent(nullptr)
{
}

KQexAsfNode::~KQexAsfNode()
{
    KQexAsfWalk lWalk(this);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (lWalk.IsEntering())
        {
            DestroyCurves(*lNode);
        }
        else if (lNode != this)
        {
            // Its children are released already; its own destructor must not walk them.
            lNode->mChildBuf.Clear();
            QexSdkDelete(lNode);
        }
    }
    mScene = nullptr;
}

HKQexAsfNode KQexAsfNode::GetChild(int pIndex)
{
    // Deliberate: only the upper bound is checked; callers count up from 0 until there is no child.
    return pIndex < mChildBuf.GetCount() ? mChildBuf[pIndex] : nullptr;
}

HKQexAsfNode KQexAsfNode::Find(const char* pName)
{
    KQexAsfWalk lWalk(this);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (lWalk.IsEntering() && std::strcmp(lNode->mName, pName) == 0)
        {
            return lNode;
        }
    }
    return nullptr;
}

bool KQexAsfNode::AddChild(HKQexAsfNode pChild)
{
    if (mChildBuf.Add(pChild) < 0)
    {
        return false;
    }
    pChild->mParent = this;
    return true;
}

void KQexAsfNode::RemoveChild(HKQexAsfNode pChild)
{
    // Deliberately cleared before the search: even a bone that is not a child of this one has no parent afterwards.
    pChild->mParent = nullptr;
    const int lCount = mChildBuf.GetCount();
    for (int lIter = 0; lIter < lCount; ++lIter)
    {
        if (mChildBuf[lIter] == pChild)
        {
            mChildBuf.RemoveAt(lIter);
            return;
        }
    }
}

void KQexAsfNode::SetScene(KQexScene* pScene)
{
    mScene = pScene;
}

bool KQexAsfNode::GetInvalidLimits()
{
    return mInvalidateRLimits;
}

void KQexAsfNode::SetInvalidLimits(bool pInvalid)
{
    mInvalidateRLimits = pInvalid;
}

KQexVector4& KQexAsfNode::GetTOffset()
{
    return mTOffset;
}

KQexVector4& KQexAsfNode::GetPreRotation()
{
    return mPreRotation;
}

KQexVector4& KQexAsfNode::GetPostRotation()
{
    return mPostRotation;
}

} // namespace qexsdk
