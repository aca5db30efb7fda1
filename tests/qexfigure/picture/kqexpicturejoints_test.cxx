#include <qexfigure/picture/kqexpicturejoints.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace qexsdk;

namespace
{

/// Where the picture's labels point to, "NAME x y" each, in the pose.
std::vector<std::string> PointsOf(const KQexPicture& pPicture, const KQexPicturePose& pPose)
{
    std::vector<std::string> lPoints;
    for (const KQexPictureLabel& lLabel : pPicture.mLabels)
    {
        const KQexFigurePoint& lPoint = (lLabel.mAtEnd ? pPose.mEnds : pPose.mStarts)[lLabel.mBone];
        lPoints.push_back(lLabel.mName + " " + std::to_string(static_cast<int>(lPoint.mX)) + " " +
                          std::to_string(static_cast<int>(lPoint.mY)));
    }
    return lPoints;
}

// Hips with three children in different places, one of them a leaf without an end; the others have one.
const std::vector<KQexFigureJoint> kJoints{{"Hips", -1, false},    {"LeftLeg", 0, false},     {"LeftLeg_End", 1, true},
                                           {"RightLeg", 0, false}, {"RightLeg_End", 3, true}, {"Head", 0, false}};
const std::vector<KQexFigurePoint> kPositions{{0, 90, 0}, {10, 80, 0}, {10, 0, 0}, {-10, 80, 0}, {-10, 0, 0}, {0, 150, 0}};

TEST(PictureJoints, EveryJointIsLabelledOnceAndAtItsPosition)
{
    KQexPicture lPicture;
    SetPictureJoints(kJoints, true, lPicture);
    const std::vector<std::string> lExpected{"Hips 0 90", "LeftLeg 10 80", "RightLeg -10 80", "Head 0 150"};
    EXPECT_EQ(PointsOf(lPicture, PoseOf(kJoints, kPositions)), lExpected);
}

TEST(PictureJoints, BonesAreNamedAndColouredLikeTheJointAtTheirStart)
{
    KQexPicture lPicture;
    SetPictureJoints(kJoints, false, lPicture);
    EXPECT_EQ(lPicture.mNames, (std::vector<std::string>{"Hips", "Hips", "LeftLeg", "Hips", "RightLeg", "Hips"}));
    EXPECT_EQ(lPicture.mSides, (std::vector<KQexSide>{eSIDE_MIDDLE, eSIDE_MIDDLE, eSIDE_LEFT, eSIDE_MIDDLE, eSIDE_RIGHT, eSIDE_MIDDLE}));
    EXPECT_TRUE(lPicture.mLabels.empty());
}

TEST(PictureJoints, BonesAreLabelledAtTheirStarts)
{
    KQexPicture lPicture;
    SetPictureBones({"root", "lfoot", "rfoot"}, true, lPicture);
    KQexPicturePose lPose;
    lPose.mStarts = {{0, 9, 0}, {1, 8, 0}, {2, 7, 0}};
    lPose.mEnds = {{0, 9, 0}, {3, 6, 0}, {4, 5, 0}};
    EXPECT_EQ(PointsOf(lPicture, lPose), (std::vector<std::string>{"root 0 9", "lfoot 1 8", "rfoot 2 7"}));
    EXPECT_EQ(lPicture.mSides, (std::vector<KQexSide>{eSIDE_MIDDLE, eSIDE_LEFT, eSIDE_RIGHT}));
}

} // namespace
