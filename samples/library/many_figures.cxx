// Samples many figures that share a skeleton and a motion, each at its own time and position, as a crowd does:
// many_figures SKELETON.asf MOTION.amc [FIGURES [JOINT]]

#include <qex/acclaim.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace qexsdk;

namespace
{

constexpr int        kTicks = 60; ///< One second of the crowd.
constexpr KFrameRate kTickRate = {60, 1};

/// What one thread works with. A scene is used by one thread at a time, so each has its own; the files are small.
struct KWorker
{
    KQexScene*           mScene = KQexScene::Create("crowd");
    KQexNode*            mRoot = nullptr;
    KTime                mDuration;
    KQexGlobalTransforms mPose; ///< Reused for all figures: it caches the tree and its channels.

    KWorker() = default;
    KWorker(const KWorker&) = delete;
    KWorker& operator=(const KWorker&) = delete;
    ~KWorker()
    {
        if (mScene != nullptr)
        {
            mScene->Destroy();
        }
    }

    bool Load(const char* pAsf, const char* pAmc)
    {
        KQexImportAcclaimOptions lOptions;
        KQexImportAcclaimResult  lResult;
        lOptions.mVerbose = true;
        if (mScene == nullptr || !KQexImporterAcclaim::Import(mScene, pAsf, pAmc, lOptions, lResult) || lResult.mTakes.empty())
        {
            return false;
        }
        mRoot = lResult.mRootNode;
        mDuration = lResult.mTakes[0].mInfo.mStop - lResult.mTakes[0].mInfo.mStart;
        mScene->GetEvaluator()->SetContext(lResult.mTakes[0].mStack);
        // The first evaluation collects the tree.
        return mDuration > KTime(0) && mScene->GetEvaluator()->EvaluateGlobalTransforms(mRoot, KTime(0), mPose);
    }

    /// Positions of all joints of a figure into \p pPositions, three floats each, in centimetres.
    void Sample(int pFigure, int pTick, float* pPositions)
    {
        // Each figure starts at another time of the looped motion, and stands in a grid.
        const KTime lTime = KTime::FromFrame(pTick, kTickRate) + KTime(pFigure * 7 * KTime::kTicksPerSecond / 30);
        mScene->GetEvaluator()->EvaluateGlobalTransforms(mRoot, KTime(lTime.Get() % mDuration.Get()), mPose);
        const double lPosition[3] = {150.0 * (pFigure % 32), 0.0, 150.0 * (pFigure / 32)};
        for (int lJoint = 0; lJoint < mPose.GetCount(); ++lJoint)
        {
            const KQexMatrix& lTransform = mPose.GetTransform(lJoint); // Row 3 is the position, rows 0 to 2 are the axes.
            for (int i = 0; i < 3; ++i)
            {
                *pPositions++ = static_cast<float>(lTransform.mData[3][i] + lPosition[i]);
            }
        }
    }
};

} // namespace

int main(int pCount, char** pArguments)
{
    const int            lThreads = KThreadCount(0);
    const int            lFigures = pCount > 3 ? std::max(1, std::atoi(pArguments[3])) : 1000;
    std::vector<KWorker> lWorkers(static_cast<size_t>(lThreads));
    for (KWorker& lWorker : lWorkers)
    {
        if (pCount < 3 || !lWorker.Load(pArguments[1], pArguments[2]))
        {
            std::fprintf(stderr, "usage: many_figures SKELETON.asf MOTION.amc [FIGURES [JOINT]]\n");
            return 1;
        }
    }

    const int          lJoints = lWorkers[0].mPose.GetCount();
    const size_t       lSize = static_cast<size_t>(lJoints) * 3;
    std::vector<float> lPositions(static_cast<size_t>(lFigures) * lSize);
    const auto         lStart = std::chrono::steady_clock::now();
    for (int lTick = 0; lTick < kTicks; ++lTick)
    {
        KParallelFor(lThreads, lThreads,
                     [&](int pThread)
                     {
                         for (int i = pThread; i < lFigures; i += lThreads)
                         {
                             lWorkers[static_cast<size_t>(pThread)].Sample(i, lTick, &lPositions[static_cast<size_t>(i) * lSize]);
                         }
                     });
    }
    const std::chrono::duration<double> lSeconds = std::chrono::steady_clock::now() - lStart;
    std::printf("%d figures of %d joints, %d times, %d threads: %.1f million transforms a second\n", lFigures, lJoints, kTicks, lThreads,
                lFigures * 1e-6 * lJoints * kTicks / lSeconds.count());

    const KQexNode* lNode = pCount > 4 ? lWorkers[0].mRoot->FindChild(pArguments[4], true, false) : lWorkers[0].mRoot;
    const int       lJoint = lWorkers[0].mPose.Find(lNode);
    const float*    lLast = &lPositions[static_cast<size_t>(lFigures - 1) * lSize + static_cast<size_t>(lJoint < 0 ? 0 : lJoint) * 3];
    std::printf("%s of the last figure: %.2f %.2f %.2f\n", lNode != nullptr ? lNode->GetName() : "root", lLast[0], lLast[1], lLast[2]);
    return 0;
}
