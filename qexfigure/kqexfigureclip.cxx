#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigureguard.h>

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

/// \file
/// The degrees of freedom of a loaded figure, and clips of its takes.

namespace qexsdk
{

namespace
{

/// The tracks of a motion that have nodes: their own, or the first joint of their name, as for the motion's reader. With the limits of the
/// skeleton.
std::vector<KQexDofTrack> BindTracks(const std::vector<KQexDofTrack>& pTracks, const std::vector<KQexFigureJoint>& pJoints,
                                     const KQexBoneDofs& pDofs)
{
    std::unordered_map<std::string, const KQexNode*> lNodes;
    std::unordered_set<const KQexNode*>              lAll; // A node may have been removed as a dummy.
    for (const KQexFigureJoint& lJoint : pJoints)
    {
        lNodes.emplace(lJoint.mName, lJoint.mNode);
        lAll.insert(lJoint.mNode);
    }
    std::vector<KQexDofTrack>       lBound;
    std::unordered_set<std::string> lSeen; // Words of bones: the motion's values are those of the first of a name.
    for (const KQexDofTrack& lTrack : pTracks)
    {
        const auto      lNamed = lNodes.find(lTrack.mJoint);
        const KQexNode* lNode = lTrack.mNode != nullptr ? lTrack.mNode : lNamed != lNodes.end() ? lNamed->second : nullptr;
        const bool      lIsRepeated = lTrack.mNode == nullptr && !lSeen.insert(lTrack.mJoint + "." + lTrack.mDof.mWord).second;
        if (lIsRepeated || lAll.count(lNode) == 0)
        {
            continue;
        }
        lBound.push_back(lTrack);
        lBound.back().mNode = lNode;
        const auto lBone = pDofs.find(lTrack.mJoint);
        if (lBone != pDofs.end())
        {
            const auto lDof = std::find_if(lBone->second.begin(), lBone->second.end(),
                                           [&](const KQexBoneDof& pDof) { return pDof.mWord == lTrack.mDof.mWord; });
            lBound.back().mDof = lDof != lBone->second.end() ? *lDof : lTrack.mDof;
        }
    }
    return lBound;
}

} // namespace

KQexSamplingRequest KQexWholeTake(const KQexFigureTake* pTake, double pRate)
{
    KQexSamplingRequest lRequest;
    lRequest.mFramesPerSecond = pRate;
    if (pTake == nullptr || pTake->mIsSingle)
    {
        // The curves of a single frame have no rate, and may have a second key.
        lRequest.mFramesPerSecond = pRate != 0.0 || pTake == nullptr ? pRate : pTake->mRate;
        lRequest.mHasStart = lRequest.mHasEnd = true;
        lRequest.mStart = lRequest.mEnd = pTake != nullptr ? pTake->mStart : KTime(0);
    }
    return lRequest;
}

bool KQexFigure::GetDofTracks(const KQexFigureTake& pTake, std::vector<KQexDofTrack>& pTracks) const noexcept
{
    KQexFigureReport lReport;
    return RunGuarded(lReport,
                      [&]
                      {
                          pTracks = pTake.mDofValues != nullptr ? BindTracks(pTake.mDofValues->mTracks, mJoints, mDofs)
                                                                : std::vector<KQexDofTrack>();
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

bool KQexFigure::MakeClip(const KQexFigureTake* pTake, double pRate, const KQexClipOptions& pOptions, KQexClip& pClip,
                          KQexFigureReport& pReport) const noexcept
{
    KQexSampling lSampling;
    if (!MakeSampling(mRoots, pTake != nullptr ? pTake->mStack : nullptr, KQexWholeTake(pTake, pRate), lSampling))
    {
        return pReport.Fail(eFIGURE_USAGE, "", "this rate leaves no frames");
    }
    if (pTake != nullptr && !CheckSpan(*pTake, lSampling, pReport))
    {
        return false;
    }
    return RunGuarded(pReport,
                      [&]
                      {
                          bool            lIsCancelled = false;
                          KQexClipOptions lOptions = pOptions;
                          if (pOptions.mProgress)
                          {
                              lOptions.mProgress = [&](double pFraction)
                              {
                                  return !(lIsCancelled = !pOptions.mProgress(pFraction));
                              };
                          }
                          const bool lOk = MakeClip(pTake, lSampling, lOptions, pClip);
                          if (lIsCancelled)
                          {
                              pReport.SetCancelled();
                          }
                          else if (!lOk)
                          {
                              pReport.SetOutOfMemory();
                          }
                          return lOk;
                      });
}

} // namespace qexsdk
