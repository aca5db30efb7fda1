#include <qexfigure/kqexfigurechannels.h>

#include <kbaselib/kmath/keulertable.h>
#include <qexscene/kqexanimcurvefiltergimblekiller.h>
#include <qexscene/kqexanimcurvefilterunroll.h>

#include <new>
#include <string>

namespace qexsdk
{

namespace
{

/// Calls pDo(node) for all nodes of the trees.
template <typename TDo>
void ForNodes(const std::vector<KQexNode*>& pRoots, const TDo& pDo)
{
    for (KQexNode* lRoot : pRoots)
    {
        for (KQexNode* lNode = lRoot; lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
        {
            pDo(lNode);
        }
    }
}

/// The tracks of a node's channels, and the keys of each. A channel has a curve, even if it never changes.
void AddChannels(const KQexNode& pNode, const KQexAnimLayer* pLayer, std::vector<KQexDofTrack>& pTracks,
                 std::vector<const KQexKeyStore*>& pKeys)
{
    const int*  lAxes = KmRotationOrderAxes(pNode.GetRotationOrder());
    KQexChannel lChannels[6];
    KQexChannel::Find(lChannels, pNode.mLocalTranslation, pLayer);
    KQexChannel::Find(lChannels + 3, pNode.mLocalRotation, pLayer);
    for (int i = 0; i < 6; ++i)
    {
        const int         lAxis = i < 3 ? i : lAxes[i - 3];
        const KQexChannel lChannel = lChannels[i < 3 ? i : 3 + lAxis];
        if (lChannel.mCurve != nullptr)
        {
            KQexDofTrack lTrack;
            lTrack.mJoint = pNode.GetName();
            lTrack.mNode = &pNode;
            lTrack.mDof.mWord = std::string(i < 3 ? "t" : "r") + "xyz"[lAxis];
            pTracks.push_back(lTrack);
            pKeys.push_back(&lChannel.mCurve->GetKeys());
        }
    }
}

void CopyKeys(const KQexKeyStore& pFrom, KQexKeyStore& pTo)
{
    for (int i = 0; i < pFrom.GetCount(); ++i)
    {
        if (pTo.Set(pFrom.GetTime(i), pFrom.GetValue(i)) < 0)
        {
            throw std::bad_alloc();
        }
    }
}

} // namespace

std::shared_ptr<const KQexDofValues> KeepChannels(const std::vector<KQexNode*>& pRoots, const KQexAnimLayer* pLayer)
{
    const auto                       lValues = std::make_shared<KQexDofValues>();
    std::vector<const KQexKeyStore*> lKeys;
    ForNodes(pRoots, [&](const KQexNode* pNode) { AddChannels(*pNode, pLayer, lValues->mTracks, lKeys); });
    lValues->mKeys = std::vector<KQexKeyStore>(lKeys.size());
    for (size_t i = 0; i < lKeys.size(); ++i)
    {
        CopyKeys(*lKeys[i], lValues->mKeys[i]);
        lValues->mTracks[i].mKeys = &lValues->mKeys[i];
    }
    return lValues;
}

void UnrollChannels(const std::vector<KQexNode*>& pRoots, const KQexAnimLayer* pLayer, bool pIsGimbal)
{
    ForNodes(pRoots,
             [&](KQexNode* pNode)
             {
                 const KQexAnimCurveNode* lCurveNode = pNode->mLocalRotation.GetCurveNode(pLayer);
                 if (lCurveNode == nullptr)
                 {
                     return;
                 }
                 KQexAnimCurve*                  lCurves[3] = {lCurveNode->GetCurve(0), lCurveNode->GetCurve(1), lCurveNode->GetCurve(2)};
                 const int                       lOrder = static_cast<int>(pNode->GetRotationOrder());
                 KQexAnimCurveFilterUnroll       lUnroll;
                 KQexAnimCurveFilterGimbleKiller lGimbal;
                 lUnroll.SetRotationOrder(lOrder <= eEULER_ZYX ? 2 * lOrder : 0);
                 lGimbal.SetRotationOrder(lOrder <= eEULER_ZYX ? 2 * lOrder : 0);
                 pIsGimbal ? lGimbal.Apply(lCurves, 3) : lUnroll.Apply(lCurves, 3);
             });
}

} // namespace qexsdk
