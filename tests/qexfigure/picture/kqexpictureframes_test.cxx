#include <qexfigure/picture/kqexpictureframes.h>

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

using namespace qexsdk;

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
    EXPECT_EQ(DefaultPictureFrames(241), (std::vector<size_t>{0, 60, 120, 180, 240}));
    EXPECT_EQ(DefaultPictureFrames(3), (std::vector<size_t>{0, 1, 2}));
    EXPECT_EQ(DefaultPictureFrames(1), (std::vector<size_t>{0}));
    EXPECT_TRUE(DefaultPictureFrames(0).empty());
}

TEST(PictureFrames, NoneIsLeftOutUpToTheLimit)
{
    for (const size_t lCount : {size_t(0), size_t(1), MaxPicturePoses()})
    {
        std::vector<size_t> lFrames = FramesUpTo(lCount);
        EXPECT_EQ(LimitPictureFrames(lFrames), 0u);
        EXPECT_EQ(lFrames, FramesUpTo(lCount));
    }
}

TEST(PictureFrames, BeyondTheLimitTheyAreEvenlySpaced)
{
    for (const size_t lCount : {MaxPicturePoses() + 1, 2 * MaxPicturePoses(), size_t(275100)})
    {
        std::vector<size_t> lFrames = FramesUpTo(lCount);
        EXPECT_EQ(LimitPictureFrames(lFrames), lCount - MaxPicturePoses());
        ASSERT_EQ(lFrames.size(), MaxPicturePoses());
        EXPECT_EQ(lFrames.front(), 0u);
        EXPECT_EQ(lFrames.back(), lCount - 1);
        const size_t lSpacing = (lCount - 1) / (MaxPicturePoses() - 1);
        for (size_t lIndex = 1; lIndex < lFrames.size(); ++lIndex)
        {
            const size_t lStep = lFrames[lIndex] - lFrames[lIndex - 1];
            EXPECT_TRUE(lStep == lSpacing || lStep == lSpacing + 1) << lIndex;
        }
    }
}

} // namespace
