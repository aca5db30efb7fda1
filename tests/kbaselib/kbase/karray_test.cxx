#include <kbaselib/kbase/karray.h>

#include <tests/support/memorywatch.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

namespace qexsdk
{
namespace
{

using KIntArray = KArrayTemplate<int*>;

int sItems[100];

std::vector<int> Contents(const KIntArray& pArray)
{
    std::vector<int> lContents;
    for (int lIndex = 0; lIndex < pArray.GetCount(); ++lIndex)
    {
        lContents.push_back(static_cast<int>(pArray[lIndex] - sItems));
    }
    return lContents;
}

void Fill(KIntArray& pArray, int pCount)
{
    for (int lIndex = 0; lIndex < pCount; ++lIndex)
    {
        ASSERT_EQ(pArray.Add(sItems + lIndex), lIndex);
    }
}

TEST(KArrayTest, StartsEmptyAndOwnsNoMemory)
{
    KMemoryWatch lWatch;
    KIntArray    lArray;
    EXPECT_EQ(lArray.GetCount(), 0);
    EXPECT_EQ(lArray.GetBlockCount(), 0);
    EXPECT_EQ(lWatch.GetCalls(), 0);
}

struct KGrowthCase
{
    int mCount;
    int mBlocks;
};

class KArrayGrowthTest : public testing::TestWithParam<KGrowthCase>
{
};

TEST_P(KArrayGrowthTest, DoublesTheBlocksOfAFullArray)
{
    KMemoryWatch lWatch;
    KIntArray    lArray;
    Fill(lArray, GetParam().mCount);
    EXPECT_EQ(lArray.GetBlockCount(), GetParam().mBlocks);
    EXPECT_EQ(lWatch.GetBlocks(), 1U);
    // A header of 8 bytes, then 32 bytes a block.
    EXPECT_EQ(lWatch.GetBytes(), 8U + 32U * static_cast<unsigned>(GetParam().mBlocks));
}

INSTANTIATE_TEST_SUITE_P(Counts, KArrayGrowthTest,
                         testing::Values(KGrowthCase{1, 1}, KGrowthCase{4, 1}, KGrowthCase{5, 2}, KGrowthCase{8, 2}, KGrowthCase{9, 4},
                                         KGrowthCase{16, 4}, KGrowthCase{17, 8}, KGrowthCase{33, 16}));

TEST(KArrayTest, RemovingFreesNoBlocks)
{
    KIntArray lArray;
    Fill(lArray, 9);
    while (lArray.GetCount() > 0)
    {
        lArray.RemoveAt(0);
        EXPECT_EQ(lArray.GetBlockCount(), 4);
    }
}

struct KInsertCase
{
    const char*      mWhat;
    int              mIndex;
    int              mResult;
    std::vector<int> mContents;
};

class KArrayInsertTest : public testing::TestWithParam<KInsertCase>
{
};

TEST_P(KArrayInsertTest, ClampsTheIndex)
{
    KIntArray lArray;
    Fill(lArray, 3);
    EXPECT_EQ(lArray.InsertAt(GetParam().mIndex, sItems + 9), GetParam().mResult) << GetParam().mWhat;
    EXPECT_EQ(Contents(lArray), GetParam().mContents) << GetParam().mWhat;
}

INSTANTIATE_TEST_SUITE_P(Indices, KArrayInsertTest,
                         testing::Values(KInsertCase{"at the front", 0, 0, {9, 0, 1, 2}}, KInsertCase{"in the middle", 1, 1, {0, 9, 1, 2}},
                                         KInsertCase{"at the count", 3, 3, {0, 1, 2, 9}},
                                         KInsertCase{"beyond the count", 99, 3, {0, 1, 2, 9}},
                                         KInsertCase{"below zero", -5, 0, {9, 0, 1, 2}}));

TEST(KArrayTest, RemovalMovesTheTailDownAndZeroesTheVacatedSlot)
{
    KMemoryWatch lWatch;
    KIntArray    lArray;
    Fill(lArray, 4);
    EXPECT_EQ(lArray.RemoveAt(1), sItems + 1);
    EXPECT_EQ(Contents(lArray), (std::vector<int>{0, 2, 3}));

    int* lSlots[4];
    std::memcpy(lSlots, lWatch.GetLastBlock() + 8, sizeof(lSlots));
    EXPECT_EQ(lSlots[2], sItems + 3);
    EXPECT_EQ(lSlots[3], nullptr);
}

TEST(KArrayTest, RemovalOutsideTheArrayDoesNothing)
{
    KIntArray lArray;
    EXPECT_EQ(lArray.RemoveAt(0), nullptr);
    Fill(lArray, 2);
    EXPECT_EQ(lArray.RemoveAt(2), nullptr);
    EXPECT_EQ(lArray.RemoveAt(-1), nullptr);
    EXPECT_EQ(Contents(lArray), (std::vector<int>{0, 1}));
}

TEST(KArrayTest, IndicesOutsideTheArrayGiveNull)
{
    KIntArray lArray;
    EXPECT_EQ(lArray.GetAt(0), nullptr);
    Fill(lArray, 2);
    EXPECT_EQ(lArray[2], nullptr);
    EXPECT_EQ(lArray.GetAt(-1), nullptr);
    EXPECT_EQ(lArray.GetAt(1), sItems + 1);
    lArray.SetAt(1, sItems + 7);
    lArray.SetAt(2, sItems + 8);
    EXPECT_EQ(Contents(lArray), (std::vector<int>{0, 7}));
    EXPECT_EQ(lArray.Find(sItems + 7), 1);
    EXPECT_EQ(lArray.Find(sItems + 8), -1);
}

TEST(KArrayTest, ClearFreesTheBlock)
{
    KMemoryWatch lWatch;
    KIntArray    lArray;
    Fill(lArray, 20);
    lArray.Clear();
    EXPECT_EQ(lArray.GetCount(), 0);
    EXPECT_EQ(lArray.GetBlockCount(), 0);
    EXPECT_EQ(lWatch.GetBlocks(), 0U);
    EXPECT_EQ(lArray.Add(sItems), 0);
    EXPECT_EQ(lArray.GetBlockCount(), 1);
}

TEST(KArrayTest, AFailedReallocationLeavesTheArrayAsItWas)
{
    for (const int lFull : {0, 4, 8})
    {
        KMemoryWatch lWatch;
        KIntArray    lArray;
        Fill(lArray, lFull);
        const std::vector<int> lBefore = Contents(lArray);
        const int              lBlocks = lArray.GetBlockCount();
        lWatch.FailAfter(0);
        EXPECT_EQ(lArray.Add(sItems + 9), -1);
        EXPECT_EQ(lArray.InsertAt(0, sItems + 9), -1);
        EXPECT_EQ(Contents(lArray), lBefore);
        EXPECT_EQ(lArray.GetBlockCount(), lBlocks);
        lWatch.FailAfter(-1);
        EXPECT_EQ(lArray.Add(sItems + 9), lFull);
    }
}

TEST(KArrayTest, DestructionFreesTheBlock)
{
    KMemoryWatch lWatch;
    {
        KIntArray lArray;
        Fill(lArray, 50);
    }
    EXPECT_EQ(lWatch.GetBlocks(), 0U);
}

TEST(KArrayTest, RemoveIfCompactsInOnePassAndZeroesTheTail)
{
    KMemoryWatch lWatch;
    KIntArray    lArray;
    Fill(lArray, 8);
    int lCalls = 0;
    EXPECT_EQ(lArray.RemoveIf(
                  [&lCalls](const int* pItem)
                  {
                      ++lCalls;
                      return (pItem - sItems) % 2 == 0;
                  }),
              4);
    EXPECT_EQ(lCalls, 8);
    EXPECT_EQ(Contents(lArray), (std::vector<int>{1, 3, 5, 7}));
    EXPECT_EQ(lArray.GetBlockCount(), 2);
    int* lSlots[8];
    std::memcpy(lSlots, lWatch.GetLastBlock() + 8, sizeof(lSlots));
    for (int lIndex = 4; lIndex < 8; ++lIndex)
    {
        EXPECT_EQ(lSlots[lIndex], nullptr);
    }
}

/// Random insertions and removals, compared with std::vector.
TEST(KArrayTest, BehavesLikeAVector)
{
    std::mt19937     lRandom(20260);
    KIntArray        lArray;
    std::vector<int> lModel;
    for (int lStep = 0; lStep < 20000; ++lStep)
    {
        const int lIndex = static_cast<int>(lRandom() % (lModel.size() + 1));
        if (lRandom() % 100 < (lModel.size() > 40 ? 30U : 60U))
        {
            const int lItem = static_cast<int>(lRandom() % 100);
            ASSERT_EQ(lArray.InsertAt(lIndex, sItems + lItem), lIndex);
            lModel.insert(lModel.begin() + lIndex, lItem);
        }
        else if (lIndex < static_cast<int>(lModel.size()))
        {
            lArray.RemoveAt(lIndex);
            lModel.erase(lModel.begin() + lIndex);
        }
        ASSERT_EQ(Contents(lArray), lModel);
    }
}

} // namespace
} // namespace qexsdk
