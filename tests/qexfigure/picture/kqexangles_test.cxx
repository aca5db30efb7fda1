#include <qexfigure/picture/kqexangles.h>

#include <tests/qexfigure/figuresupport.h>

#include <cmath>
#include <limits>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// Files from text in memory.
KQexFigureFiles FilesOf(const std::string& pFigure, const std::string& pName, const std::string& pMotion = "")
{
    KQexFigureFiles  lFiles;
    KQexFigureReport lReport;
    EXPECT_TRUE(lFiles.mFigure.OpenBuffer(pFigure, pName, lReport)) << TextOf(lReport);
    if (!pMotion.empty())
    {
        lFiles.mMotions.emplace_back();
        EXPECT_TRUE(lFiles.mMotions[0].OpenBuffer(pMotion, "wave.amc", lReport)) << TextOf(lReport);
    }
    return lFiles;
}

/// The joints' angles in the first take of a figure that keeps the values of AMC files.
bool Collect(const KQexFigureFiles& pFiles, const std::vector<std::string>& pJoints, KQexChart& pChart, KQexFigureReport& pReport)
{
    KQexFigure        lFigure;
    KQexFigureOptions lFigureOptions;
    KQexAngleOptions  lOptions;
    lFigureOptions.mKeepDofValues = true;
    lOptions.mJoints = pJoints;
    lOptions.mJointOption = "--curves: ";
    return lFigure.Load(pFiles, lFigureOptions, pReport) && CollectAngles(lFigure, lFigure.GetTakes().at(0), lOptions, pChart, pReport);
}

/// The chart's lines as "bone rx: 1 2".
std::string LinesOf(const KQexChart& pChart)
{
    std::string lText;
    for (const KQexChartPanel& lPanel : pChart.mPanels)
    {
        for (const KQexChartSeries& lSeries : lPanel.mSeries)
        {
            lText += lPanel.mTitle + " " + lSeries.mName + ":";
            for (const double lValue : lSeries.mValues)
            {
                lText += " " + std::to_string(std::lround(lValue * 1000) / 1000);
            }
            lText += "\n";
        }
    }
    return lText;
}

TEST(Angles, DegreesOfFreedomAsTheFileHasThem)
{
    const std::string lSkeleton = Replaced(HandSkeleton(), "dof rx ry rz\n", "dof rz rx\n    limits (-10 20)\n (-inf 45)\n");
    const std::string lMotion = ":FULLY-SPECIFIED\n:DEGREES\n:SAMPLES-PER-SECOND 10\n4\nroot 0 0 0 1 2 3\nhand 700 0\n5\nroot 0 1 0 4 5 6\n"
                                "8\nroot 0 4 0 -400 8 9\nhand 720 -30\n";
    KQexChart         lChart;
    KQexFigureReport  lReport;
    ASSERT_TRUE(Collect(FilesOf(lSkeleton, "hand.asf", lMotion), {"hand", "root"}, lChart, lReport)) << TextOf(lReport);
    EXPECT_EQ(LinesOf(lChart), "hand rz: 700 700 720\nhand rx: 0 0 -30\nroot rx: 1 4 -400\nroot ry: 2 5 8\nroot rz: 3 6 9\n");
    EXPECT_EQ(lChart.mNumbers, (std::vector<long long>{4, 5, 8}));
    ASSERT_EQ(lChart.mSeconds.size(), 3u);
    EXPECT_NEAR(lChart.mSeconds[1], 0.1, 1e-9);
    EXPECT_NEAR(lChart.mSeconds[2], 0.4, 1e-9);
    EXPECT_EQ(lChart.mSubtitle, "3 frames, 10 a second");
    const KQexChartSeries& lTurn = lChart.mPanels[0].mSeries[0];
    EXPECT_TRUE(lTurn.mHasMin && lTurn.mHasMax);
    EXPECT_EQ(lTurn.mMin, -10);
    EXPECT_EQ(lTurn.mMax, 20);
    EXPECT_FALSE(lChart.mPanels[0].mSeries[1].mHasMin);
    EXPECT_EQ(lChart.mPanels[0].mSeries[1].mMax, 45);
    EXPECT_FALSE(lChart.mPanels[1].mSeries[0].mHasMax);
}

TEST(Angles, RadiansBecomeDegrees)
{
    KQexChart         lChart;
    KQexFigureReport  lReport;
    const std::string lMotion = Replaced(Replaced(HandMotion(), ":DEGREES\n", ":RADIANS\n"), "hand 0 0 90", "hand 0 0 1.5707963267948966");
    ASSERT_TRUE(Collect(FilesOf(Replaced(HandSkeleton(), "angle deg", "angle rad"), "hand.asf", lMotion), {"hand"}, lChart, lReport))
        << TextOf(lReport);
    EXPECT_NEAR(lChart.mPanels[0].mSeries[2].mValues[1], 90, 1e-5);
}

