#include <kbaselib/kbase/knumber.h>

#include <qexioplugins/acclaim/model/kqexasfround.h>
#include <tests/qexioplugins/acclaim/asfbuild.h>

#include <gtest/gtest.h>

#include <cmath>

using namespace qexsdk;
using namespace qextest;

namespace
{

std::string Text(const double* pNumbers, int pCount)
{
    std::string lText;
    for (int i = 0; i < pCount; ++i)
    {
        char lBuffer[kNumberBufferSize];
        lText.append(lBuffer, KNumberPrint(lBuffer, lBuffer + sizeof lBuffer, pNumbers[i], 'g', 6));
        lText += ' ';
    }
    return lText;
}

/// Direction, length and axis angles of a rounded bone, as the writer prints them.
std::string Written(const KQexAsfNode& pBone)
{
    return Text(pBone.mDirectionV.mData, 3) + "| " + Text(&pBone.mLength, 1) + "| " + Text(pBone.mOrientationV.mData, 3);
}

class KRoundTest : public testing::TestWithParam<double>
{
protected:
    KRoundTest() : mBone(Bone(nullptr, "bone")) {}
    ~KRoundTest() override { QexSdkDelete(mBone); }

    double Uniform() { return mUniform(mRandom); }

    /// A random bone. Components of its direction are often zero or small, so that some directions are along an axis or nearly so.
    void SetRandomBone()
    {
        double lVector[3] = {Uniform(), Uniform(), Uniform()};
        for (double& lNumber : lVector)
        {
            const double lDice = std::fabs(Uniform());
            lNumber *= lDice < 0.1 ? 0.0 : lDice < 0.3 ? 1e-3 : 1.0;
        }
        lVector[0] += KmVlength(lVector) == 0.0 ? 1.0 : 0.0;
        KmVnorm(mBone->mDirectionV.mData, lVector);
        mBone->mLength = std::pow(10.0, 2.0 * Uniform()) * GetParam() / 2.54;
        SetAxis(mBone, {180.0 * Uniform(), 90.0 * Uniform(), 180.0 * Uniform()});
    }

    std::mt19937                           mRandom{5};
    std::uniform_real_distribution<double> mUniform{-1.0, 1.0};
    KQexAsfNode*                           mBone;
};

/// Reading normalises the direction and turns the axis into a matrix; other formats round the position of a bone's end to 1e-6 cm. Neither
/// may change a digit of what is written next.
TEST_P(KRoundTest, WrittenDigitsAreStable)
{
    for (int lTry = 0; lTry < 5000; ++lTry)
    {
        SetRandomBone();
        RoundBone(*mBone, GetParam());
        const std::string lWritten = Written(*mBone);
        const double      lCentimetres = mBone->mLength * 2.54 / GetParam();
        double            lVector[3];
        KmVnorm(lVector, mBone->mDirectionV.mData);
        for (double& lNumber : lVector)
        {
            lNumber = lNumber * lCentimetres + 0.5e-6 * Uniform();
        }
        mBone->mLength = KmVlength(lVector) * GetParam() / 2.54;
        KmVnorm(mBone->mDirectionV.mData, lVector);
        SetAxis(mBone, mBone->mOrientationV);
        RoundBone(*mBone, GetParam());
        ASSERT_EQ(Written(*mBone), lWritten) << "try " << lTry << ", " << lCentimetres << " cm";
    }
}

/// A direction keeps as many digits as the position of the bone's end has in other formats, or one less.
TEST_P(KRoundTest, MovesTheEndByLittle)
{
    for (int lTry = 0; lTry < 5000; ++lTry)
    {
        SetRandomBone();
        const double     lLength = mBone->mLength;
        const KgeTVector lDirection = mBone->mDirectionV;
        const KgeRMatrix lAxis = mBone->mAxisRM;
        RoundBone(*mBone, GetParam());
        const double lCentimetres = lLength * 2.54 / GetParam();
        double       lMoved[3];
        for (int i = 0; i < 3; ++i)
        {
            lMoved[i] = mBone->mDirectionV.mData[i] - lDirection.mData[i];
        }
        const double lStep = std::max(1e-6, 1e-6 * 40.0 / lCentimetres);
        EXPECT_LE(KmVlength(lMoved), 10.0 * lStep) << "try " << lTry << ", " << lCentimetres << " cm";
        EXPECT_NEAR(mBone->mLength, lLength, 4e-5 * GetParam() + 1e-5 * lLength);
        for (int i = 0; i < 9; ++i)
        {
            EXPECT_NEAR(mBone->mAxisRM.mData[i / 3][i % 3], lAxis.mData[i / 3][i % 3], 4e-5);
        }
    }
}

/// No side is preferred: the mirror image of a direction is rounded to the mirror image.
TEST_P(KRoundTest, RoundsMirrorImagesAlike)
{
    for (int lTry = 0; lTry < 5000; ++lTry)
    {
        SetRandomBone();
        const KgeTVector lDirection = mBone->mDirectionV;
        const double     lLength = mBone->mLength;
        RoundBone(*mBone, GetParam());
        const KgeTVector lRounded = mBone->mDirectionV;
        for (int lAxis = 0; lAxis < 3; ++lAxis)
        {
            mBone->mDirectionV = lDirection;
            mBone->mDirectionV[lAxis] = -mBone->mDirectionV[lAxis];
            mBone->mLength = lLength;
            RoundBone(*mBone, GetParam());
            for (int i = 0; i < 3; ++i)
            {
                ASSERT_EQ(mBone->mDirectionV[i], i == lAxis ? -lRounded[i] : lRounded[i]) << "try " << lTry;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(LengthUnits, KRoundTest, testing::Values(2.54, 0.45, 1.0, 0.0254));

} // namespace
