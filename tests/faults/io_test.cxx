#include <tests/faults/faultoperations.h>
#include <tests/support/filefaults.h>

#include <cerrno>
#include <cstring>

// Runs every operation with its 1st file call of a kind failing, then its 2nd, and so on until it makes no more: once with that one alone
// failing, once with all later ones of its kind failing too. Short and interrupted calls change nothing; an operation that fails names the
// file and the reason, leaves the scene and existing files unchanged, and succeeds when retried.

using namespace qexsdk;
using namespace qextest;

namespace
{

struct KCallFault
{
    const char*        mName;
    KFileFaults::ECall mCall;
    int                mError;
    bool               mIsHarmless; ///< Every operation succeeds all the same.
    bool               mIsFatal;    ///< Every operation fails. Neither: one that does not need the call may succeed.
};

const KCallFault kFaults[] = {
    {"open EACCES", KFileFaults::eOPEN, EACCES, false, true},
    {"open EIO", KFileFaults::eOPEN, EIO, false, true},
    {"open EINTR", KFileFaults::eOPEN, EINTR, true, false},
    {"read EIO", KFileFaults::eREAD, EIO, false, true},
    {"read EINTR", KFileFaults::eREAD, EINTR, true, false},
    {"read short", KFileFaults::eREAD, KFileFaults::kShort, true, false},
    {"seek EIO", KFileFaults::eSEEK, EIO, false, false},
    {"stat EIO", KFileFaults::eSTAT, EIO, false, false},
    {"write EIO", KFileFaults::eWRITE, EIO, false, true},
    {"write ENOSPC", KFileFaults::eWRITE, ENOSPC, false, true},
    {"write EINTR", KFileFaults::eWRITE, EINTR, true, false},
    {"write short", KFileFaults::eWRITE, KFileFaults::kShort, true, false},
    {"close EIO", KFileFaults::eCLOSE, EIO, false, false},
    {"close ENOSPC", KFileFaults::eCLOSE, ENOSPC, false, false},
    {"close EINTR", KFileFaults::eCLOSE, EINTR, true, false},
    {"link EPERM", KFileFaults::eLINK, EPERM, true, false},
    {"chmod EPERM", KFileFaults::eCHANGE_MODE, EPERM, false, true},
    {"link EIO", KFileFaults::eLINK, EIO, false, true},
    {"rename EIO", KFileFaults::eRENAME, EIO, false, true},
    {"rename ENOSPC", KFileFaults::eRENAME, ENOSPC, false, true},
};

constexpr int kManyFrames = 2000; ///< Enough for several reads and writes of each file.

class KCallFaultTest : public testing::TestWithParam<KFaultOperation>
{
protected:
    KCallFaultTest() : mFiles(kManyFrames)
    {
        KStage lStage(mFiles);
        Prepare(lStage);
        EXPECT_TRUE(GetParam().mRun(lStage)) << lStage.mErrors;
        mScene = lStage.Describe();
        mNewFiles = mFiles.GetOutputs();
    }

    void Prepare(KStage& pStage) const
    {
        mFiles.ResetOutputs();
        if (GetParam().mNeedsMotion)
        {
            pStage.ImportMotion();
        }
    }

    /// Runs the operation with call \p pNumber failing. \return how many calls of the kind it made.
    int Try(const KCallFault& pFault, int pNumber, bool pAndLater) const
    {
        KStage lStage(mFiles);
        Prepare(lStage);
        const std::string lScene = lStage.Describe();
        const auto        lOutputs = mFiles.GetOutputs();
        int               lCalls = 0;
        bool              lOk = false;
        {
            KFileFaults lFaults;
            lFaults.Fail(pFault.mCall, pNumber, pFault.mError, pAndLater);
            lOk = GetParam().mRun(lStage);
            lCalls = lFaults.GetCount(pFault.mCall);
        }
        if (lOk)
        {
            EXPECT_FALSE(pFault.mIsFatal && lCalls >= pNumber) << "was not reported";
        }
        else
        {
            EXPECT_FALSE(pFault.mIsHarmless) << lStage.mErrors;
            ExpectReported(pFault, lStage);
            lStage.mSkeleton.reset();
            EXPECT_TRUE(lStage.Describe() == lScene) << "scene changed";
            ExpectOutputs(pFault, pAndLater, lOutputs);
            EXPECT_TRUE(GetParam().mRun(lStage)) << "retry: " << lStage.mErrors;
        }
        EXPECT_TRUE(lStage.Describe() == mScene) << "different scene";
        ExpectSameFiles(mFiles.GetOutputs(), mNewFiles);
        return lCalls;
    }

    /// Expects every output to be as before, and no partial or temporary file.
    void ExpectOutputs(const KCallFault& pFault, bool pAndLater, std::map<std::string, std::string> pOld) const
    {
        const std::map<std::string, std::string> lNow = mFiles.GetOutputs();
        // When all later renames fail, an output that is already renamed stays new.
        for (const auto& [lName, lBytes] : lNow)
        {
            const bool lIsNew = pFault.mCall == KFileFaults::eRENAME && pAndLater && lBytes == mNewFiles.at(lName);
            pOld[lName] = lIsNew ? lBytes : pOld[lName];
        }
        ExpectSameFiles(lNow, pOld);
    }

    void ExpectReported(const KCallFault& pFault, const KStage& pStage) const
    {
        const bool lNamesFile =
            pStage.mErrors.find(mFiles.In("a.")) != std::string::npos || pStage.mErrors.find(mFiles.Out("a.")) != std::string::npos;
        EXPECT_TRUE(lNamesFile) << pStage.mErrors;
        EXPECT_NE(pStage.mErrors.find(std::strerror(pFault.mError)), std::string::npos) << pStage.mErrors;
    }

    KFaultFiles                        mFiles;
    std::string                        mScene;    ///< Scene after success.
    std::map<std::string, std::string> mNewFiles; ///< Output files after success.
};

TEST_P(KCallFaultTest, LosesNothing)
{
    std::printf("%-20s", GetParam().mName);
    for (const KCallFault& lFault : kFaults)
    {
        int lTries = 0;
        for (const bool lAndLater : {false, true})
        {
            // An interrupted call is retried forever.
            if (lAndLater && lFault.mError == EINTR)
            {
                continue;
            }
            // A failing call is often the last one made, so only a run without a failure ends the series.
            bool lHasFailed = true;
            for (int lNumber = 1; lHasFailed && !HasFailure(); ++lNumber)
            {
                SCOPED_TRACE(std::string(lFault.mName) + ", call " + std::to_string(lNumber) + (lAndLater ? " and all after it" : ""));
                lHasFailed = Try(lFault, lNumber, lAndLater) >= lNumber;
                lTries += lHasFailed ? 1 : 0;
            }
        }
        if (lTries > 0)
        {
            std::printf(" | %s %d", lFault.mName, lTries);
        }
        // Every operation opens a file and reads its inputs; other calls may not occur.
        EXPECT_TRUE(lTries > 0 || (lFault.mCall == KFileFaults::eREAD ? GetParam().mInputs.empty() : lFault.mCall != KFileFaults::eOPEN));
    }
    std::printf("\n");
}

INSTANTIATE_TEST_SUITE_P(Operations, KCallFaultTest, testing::ValuesIn(FaultOperations()),
                         [](const testing::TestParamInfo<KFaultOperation>& pInfo) { return std::string(pInfo.param.mName); });

} // namespace
