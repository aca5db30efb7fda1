#include <kbaselib/kmath/keulertable.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexscene/kqexnodepose.h>

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

/// \file
/// The degrees of freedom of a loaded figure, and clips of its takes.

namespace qexsdk
{

namespace
{

constexpr const char* kTranslationWords[3] = {"tx", "ty", "tz"};
constexpr const char* kRotationWords[3] = {"rx", "ry", "rz"};

/// A channel has a curve, even if it never changes.
void AddChannel(const KQexNode& pNode, const char* pWord, const KQexChannel& pChannel, std::vector<KQexDofTrack>& pTracks)
{
    if (pChannel.mCurve == nullptr)
    {
        return;
    }
    KQexDofTrack lTrack;
    lTrack.mJoint = pNode.GetName();
    lTrack.mNode = &pNode;
    lTrack.mDof.mWord = pWord;
    lTrack.mKeys = &pChannel.mCurve->GetKeys();
    lTrack.mValue = *pChannel.mValue;
    pTracks.push_back(lTrack);
}

/// The channels that a node has in a BVH file.
void AddChannels(KQexNode* pNode, const KQexAnimLayer* pLayer, std::vector<KQexDofTrack>& pTracks)
{
    const KQexNodePose lPose(pNode, pLayer);
    const int*         lAxes = KmRotationOrderAxes(pNode->GetRotationOrder());
    for (int i = 0; i < 3; ++i)
    {
        AddChannel(*pNode, kTranslationWords[i], lPose.GetChannels()[i], pTracks);
    }
    for (int i = 0; i < 3; ++i)
    {
        AddChannel(*pNode, kRotationWords[lAxes[i]], lPose.GetChannels()[3 + lAxes[i]], pTracks);
    }
}

/// The tracks of a motion whose bones have nodes, with these and with the limits of the skeleton.
std::vector<KQexDofTrack> BindTracks(const std::vector<KQexDofTrack>& pTracks, const std::vector<KQexFigureJoint>& pJoints,
                                     const KQexBoneDofs& pDofs)
{
    std::unordered_map<std::string, const KQexNode*> lNodes; // Of several joints with one name the first, as for the motion's reader.
    for (const KQexFigureJoint& lJoint : pJoints)
    {
        lNodes.emplace(lJoint.mName, lJoint.mNode);
    }
    std::vector<KQexDofTrack> lBound;
    for (const KQexDofTrack& lTrack : pTracks)
    {
        const auto lNode = lNodes.find(lTrack.mJoint);
        const auto lBone = pDofs.find(lTrack.mJoint);
        if (lNode == lNodes.end() || lBone == pDofs.end())
        {
            continue;
        }
        const auto lDof = std::find_if(lBone->second.begin(), lBone->second.end(),
                                       [&](const KQexBoneDof& pDof) { return pDof.mWord == lTrack.mDof.mWord; });
        lBound.push_back(lTrack);
        lBound.back().mNode = lNode->second;
        lBound.back().mDof = lDof != lBone->second.end() ? *lDof : lTrack.mDof;
    }
    return lBound;
}

} // namespace

bool KQexFigure::GetDofTracks(const KQexFigureTake& pTake, std::vector<KQexDofTrack>& pTracks) const noexcept
{
    KQexFigureReport lReport;
    return RunGuarded(lReport,
                      [&]
                      {
                          std::vector<KQexDofTrack> lTracks;
                          if (pTake.mDofValues != nullptr)
                          {
                              lTracks = BindTracks(pTake.mDofValues->mTracks, mJoints, mDofs);
                          }
                          for (const KQexFigureJoint& lJoint : mJoints)
                          {
                              if (mHasChannels && !lJoint.mIsEnd)
                              {
                                  AddChannels(lJoint.mNode, pTake.mStack->GetMember<KQexAnimLayer>(0), lTracks);
                              }
                          }
                          pTracks = std::move(lTracks);
                          return true;
                      });
}

bool KQexFigure::MakeClip(const KQexFigureTake* pTake, const KQexSampling& pSampling, const KQexClipOptions& pOptions,
                          KQexClip& pClip) const noexcept
{
    KQexFigureReport lReport;
    return mScene != nullptr &&
           RunGuarded(lReport,
                      [&]
                      {
                          std::vector<KQexDofTrack> lTracks;
                          KQexClipOptions           lOptions = pOptions;
                          if (lOptions.mBoneDofs == nullptr && lOptions.mDofTracks == nullptr)
                          {
                              if (pTake != nullptr && !GetDofTracks(*pTake, lTracks))
                              {
                                  return false;
                              }
                              lOptions.mBoneDofs = GetBoneDofs();
                              lOptions.mDofTracks = lTracks.empty() ? nullptr : &lTracks;
                          }
                          return KQexClip::FromScene(mRoots, pTake != nullptr ? pTake->mStack : nullptr, pSampling, lOptions, pClip);
                      });
}

} // namespace qexsdk
