#include <kbaselib/kmath/keulernearest.h>

#include <kbaselib/kmath/kmath.h>
#include <tests/kbaselib/kmath/rotations.h>

#include <gtest/gtest.h>

#include <limits>

using namespace qexsdk;
using namespace qextest;

namespace
{

double Distance(const double* pA, const double* pB)
{
    return std::hypot(pA[0] - pB[0], pA[1] - pB[1], pA[2] - pB[2]);
}

/// Distance from \p pNear to the nearest of the triples that differ from \p pV or its flipped triple by up to five full turns per angle.
double NearestDistance(const double* pV, const double* pNear, bool pRepeats)
{
    const double lFlipped[3] = {pV[0] + 180.0, (pRepeats ? 0.0 : 180.0) - pV[1], pV[2] + 180.0};
    double       lBest = std::numeric_limits<double>::infinity();
    for (const double* lFrom : {pV, lFlipped})
    {
        double lSum = 0.0;
        for (int lAxis = 0; lAxis < 3; ++lAxis)
        {
            double lLowest = std::numeric_limits<double>::infinity();
            for (int lTurn = -5; lTurn <= 5; ++lTurn)
            {
                const double lStep = lFrom[lAxis] + 360.0 * lTurn - pNear[lAxis];
                lLowest = std::min(lLowest, lStep * lStep);
            }
            lSum += lLowest;
        }
        lBest = std::min(lBest, std::sqrt(lSum));
    }
    return lBest;
}

TEST(KmNearestEulerTest, IsTheNearestTripleOfTheRotation)
{
    KRandomAngles lAngles(71);
    for (int lStep = 0; lStep < 20000; ++lStep)
    {
        const int lOrder = lStep % 12;
        double    lV[3];
        double    lNear[3];
        lAngles.Next(lV);
        lAngles.Next(lNear);
        for (double& lAngle : lNear)
        {
            lAngle *= 4.0; // up to two turns away
        }
        double lFound[3] = {lV[0], lV[1], lV[2]};
        EXPECT_EQ(KmNearestEuler(lFound, lNear, lOrder), lFound);
        EXPECT_NEAR(Distance(lFound, lNear), NearestDistance(lV, lNear, (lOrder & 1) != 0), 1e-9) << lStep;
        if (lOrder % 2 == 0)
        {
            double lBefore[4][4];
            double lAfter[4][4];
            KmVIJKtoR(lBefore, lV, lOrder);
            KmVIJKtoR(lAfter, lFound, lOrder);
            for (int i = 0; i < 3; ++i)
            {
                EXPECT_NEAR(Distance(lBefore[i], lAfter[i]), 0.0, 1e-12) << lStep;
            }
        }
    }
}

TEST(KmNearestEulerTest, ATripleThatIsNearestIsUnchanged)
{
    KRandomAngles lAngles(72);
    for (int lStep = 0; lStep < 2000; ++lStep)
    {
        double lV[3];
        lAngles.Next(lV);
        const double lNear[3] = {lV[0] + 20.0, lV[1] - 20.0, lV[2] + 30.0};
        double       lFound[3] = {lV[0], lV[1], lV[2]};
        if (NearestDistance(lV, lNear, false) > Distance(lV, lNear) - 1e-9)
        {
            KmNearestEuler(lFound, lNear, 0);
            EXPECT_TRUE(lFound[0] == lV[0] && lFound[1] == lV[1] && lFound[2] == lV[2]) << lStep;
        }
    }
}

TEST(KmNearestTurnTest, BringsAnAngleWithinHalfATurn)
{
    EXPECT_EQ(KmNearestTurn(10.0, 0.0), 10.0);
    EXPECT_EQ(KmNearestTurn(350.0, 0.0), -10.0);
    EXPECT_EQ(KmNearestTurn(-10.0, 720.0), 710.0);
    EXPECT_EQ(KmNearestTurn(1090.0, -5.0), 10.0);
    EXPECT_EQ(std::fabs(KmNearestTurn(180.0, 0.0)), 180.0);
}

} // namespace
