#include <qexscene/kqexanimcurvefilterconstantkeyreducer.h>

#include <kbaselib/kmath/keulertable.h>
#include <qexscene/kqexanimcurve.h>
#include <qexscene/kqexanimcurvefiltergimblekiller.h>
#include <qexscene/kqexanimcurvefilterunroll.h>
#include <tests/support/memorywatch.h>
#include <tests/support/nonfinite.h>

#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace qexsdk
{
namespace
{

using namespace qextest;

using KAngles = std::array<float, 3>; ///< Rotations about x, y and z, in degrees.
using KPath = std::vector<KAngles>;
using KMatrix = std::array<std::array<double, 3>, 3>; ///< Rows of a textbook matrix.

struct KCurveDeleter
{
    void operator()(KQexAnimCurve* pCurve) const { pCurve->Destroy(false, false); }
};

/// Three curves with the keys of a path, one tick apart.
class KCurves
{
public:
    explicit KCurves(const KPath& pPath = {})
    {
        for (int lAxis = 0; lAxis < 3; ++lAxis)
        {
            mOwned[static_cast<std::size_t>(lAxis)].reset(KQexAnimCurve::Create(nullptr, "curve"));
            mCurves[lAxis] = mOwned[static_cast<std::size_t>(lAxis)].get();
            for (std::size_t lKey = 0; lKey < pPath.size(); ++lKey)
            {
                mCurves[lAxis]->AppendSample(KTime(static_cast<long long>(lKey)), pPath[lKey][static_cast<std::size_t>(lAxis)]);
            }
        }
    }

    KPath GetPath() const
    {
        KPath lPath;
        for (int lKey = 0; lKey < mCurves[0]->GetKeyCount(); ++lKey)
        {
            lPath.push_back({mCurves[0]->GetValue(lKey), mCurves[1]->GetValue(lKey), mCurves[2]->GetValue(lKey)});
        }
        return lPath;
    }

    KQexAnimCurve* mCurves[3];

private:
    std::array<std::unique_ptr<KQexAnimCurve, KCurveDeleter>, 3> mOwned;
};

bool SameBits(const KPath& pA, const KPath& pB)
{
    return pA.size() == pB.size() && (pA.empty() || std::memcmp(pA.data(), pB.data(), pA.size() * sizeof(KAngles)) == 0);
}

/// Textbook rotation about an axis (0, 1, 2).
KMatrix AxisRotation(int pAxis, double pDegrees)
{
    const double      lAngle = std::remainder(pDegrees, 360.0) * 0.017453292519943295;
    const double      lC = std::cos(lAngle);
    const double      lS = std::sin(lAngle);
    const std::size_t lX = static_cast<std::size_t>(pAxis);
    const std::size_t lY = (lX + 1) % 3;
    const std::size_t lZ = (lX + 2) % 3;
    KMatrix           lMatrix = {};
    lMatrix[lX][lX] = 1.0;
    lMatrix[lY][lY] = lC;
    lMatrix[lZ][lZ] = lC;
    lMatrix[lZ][lY] = lS;
    lMatrix[lY][lZ] = -lS;
    return lMatrix;
}

KMatrix Multiply(const KMatrix& pA, const KMatrix& pB)
{
    KMatrix lProduct = {};
    for (std::size_t lRow = 0; lRow < 3; ++lRow)
    {
        for (std::size_t lColumn = 0; lColumn < 3; ++lColumn)
        {
            for (std::size_t lInner = 0; lInner < 3; ++lInner)
            {
                lProduct[lRow][lColumn] += pA[lRow][lInner] * pB[lInner][lColumn];
            }
        }
    }
    return lProduct;
}

/// The rotation of a key: the product of its axis rotations in the order of the code.
KMatrix Rotation(const KAngles& pAngles, int pOrder)
{
    const int* lRow = KmEulerAxis[pOrder];
    const int  lLast = (pOrder & 1) != 0 ? lRow[0] : lRow[2];
    const auto lAngle = [&](int pIndex)
    {
        return static_cast<double>(pAngles[static_cast<std::size_t>(lRow[pIndex])]);
    };
    return Multiply(AxisRotation(lLast, lAngle(2)), Multiply(AxisRotation(lRow[1], lAngle(1)), AxisRotation(lRow[0], lAngle(0))));
}

/// Angle in degrees between two rotations. From the norm of their difference, because the arc cosine of the trace is inaccurate for
/// small angles.
double AngleBetween(const KMatrix& pA, const KMatrix& pB)
{
    double lSum = 0.0;
    for (std::size_t lRow = 0; lRow < 3; ++lRow)
    {
        for (std::size_t lColumn = 0; lColumn < 3; ++lColumn)
        {
            lSum += (pA[lRow][lColumn] - pB[lRow][lColumn]) * (pA[lRow][lColumn] - pB[lRow][lColumn]);
        }
    }
    return 2.0 * std::asin(std::fmin(1.0, std::sqrt(lSum / 8.0))) * 57.29577951308232;
}

float Largest(const KAngles& pAngles)
{
    return std::fmax(std::fabs(pAngles[0]), std::fmax(std::fabs(pAngles[1]), std::fabs(pAngles[2])));
}

/// Angle by which a filter may change a key's rotation: 1e-4 degrees, or the rounding of its angles if they are large.
double Tolerance(const KAngles& pFrom, const KAngles& pTo)
{
    const float lSize = std::fmax(Largest(pFrom), Largest(pTo));
    return lSize < 1000.0F ? 1e-4 : 1.5 * static_cast<double>(std::nextafter(lSize, kInfF) - lSize);
}

double Distance(const KAngles& pA, const KAngles& pB)
{
    double lSum = 0.0;
    for (std::size_t lAxis = 0; lAxis < 3; ++lAxis)
    {
        const double lDelta = static_cast<double>(pA[lAxis]) - static_cast<double>(pB[lAxis]);
        lSum += lDelta * lDelta;
    }
    return std::sqrt(lSum);
}

double Length(const KPath& pPath)
{
    double lLength = 0.0;
    for (std::size_t lKey = 1; lKey < pPath.size(); ++lKey)
    {
        lLength += Distance(pPath[lKey - 1], pPath[lKey]);
    }
    return lLength;
}

void ExpectSameRotations(const KPath& pBefore, const KPath& pAfter, int pOrder)
{
    ASSERT_EQ(pBefore.size(), pAfter.size());
    for (std::size_t lKey = 0; lKey < pBefore.size(); ++lKey)
    {
        ASSERT_LE(AngleBetween(Rotation(pBefore[lKey], pOrder), Rotation(pAfter[lKey], pOrder)), Tolerance(pBefore[lKey], pAfter[lKey]))
            << "order " << pOrder << " key " << lKey;
    }
}

void ExpectNoJumps(const KPath& pPath)
{
    for (std::size_t lKey = 1; lKey < pPath.size(); ++lKey)
    {
        for (std::size_t lAxis = 0; lAxis < 3; ++lAxis)
        {
            const double lDelta = static_cast<double>(pPath[lKey][lAxis]) - static_cast<double>(pPath[lKey - 1][lAxis]);
            ASSERT_LE(std::fabs(lDelta), 180.0) << "key " << lKey << " axis " << lAxis;
        }
    }
}

/// The distance to the nearest equivalent triple, by brute force.
double NearestDistance(const KAngles& pAngles, const KAngles& pBefore, int pOrder)
{
    const int*        lRow = KmEulerAxis[pOrder];
    const std::size_t lMiddle = static_cast<std::size_t>(lRow[1]);
    double            lBest = std::numeric_limits<double>::infinity();
    for (int lTry = 0; lTry < 2 * 9 * 9 * 9; ++lTry)
    {
        int    lRest = lTry / 2;
        double lSum = 0.0;
        for (std::size_t lAxis = 0; lAxis < 3; ++lAxis)
        {
            double lAngle = static_cast<double>(pAngles[lAxis]);
            if (lTry % 2 != 0)
            {
                lAngle = lAxis != lMiddle ? lAngle + 180.0 : (pOrder & 1) != 0 ? -lAngle : 180.0 - lAngle;
            }
            lAngle += 360.0 * (lRest % 9 - 4) - static_cast<double>(pBefore[lAxis]);
            lSum += lAngle * lAngle;
            lRest /= 9;
        }
        lBest = std::fmin(lBest, std::sqrt(lSum));
    }
    return lBest;
}

/// A path of random triples with jumps, pauses, spins and poles.
KPath RandomPath(std::mt19937& pRandom, double pSize)
{
    std::uniform_real_distribution<double> lAngle(-pSize, pSize);
    KPath                                  lPath;
    for (unsigned long lKey = pRandom() % 40U; lKey > 0; --lKey)
    {
        KAngles lAngles;
        for (float& lEach : lAngles)
        {
            const unsigned long lKind = pRandom() % 6U;
            lEach = lKind == 0 ? 90.0F * static_cast<float>(static_cast<int>(pRandom() % 9U) - 4) : static_cast<float>(lAngle(pRandom));
        }
        lPath.push_back(pRandom() % 8U == 0U && !lPath.empty() ? lPath.back() : lAngles);
    }
    return lPath;
}

struct KUnrollCase
{
    const char* mWhat;
    int         mOrder;
    KPath       mBefore;
    KPath       mAfter;
};

class KUnroll : public testing::TestWithParam<KUnrollCase>
{
};

TEST_P(KUnroll, HasTheExpectedKeys)
{
    KCurves                   lCurves(GetParam().mBefore);
    KQexAnimCurveFilterUnroll lFilter;
    lFilter.SetRotationOrder(GetParam().mOrder);
    EXPECT_TRUE(lFilter.Apply(lCurves.mCurves, 3));
    EXPECT_TRUE(SameBits(lCurves.GetPath(), GetParam().mAfter)) << GetParam().mWhat;
}

INSTANTIATE_TEST_SUITE_P(
    Table, KUnroll,
    testing::Values(
        KUnrollCase{"no keys", 0, {}, {}}, //
        KUnrollCase{"a single key is unchanged", 0, {{725.0F, -400.0F, 181.0F}}, {{725.0F, -400.0F, 181.0F}}},
        KUnrollCase{"a smooth curve is unchanged",
                    0,
                    {{0.1F, 0.2F, 0.3F}, {1e-20F, -0.0F, 3.4F}, {90.0F, 20.0F, 100.0F}},
                    {{0.1F, 0.2F, 0.3F}, {1e-20F, -0.0F, 3.4F}, {90.0F, 20.0F, 100.0F}}},
        KUnrollCase{"a whole turn", 0, {{179.0F, 0.0F, 0.0F}, {-179.0F, 0.0F, 0.0F}}, {{179.0F, 0.0F, 0.0F}, {181.0F, 0.0F, 0.0F}}},
        KUnrollCase{"turns accumulate",
                    0,
                    {{170.0F, 0.0F, 0.0F}, {-90.0F, 0.0F, 0.0F}, {10.0F, 0.0F, 0.0F}, {110.0F, 0.0F, 0.0F}},
                    {{170.0F, 0.0F, 0.0F}, {270.0F, 0.0F, 0.0F}, {370.0F, 0.0F, 0.0F}, {470.0F, 0.0F, 0.0F}}},
        KUnrollCase{"several turns at once", 0, {{0.0F, 0.0F, 0.0F}, {1090.0F, 0.0F, -710.0F}}, {{0.0F, 0.0F, 0.0F}, {10.0F, 0.0F, 10.0F}}},
        KUnrollCase{"half a turn is not a jump",
                    0,
                    {{0.0F, 0.0F, 0.0F}, {180.0F, 0.0F, 0.0F}, {0.0F, 0.0F, 0.0F}},
                    {{0.0F, 0.0F, 0.0F}, {180.0F, 0.0F, 0.0F}, {0.0F, 0.0F, 0.0F}}},
        KUnrollCase{"flipped", 0, {{0.0F, 85.0F, 0.0F}, {180.0F, 85.0F, 180.0F}}, {{0.0F, 85.0F, 0.0F}, {0.0F, 95.0F, 0.0F}}},
        KUnrollCase{
            "flipped, middle axis z", 2, {{0.0F, 0.0F, 85.0F}, {180.0F, 180.0F, 85.0F}}, {{0.0F, 0.0F, 85.0F}, {0.0F, 0.0F, 95.0F}}},
        KUnrollCase{
            "flipped, middle axis x", 8, {{85.0F, 0.0F, 0.0F}, {85.0F, 180.0F, -180.0F}}, {{85.0F, 0.0F, 0.0F}, {95.0F, 0.0F, 0.0F}}},
        KUnrollCase{"not flipped in another order",
                    8,
                    {{0.0F, 85.0F, 0.0F}, {180.0F, 85.0F, 180.0F}},
                    {{0.0F, 85.0F, 0.0F}, {0.0F, -95.0F + 360.0F, 0.0F}}},
        KUnrollCase{
            "repeated axis: mirrored at 0", 1, {{0.0F, 5.0F, 0.0F}, {180.0F, 5.0F, 180.0F}}, {{0.0F, 5.0F, 0.0F}, {0.0F, -5.0F, 0.0F}}},
        KUnrollCase{"non-finite keys are unchanged and skipped",
                    0,
                    {{kNanF, 0.0F, 0.0F}, {170.0F, 0.0F, 0.0F}, {0.0F, kInfF, 720.0F}, {-170.0F, 0.0F, 0.0F}},
                    {{kNanF, 0.0F, 0.0F}, {170.0F, 0.0F, 0.0F}, {0.0F, kInfF, 720.0F}, {190.0F, 0.0F, 0.0F}}},
        KUnrollCase{"huge angles keep their rotation",
                    0,
                    {{0.0F, 0.0F, 0.0F}, {3.6e8F, 0.0F, FLT_MAX}},
                    {{0.0F, 0.0F, 0.0F}, {0.0F, 0.0F, static_cast<float>(std::remainder(static_cast<double>(FLT_MAX), 360.0))}}}));

class KEveryOrder : public testing::TestWithParam<int>
{
};

INSTANTIATE_TEST_SUITE_P(Codes, KEveryOrder, testing::Range(0, KmEulerAxisCount));

TEST_P(KEveryOrder, UnrolledKeysAreTheNearestEquivalents)
{
    std::mt19937              lRandom(static_cast<unsigned>(100 + GetParam()));
    KQexAnimCurveFilterUnroll lFilter;
    lFilter.SetRotationOrder(GetParam());
    for (int lRound = 0; lRound < 60; ++lRound)
    {
        const KPath lBefore = RandomPath(lRandom, lRound % 2 == 0 ? 200.0 : 500.0);
        KCurves     lCurves(lBefore);
        ASSERT_TRUE(lFilter.Apply(lCurves.mCurves, 3));
        const KPath lAfter = lCurves.GetPath();
        ExpectSameRotations(lBefore, lAfter, GetParam());
        ExpectNoJumps(lAfter);
        for (std::size_t lKey = 1; lKey < lAfter.size() && lKey < 8; ++lKey)
        {
            ASSERT_NEAR(Distance(lAfter[lKey], lAfter[lKey - 1]), NearestDistance(lAfter[lKey], lAfter[lKey - 1], GetParam()), 1e-3);
        }
        ASSERT_TRUE(lFilter.Apply(lCurves.mCurves, 3));
        EXPECT_TRUE(SameBits(lCurves.GetPath(), lAfter)) << "idempotent";
    }
}

TEST_P(KEveryOrder, LongSpinsKeepRotationsToSinglePrecision)
{
    KPath lBefore;
    for (int lKey = 0; lKey < 3000; ++lKey)
    {
        const float lAngle = static_cast<float>(std::remainder(lKey * 77.7, 360.0));
        lBefore.push_back({lAngle, 20.0F, -lAngle});
    }
    for (int lFilter = 0; lFilter < 2; ++lFilter)
    {
        KCurves                         lCurves(lBefore);
        KQexAnimCurveFilterUnroll       lUnroll;
        KQexAnimCurveFilterGimbleKiller lKiller;
        lUnroll.SetRotationOrder(GetParam());
        lKiller.SetRotationOrder(GetParam());
        KQexAnimCurveFilter& lApplied = lFilter == 0 ? static_cast<KQexAnimCurveFilter&>(lUnroll) : lKiller;
        ASSERT_TRUE(lApplied.Apply(lCurves.mCurves, 3));
        ExpectSameRotations(lBefore, lCurves.GetPath(), GetParam());
        ExpectNoJumps(lCurves.GetPath());
    }
}

/// Keys near the poles of an order: middle angles at the pole, within a few ulp of it and further away.
KPath PolePath(std::mt19937& pRandom, int pOrder)
{
    std::uniform_real_distribution<float> lAngle(-300.0F, 300.0F);
    const std::size_t                     lMiddle = static_cast<std::size_t>(KmEulerAxis[pOrder][1]);
    const float                           lPole = (pOrder & 1) != 0 ? 0.0F : 90.0F;
    KPath                                 lPath;
    for (unsigned long lKey = pRandom() % 30U; lKey > 0; --lKey)
    {
        KAngles lAngles = {lAngle(pRandom), lAngle(pRandom), lAngle(pRandom)};
        if (pRandom() % 4U != 0U)
        {
            const float lOff[] = {0.0F, 0.0F, 1e-5F, -1.5e-5F, 3e-5F, 1e-4F, 1e-3F};
            lAngles[lMiddle] = lPole + (pRandom() % 4U == 0U ? 180.0F : 0.0F) + lOff[pRandom() % 7U];
        }
        lPath.push_back(lAngles);
    }
    return lPath;
}

TEST_P(KEveryOrder, TheGimbleKillerKeepsRotationsWithoutJumps)
{
    std::mt19937                    lRandom(static_cast<unsigned>(700 + GetParam()));
    KQexAnimCurveFilterGimbleKiller lFilter;
    lFilter.SetRotationOrder(GetParam());
    for (int lRound = 0; lRound < 300; ++lRound)
    {
        const KPath lBefore = lRound % 4 == 0 ? RandomPath(lRandom, 400.0) : PolePath(lRandom, GetParam());
        KCurves     lCurves(lBefore);
        ASSERT_TRUE(lFilter.Apply(lCurves.mCurves, 3));
        ExpectSameRotations(lBefore, lCurves.GetPath(), GetParam());
        ExpectNoJumps(lCurves.GetPath());
    }
}

TEST_P(KEveryOrder, ALockedRunIsNoLongerThanUnrolled)
{
    std::mt19937                          lRandom(static_cast<unsigned>(900 + GetParam()));
    std::uniform_real_distribution<float> lAngle(-80.0F, 80.0F);
    const std::size_t                     lFirst = static_cast<std::size_t>(KmEulerAxis[GetParam()][0]);
    const std::size_t                     lMiddle = static_cast<std::size_t>(KmEulerAxis[GetParam()][1]);
    const std::size_t                     lLast = static_cast<std::size_t>(KmEulerAxis[GetParam()][2]);
    double                                lUnrolled = 0.0;
    double                                lKilled = 0.0;
    for (int lRound = 0; lRound < 200; ++lRound)
    {
        KPath lPath(3U + lRandom() % 5U);
        for (KAngles& lAngles : lPath)
        {
            lAngles[lFirst] = lAngle(lRandom);
            lAngles[lMiddle] = (GetParam() & 1) != 0 ? 0.0F : -90.0F;
            lAngles[lLast] = 0.0F; // As extracting Euler angles from a matrix sets it at the pole.
        }
        lPath.front()[lMiddle] += 5.0F;
        lPath.front()[lLast] = lAngle(lRandom);
        lPath.back()[lMiddle] += 5.0F;
        lPath.back()[lLast] = lAngle(lRandom);
        KCurves                         lOne(lPath);
        KCurves                         lOther(lPath);
        KQexAnimCurveFilterUnroll       lUnroll;
        KQexAnimCurveFilterGimbleKiller lKiller;
        lUnroll.SetRotationOrder(GetParam());
        lKiller.SetRotationOrder(GetParam());
        ASSERT_TRUE(lUnroll.Apply(lOne.mCurves, 3));
        ASSERT_TRUE(lKiller.Apply(lOther.mCurves, 3));
        lUnrolled += Length(lOne.GetPath());
        lKilled += Length(lOther.GetPath());
        ASSERT_LE(Length(lOther.GetPath()), Length(lOne.GetPath()) + 1e-2);
    }
    EXPECT_LT(lKilled, 0.9 * lUnrolled);
}

struct KLockCase
{
    const char* mWhat;
    int         mOrder;
    KPath       mBefore;
    KPath       mAfter;
};

class KLock : public testing::TestWithParam<KLockCase>
{
};

TEST_P(KLock, HasTheExpectedKeys)
{
    KCurves                         lCurves(GetParam().mBefore);
    KQexAnimCurveFilterGimbleKiller lFilter;
    lFilter.SetRotationOrder(GetParam().mOrder);
    EXPECT_TRUE(lFilter.Apply(lCurves.mCurves, 3));
    EXPECT_TRUE(SameBits(lCurves.GetPath(), GetParam().mAfter)) << GetParam().mWhat;
}

INSTANTIATE_TEST_SUITE_P(
    Table, KLock,
    testing::Values(KLockCase{"through the pole: x - z is fixed, x and z stay as before",
                              0,
                              {{30.0F, 80.0F, 20.0F}, {10.0F, 90.0F, 0.0F}, {30.0F, 80.0F, 20.0F}},
                              {{30.0F, 80.0F, 20.0F}, {30.0F, 90.0F, 20.0F}, {30.0F, 80.0F, 20.0F}}},
                    KLockCase{"at the other pole x + z is fixed",
                              0,
                              {{30.0F, -80.0F, 20.0F}, {50.0F, -90.0F, 0.0F}, {30.0F, -80.0F, 20.0F}},
                              {{30.0F, -80.0F, 20.0F}, {30.0F, -90.0F, 20.0F}, {30.0F, -80.0F, 20.0F}}},
                    KLockCase{"for an odd order the poles are swapped",
                              10,
                              {{30.0F, 80.0F, 20.0F}, {50.0F, 90.0F, 0.0F}, {30.0F, 80.0F, 20.0F}},
                              {{30.0F, 80.0F, 20.0F}, {30.0F, 90.0F, 20.0F}, {30.0F, 80.0F, 20.0F}}},
                    KLockCase{"a repeated axis locks at 0: the sum is fixed",
                              1,
                              {{30.0F, 10.0F, 20.0F}, {50.0F, 0.0F, 0.0F}, {30.0F, 10.0F, 20.0F}},
                              {{30.0F, 10.0F, 20.0F}, {30.0F, 0.0F, 20.0F}, {30.0F, 10.0F, 20.0F}}},
                    KLockCase{"the free part takes the shortest path: here it moves only while the middle angle does",
                              0,
                              {{0.0F, 80.0F, 0.0F}, {0.0F, 90.0F, 0.0F}, {0.0F, 90.0F, 0.0F}, {30.0F, 80.0F, 30.0F}},
                              {{0.0F, 80.0F, 0.0F}, {15.0F, 90.0F, 15.0F}, {15.0F, 90.0F, 15.0F}, {30.0F, 80.0F, 30.0F}}},
                    KLockCase{"equal steps where nothing else moves",
                              0,
                              {{10.0F, 90.0001F, 4.0F}, {6.0F, 90.0F, 0.0F}, {20.0F, 90.0001F, 14.0F}},
                              {{10.0F, 90.0001F, 4.0F}, {15.0F, 90.0F, 9.0F}, {20.0F, 90.0001F, 14.0F}}},
                    KLockCase{"the fixed part takes the shorter way",
                              0,
                              {{90.0F, 80.0F, -80.0F}, {-170.0F, 90.0F, 0.0F}},
                              {{90.0F, 80.0F, -80.0F}, {100.0F, 90.0F, -90.0F}}},
                    KLockCase{"the free part is constant in a run that ends the curve",
                              0,
                              {{10.0F, 80.0F, 10.0F}, {4.0F, 90.0F, 0.0F}, {8.0F, 90.0F, 0.0F}},
                              {{10.0F, 80.0F, 10.0F}, {12.0F, 90.0F, 8.0F}, {14.0F, 90.0F, 6.0F}}},
                    KLockCase{"the first key is unchanged",
                              0,
                              {{10.0F, 90.0F, 4.0F}, {6.0F, 90.0F, 0.0F}, {20.0F, 80.0F, 14.0F}},
                              {{10.0F, 90.0F, 4.0F}, {10.0F, 90.0F, 4.0F}, {20.0F, 80.0F, 14.0F}}},
                    KLockCase{"near the pole is not locked",
                              0,
                              {{30.0F, 80.0F, 20.0F}, {10.0F, 89.999F, 0.0F}, {30.0F, 80.0F, 20.0F}},
                              {{30.0F, 80.0F, 20.0F}, {10.0F, 89.999F, 0.0F}, {30.0F, 80.0F, 20.0F}}},
                    KLockCase{"a non-finite key ends the run",
                              0,
                              {{10.0F, 80.0F, 10.0F}, {0.0F, 90.0F, 0.0F}, {kNanF, 90.0F, 0.0F}, {40.0F, 80.0F, 40.0F}},
                              {{10.0F, 80.0F, 10.0F}, {10.0F, 90.0F, 10.0F}, {kNanF, 90.0F, 0.0F}, {40.0F, 80.0F, 40.0F}}},
                    KLockCase{"a run may start after a non-finite key",
                              0,
                              {{10.0F, 80.0F, 10.0F}, {kNanF, 90.0F, 0.0F}, {0.0F, 90.0F, 0.0F}, {40.0F, 80.0F, 40.0F}},
                              {{10.0F, 80.0F, 10.0F}, {kNanF, 90.0F, 0.0F}, {25.0F, 90.0F, 25.0F}, {40.0F, 80.0F, 40.0F}}}));

/// Tests of both rotation filters.
class KRotationFilters : public testing::TestWithParam<bool>
{
protected:
    KQexAnimCurveFilter& Filter() { return GetParam() ? static_cast<KQexAnimCurveFilter&>(mKiller) : mUnroll; }

private:
    KQexAnimCurveFilterUnroll       mUnroll;
    KQexAnimCurveFilterGimbleKiller mKiller;
};

INSTANTIATE_TEST_SUITE_P(UnrollAndGimbleKiller, KRotationFilters, testing::Bool());

TEST_P(KRotationFilters, RequireThreeDifferentCurvesWithEqualTimes)
{
    const KPath lPath = {{179.0F, 0.0F, 0.0F}, {-179.0F, 0.0F, 0.0F}};
    KCurves     lCurves(lPath);
    EXPECT_FALSE(Filter().Apply(nullptr, 3));
    for (const int lCount : {-1, 0, 1, 2, 4, 6})
    {
        EXPECT_FALSE(Filter().Apply(lCurves.mCurves, lCount));
    }
    KQexAnimCurve* lHoles[3] = {lCurves.mCurves[0], nullptr, lCurves.mCurves[2]};
    EXPECT_FALSE(Filter().Apply(lHoles, 3));
    KQexAnimCurve* lTwice[3] = {lCurves.mCurves[0], lCurves.mCurves[1], lCurves.mCurves[0]};
    EXPECT_FALSE(Filter().Apply(lTwice, 3));
    EXPECT_TRUE(SameBits(lCurves.GetPath(), lPath));

    KCurves lMore(lPath);
    lMore.mCurves[2]->AppendSample(KTime(2), 0.0F);
    EXPECT_FALSE(Filter().Apply(lMore.mCurves, 3));
    EXPECT_TRUE(SameBits(lMore.GetPath(), lPath));

    KCurves lLater(lPath);
    lLater.mCurves[1]->Clear();
    lLater.mCurves[1]->AppendSample(KTime(0), 0.0F);
    lLater.mCurves[1]->AppendSample(KTime(2), 0.0F);
    EXPECT_FALSE(Filter().Apply(lLater.mCurves, 3));
    EXPECT_TRUE(SameBits(lLater.GetPath(), lPath));
}

TEST_P(KRotationFilters, TimesAddedInAnyOrderAreEqual)
{
    KCurves lCurves;
    for (int lKey = 0; lKey < 100; ++lKey)
    {
        lCurves.mCurves[0]->AppendSample(KTime(lKey), static_cast<float>(std::remainder(100.0 * lKey, 360.0)));
        lCurves.mCurves[1]->AppendSample(KTime(99 - lKey), 0.0F);
        lCurves.mCurves[2]->AppendSample(KTime(lKey * 37 % 100), 0.0F);
    }
    EXPECT_TRUE(Filter().Apply(lCurves.mCurves, 3));
    EXPECT_EQ(lCurves.mCurves[0]->GetValue(99), 9900.0F);
}

TEST_P(KRotationFilters, WithoutMemoryNothingChanges)
{
    const KPath lPath = {{179.0F, 90.0F, 0.0F}, {-179.0F, 90.0F, 0.0F}, {179.0F, 90.0F, 170.0F}, {-179.0F, 80.0F, -170.0F}};
    KCurves     lCurves(lPath);
    for (long lCount = 0;; ++lCount)
    {
        KMemoryWatch lWatch;
        lWatch.FailAfter(lCount);
        if (Filter().Apply(lCurves.mCurves, 3))
        {
            EXPECT_GE(lCount, 3);
            break;
        }
        ASSERT_TRUE(SameBits(lCurves.GetPath(), lPath));
        ASSERT_EQ(lWatch.GetBlocks(), 0U);
    }
    EXPECT_FALSE(SameBits(lCurves.GetPath(), lPath));
}

struct KReduceCase
{
    const char*        mWhat;
    std::vector<float> mBefore;
    std::vector<int>   mKept; ///< Indices of the remaining keys.
};

class KReduce : public testing::TestWithParam<KReduceCase>
{
};

TEST_P(KReduce, Keeps)
{
    const std::vector<float>& lBefore = GetParam().mBefore;
    KCurves                   lCurves;
    for (std::size_t lKey = 0; lKey < lBefore.size(); ++lKey)
    {
        lCurves.mCurves[1]->AppendSample(KTime(static_cast<long long>(lKey)), lBefore[lKey]);
    }
    EXPECT_TRUE(KQexAnimCurveFilterConstantKeyReducer().Apply(lCurves.mCurves, 3));
    std::vector<int> lKept;
    for (int lKey = 0; lKey < lCurves.mCurves[1]->GetKeyCount(); ++lKey)
    {
        const int   lTime = static_cast<int>(lCurves.mCurves[1]->GetTime(lKey).Get());
        const float lValue = lCurves.mCurves[1]->GetValue(lKey);
        EXPECT_EQ(std::memcmp(&lValue, &lBefore[static_cast<std::size_t>(lTime)], sizeof(float)), 0) << GetParam().mWhat;
        lKept.push_back(lTime);
    }
    EXPECT_EQ(lKept, GetParam().mKept) << GetParam().mWhat;
}

INSTANTIATE_TEST_SUITE_P(Table, KReduce,
                         testing::Values(KReduceCase{"no keys", {}, {}},                                                 //
                                         KReduceCase{"one key", {1.0F}, {0}},                                            //
                                         KReduceCase{"two keys", {1.0F, 1.0F}, {0, 1}},                                  //
                                         KReduceCase{"all equal", {1.0F, 1.0F, 1.0F, 1.0F}, {0, 3}},                     //
                                         KReduceCase{"nothing equal", {1.0F, 2.0F, 3.0F}, {0, 1, 2}},                    //
                                         KReduceCase{"run at the start", {1.0F, 1.0F, 1.0F, 2.0F}, {0, 2, 3}},           //
                                         KReduceCase{"run at the end", {2.0F, 1.0F, 1.0F, 1.0F}, {0, 1, 3}},             //
                                         KReduceCase{"run in the middle", {2.0F, 1.0F, 1.0F, 1.0F, 2.0F}, {0, 1, 3, 4}}, //
                                         KReduceCase{"two adjacent runs", {1.0F, 1.0F, 1.0F, 2.0F, 2.0F, 2.0F}, {0, 2, 3, 5}},
                                         KReduceCase{"a straight slope is not a run", {1.0F, 2.0F, 3.0F, 4.0F}, {0, 1, 2, 3}},
                                         KReduceCase{"one ulp apart", {1.0F, 1.0F, std::nextafter(1.0F, 2.0F)}, {0, 1, 2}},
                                         KReduceCase{"zeros of both signs", {0.0F, -0.0F, 0.0F, -0.0F}, {0, 3}},
                                         KReduceCase{"infinities", {kInfF, kInfF, kInfF, -kInfF}, {0, 2, 3}},
                                         KReduceCase{"NaN equals nothing", {kNanF, kNanF, kNanF, 1.0F}, {0, 1, 2, 3}}));

TEST(KQexAnimCurveFilterConstantKeyReducer, KeepsEveryEvaluatedValue)
{
    std::mt19937 lRandom(31);
    for (int lRound = 0; lRound < 300; ++lRound)
    {
        KCurves   lCurves;
        long long lTime = static_cast<long long>(lRandom() % 100U) - 1000;
        float     lValue = 0.1F;
        for (unsigned long lKey = lRandom() % 60U; lKey > 0; --lKey)
        {
            lTime += lRound % 3 == 0 ? 10 : 1 + static_cast<long long>(lRandom() % 20U);
            lValue = lRandom() % 3U == 0U ? static_cast<float>(lRandom() % 7U) / 7.0F : lValue;
            lCurves.mCurves[0]->AppendSample(KTime(lTime), lValue);
            lCurves.mCurves[1]->AppendSample(KTime(lTime), lValue);
        }
        EXPECT_TRUE(KQexAnimCurveFilterConstantKeyReducer().Apply(lCurves.mCurves + 1, 1));
        for (long long lQuery = -1100; lQuery < lTime + 100; ++lQuery)
        {
            ASSERT_EQ(lCurves.mCurves[0]->Evaluate(KTime(lQuery)), lCurves.mCurves[1]->Evaluate(KTime(lQuery))) << lQuery;
        }
        const int lLeft = lCurves.mCurves[1]->GetKeyCount();
        EXPECT_TRUE(KQexAnimCurveFilterConstantKeyReducer().Apply(lCurves.mCurves + 1, 1));
        EXPECT_EQ(lCurves.mCurves[1]->GetKeyCount(), lLeft) << "idempotent";
    }
}

TEST(KQexAnimCurveFilterConstantKeyReducer, AcceptsAnyNumberOfCurvesAndNulls)
{
    KCurves                               lCurves({{1.0F, 1.0F, 1.0F}, {1.0F, 1.0F, 1.0F}, {1.0F, 1.0F, 1.0F}});
    KQexAnimCurveFilterConstantKeyReducer lFilter;
    EXPECT_FALSE(lFilter.Apply(nullptr, 1));
    EXPECT_FALSE(lFilter.Apply(lCurves.mCurves, -1));
    EXPECT_TRUE(lFilter.Apply(nullptr, 0));
    KQexAnimCurve* lHoles[3] = {nullptr, lCurves.mCurves[1], nullptr};
    EXPECT_TRUE(lFilter.Apply(lHoles, 3));
    EXPECT_EQ(lCurves.mCurves[0]->GetKeyCount(), 3);
    EXPECT_EQ(lCurves.mCurves[1]->GetKeyCount(), 2);
}

TEST(KQexAnimCurveFilterConstantKeyReducer, WithoutMemoryACurveIsUnchanged)
{
    const KPath lPath = {{1.0F, 0.0F, 1.0F}, {1.0F, 0.0F, 1.0F}, {1.0F, 0.0F, 2.0F}, {1.0F, 1.0F, 2.0F}, {3.0F, 1.0F, 2.0F}};
    const int   lKept[3] = {3, 4, 4};
    for (long lCount = 0;; ++lCount)
    {
        KCurves      lCurves(lPath);
        KMemoryWatch lWatch;
        lWatch.FailAfter(lCount);
        const bool lDone = KQexAnimCurveFilterConstantKeyReducer().Apply(lCurves.mCurves, 3);
        for (int lAxis = 0; lAxis < 3; ++lAxis)
        {
            const int lKeys = lCurves.mCurves[lAxis]->GetKeyCount();
            EXPECT_TRUE(lKeys == lKept[lAxis] || (!lDone && lKeys == 5)) << lCount;
        }
        if (lDone)
        {
            EXPECT_GT(lCount, 2);
            break;
        }
    }
}

} // namespace
} // namespace qexsdk
