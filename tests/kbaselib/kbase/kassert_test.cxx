#include <kbaselib/kbase/kassert.h>

#include <tests/support/assertwatch.h>

#include <gtest/gtest.h>

namespace qexsdk
{
namespace
{

using qextest::KAssertWatch;

void Check(bool pHolds)
{
    QEX_ASSERT("kbaselib/kbase/kassert_test", pHolds, "lThing!=NULL");
}

TEST(KAssertTest, ReportsToStandardErrorAndToTheHandler)
{
    KAssertWatch lWatch;
    testing::internal::CaptureStderr();
    KAssertFailed("some/source", "Function", 12, "a==b", nullptr);
    const std::string lText = testing::internal::GetCapturedStderr();
    EXPECT_EQ(lText, "some/source:12: Function: assertion failed: a==b\n");
    ASSERT_EQ(lWatch.GetReports().size(), 1U);
    EXPECT_EQ(lWatch.GetReports()[0].mFile, "some/source");
    EXPECT_EQ(lWatch.GetReports()[0].mFunction, "Function");
    EXPECT_EQ(lWatch.GetReports()[0].mLine, 12U);
    EXPECT_EQ(lWatch.GetReports()[0].mText, "a==b");
    EXPECT_FALSE(lWatch.GetReports()[0].mHasFlag);
}

TEST(KAssertTest, NullTextsPrintAsEmpty)
{
    testing::internal::CaptureStderr();
    KAssertFailed(nullptr, nullptr, 3, nullptr, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), ":3: : assertion failed: \n");
}

TEST(KAssertTest, WithoutAFlagEveryFailureIsReported)
{
    KAssertWatch lWatch;
    testing::internal::CaptureStderr();
    KAssertFailed("f", "g", 1, "t", nullptr);
    KAssertFailed("f", "g", 1, "t", nullptr);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(lWatch.GetReports().size(), 2U);
}

TEST(KAssertTest, WithAFlagOnlyTheFirstFailureIsReported)
{
    KAssertWatch lWatch;
    bool         lHide = false;
    testing::internal::CaptureStderr();
    KAssertFailed("f", "g", 1, "t", &lHide);
    EXPECT_TRUE(lHide);
    KAssertFailed("f", "g", 1, "t", &lHide);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "f:1: g: assertion failed: t\n");
    EXPECT_EQ(lWatch.GetReports().size(), 1U);
    EXPECT_TRUE(lHide);
}

TEST(KAssertTest, ASiteReportsOnceAndOnlyWhenItFails)
{
    KAssertWatch lWatch;
    testing::internal::CaptureStderr();
    Check(true);
    EXPECT_TRUE(lWatch.GetReports().empty());
    Check(false);
    Check(false);
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(lWatch.GetReports().size(), 1U);
    EXPECT_EQ(lWatch.GetReports()[0].mFile, "kbaselib/kbase/kassert_test");
    EXPECT_EQ(lWatch.GetReports()[0].mFunction, "Check");
    EXPECT_EQ(lWatch.GetReports()[0].mText, "lThing!=NULL");
    EXPECT_TRUE(lWatch.GetReports()[0].mHasFlag);
}

TEST(KAssertTest, ASiteThatFailsAgainInTheHandlerIsNotReportedAgain)
{
    static int           sCalls = 0;
    static bool          sHide = false;
    const KAssertHandler lBefore = KAssertSetHandler(
        [](const char*, const char*, unsigned long, const char*, bool* pHideForever)
        {
            ++sCalls;
            EXPECT_TRUE(*pHideForever);
            KAssertFailed("f", "g", 1, "t", pHideForever);
        });
    testing::internal::CaptureStderr();
    KAssertFailed("f", "g", 1, "t", &sHide);
    testing::internal::GetCapturedStderr();
    KAssertSetHandler(lBefore);
    EXPECT_EQ(sCalls, 1);
}

TEST(KAssertTest, SettingAHandlerReturnsThePreviousOne)
{
    const KAssertHandler lHandler = [](const char*, const char*, unsigned long, const char*, bool*) {
    };
    const KAssertHandler lBefore = KAssertSetHandler(lHandler);
    EXPECT_EQ(KAssertSetHandler(nullptr), lHandler);
    EXPECT_EQ(KAssertSetHandler(lBefore), nullptr);
}

} // namespace
} // namespace qexsdk
