#include <apps/asf/picture/picturejoints.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace asfapp;

namespace
{

/// Where the picture's labels point to, "NAME x y" each, in the pose.
std::vector<std::string> PointsOf(const KPicture& pPicture, const KPose& pPose)
{
    std::vector<std::string> lPoints;
    for (const KLabel& lLabel : pPicture.mLabels)
    {
        const asfapp::KPoint& lPoint = (lLabel.mAtEnd ? pPose.mEnds : pPose.mStarts)[lLabel.mBone];
        lPoints.push_back(lLabel.mName + " " + std::to_string(static_cast<int>(lPoint.mX)) + " " +
                          std::to_string(static_cast<int>(lPoint.mY)));
    }
    return lPoints;
}

// Hips with three children in different places, one of them a leaf without an end; the others have one.
const std::vector<KPictureJoint>  kJoints{{"Hips", -1, false},    {"LeftLeg", 0, false},     {"LeftLeg_End", 1, true},
                                         {"RightLeg", 0, false}, {"RightLeg_End", 3, true}, {"Head", 0, false}};
const std::vector<asfapp::KPoint> kPositions{{0, 90, 0}, {10, 80, 0}, {10, 0, 0}, {-10, 80, 0}, {-10, 0, 0}, {0, 150, 0}};

TEST(PictureJoints, EveryJointIsLabelledOnceAndAtItsPosition)
{
    KPicture lPicture;
    SetJoints(kJoints, true, lPicture);
    const std::vector<std::string> lExpected{"Hips 0 90", "LeftLeg 10 80", "RightLeg -10 80", "Head 0 150"};
    EXPECT_EQ(PointsOf(lPicture, PoseOf(kJoints, kPositions)), lExpected);
}

TEST(PictureJoints, BonesAreNamedAndColouredLikeTheJointAtTheirStart)
{
    KPicture lPicture;
    SetJoints(kJoints, false, lPicture);
    EXPECT_EQ(lPicture.mNames, (std::vector<std::string>{"Hips", "Hips", "LeftLeg", "Hips", "RightLeg", "Hips"}));
    EXPECT_EQ(lPicture.mSides, (std::vector<qexsdk::KQexSide>{qexsdk::eSIDE_MIDDLE, qexsdk::eSIDE_MIDDLE, qexsdk::eSIDE_LEFT,
                                                              qexsdk::eSIDE_MIDDLE, qexsdk::eSIDE_RIGHT, qexsdk::eSIDE_MIDDLE}));
    EXPECT_TRUE(lPicture.mLabels.empty());
}

TEST(PictureJoints, BonesAreLabelledAtTheirStarts)
{
    KPicture lPicture;
    SetBones({"root", "lfoot", "rfoot"}, true, lPicture);
    KPose lPose;
    lPose.mStarts = {{0, 9, 0}, {1, 8, 0}, {2, 7, 0}};
    lPose.mEnds = {{0, 9, 0}, {3, 6, 0}, {4, 5, 0}};
    EXPECT_EQ(PointsOf(lPicture, lPose), (std::vector<std::string>{"root 0 9", "lfoot 1 8", "rfoot 2 7"}));
    EXPECT_EQ(lPicture.mSides, (std::vector<qexsdk::KQexSide>{qexsdk::eSIDE_MIDDLE, qexsdk::eSIDE_LEFT, qexsdk::eSIDE_RIGHT}));
}

} // namespace
