// A hundred figures with one motion, each at another time, on four threads: example_crowd FILE...

#include <qex/clip.h>
#include <qex/figure.h>

#include <cstdio>

using namespace qexsdk;

int main(int pCount, char** pArguments)
{
    KQexFigure       lFigure; // ASF with AMC, BVH, GLB or glTF
    KQexFigureReport lReport;
    KQexClip         lClip; // the motion as arrays, which all threads may read
    if (!lFigure.Load({pArguments + 1, pArguments + pCount}, {}, lReport) || lFigure.GetTakes().empty() ||
        !lFigure.MakeClip(&lFigure.GetTakes()[0], 0.0, {}, lClip, lReport))
    {
        return 1;
    }
    constexpr int                                kFigures = 100;
    constexpr int                                kThreads = 4;
    const size_t                                 lJoints = static_cast<size_t>(lClip.GetJointCount());
    std::vector<KQexPose>                        lPoses(kThreads, KQexPose(lJoints));
    std::vector<std::vector<KQexWorldTransform>> lCrowd(kFigures, std::vector<KQexWorldTransform>(lJoints));
    KParallelFor(kFigures, kThreads,
                 [&](int pFigure) // on thread pFigure % kThreads
                 {
                     KQexPose& lPose = lPoses[static_cast<size_t>(pFigure % kThreads)];
                     lClip.Sample(0.1 * pFigure, lPose, KQexClipEnds::eLOOP);
                     lClip.WorldTransforms(lPose,
                                           lCrowd[static_cast<size_t>(pFigure)]); // 4 × 4 floats each, as graphics libraries take them
                 });
    for (size_t i = 0; i < kFigures; i += 33)
    {
        const float* lPosition = lCrowd[i][0].mData[3];
        std::printf("figure %2zu: %s at %7.2f %7.2f %7.2f cm\n", i, lClip.GetData().mNames[0].c_str(), lPosition[0], lPosition[1],
                    lPosition[2]);
    }
    return 0;
}
