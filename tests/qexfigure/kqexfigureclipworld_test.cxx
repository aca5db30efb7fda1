// Clips of whole motions against the scene they are made from, and against the places that other programs computed.

#include <qexclip/kqexclipquantities.h>
#include <tests/qexfigure/figuresupport.h>
#include <tests/support/corpus.h>

#include <algorithm>
#include <cmath>

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr double kSceneTolerance = 1e-6; ///< Of the figure's size.

/// A figure of any files, and a clip of each take.
class KFigureClips
{
public:
    explicit KFigureClips(const std::vector<std::string>& pPaths)
    {
        KQexFigureReport lReport;
        EXPECT_TRUE(mFigure.Load(pPaths, KQexFigureOptions(), lReport)) << TextOf(lReport);
    }

    KQexFigure& GetFigure() { return mFigure; }

    void MakeClip(const KQexFigureTake& pTake, KQexClip& pClip) const
    {
        KQexSampling lSampling;
        ASSERT_TRUE(MakeSampling(mFigure.GetRoots(), pTake.mStack, KQexSamplingRequest(), lSampling));
        ASSERT_TRUE(mFigure.MakeClip(&pTake, lSampling, KQexClipOptions(), pClip));
    }

private:
    KQexFigure mFigure;
};

double FarthestApart(const std::vector<KQexFigurePoint>& pPoints)
{
    double lLow[3] = {1e300, 1e300, 1e300};
    double lHigh[3] = {-1e300, -1e300, -1e300};
    for (const KQexFigurePoint& lPoint : pPoints)
    {
        const double lNumbers[3] = {lPoint.mX, lPoint.mY, lPoint.mZ};
        for (int i = 0; i < 3; ++i)
        {
            lLow[i] = std::min(lLow[i], lNumbers[i]);
            lHigh[i] = std::max(lHigh[i], lNumbers[i]);
        }
    }
    return std::hypot(lHigh[0] - lLow[0], lHigh[1] - lLow[1], lHigh[2] - lLow[2]);
}

double ErrorOf(double pX, double pY, double pZ, const KQexFigurePoint& pPoint)
{
    return std::hypot(pX - pPoint.mX, pY - pPoint.mY, pZ - pPoint.mZ);
}

/// The largest distance of a joint from its place in the scene in any frame, as a fraction of the figure's size at rest.
double LargestError(KFigureClips& pClips, const KQexFigureTake& pTake)
{
    KQexClip                     lClip;
    std::vector<KQexFigurePoint> lPoints;
    double                       lLargest = 0.0;
    pClips.MakeClip(pTake, lClip);
    EXPECT_TRUE(pClips.GetFigure().Evaluate(nullptr, KTime(0), lPoints));
    EXPECT_EQ(static_cast<size_t>(lClip.GetJointCount()), lPoints.size());
    const double                    lSize = FarthestApart(lPoints);
    std::vector<double>             lPlaces(lPoints.size() * 3);
    std::vector<KQexWorldTransform> lTransforms(lPoints.size());
    for (long long lFrame = 0; lFrame < lClip.GetFrameCount(); ++lFrame)
    {
        EXPECT_TRUE(KQexGetPositions(lClip, lFrame, 1, lPlaces.data()));
        EXPECT_TRUE(lClip.WorldTransforms(lFrame, 1, lTransforms.data(), lTransforms.size()));
        EXPECT_TRUE(pClips.GetFigure().Evaluate(&pTake, lClip.GetData().mSampling.GetTime(lFrame), lPoints));
        for (size_t i = 0; i < lPoints.size(); ++i)
        {
            const double* lPlace = &lPlaces[i * 3];
            const float*  lOther = lTransforms[i].mData[3];
            lLargest = std::max({lLargest, ErrorOf(lPlace[0], lPlace[1], lPlace[2], lPoints[i]) / lSize,
                                 ErrorOf(lOther[0], lOther[1], lOther[2], lPoints[i]) / lSize});
        }
    }
    return lLargest;
}

void ExpectClipsOfTheScene(const std::vector<std::string>& pPaths)
{
    KFigureClips lClips(pPaths);
    EXPECT_FALSE(lClips.GetFigure().GetTakes().empty()) << pPaths.back();
    for (const KQexFigureTake& lTake : lClips.GetFigure().GetTakes())
    {
        EXPECT_LE(LargestError(lClips, lTake), kSceneTolerance) << pPaths.back() << ", take " << lTake.mName;
    }
}

/// The clip's frame of the number \p pNumber in the motion file.
long long FrameOf(KFigureClips& pClips, const KQexClip& pClip, long long pNumber)
{
    const KQexFigureTake& lTake = pClips.GetFigure().GetTakes().front();
    KQexFigureFrames      lFrames;
    EXPECT_TRUE(pClips.GetFigure().CollectFrames(lTake, lFrames));
    const auto          lAt = std::lower_bound(lFrames.mNumbers.begin(), lFrames.mNumbers.end(), pNumber) - lFrames.mNumbers.begin();
    const KQexSampling& lSampling = pClip.GetData().mSampling;
    return (lFrames.mTimes[static_cast<size_t>(lAt)].Get() - lSampling.mStart.Get()) / lSampling.mStep.Get();
}

} // namespace

TEST(KQexFigureClipWorld, FramesOfEveryMotionAreWhereTheSceneHasThem)
{
    for (const KCorpusPair& lPair : CorpusPairs())
    {
        ExpectClipsOfTheScene({lPair.mAsf.string(), lPair.mAmc.string()});
    }
    for (const std::filesystem::path& lBvh : CorpusFiles(".bvh"))
    {
        ExpectClipsOfTheScene({lBvh.string()});
    }
}

TEST(KQexFigureClipWorld, FramesAreWhereOtherProgramsHaveThem)
{
    for (const KCorpusPair& lPair : PairsWithWorldPositions())
    {
        KFigureClips lClips({lPair.mAsf.string(), lPair.mAmc.string()});
        KQexClip     lClip;
        size_t       lCompared = 0;
        lClips.MakeClip(lClips.GetFigure().GetTakes().front(), lClip);
        std::vector<double> lPlaces(static_cast<size_t>(lClip.GetJointCount()) * 3);
        for (const KWorldFrame& lFrame : ReadWorld(lPair))
        {
            ASSERT_TRUE(KQexGetPositions(lClip, FrameOf(lClips, lClip, lFrame.mNumber), 1, lPlaces.data()));
            for (const auto& [lName, lPoint] : lFrame.mStarts)
            {
                const int lJoint = lClip.FindJoint(lName);
                ASSERT_GE(lJoint, 0) << lName;
                const double* lPlace = &lPlaces[static_cast<size_t>(lJoint) * 3];
                EXPECT_LE(Distance(KPoint{lPlace[0], lPlace[1], lPlace[2]}, lPoint), lPair.mTolerance * lFrame.mHeight)
                    << lPair.mName << ", frame " << lFrame.mNumber << ": " << lName;
                ++lCompared;
            }
        }
        EXPECT_GE(lCompared, 12 * ReadWorld(lPair).size()) << lPair.mName;
    }
}
