#include <qexfigure/output/kqexoutputplan.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <set>

namespace qexsdk
{

namespace
{

using KTakeList = std::vector<const KQexSampledTake*>;

/// Makes a plan. Every step is false after an error.
class KOutputPlanner
{
public:
    KOutputPlanner(KQexFrameOutputs& pRun, const std::vector<KQexFigureOutput>& pOutputs, KQexOutputPlan& pPlan)
        : mRun(pRun), mOutputs(pOutputs), mPlan(pPlan)
    {
    }

    bool Run()
    {
        mPlan.mHasSkeleton =
            std::any_of(mOutputs.begin(), mOutputs.end(), [](const KQexFigureOutput& pOutput) { return pOutput.mFormat == eOUTPUT_ASF; });
        if (!CheckOptions() || !SampleTakes() || !CheckOutputs())
        {
            return false;
        }
        MakeOthers();
        return mPlan.mHasSkeleton ? MakeSkeletons() : MakeMotions();
    }

private:
    bool CheckOptions() const;
    bool SampleTakes();
    bool SampleTake(const KQexTakeToWrite& pTake);
    bool CheckOutputs() const;
    bool CheckTakes(const KQexFigureOutput& pOutput) const;
    void MakeOthers();
    bool MakeSkeletons();
    bool MakeMotions();

    /// The takes of an output whose indices are valid, in the order in which they are written.
    KTakeList TakesOf(const KQexFigureOutput& pOutput) const;

    /// Reports a usage error about an output. \return false
    bool Refuse(const std::string& pPath, const std::string& pText) const
    {
        return mRun.mReport.Fail(eFIGURE_USAGE, KQexDisplayOutput(pPath), pText);
    }

