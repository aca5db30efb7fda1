#include <qexscene/kqexlimits.h>

#include <gtest/gtest.h>

using namespace qexsdk;

namespace
{

struct KFlags
{
    bool mX, mY, mZ;
};

KFlags MinActive(const KQexLimits& pLimits)
{
    KFlags lFlags{true, true, true};
    pLimits.GetLimitMinActive(lFlags.mX, lFlags.mY, lFlags.mZ);
    return lFlags;
}

KFlags MaxActive(const KQexLimits& pLimits)
{
    KFlags lFlags{true, true, true};
    pLimits.GetLimitMaxActive(lFlags.mX, lFlags.mY, lFlags.mZ);
    return lFlags;
}

TEST(KQexLimits, NothingIsActiveByDefault)
{
    const KQexLimits lLimits;
    EXPECT_FALSE(lLimits.GetActive());
    EXPECT_FALSE(MinActive(lLimits).mX || MinActive(lLimits).mY || MinActive(lLimits).mZ);
    EXPECT_FALSE(MaxActive(lLimits).mX || MaxActive(lLimits).mY || MaxActive(lLimits).mZ);
    EXPECT_EQ(lLimits.GetLimitMin(), KQexVector4());
    EXPECT_EQ(lLimits.GetLimitMax(), KQexVector4());
}

TEST(KQexLimits, EachFlagIsIndependent)
{
    for (int lBits = 0; lBits < 64; ++lBits)
    {
        KQexLimits lLimits;
        lLimits.SetLimitMinActive((lBits & 1) != 0, (lBits & 2) != 0, (lBits & 4) != 0);
        lLimits.SetLimitMaxActive((lBits & 8) != 0, (lBits & 16) != 0, (lBits & 32) != 0);
        const KFlags lMin = MinActive(lLimits);
        const KFlags lMax = MaxActive(lLimits);
        EXPECT_EQ(lMin.mX + 2 * lMin.mY + 4 * lMin.mZ + 8 * lMax.mX + 16 * lMax.mY + 32 * lMax.mZ, lBits);
        EXPECT_FALSE(lLimits.GetActive());
    }
}

TEST(KQexLimits, KeepsInactiveValuesAndIgnoresW)
{
    KQexLimits lLimits;
    lLimits.SetLimitMin(KQexVector4(-1.0, -2.0, -3.0, 8.0));
    lLimits.SetLimitMax(KQexVector4(1.0, 2.0, 3.0, 8.0));
    EXPECT_EQ(lLimits.GetLimitMin(), KQexVector4(-1.0, -2.0, -3.0, 0.0));
    EXPECT_EQ(lLimits.GetLimitMax(), KQexVector4(1.0, 2.0, 3.0, 0.0));
}

} // namespace
