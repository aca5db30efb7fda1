#include <qexfigure/picture/kqexfigurepicture.h>

#include <tests/qexfigure/figuresupport.h>

#include <limits>

using namespace qexsdk;
using namespace qextest;

namespace
{

size_t Occurrences(const std::string& pText, const std::string& pPart)
{
    size_t lCount = 0;
    for (size_t lAt = pText.find(pPart); lAt != std::string::npos; lAt = pText.find(pPart, lAt + 1))
    {
        ++lCount;
    }
    return lCount;
}

class KFigurePictureTest : public testing::Test
{
protected:
    void Load(const std::string& pBytes, const std::string& pName)
    {
        KQexFigureFiles lFiles;
        ASSERT_TRUE(lFiles.mFigure.OpenBuffer(pBytes, pName, mReport)) << TextOf(mReport);
        ASSERT_TRUE(mFigure.Load(lFiles, {}, mReport)) << TextOf(mReport);
    }

    KQexFigure               mFigure;
    KQexFigureReport         mReport;
    KQexFigurePictureOptions mOptions;
    KQexSvg                  mSvg;
};

TEST_F(KFigurePictureTest, PosesOfATake)
{
    Load(LegBvh(), "leg.bvh");
    mOptions.mTitle = "a leg";
    mOptions.mViews = {ePICTURE_FRONT, ePICTURE_SIDE};
    mOptions.mNames = true;
    ASSERT_TRUE(DrawFigure(mFigure, &mFigure.GetTakes()[0], mOptions, mSvg, mReport)) << TextOf(mReport);
    EXPECT_EQ(Occurrences(mSvg.mText, ">frame 1, 0.00 s, front<"), 1u);
    EXPECT_EQ(Occurrences(mSvg.mText, ">frame 2, 0.03 s, side<"), 1u);
    EXPECT_EQ(Occurrences(mSvg.mText, "<circle "), 3u * 2 * 2);
    EXPECT_EQ(Occurrences(mSvg.mText, ">Leg</text>"), 4u);
    EXPECT_EQ(Occurrences(mSvg.mText, ">a leg</text>"), 1u);
    EXPECT_EQ(Occurrences(mSvg.mText, ">2 frames, 30 a second</text>"), 1u);
    EXPECT_GT(mSvg.mWidth, 300);
    EXPECT_GT(mSvg.mHeight, 300);
}

TEST_F(KFigurePictureTest, AFigureAtRest)
{
    Load(LegBvh(), "leg.bvh");
    ASSERT_TRUE(DrawFigure(mFigure, nullptr, mOptions, mSvg, mReport)) << TextOf(mReport);
    EXPECT_EQ(Occurrences(mSvg.mText, ">3 joints at rest</text>"), 1u);
    EXPECT_EQ(Occurrences(mSvg.mText, "<circle "), 3u);
}

TEST_F(KFigurePictureTest, TrailsAreAtWorldPositions)
{
    Load(LegBvh(), "leg.bvh");
    mOptions.mTrails = {"Leg"};
    KQexPicture lPicture;
    ASSERT_TRUE(MakeFigurePicture(mFigure, &mFigure.GetTakes()[0], mOptions, lPicture, mReport)) << TextOf(mReport);
    EXPECT_TRUE(lPicture.mInPlace);
    ASSERT_EQ(lPicture.mTrails.size(), 1u);
    ASSERT_EQ(lPicture.mTrails[0].mPoints.size(), 2u);
    // The end of the leg, which turns by 90 degrees about z.
    EXPECT_NEAR(lPicture.mTrails[0].mPoints[0].mY, 90 - 40 - 45, 1e-4);
    EXPECT_NEAR(lPicture.mTrails[0].mPoints[1].mY, 91 - 40, 1e-4);
    EXPECT_NEAR(lPicture.mTrails[0].mPoints[1].mX, 45, 1e-4);
}

TEST_F(KFigurePictureTest, ProgressCanCancel)
{
    Load(LegBvh(), "leg.bvh");
    KQexPicture lPicture;
    mOptions.mTrails = {"Leg"};
    double lDone = 0;
    mOptions.mProgress = [&lDone](double pFraction)
    {
        lDone = pFraction;
        return true;
    };
    EXPECT_TRUE(MakeFigurePicture(mFigure, &mFigure.GetTakes()[0], mOptions, lPicture, mReport)) << TextOf(mReport);
    EXPECT_EQ(lDone, 1);
    mOptions.mProgress = [](double)
    {
        return false;
    };
    EXPECT_FALSE(MakeFigurePicture(mFigure, &mFigure.GetTakes()[0], mOptions, lPicture, mReport));
    EXPECT_TRUE(mReport.IsCancelled());
}

TEST_F(KFigurePictureTest, WhatDoesNotExistIsAnError)
{
    Load(LegBvh(), "leg.bvh");
    mOptions.mTrails = {"Arm"};
    mOptions.mTrailOption = "--trail: ";
    EXPECT_FALSE(DrawFigure(mFigure, &mFigure.GetTakes()[0], mOptions, mSvg, mReport));
    mOptions.mTrails.clear();
    mOptions.mPath = "leg.bvh";
    mOptions.mFrames = {0, 2};
    EXPECT_FALSE(DrawFigure(mFigure, &mFigure.GetTakes()[0], mOptions, mSvg, mReport));
    EXPECT_EQ(TextOf(mReport), "error :0: --trail: the figure has no joint Arm\nerror leg.bvh:0: a frame to draw is not in the take\n");
    EXPECT_EQ(mReport.GetStatus(), eFIGURE_USAGE);
    EXPECT_EQ(mSvg.mText, "");
}

TEST_F(KFigurePictureTest, ASkeletonFileAsItListsItsBones)
{
    KQexFigureFile   lFile;
    KQexSkeletonFile lSkeleton;
    KQexPicture      lPicture;
    ASSERT_TRUE(lFile.OpenBuffer(HandSkeleton(), "hand.asf", mReport));
    ASSERT_TRUE(lSkeleton.Read(lFile, false, mReport));
    ASSERT_TRUE(MakeSkeletonPicture(lSkeleton, mOptions, lPicture, mReport));
    EXPECT_EQ(lPicture.mTitle, "hand");
    EXPECT_EQ(lPicture.mSubtitle, "2 bones, 0.0 cm high at rest");
    EXPECT_EQ(lPicture.mNames, (std::vector<std::string>{"root", "arm", "hand"}));
    EXPECT_DOUBLE_EQ(lPicture.mPoses.at(0).mEnds.at(2).mX, 15);
    EXPECT_TRUE(DrawPicture(lPicture, 500, mSvg, mReport));
    EXPECT_EQ(mSvg.mWidth, 500);
}

/// A picture of a bone in two poses, of which the second is at \p pX, \p pY.
KQexPicture TwoPoses(double pLength, double pX, double pY)
{
    KQexPicture lPicture;
    lPicture.mNames = {"bone"};
    lPicture.mSides = {eSIDE_MIDDLE};
    lPicture.mViews = {ePICTURE_FRONT, ePICTURE_TOP};
    lPicture.mPoses = {{"", {{0, 0, 0}}, {{0, pLength, 0}}}, {"", {{pX, pY, 0}}, {{pX, pY + pLength, 0}}}};
    return lPicture;
}

// Scaled by its own size, a joint that moves would be drawn on millions of pixels.
TEST_F(KFigurePictureTest, FarMotionOfASmallFigureIsReduced)
{
    for (const double lLength : {0.0, 1e-6, 1.0, 170.0})
    {
        for (const double lWay : {10.0, 1e3, 1e6})
        {
            for (const bool lInPlace : {false, true})
            {
                for (KQexPicture lPicture : {TwoPoses(lLength, lWay, 0), TwoPoses(lLength, 0, lWay), TwoPoses(lLength, lWay, lWay)})
                {
                    lPicture.mInPlace = lInPlace;
                    ASSERT_TRUE(DrawPicture(lPicture, 0, mSvg, mReport)) << TextOf(mReport);
                    EXPECT_LT(mSvg.mWidth, 6200) << lLength << " " << lWay;
                    EXPECT_LT(mSvg.mHeight, 6500) << lLength << " " << lWay;
                }
            }
        }
    }
    // A joint alone: as large as other figures.
    ASSERT_TRUE(DrawPicture(TwoPoses(0, 90, 90), 0, mSvg, mReport));
    EXPECT_LT(mSvg.mHeight, 700);
}

TEST_F(KFigurePictureTest, AnUnfitPictureIsRefused)
{
    KQexPicture lGood;
    lGood.mPath = "made";
    lGood.mNames = {"bone"};
    lGood.mSides = {eSIDE_MIDDLE};
    lGood.mViews = {ePICTURE_FRONT};
    lGood.mPoses = {{"", {{0, 0, 0}}, {{0, 10, 0}}}};
    ASSERT_TRUE(DrawPicture(lGood, 0, mSvg, mReport)) << TextOf(mReport);
    std::vector<KQexPicture> lBad(7, lGood);
    lBad[0].mSides.clear();
    lBad[1].mPoses[0].mStarts.clear();
    lBad[2].mPoses[0].mEnds.emplace_back();
    lBad[3].mPoses.clear();
    lBad[4].mViews.clear();
    lBad[5].mLabels = {{"name", 1, false}};
    lBad[6].mPoses[0].mEnds[0].mX = std::numeric_limits<double>::quiet_NaN();
    for (const KQexPicture& lPicture : lBad)
    {
        KQexFigureReport lReport;
        EXPECT_FALSE(DrawPicture(lPicture, 0, mSvg, lReport));
        EXPECT_EQ(TextOf(lReport).rfind("error made:0: cannot be drawn: ", 0), 0u);
        EXPECT_EQ(mSvg.mText, "");
    }
}

} // namespace
