#include <kbaselib/kbase/kinputfile.h>

#include <tests/support/filefaults.h>
#include <tests/support/standardinput.h>
#include <tests/support/testfolders.h>
#include <tests/support/texts.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <tuple>
#include <utility>

namespace qextest
{

using namespace qexsdk;

namespace
{

constexpr size_t kAll = std::numeric_limits<size_t>::max();

std::string Reason(int pError)
{
    return std::generic_category().message(pError);
}

TEST(KReadWholeFile, GivesEveryByteUpToTheCap)
{
    KTempDir          lDir;
    const std::string lText = LongText();
    WriteFile(lDir / "text", lText);
    for (const size_t lMax : {kAll, lText.size() + 1, lText.size(), lText.size() - 1, size_t{65536}, size_t{1}, size_t{0}})
    {
        std::string lBytes = "before";
        std::string lReason;
        EXPECT_TRUE(KReadWholeFile((lDir / "text").c_str(), lMax, true, lBytes, lReason));
        EXPECT_EQ(lBytes, lText.substr(0, lMax)) << lMax;
        EXPECT_EQ(lReason, "");
    }
    WriteFile(lDir / "empty", "");
    std::string lBytes = "before";
    std::string lReason;
    EXPECT_TRUE(KReadWholeFile((lDir / "empty").c_str(), kAll, true, lBytes, lReason));
    EXPECT_EQ(lBytes, "");
}

TEST(KReadWholeFile, ReportsTheReason)
{
    KTempDir lDir;
    ASSERT_EQ(::mkfifo((lDir / "fifo").c_str(), 0600), 0);
    const std::tuple<std::string, bool, int> lCases[] = {{lDir / "none", false, ENOENT},
                                                         {lDir.Path(), false, EISDIR},
                                                         {lDir.Path(), true, EISDIR},
                                                         {lDir / "fifo", true, EINVAL},
                                                         {"/dev/null", true, EINVAL}};
    for (const auto& [lPath, lRegular, lError] : lCases)
    {
        std::string lBytes;
        std::string lReason;
        EXPECT_FALSE(KReadWholeFile(lPath.c_str(), kAll, lRegular, lBytes, lReason)) << lPath;
        EXPECT_EQ(lReason, Reason(lError)) << lPath;
    }
}

TEST(KReadWholeFile, ReportsEveryFailedCall)
{
    KTempDir lDir;
    WriteFile(lDir / "text", LongText());
    for (const KFileFaults::ECall lCall : {KFileFaults::eOPEN, KFileFaults::eSTAT, KFileFaults::eREAD})
    {
        KFileFaults lFaults;
        for (int lNumber = 1;; ++lNumber)
        {
            lFaults.Fail(lCall, lNumber, EIO);
            std::string lBytes;
            std::string lReason;
            const bool  lOk = KReadWholeFile((lDir / "text").c_str(), kAll, false, lBytes, lReason);
            EXPECT_EQ(lFaults.GetCount(KFileFaults::eCLOSE), lCall == KFileFaults::eOPEN && !lOk ? 0 : 1) << "a file was left open";
            EXPECT_EQ(lReason, lOk ? "" : Reason(EIO));
            if (lOk)
            {
                EXPECT_LT(lFaults.GetCount(lCall), lNumber);
                EXPECT_EQ(lBytes, LongText());
                break;
            }
        }
    }
}

TEST(KReadWholeFile, RetriesInterruptedAndShortCalls)
{
    KTempDir lDir;
    WriteFile(lDir / "text", LongText());
    const std::pair<KFileFaults::ECall, int> lCases[] = {
        {KFileFaults::eREAD, EINTR}, {KFileFaults::eREAD, EAGAIN}, {KFileFaults::eREAD, KFileFaults::kShort}, {KFileFaults::eOPEN, EINTR}};
    for (const auto& [lCall, lError] : lCases)
    {
        KFileFaults lFaults;
        for (int lNumber = 1; lNumber < 5; ++lNumber)
        {
            lFaults.Fail(lCall, lNumber, lError);
            std::string lBytes;
            std::string lReason;
            EXPECT_TRUE(KReadWholeFile((lDir / "text").c_str(), kAll, true, lBytes, lReason)) << lReason;
            EXPECT_EQ(lBytes, LongText());
        }
    }
}

TEST(KReadWholeFile, DashIsStandardInputAndStaysOpen)
{
    for (const bool lLate : {false, true})
    {
        KStandardInput lInput(LongText(), lLate);
        std::string    lBytes;
        std::string    lReason;
        EXPECT_TRUE(KReadWholeFile("-", kAll, false, lBytes, lReason)) << lReason;
        EXPECT_EQ(lBytes, LongText());
        EXPECT_TRUE(KReadWholeFile("-", kAll, false, lBytes, lReason)) << "at its end, but still open";
        EXPECT_EQ(lBytes, "");
    }
}

} // namespace

} // namespace qextest
