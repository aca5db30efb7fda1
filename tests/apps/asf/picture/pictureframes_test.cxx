#include <apps/asf/picture/pictureframes.h>

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

using namespace asfapp;

namespace
{

std::vector<size_t> FramesUpTo(size_t pCount)
{
    std::vector<size_t> lFrames(pCount);
    std::iota(lFrames.begin(), lFrames.end(), size_t(0));
    return lFrames;
}

TEST(PictureFrames, TheDefaultIsFiveFromTheFirstToTheLast)
{
    EXPECT_EQ(DefaultFrames(241), (std::vector<size_t>{0, 60, 120, 180, 240}));
    EXPECT_EQ(DefaultFrames(3), (std::vector<size_t>{0, 1, 2}));
    EXPECT_EQ(DefaultFrames(1), (std::vector<size_t>{0}));
    EXPECT_TRUE(DefaultFrames(0).empty());
}

TEST(PictureFrames, NoneIsLeftOutUpToTheLimit)
{
    for (const size_t lCount : {size_t(0), size_t(1), MaxPoses()})
    {
        std::vector<size_t> lFrames = FramesUpTo(lCount);
        EXPECT_EQ(LimitFrames(lFrames), 0u);
        EXPECT_EQ(lFrames, FramesUpTo(lCount));
    }
}

TEST(PictureFrames, BeyondTheLimitTheyAreEvenlySpaced)
{
    for (const size_t lCount : {MaxPoses() + 1, 2 * MaxPoses(), size_t(275100)})
    {
        std::vector<size_t> lFrames = FramesUpTo(lCount);
        EXPECT_EQ(LimitFrames(lFrames), lCount - MaxPoses());
        ASSERT_EQ(lFrames.size(), MaxPoses());
        EXPECT_EQ(lFrames.front(), 0u);
        EXPECT_EQ(lFrames.back(), lCount - 1);
        const size_t lSpacing = (lCount - 1) / (MaxPoses() - 1);
        for (size_t lIndex = 1; lIndex < lFrames.size(); ++lIndex)
        {
            const size_t lStep = lFrames[lIndex] - lFrames[lIndex - 1];
            EXPECT_TRUE(lStep == lSpacing || lStep == lSpacing + 1) << lIndex;
        }
    }
}

} // namespace