TEST(Angles, FramesAreSortedAndTheLastOfANumberWins)
{
    KQexChart         lChart;
    KQexFigureReport  lReport;
    const std::string lMotion = ":FULLY-SPECIFIED\n:DEGREES\n3\nroot 0 0 0 0 0 0\nhand 3 0 0\n1\nroot 0 0 0 0 0 0\nhand 1 0 0\n2\n"
                                "root 0 0 0 0 0 0\nhand 2 0 0\n3\nroot 0 0 0 0 0 0\nhand 30 0 0\n";
    ASSERT_TRUE(Collect(FilesOf(HandSkeleton(), "hand.asf", lMotion), {"hand"}, lChart, lReport)) << TextOf(lReport);
    EXPECT_EQ(LinesOf(lChart), "hand rx: 1 2 30\nhand ry: 0 0 0\nhand rz: 0 0 0\n");
    EXPECT_EQ(lChart.mNumbers, (std::vector<long long>{1, 2, 3}));
    EXPECT_NE(TextOf(lReport).find("note wave.amc:0: has no frame rate, using 120 frames per second\n"), std::string::npos);
}

TEST(Angles, LocalAnglesOfASceneInTheirOrder)
{
    KQexFigure       lFigure;
    KQexChart        lChart;
    KQexFigureReport lReport;
    KQexAngleOptions lOptions;
    lOptions.mJoints = {"Leg", "Hips"};
    ASSERT_TRUE(lFigure.Load(FilesOf(Replaced(LegBvh(), "0 91 0 0 0 0 90 0 0", "0 91 0 1 2 3 30 20 10"), "leg.bvh"), {}, lReport))
        << TextOf(lReport);
    ASSERT_TRUE(CollectAngles(lFigure, lFigure.GetTakes()[0], lOptions, lChart, lReport)) << TextOf(lReport);
    // Zrotation Xrotation Yrotation: about y first, then x, then z.
    EXPECT_EQ(LinesOf(lChart), "Leg ry: 0 10\nLeg rx: 0 20\nLeg rz: 0 30\nHips ry: 0 3\nHips rx: 0 2\nHips rz: 0 1\n");
    EXPECT_EQ(lChart.mNumbers, (std::vector<long long>{1, 2}));
    EXPECT_NEAR(lChart.mSeconds[1], 0.0333333, 1e-6);
    EXPECT_EQ(lChart.mPanels[0].mSeries[0].mColour, 1u);
}

TEST(Angles, AValueAtItsLimitIsNotOutside)
{
    const std::string lSkeleton = Replaced(HandSkeleton(), "dof rx ry rz\n", "dof rz rx\n    limits (-10 170.1)\n (-inf 45)\n");
    const std::string lMotion = ":FULLY-SPECIFIED\n:DEGREES\n4\nroot 0 0 0 0 0 0\nhand 700 0\n5\nroot 0 0 0 0 0 0\nhand 170.1 0\n";
    KQexChart         lChart;
    KQexFigureReport  lReport;
    ASSERT_TRUE(Collect(FilesOf(lSkeleton, "hand.asf", lMotion), {"hand"}, lChart, lReport)) << TextOf(lReport);
    const KQexChartSeries& lTurn = lChart.mPanels[0].mSeries[0];
    EXPECT_TRUE(lTurn.IsOutside(lTurn.mValues[0]));
    EXPECT_FALSE(lTurn.IsOutside(lTurn.mValues[1]));
    EXPECT_EQ(lTurn.mColour, 2u);
}

