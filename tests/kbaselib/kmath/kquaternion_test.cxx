#include <kbaselib/kmath/kquaternion.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>

using namespace qexsdk;

namespace
{

constexpr double kHalfPi = 1.5707963267948966;

struct KNearerCase
{
    const char* mWhat;
    double      mQ[4];
    double      mNear[4];
    double      mSign;
};

std::ostream& operator<<(std::ostream& pOut, const KNearerCase& pCase)
{
    return pOut << pCase.mWhat;
}

class KNearer : public testing::TestWithParam<KNearerCase>
{
};

TEST_P(KNearer, IsChosen)
{
    double lDoubles[4];
    float  lFloats[4];
    float  lNear[4];
    for (int i = 0; i < 4; ++i)
    {
        lDoubles[i] = GetParam().mQ[i];
        lFloats[i] = static_cast<float>(GetParam().mQ[i]);
        lNear[i] = static_cast<float>(GetParam().mNear[i]);
    }
    kChooseNearer(lDoubles, GetParam().mNear);
    kChooseNearer(lFloats, lNear);
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(lDoubles[i], GetParam().mSign * GetParam().mQ[i]);
        EXPECT_EQ(lFloats[i], static_cast<float>(lDoubles[i]));
    }
}

INSTANTIATE_TEST_SUITE_P(Quaternion, KNearer,
                         testing::Values(KNearerCase{"the same", {0.5, 0.5, 0.5, 0.5}, {0.5, 0.5, 0.5, 0.5}, 1},
                                         KNearerCase{"its negative", {0.5, 0.5, 0.5, 0.5}, {-0.5, -0.5, -0.5, -0.5}, -1},
                                         KNearerCase{"one component decides", {0.6, 0, 0, 0.8}, {1, 0, 0, -0.8}, -1},
                                         KNearerCase{"half a turn apart: as it is", {1, 0, 0, 0}, {0, 0, 0, 1}, 1}),
                         [](const auto& pInfo) { return "Case" + std::to_string(pInfo.index); });

struct KWeightsCase
{
    double mCosine;
    double mFraction;
    double mAngle;
    double mFrom;
    double mTo;
};

// Weights below the threshold of 0.9 are sines of parts of the angle.
TEST(KSlerpWeights, AreLinearFromTheThresholdOn)
{
    const KWeightsCase kCases[] = {{1.0, 0.25, 0, 0.75, 0.25},
                                   {0.9, 0.25, 0, 0.75, 0.25},
                                   {0.0, 0.0, kHalfPi, 1.0, 0.0},
                                   {0.0, 1.0, kHalfPi, 0.0, 1.0},
                                   {0.0, 1.0 / 3.0, kHalfPi, 0.8660254037844386, 0.5},
                                   {0.5, 0.5, kHalfPi / 1.5, 0.5, 0.5}};
    for (const KWeightsCase& lCase : kCases)
    {
        double lFrom = 0.0;
        double lTo = 0.0;
        EXPECT_NEAR(kSlerpWeights(lCase.mCosine, 0.9, lCase.mFraction, lFrom, lTo), lCase.mAngle, 1e-15);
        EXPECT_NEAR(lFrom, lCase.mFrom, 1e-15) << lCase.mCosine;
        EXPECT_NEAR(lTo, lCase.mTo, 1e-15) << lCase.mCosine;
    }
}

} // namespace
