#include <apps/asf/figure/converter.h>
#include <apps/asf/outputs.h>
#include <apps/asf/report/numbertext.h>

#include <algorithm>

/// \file
/// What a conversion says that it wrote.

namespace asfapp
{

namespace
{

double RateOf(const KSampledTake& pTake)
{
    return pTake.mSampling.mStep.Get() > 0 ? 1.0 / pTake.mSampling.mStep.GetSeconds() : 0.0;
}

/// "343 frames, 120 a second", or for several takes "2 takes, 686 frames", with their rate if they have the same.
std::string MotionText(const std::vector<const KSampledTake*>& pTakes)
{
    long long lFrames = 0;
    bool      lHasRate = true;
    for (const KSampledTake* lTake : pTakes)
    {
        lFrames += lTake->mSampling.mCount;
        lHasRate = lHasRate && lTake->mSampling.mStep.Get() == pTakes.front()->mSampling.mStep.Get();
    }
    const std::string lTakes = pTakes.size() > 1 ? std::to_string(pTakes.size()) + " takes, " : "";
    return pTakes.front()->mTake == nullptr ? "no motion" : lTakes + FramesText(lFrames, lHasRate ? RateOf(*pTakes.front()) : 0.0);
}

} // namespace

void KConverter::Report() const
{
    const std::vector<qexsdk::KQexFigureJoint>& lAll = mFigure.GetJoints();
    const long long lCount = std::count_if(lAll.begin(), lAll.end(), [](const qexsdk::KQexFigureJoint& pJoint) { return !pJoint.mIsEnd; });
    const std::string lJoints = CountText(lCount, "joint", "joints");
    for (const KConvertOutput& lOutput : mOptions.mTargets)
    {
        for (const std::vector<const KSampledTake*>& lTakes : GroupsOf(lOutput))
        {
            const std::string lMotion = lOutput.mFormat == qexsdk::eOUTPUT_ASF ? "" : MotionText(lTakes);
            const std::string lFigure = lOutput.mFormat == qexsdk::eOUTPUT_AMC ? "" : lJoints;
            ReportWritten(PathOf(lOutput, *lTakes.front()), lFigure + (lFigure.empty() || lMotion.empty() ? "" : ", ") + lMotion, mConsole);
        }
    }
}

void KConverter::Describe(KJson& pObject) const
{
    const bool lIsGiven = mFigure.GetSkeleton() != nullptr && mOptions.mMotion.mMotionRate > 0;
    pObject["takes"] = KJson::array();
    pObject["outputs"] = KJson::array();
    for (const KSampledTake& lTake : mTakes)
    {
        if (lTake.mTake != nullptr)
        {
            pObject["takes"].push_back({{"name", lTake.mTake->mName},
                                        {"frameCount", lTake.mTake->mFrames},
                                        {"framesPerSecond", lTake.mTake->mRate},
                                        {"rateFrom", lTake.mTake->mIsDefaultRate ? "default"
                                                     : lIsGiven                  ? "caller"
                                                                                 : "file"},
                                        {"framesWritten", lTake.mSampling.mCount},
                                        {"framesPerSecondWritten", RateOf(lTake)}});
        }
    }
    for (const KConvertOutput& lOutput : mOptions.mTargets)
    {
        for (const std::vector<const KSampledTake*>& lTakes : GroupsOf(lOutput))
        {
            for (const std::string& lFile : FilesOf(lOutput.mFormat, PathOf(lOutput, *lTakes.front())))
            {
                pObject["outputs"].push_back(JsonPath(lFile));
            }
        }
    }
}

} // namespace asfapp
