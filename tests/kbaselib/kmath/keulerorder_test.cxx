#include <kbaselib/kmath/keulerorder.h>

#include <gtest/gtest.h>

#include <vector>

namespace qexsdk
{
namespace
{

struct KListCase
{
    const char*      mWhat;
    std::vector<int> mList;
    int              mCode;
};

class KEulerOrderTest : public testing::TestWithParam<KListCase>
{
};

TEST_P(KEulerOrderTest, FollowsFromTheLastTwoRotations)
{
    EXPECT_EQ(EulerOrderFromOrderBuf(GetParam().mList.data(), static_cast<int>(GetParam().mList.size())), GetParam().mCode)
        << GetParam().mWhat;
}

INSTANTIATE_TEST_SUITE_P(Lists, KEulerOrderTest,
                         testing::Values(KListCase{"tx ty tz rz ry rx", {0, 1, 2, 3, 4, 5}, 10}, KListCase{"rx ry rz", {5, 4, 3}, 0},
                                         KListCase{"rx rz ry", {5, 3, 4}, 2}, KListCase{"ry rz rx", {4, 3, 5}, 4},
                                         KListCase{"ry rx rz", {4, 5, 3}, 6}, KListCase{"rz rx ry", {3, 5, 4}, 8},
                                         KListCase{"rz ry rx", {3, 4, 5}, 10}, KListCase{"nothing", {}, 0},
                                         KListCase{"only translations", {0, 1, 2}, 0}, KListCase{"only rx", {5}, 10},
                                         KListCase{"only ry", {4}, 8}, KListCase{"only rz", {3}, 0}, KListCase{"rx rz", {5, 3}, 6},
                                         KListCase{"rz rx", {3, 5}, 4}, KListCase{"rx ry", {5, 4}, 8}, KListCase{"ry rx", {4, 5}, 10},
                                         KListCase{"ry rz", {4, 3}, 0}, KListCase{"rz ry", {3, 4}, 2},
                                         KListCase{"translations between", {5, 0, 4, 1, 3, 2}, 0}, KListCase{"a repeated x", {5, 5}, 10},
                                         KListCase{"a repeated y", {4, 4}, 8}, KListCase{"a repeated z", {3, 3}, 0},
                                         KListCase{"length is not a rotation", {5, 4, 3, 6}, 0},
                                         KListCase{"other codes are ignored", {3, 4, 5, 7, -1, 99}, 10}));

TEST(KEulerOrderBufTest, HoldsTheNeighboursCodeForARepeatedAxis)
{
    const std::vector<int> lExpected = {10, 10, 4, 8, 8, 2, 6, 0, 0};
    EXPECT_EQ(std::vector<int>(sEulerOrderBuf, sEulerOrderBuf + 9), lExpected);
}

struct KHostCase
{
    ERotationOrder   mOrder;
    std::vector<int> mWritten;
};

class KHostOrderTest : public testing::TestWithParam<KHostCase>
{
};

INSTANTIATE_TEST_SUITE_P(SixOrders, KHostOrderTest,
                         testing::Values(KHostCase{eEULER_XYZ, {5, 4, 3}}, KHostCase{eEULER_XZY, {5, 3, 4}},
                                         KHostCase{eEULER_YZX, {4, 3, 5}}, KHostCase{eEULER_YXZ, {4, 5, 3}},
                                         KHostCase{eEULER_ZXY, {3, 5, 4}}, KHostCase{eEULER_ZYX, {3, 4, 5}}));

TEST_P(KHostOrderTest, ReplacesTheLastThreeAndRoundTripsAsTwiceItsValue)
{
    std::vector<int> lList = {0, 1, 2, 77, 78, 79};
    OrderBufFromEulerOrder(lList.data(), 6, GetParam().mOrder);
    EXPECT_EQ(std::vector<int>(lList.begin(), lList.begin() + 3), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(std::vector<int>(lList.begin() + 3, lList.end()), GetParam().mWritten);
    EXPECT_EQ(EulerOrderFromOrderBuf(lList.data(), 6), 2 * GetParam().mOrder);

    std::vector<int> lShort = {77, 78, 79};
    OrderBufFromEulerOrder(lShort.data(), 3, GetParam().mOrder);
    EXPECT_EQ(lShort, GetParam().mWritten);
}

TEST(KHostOrdersTest, AnyOtherOrderWritesNothing)
{
    for (const int lOrder : {6, 7, -1, 1000})
    {
        std::vector<int> lList = {77, 78, 79};
        OrderBufFromEulerOrder(lList.data(), 3, static_cast<ERotationOrder>(lOrder));
        EXPECT_EQ(lList, (std::vector<int>{77, 78, 79})) << lOrder;
    }
}

TEST(KHostOrdersTest, ValuesAreFixed)
{
    EXPECT_EQ(eEULER_XYZ, 0);
    EXPECT_EQ(eEULER_XZY, 1);
    EXPECT_EQ(eEULER_YZX, 2);
    EXPECT_EQ(eEULER_YXZ, 3);
    EXPECT_EQ(eEULER_ZXY, 4);
    EXPECT_EQ(eEULER_ZYX, 5);
    EXPECT_EQ(eSPHERIC_XYZ, 6);
}

} // namespace
} // namespace qexsdk
