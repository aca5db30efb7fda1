#include <qexioplugins/acclaim/amc/kqexdofsolver.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

using namespace qexsdk;

namespace
{

/// The parameter is a list of DOF codes: 3 rz, 4 ry, 5 rx, 0 to 2 translations.
class KDofSolverTest : public testing::TestWithParam<std::vector<int>>
{
protected:
    /// The rotations of the list multiplied, later ones on the left.
    KgeRMatrix Compose(const std::vector<double>& pAngles) const
    {
        KgeRMatrix lResult;
        size_t     lNext = 0;
        for (const int lCode : GetParam())
        {
            if (lCode >= 3)
            {
                KgeRVector lAngle;
                KgeRMatrix lRotation;
                lAngle.mData[5 - lCode] = pAngles[lNext++];
                KgeSet(lRotation, lAngle);
                KgeMult(lResult, lRotation, lResult);
            }
        }
        return lResult;
    }

    /// Expects the solver to come at least as close to a rotation as 3,000 random lists of angles.
    void ExpectNearest(const KgeRVector& pAngles)
    {
        KgeRMatrix lWanted;
        KgeSet(lWanted, pAngles);
        std::vector<double> lFound(static_cast<size_t>(mSolver.GetCount()));
        KgeRMatrix          lReached;
        const double        lResidual = mSolver.Solve(lWanted, lFound.data(), lReached);
        EXPECT_NEAR(lResidual, AngleBetween(lWanted, lReached), 1e-6);
        EXPECT_LT(AngleBetween(Compose(lFound), lReached), 1e-6);
        double lBest = 180.0;
        for (int lTry = 0; lTry < 3000; ++lTry)
        {
            lBest = std::min(lBest, AngleBetween(lWanted, Compose(RandomAngles())));
        }
        EXPECT_LT(lResidual, lBest + 1e-5) << pAngles.mData[0] << ' ' << pAngles.mData[1] << ' ' << pAngles.mData[2];
    }

    std::vector<double> RandomAngles()
    {
        std::vector<double> lAngles(static_cast<size_t>(mSolver.GetCount()));
        for (double& lAngle : lAngles)
        {
            lAngle = std::uniform_real_distribution<double>(-180.0, 180.0)(mRandom);
        }
        return lAngles;
    }