    KQexFrameOutputs&                    mRun;
    const std::vector<KQexFigureOutput>& mOutputs;
    KQexOutputPlan&                      mPlan;
};

bool KOutputPlanner::CheckOptions() const
{
    const KQexFigureWriteOptions& lOptions = mRun.mOptions;
    if (mRun.mFigure.GetRoots().empty())
    {
        return mRun.mReport.Fail(eFIGURE_USAGE, "", "there is no figure to write");
    }
    if (!(lOptions.mScale > 0) || !std::isfinite(lOptions.mScale))
    {
        return mRun.mReport.Fail(eFIGURE_USAGE, "", "the scale of a figure must be above 0");
    }
    return (lOptions.mOrder >= eEULER_XYZ && lOptions.mOrder <= eEULER_ZYX) ||
           mRun.mReport.Fail(eFIGURE_USAGE, "", "the order of rotations must be one of three axes");
}

bool KOutputPlanner::SampleTakes()
{
    std::vector<KQexTakeToWrite> lTakes = mRun.mOptions.mTakes;
    if (lTakes.empty())
    {
        for (const KQexFigureTake& lTake : mRun.mFigure.GetTakes())
        {
            lTakes.emplace_back();
            lTakes.back().mTake = &lTake;
        }
    }
    if (lTakes.empty())
    {
        lTakes.emplace_back();
    }
    return std::all_of(lTakes.begin(), lTakes.end(), [this](const KQexTakeToWrite& pTake) { return SampleTake(pTake); });
}

bool KOutputPlanner::SampleTake(const KQexTakeToWrite& pTake)
{
    KQexSampledTake lTake;
    lTake.mTake = pTake.mTake;
    lTake.mRequest = pTake.mRequest;
    if (!pTake.mRequest.mHasStart && !pTake.mRequest.mHasEnd)
    {
        lTake.mRequest = KQexWholeTake(pTake.mTake, pTake.mRequest.mFramesPerSecond);
        lTake.mRequest.mEvery = pTake.mRequest.mEvery;
    }
    if (!MakeSampling(mRun.mFigure.GetRoots(), lTake.GetStack(), lTake.mRequest, lTake.mSampling))
    {
        return mRun.mReport.Fail(eFIGURE_USAGE, "",
                                 "there are no frames to write of " + (pTake.mTake != nullptr ? pTake.mTake->mName : "the rest pose"));
    }
    mPlan.mTakes.push_back(lTake);
    return pTake.mTake == nullptr || KQexFigure::CheckSpan(*pTake.mTake, lTake.mSampling, mRun.mReport);
}

bool KOutputPlanner::CheckOutputs() const
{
    std::set<std::string> lPaths;
    for (const KQexFigureOutput& lOutput : mOutputs)
    {
        if (!lPaths.insert(lOutput.mPath).second)
        {
            return Refuse(lOutput.mPath, "would be written twice");
        }
        if (!CheckTakes(lOutput))
        {
            return false;
        }
    }
    return true;
}

bool KOutputPlanner::CheckTakes(const KQexFigureOutput& pOutput) const
{
    const size_t lWorst = pOutput.mTakes.empty() ? 0 : *std::max_element(pOutput.mTakes.begin(), pOutput.mTakes.end());
    if (lWorst >= mPlan.mTakes.size())
    {
        return Refuse(pOutput.mPath,
                      "has take " + std::to_string(lWorst) + ", counted from 0, of only " + std::to_string(mPlan.mTakes.size()));
    }
    const KTakeList lTakes = TakesOf(pOutput);
    if (std::adjacent_find(lTakes.begin(), lTakes.end()) != lTakes.end())
    {
        return Refuse(pOutput.mPath, "has a take twice");
    }
    if (KQexHoldsOneTake(pOutput.mFormat) && lTakes.size() > 1)
    {
        return Refuse(pOutput.mPath, "holds one take, but there are " + std::to_string(lTakes.size()));
    }
    return (pOutput.mFormat != eOUTPUT_AMC && pOutput.mFormat != eOUTPUT_CSV) || lTakes.front()->mTake != nullptr ||
           Refuse(pOutput.mPath, "holds a motion, but there is none");
}

KTakeList KOutputPlanner::TakesOf(const KQexFigureOutput& pOutput) const
{
    KTakeList lTakes;
    for (size_t i = 0; i < mPlan.mTakes.size() && pOutput.mTakes.empty(); ++i)
    {
        lTakes.push_back(&mPlan.mTakes[i]);
    }
    for (const size_t lTake : pOutput.mTakes)
    {
        lTakes.push_back(&mPlan.mTakes[lTake]);
    }
    std::sort(lTakes.begin(), lTakes.end(), std::less<>());
    return lTakes;
}

void KOutputPlanner::MakeOthers()
{
    for (const KQexFigureOutput& lOutput : mOutputs)
    {
        const KTakeList lTakes = TakesOf(lOutput);
        switch (lOutput.mFormat)
        {
        case eOUTPUT_BVH:
            mPlan.mOthers.push_back(KMakeBvhOutput(mRun, lOutput.mPath, lTakes));
            break;
        case eOUTPUT_GLB:
        case eOUTPUT_GLTF:
            mPlan.mOthers.push_back(KMakeGltfOutput(mRun, lOutput.mPath, lTakes));
            break;
        case eOUTPUT_NPZ:
            mPlan.mOthers.push_back(KMakeArrayOutput(mRun, lOutput.mPath, lTakes));
            break;
        case eOUTPUT_CSV:
            mPlan.mOthers.push_back(KMakeTableOutput(mRun, lOutput.mPath, lTakes));
            break;
        default: // Made by the other two.
            break;
        }
    }
}

/// Each skeleton, with the motions of its takes.
bool KOutputPlanner::MakeSkeletons()
{
    std::map<const KQexSampledTake*, std::string> lMotions;
    for (const KQexFigureOutput& lOutput : mOutputs)
    {
        if (lOutput.mFormat == eOUTPUT_AMC && !lMotions.emplace(TakesOf(lOutput).front(), lOutput.mPath).second)
        {
            return Refuse(lOutput.mPath, "is a second motion file of one take");
        }
    }
    for (const KQexFigureOutput& lOutput : mOutputs)
    {
        if (lOutput.mFormat == eOUTPUT_ASF)
        {
            KQexAcclaimTarget lTarget;
            const KTakeList   lTakes = TakesOf(lOutput);
            for (const KQexSampledTake* lTake : lTakes)
            {
                const auto lMotion = lMotions.extract(lTake);
                lTarget.mMotions.push_back(lMotion.empty() ? "" : lMotion.mapped());
            }
            mPlan.mAcclaim.push_back(KMakeAcclaimOutput(mRun, lOutput.mPath, lTakes, lTarget));
        }
    }
    return lMotions.empty() || Refuse(lMotions.begin()->second, "holds a take that none of the skeletons has that are written");
}

/// Motions for a skeleton that exists.
bool KOutputPlanner::MakeMotions()
{
    const bool        lIsGiven = mRun.mOptions.mSkeleton != nullptr;
    KQexAcclaimTarget lTarget;
    lTarget.mSkeleton = lIsGiven ? mRun.mOptions.mSkeleton : mRun.mFigure.GetSkeleton();
    lTarget.mSkeletonNotes = lIsGiven ? mRun.mOptions.mSkeletonNotes : mRun.mFigure.GetSkeletonNotes();
    for (const KQexFigureOutput& lOutput : mOutputs)
    {
        if (lOutput.mFormat == eOUTPUT_AMC)
        {
            if (lTarget.mSkeleton == nullptr)
            {
                return Refuse(lOutput.mPath, "needs a skeleton: write one, too, or choose an existing one");
            }
            mPlan.mAcclaim.push_back(KMakeAcclaimOutput(mRun, lOutput.mPath, TakesOf(lOutput), lTarget));
        }
    }
    return true;
}

} // namespace

bool KMakeOutputPlan(KQexFrameOutputs& pRun, const std::vector<KQexFigureOutput>& pOutputs, KQexOutputPlan& pPlan)
{
    return KOutputPlanner(pRun, pOutputs, pPlan).Run();
}

} // namespace qexsdk
