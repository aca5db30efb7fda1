#include <qexscene/kqexindexedlist.h>

#include <tests/support/memorywatch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

using namespace qexsdk;

namespace
{

struct KItem
{
    KQexListHook<KItem> mHook;
};

using KItems = KQexIndexedList<KItem, &KItem::mHook>;

/// The list, and a vector with the same items as a reference.
struct KBoth
{
    void Append()
    {
        mOwned.push_back(std::make_unique<KItem>());
        mList.Append(mOwned.back().get());
        mVector.push_back(mOwned.back().get());
    }

    void RemoveAt(int pIndex)
    {
        mList.Remove(mVector[static_cast<size_t>(pIndex)]);
        mVector.erase(mVector.begin() + pIndex);
    }

    int Count() const { return static_cast<int>(mVector.size()); }

    void ExpectSame(int pIndex) const
    {
        ASSERT_EQ(mList.GetCount(), Count());
        const bool lInside = pIndex >= 0 && pIndex < Count();
        EXPECT_EQ(mList.GetAt(pIndex), lInside ? mVector[static_cast<size_t>(pIndex)] : nullptr) << pIndex;
    }

    void ExpectAllSame() const
    {
        KItem* lItem = mList.GetFirst();
        for (int lIndex = -1; lIndex <= Count(); ++lIndex)
        {
            ExpectSame(lIndex);
        }
        for (KItem* lExpected : mVector)
        {
            ASSERT_EQ(lItem, lExpected);
            lItem = KItems::GetNext(lItem);
        }
        EXPECT_EQ(lItem, nullptr);
        EXPECT_EQ(mList.GetLast(), mVector.empty() ? nullptr : mVector.back());
    }

    std::vector<std::unique_ptr<KItem>> mOwned;
    std::vector<KItem*>                 mVector;
    KItems                              mList;
};

TEST(KQexIndexedList, AgreesWithAVector)
{
    std::mt19937 lRandom(20);
    for (int lRound = 0; lRound < 200; ++lRound)
    {
        KBoth lBoth;
        for (int lStep = 0; lStep < 60; ++lStep)
        {
            const int lChoice = static_cast<int>(lRandom() % 6);
            if (lChoice < 3 || lBoth.Count() == 0)
            {
                lBoth.Append();
            }
            else if (lChoice == 3)
            {
                lBoth.RemoveAt(static_cast<int>(lRandom() % static_cast<unsigned>(lBoth.Count())));
            }
            else
            {
                lBoth.ExpectSame(static_cast<int>(lRandom() % static_cast<unsigned>(lBoth.Count() + 2)) - 1);
            }
        }
        lBoth.ExpectAllSame();
    }
}

/// Would take minutes if every step rebuilt the index.
TEST(KQexIndexedList, VisitingAndRemovingIsConstantPerStep)
{
    constexpr int kCount = 200000;
    for (const bool lForward : {true, false})
    {
        KBoth lBoth;
        for (int lI = 0; lI < kCount; ++lI)
        {
            lBoth.Append();
        }
        int lLeft = kCount;
        for (int lI = 0, lIndex = lForward ? 0 : kCount - 1; lI < kCount; ++lI)
        {
            KItem* lItem = lBoth.mList.GetAt(lIndex);
            ASSERT_EQ(lItem, lBoth.mVector[static_cast<size_t>(lForward ? lI : kCount - 1 - lI)]);
            const bool lRemove = lI % 2 == 1;
            if (lRemove)
            {
                lBoth.mList.Remove(lItem);
                --lLeft;
            }
            lIndex += lForward ? (lRemove ? 0 : 1) : -1;
        }
        EXPECT_EQ(lBoth.mList.GetCount(), lLeft);
    }
}

TEST(KQexIndexedList, WithoutMemoryForTheIndexItWalksTheList)
{
    KMemoryWatch lMemory;
    KBoth        lBoth;
    lMemory.FailAfter(0);
    for (int lI = 0; lI < 50; ++lI)
    {
        lBoth.Append();
    }
    lBoth.ExpectAllSame();
    lBoth.RemoveAt(20);
    lBoth.RemoveAt(48);
    lBoth.ExpectAllSame();
    EXPECT_GT(lMemory.GetCalls(), 0);
    EXPECT_EQ(lMemory.GetBlocks(), 0U);
    lMemory.FailAfter(-1);
    lBoth.ExpectAllSame();
}

} // namespace