TEST(Angles, OfJointsWithOneNameTheFirst)
{
    KQexFigure       lFigure;
    KQexChart        lChart;
    KQexFigureReport lReport;
    KQexAngleOptions lOptions;
    lOptions.mJoints = {"Leg"};
    const std::string lBvh = "HIERARCHY\nROOT Hips\n{\nOFFSET 0 90 0\nCHANNELS 3 Zrotation Xrotation Yrotation\n"
                             "JOINT Leg\n{\nOFFSET 9 0 0\nCHANNELS 1 Xrotation\nEnd Site\n{\nOFFSET 0 -45 0\n}\n}\n"
                             "JOINT Leg\n{\nOFFSET -9 0 0\nCHANNELS 2 Zrotation Yrotation\nEnd Site\n{\nOFFSET 0 -45 0\n}\n}\n}\n"
                             "MOTION\nFrames: 1\nFrame Time: 0.1\n0 0 0 10 20 30\n";
    KQexFigureOptions lLoad;
    lLoad.mKeepDofValues = true;
    ASSERT_TRUE(lFigure.Load(FilesOf(lBvh, "legs.bvh"), lLoad, lReport)) << TextOf(lReport);
    ASSERT_TRUE(CollectAngles(lFigure, lFigure.GetTakes()[0], lOptions, lChart, lReport)) << TextOf(lReport);
    EXPECT_EQ(LinesOf(lChart), "Leg rx: 10\n");
    const std::string lTwice = Replaced(HandSkeleton(), "name arm\n    direction 1 0 0\n    length 10\n    axis 0 0 0 XYZ\n",
                                        "name hand\n    direction 1 0 0\n    length 10\n    axis 0 0 0 XYZ\n    dof rx ry rz\n");
    ASSERT_TRUE(
        Collect(FilesOf(Replaced(lTwice, "root arm\n    arm hand\n", "root hand\n"), "hand.asf", HandMotion()), {"hand"}, lChart, lReport))
        << TextOf(lReport);
    EXPECT_EQ(LinesOf(lChart), "hand rx: 0 0 0\nhand ry: 0 0 0\nhand rz: 0 90 0\n");
}

TEST(Angles, AnyIntegerAsRotationOrder)
{
    KQexFigure       lFigure;
    KQexChart        lChart;
    KQexFigureReport lReport;
    KQexAngleOptions lOptions;
    lOptions.mJoints = {"hand"};
    ASSERT_TRUE(lFigure.Load(FilesOf(HandSkeleton(), "hand.asf", HandMotion()), {}, lReport)) << TextOf(lReport);
    for (const int lOrder : {-1, 6, 1000000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
    {
        for (const KQexFigureJoint& lJoint : lFigure.GetJoints())
        {
            lJoint.mNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(lOrder));
        }
        ASSERT_TRUE(CollectAngles(lFigure, lFigure.GetTakes()[0], lOptions, lChart, lReport)) << TextOf(lReport);
        ASSERT_EQ(lChart.mPanels[0].mSeries.size(), 3u);
        EXPECT_EQ(lChart.mPanels[0].mSeries[0].mName, "rx");
        EXPECT_EQ(lChart.mPanels[0].mSeries[1].mName, "ry");
    }
}

TEST(Angles, ProgressCanCancel)
{
    KQexFigure       lFigure;
    KQexChart        lChart;
    KQexAngleOptions lOptions;
    lOptions.mJoints = {"Leg", "Hips"};
    lOptions.mProgress = [](double)
    {
        return false;
    };
    KQexFigureReport lReport;
    ASSERT_TRUE(lFigure.Load(FilesOf(LegBvh(), "leg.bvh"), {}, lReport)) << TextOf(lReport);
    EXPECT_FALSE(CollectAngles(lFigure, lFigure.GetTakes()[0], lOptions, lChart, lReport));
    EXPECT_TRUE(lReport.IsCancelled());
    EXPECT_EQ(lReport.GetStatus(), eFIGURE_OK);
}

TEST(Angles, WhatDoesNotExistIsAnErrorWithTheNearestName)
{
    KQexChart             lChart;
    KQexFigureReport      lReport;
    const KQexFigureFiles lHand = FilesOf(HandSkeleton(), "hand.asf", HandMotion());
    EXPECT_FALSE(Collect(lHand, {"hand", "hamd"}, lChart, lReport));
    EXPECT_FALSE(Collect(lHand, {"tail"}, lChart, lReport));
    EXPECT_FALSE(Collect(lHand, {"arm"}, lChart, lReport));
    EXPECT_FALSE(Collect(FilesOf(LegBvh(), "leg.bvh"), {"leg"}, lChart, lReport));
    const std::string lText = TextOf(lReport);
    EXPECT_NE(lText.find("error :0: --curves: the figure has no joint hamd, did you mean hand?\n"), std::string::npos) << lText;
    EXPECT_NE(lText.find("error :0: --curves: the figure has no joint tail\n"), std::string::npos) << lText;
    EXPECT_NE(lText.find("error :0: --curves: the joint arm has no rotations\n"), std::string::npos) << lText;
    EXPECT_NE(lText.find("error :0: --curves: the figure has no joint leg, did you mean Leg?\n"), std::string::npos) << lText;
    EXPECT_EQ(lReport.GetStatus(), eFIGURE_USAGE);
}

} // namespace
