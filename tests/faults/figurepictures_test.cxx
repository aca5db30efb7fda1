#include <qexfigure/check/kqexfigurecheck.h>
#include <qexfigure/picture/kqexangles.h>
#include <qexfigure/picture/kqexfigurepicture.h>

#include <tests/faults/faultfiles.h>
#include <tests/faults/foreachallocation.h>

#include <gtest/gtest.h>

#include <ostream>

// Runs checks and drawings with their 1st allocation failing, then their 2nd, and so on, alone and with all later ones: the result is
// either that of a run without failures, or false with a report, and nothing leaks.

using namespace qexsdk;
using namespace qextest;

namespace
{

/// Appends its result to \p pText.
using KFigureRun = bool (*)(const KQexFigureFiles& pFiles, std::string& pText, KQexFigureReport& pReport);

void Keep(const std::string& pResult, std::string& pText)
{
    const KUnfailingMemory lUnfailing;
    pText = pResult;
}

bool Check(const KQexFigureFiles& pFiles, std::string& pText, KQexFigureReport& pReport)
{
    KQexFileMessages lMessages;
    const bool       lOk = CheckFigure(pFiles, {}, lMessages, pReport);
    if (lOk)
    {
        const KUnfailingMemory lUnfailing;
        for (const KQexTextMessage& lMessage : lMessages.mList)
        {
            pText += std::to_string(lMessage.mLine) + ": " + lMessage.mText + "\n";
        }
    }
    return lOk;
}

bool DrawPoses(const KQexFigureFiles& pFiles, std::string& pText, KQexFigureReport& pReport)
{
    KQexFigure               lFigure;
    KQexSvg                  lSvg;
    KQexFigurePictureOptions lOptions;
    lOptions.mNames = true;
    const bool lOk = lFigure.Load(pFiles, {}, pReport) &&
                     DrawFigure(lFigure, lFigure.GetTakes().empty() ? nullptr : &lFigure.GetTakes()[0], lOptions, lSvg, pReport);
    Keep(lSvg.mText, pText);
    return lOk;
}

bool DrawSkeletonFile(const KQexFigureFiles& pFiles, std::string& pText, KQexFigureReport& pReport)
{
    KQexSkeletonFile lSkeleton;
    KQexPicture      lPicture;
    KQexSvg          lSvg;
    const bool       lOk = lSkeleton.Read(pFiles.mFigure, true, pReport) && MakeSkeletonPicture(lSkeleton, {}, lPicture, pReport) &&
                     DrawPicture(lPicture, 0, lSvg, pReport);
    Keep(lSvg.mText, pText);
    return lOk;
}

KQexAngleOptions Thigh()
{
    const KUnfailingMemory lUnfailing;
    KQexAngleOptions       lOptions;
    lOptions.mJoints = {"thigh"};
    return lOptions;
}

bool DrawAngles(const KQexFigureFiles& pFiles, std::string& pText, KQexFigureReport& pReport)
{
    const KQexAngleOptions lOptions = Thigh();
    KQexFigureOptions      lFigureOptions;
    KQexFigure             lFigure;
    KQexChart              lChart;
    KQexSvg                lSvg;
    lFigureOptions.mKeepDofValues = true;
    const bool lOk = lFigure.Load(pFiles, lFigureOptions, pReport) &&
                     CollectAngles(lFigure, lFigure.GetTakes()[0], lOptions, lChart, pReport) && DrawChart(lChart, 0, lSvg, pReport);
    Keep(lSvg.mText, pText);
    return lOk;
}

struct KFigureFault
{
    const char*              mName;
    std::vector<const char*> mInputs;
    KFigureRun               mRun;
};

std::ostream& operator<<(std::ostream& pOut, const KFigureFault& pFault)
{
    return pOut << pFault.mName;
}

class KFigureFaultTest : public testing::TestWithParam<KFigureFault>
{
protected:
    KFigureFaultTest() : mFiles(3)
    {
        std::vector<std::string> lPaths;
        KQexFigureReport         lReport;
        for (const char* lInput : GetParam().mInputs)
        {
            lPaths.push_back(mFiles.In(lInput));
        }
        EXPECT_TRUE(mFigureFiles.Open(lPaths, {}, lReport));
    }

    /// False when there are fewer allocations.
    bool Try(KFailingAllocator& pAllocator, long pCall, bool pAndLater) const
    {
        std::string      lText;
        KQexFigureReport lReport;
        pAllocator.Arm(pCall, pAndLater);
        const bool lOk = GetParam().mRun(mFigureFiles, lText, lReport);
        const bool lIsDone = pAllocator.Disarm() < pCall;
        EXPECT_TRUE(lOk || !lIsDone);
        if (lOk)
        {
            EXPECT_EQ(lText, mExpected) << "succeeded with a different result";
        }
        else
        {
            EXPECT_NE(lReport.GetStatus(), eFIGURE_OK) << "failed without a status";
        }
        return !lIsDone;
    }

    KFaultFiles     mFiles;
    KQexFigureFiles mFigureFiles;
    std::string     mExpected;
};

TEST_P(KFigureFaultTest, FailsCleanly)
{
    KQexFigureReport lReport;
    ASSERT_TRUE(GetParam().mRun(mFigureFiles, mExpected, lReport));
    EXPECT_NE(mExpected, "");
    ForEachAllocation([this](KFailingAllocator& pAllocator, long pCall, bool pAndLater) { return Try(pAllocator, pCall, pAndLater); }, 10);
}

INSTANTIATE_TEST_SUITE_P(Operations, KFigureFaultTest,
                         testing::Values(KFigureFault{"CheckSkeleton", {"a.asf"}, Check},
                                         KFigureFault{"CheckMotion", {"a.asf", "a.amc"}, Check},
                                         KFigureFault{"DrawPoses", {"a.asf", "a.amc"}, DrawPoses},
                                         KFigureFault{"DrawSkeleton", {"a.asf"}, DrawSkeletonFile},
                                         KFigureFault{"DrawAcclaimAngles", {"a.asf", "a.amc"}, DrawAngles},
                                         KFigureFault{"DrawBvhAngles", {"a.bvh"}, DrawAngles}),
                         testing::PrintToStringParamName());

} // namespace
