#include <tests/qexclip/clipfigure.h>

#include <qexscene/kqexquaternion.h>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace qextest
{

using namespace qexsdk;

namespace
{

struct KJointAtRest
{
    const char* mName;
    int         mParent;
    float       mTranslation[3];
};

constexpr KJointAtRest kFigure[] = {
    {"Hips", -1, {0.0F, 95.0F, 0.0F}},       {"Spine", 0, {0.0F, 30.0F, 2.0F}},     {"Head", 1, {0.0F, 40.0F, 1.0F}},
    {"LeftArm", 1, {18.0F, 25.0F, 0.0F}},    {"LeftElbow", 3, {28.0F, 0.0F, 0.0F}}, {"RightArm", 1, {-18.0F, 25.0F, 0.0F}},
    {"RightElbow", 5, {-28.0F, 0.0F, 0.0F}}, {"LeftUpLeg", 0, {9.0F, -5.0F, 0.0F}}, {"LeftKnee", 7, {0.0F, -42.0F, 1.0F}},
    {"RightUpLeg", 0, {-9.0F, -5.0F, 0.0F}}, {"RightKnee", 9, {0.0F, -42.0F, 1.0F}}};

} // namespace

KQexClip MakeClipFigure(unsigned int pSeed, int pFrames)
{
    std::mt19937                           lRandom(pSeed);
    std::uniform_real_distribution<double> lPhase(0.0, 6.28);
    KQexClipData                           lData;
    std::vector<double>                    lPhases;
    for (const KJointAtRest& lJoint : kFigure)
    {
        KQexJointTransform lRest;
        std::copy(lJoint.mTranslation, lJoint.mTranslation + 3, lRest.mTranslation);
        lData.mNames.emplace_back(lJoint.mName);
        lData.mParents.push_back(lJoint.mParent);
        lData.mRest.push_back(lRest);
        lPhases.push_back(lPhase(lRandom));
    }
    lData.mSampling = KQexSampling{KTime(0), KTime(KTime::kTicksPerSecond / 24), pFrames};
    lData.mMovingJoints = {0};
    for (int lFrame = 0; lFrame < pFrames; ++lFrame)
    {
        for (const double lEach : lPhases)
        {
            const double         lAngles[3] = {40.0 * std::sin(lEach + 0.2 * lFrame), 30.0 * std::cos(lEach + 0.1 * lFrame),
                                               20.0 * std::sin(2.0 * lEach)};
            const KQexQuaternion lRotation = KQexQuaternion::FromEuler(lAngles, 0);
            for (const int i : {3, 0, 1, 2})
            {
                lData.mRotations.push_back(static_cast<float>(lRotation.mData[i]));
            }
        }
        lData.mTranslations.insert(lData.mTranslations.end(),
                                   {10.0F + static_cast<float>(lFrame), 95.0F, 3.0F * static_cast<float>(lFrame)});
    }
    lData.mDofs = {KQexClipDof{0, {"tz", false, true, 0.0, 100.0}}, KQexClipDof{8, {"rx", true, true, -10.0, 150.0}}};
    for (int lFrame = 0; lFrame < pFrames; ++lFrame)
    {
        lData.mDofValues.push_back(3.0F * static_cast<float>(lFrame));
        lData.mDofValues.push_back(7.0F * static_cast<float>(lFrame));
    }
    KQexClip                 lClip;
    std::vector<std::string> lErrors;
    EXPECT_TRUE(KQexClip::FromArrays(std::move(lData), lClip, &lErrors)) << testing::PrintToString(lErrors);
    return lClip;
}

std::vector<double> Places(const KQexClip& pClip, long long pFrame)
{
    std::vector<KQexWorldTransform> lTransforms(static_cast<size_t>(pClip.GetJointCount()));
    EXPECT_TRUE(pClip.WorldTransforms(pFrame, 1, lTransforms.data(), lTransforms.size()));
    std::vector<double> lPlaces;
    for (const KQexWorldTransform& lTransform : lTransforms)
    {
        lPlaces.insert(lPlaces.end(), lTransform.mData[3], lTransform.mData[3] + 3);
    }
    return lPlaces;
}

double LargestDifference(const std::vector<double>& pOne, const std::vector<double>& pOther)
{
    double lLargest = pOne.size() == pOther.size() ? 0.0 : std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < std::min(pOne.size(), pOther.size()); ++i)
    {
        lLargest = std::max(lLargest, std::fabs(pOne[i] - pOther[i]));
    }
    return lLargest;
}

} // namespace qextest