    KQexDofSolver mSolver{GetParam().data(), static_cast<int>(GetParam().size())};
    std::mt19937  mRandom{11};
};

TEST_P(KDofSolverTest, ReachesWhatTheDofsCanExpress)
{
    for (int i = 0; i < 300; ++i)
    {
        const KgeRMatrix    lWanted = Compose(RandomAngles());
        std::vector<double> lFound(static_cast<size_t>(mSolver.GetCount()));
        KgeRMatrix          lReached;
        mSolver.Solve(lWanted, lFound.data(), lReached);
        EXPECT_LT(AngleBetween(lWanted, lReached), 1e-6);
        EXPECT_LT(AngleBetween(Compose(lFound), lReached), 1e-6);
    }
}

TEST_P(KDofSolverTest, ResidualIsMinimal)
{
    for (int i = 0; i < 40; ++i)
    {
        KgeRVector lAny;
        for (double& lAngle : lAny.mData)
        {
            lAngle = std::uniform_real_distribution<double>(-180.0, 180.0)(mRandom);
        }
        ExpectNearest(lAny);
    }
}

/// The search starts from an Euler triple in gimbal lock.
TEST_P(KDofSolverTest, ResidualIsMinimalFromGimbalLock)
{
    for (int lAxis = 0; lAxis < 3; ++lAxis)
    {
        for (const double lQuarter : {90.0, -90.0, 180.0, 89.99999})
        {
            for (const double lTwist : {0.0, 30.0, -140.0})
            {
                KgeRVector lRotation;
                lRotation.mData[lAxis] = lQuarter;
                lRotation.mData[(lAxis + 1) % 3] = lTwist;
                ExpectNearest(lRotation);
            }
        }
    }
}

TEST_P(KDofSolverTest, RoundInLockKeepsTheRotation)
{
    for (const double lLock : {0.0, 90.0, 180.0, -90.0, 270.0, 89.999999, -89.999999, 1e-6, 179.999999})
    {
        for (int i = 0; i < 20; ++i)
        {
            std::vector<double> lAngles = RandomAngles();
            if (lAngles.size() != 3 || (lAngles[1] = lLock, mSolver.GetGain(lAngles.data()) < 1e5))
            {
                break;
            }
            const KgeRMatrix lBefore = Compose(lAngles);
            mSolver.RoundInLock(lAngles.data(), 1.0);
            EXPECT_EQ(lAngles[0], std::round(lAngles[0]));
            EXPECT_LT(AngleBetween(lBefore, Compose(lAngles)), 1e-5) << lLock;
        }
    }
}

TEST_P(KDofSolverTest, MakeContinuousKeepsTheRotation)
{
    for (int i = 0; i < 100; ++i)
    {
        const std::vector<double> lLast = RandomAngles();
        std::vector<double>       lAngles = RandomAngles();
        const KgeRMatrix          lBefore = Compose(lAngles);
        mSolver.MakeContinuous(lAngles.data(), lLast.data());
        EXPECT_LT(AngleBetween(lBefore, Compose(lAngles)), 1e-6);
        for (size_t j = 0; j < lAngles.size(); ++j)
        {
            EXPECT_LE(std::fabs(lAngles[j] - lLast[j]), 180.0);
        }
    }
}

TEST_P(KDofSolverTest, TryAnglesAgreesWithSolve)
{
    for (const ERotationOrder lOrder : {eEULER_XYZ, eEULER_XZY, eEULER_YZX, eEULER_YXZ, eEULER_ZXY, eEULER_ZYX})
    {
        for (int i = 0; i < 50 && mSolver.MatchesOrder(lOrder); ++i)
        {
            const std::vector<double> lAngles = RandomAngles();
            double                    lByAxis[3] = {0.0, 0.0, 0.0};
            size_t                    lNext = 0;
            for (const int lCode : GetParam())
            {
                if (lCode >= 3)
                {
                    lByAxis[5 - lCode] = lAngles[lNext++];
                }
            }
            double     lCopied[6] = {};
            double     lSolved[6] = {};
            KgeRMatrix lReached;
            if (mSolver.TryAngles(lByAxis, lCopied))
            {
                EXPECT_LT(mSolver.Solve(Compose(lAngles), lSolved, lReached), 1e-9);
                mSolver.MakeContinuous(lSolved, lCopied);
            }
            for (int k = 0; k < mSolver.GetCount(); ++k)
            {
                EXPECT_NEAR(lSolved[k], lCopied[k], 1e-9);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Lists, KDofSolverTest,
                         testing::Values(std::vector<int>{}, std::vector<int>{0, 1, 2}, std::vector<int>{5}, std::vector<int>{4},
                                         std::vector<int>{3}, std::vector<int>{5, 4}, std::vector<int>{4, 3}, std::vector<int>{3, 5},
                                         std::vector<int>{5, 3}, std::vector<int>{5, 4, 3}, std::vector<int>{3, 4, 5},
                                         std::vector<int>{4, 5, 3}, std::vector<int>{2, 3, 5, 4}, std::vector<int>{5, 4, 5},
                                         std::vector<int>{5, 5}, std::vector<int>{3, 3, 3}, std::vector<int>{5, 5, 4},
                                         std::vector<int>{3, 4, 4}, std::vector<int>{5, 4, 3, 5}, std::vector<int>{5, 4, 5, 4},
                                         std::vector<int>{3, 4, 5, 3, 4, 5}),
                         [](const testing::TestParamInfo<std::vector<int>>& pInfo) { return std::to_string(pInfo.index); });

TEST(KDofSolverTryAngles, RefusesWhatItCannotDecide)
{
    const int           lCodes[3] = {5, 4, 3};
    const KQexDofSolver lSolver(lCodes, 3);
    const KQexDofSolver lHinge(lCodes, 1);
    const double        lLocked[3] = {10.0, -90.0, 20.0};
    const double        lSteep[3] = {10.0, 630.5, 20.0};
    const double        lTwisted[3] = {10.0, 0.0, 1e-9};
    double              lAngles[3];
    EXPECT_TRUE(lSolver.MatchesOrder(eEULER_XYZ));
    EXPECT_FALSE(lSolver.MatchesOrder(eEULER_XZY));
    EXPECT_TRUE(lHinge.MatchesOrder(eEULER_ZYX));
    EXPECT_FALSE(lSolver.TryAngles(lLocked, lAngles));
    EXPECT_FALSE(lSolver.TryAngles(lSteep, lAngles));
    EXPECT_TRUE(lSolver.TryAngles(lTwisted, lAngles));
    EXPECT_FALSE(lHinge.TryAngles(lTwisted, lAngles));
}

TEST(KDofSolverGain, TwoDofsAreNotRounded)
{
    const int           lCodes[2] = {5, 4};
    const KQexDofSolver lSolver(lCodes, 2);
    double              lAngles[2] = {10.3, 90.0};
    lSolver.RoundInLock(lAngles, 1.0);
    EXPECT_EQ(lAngles[0], 10.3);
    EXPECT_EQ(lAngles[1], 90.0);
    EXPECT_EQ(lSolver.GetGain(lAngles), 1.0);
}

TEST(KDofSolverGain, IsNeverAboveItsBound)
{
    const int lCodes[2][3] = {{5, 4, 3}, {5, 4, 5}};
    for (const int* lList : lCodes)
    {
        const KQexDofSolver lSolver(lList, 3);
        for (double lMiddle = -200.0; lMiddle <= 200.0; lMiddle += 0.5)
        {
            const double lAngles[3] = {10.0, lMiddle, 20.0};
            EXPECT_LE(lSolver.GetGain(lAngles), lSolver.GetGainBound(lAngles) + 1e-9) << lMiddle;
        }
    }
}

TEST(KDofSolverGain, GrowsTowardsGimbalLock)
{
    const int           lCodes[3] = {5, 4, 3};
    const KQexDofSolver lSolver(lCodes, 3);
    const double        lFlat[3] = {10.0, 0.0, 20.0};
    const double        lSteep[3] = {10.0, 60.0, 20.0};
    const double        lLocked[3] = {10.0, 90.0, 20.0};
    EXPECT_DOUBLE_EQ(lSolver.GetGain(lFlat), 1.0);
    EXPECT_NEAR(lSolver.GetGain(lSteep), 2.0, 1e-12);
    EXPECT_NEAR(lSolver.GetGain(lLocked), 1e6, 1.0);
}

} // namespace
