#include <qexioplugins/motion/kqexsides.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

using namespace qexsdk;

namespace
{

struct KSideCase
{
    const char* mLeft;
    const char* mRight;
};

std::ostream& operator<<(std::ostream& pOut, const KSideCase& pCase)
{
    return pOut << pCase.mLeft << " and " << pCase.mRight;
}

class KSideTest : public testing::TestWithParam<KSideCase>
{
};

TEST_P(KSideTest, APairIsLeftAndRight)
{
    const std::vector<KQexSide> lLeftRight{eSIDE_LEFT, eSIDE_RIGHT, eSIDE_MIDDLE};
    EXPECT_EQ(SidesOf({GetParam().mLeft, GetParam().mRight, "collar"}), lLeftRight);
}

INSTANTIATE_TEST_SUITE_P(Names, KSideTest,
                         testing::Values(KSideCase{"lfoot", "rfoot"}, KSideCase{"LFoot", "RFoot"}, KSideCase{"LeftFoot", "RightFoot"},
                                         KSideCase{"left_foot", "right_foot"}, KSideCase{"FOOT_LEFT", "FOOT_RIGHT"},
                                         KSideCase{"foot_l", "foot_r"}, KSideCase{"Foot.L", "Foot.R"},
                                         KSideCase{"Bip01 L Foot", "Bip01 R Foot"}, KSideCase{"foot_l_end", "foot_r_end"},
                                         KSideCase{"LeftHandIndex1", "RightHandIndex1"}, KSideCase{"foot.L.001", "foot.R.002"},
                                         KSideCase{"b_LeftLeg01_015", "b_RightLeg01_019"}, KSideCase{"rig:lFoot", "rig:rFoot"}));

TEST(KQexSides, NamesWithoutACounterpartAreInTheMiddle)
{
    const std::vector<std::string> lNames{"lowerback", "root", "ribs", "", "Left", "left_foot", "l", "007", "_", "rig:"};
    EXPECT_EQ(SidesOf(lNames), std::vector<KQexSide>(lNames.size(), eSIDE_MIDDLE));
    EXPECT_TRUE(SidesOf({}).empty());
}

} // namespace
