#include <tests/faults/faultstage.h>
#include <tests/support/filefaults.h>

#include <cerrno>
#include <cstring>

// Every operation is run with file call 1 failing, then 2, and so on until it makes fewer: once failing that one alone, once that
// and all of its kind after it. What comes in pieces or is interrupted changes nothing; what fails says which file and why, leaves
// the scene and existing files alone and works at the next try.

using namespace qexsdk;
using namespace qextest;

namespace
{

struct KCallFault
{
    const char*        mName;
    KFileFaults::ECall mCall;
    int                mError;
    bool               mIsHarmless; ///< Changes nothing; else it is to be told, unless the operation can do without the call.
    bool               mIsFatal;    ///< No operation can do without the call.
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

constexpr int kManyPieces = 2000; ///< Enough for several reads and writes of each file.

class KCallFaultTest : public testing::TestWithParam<KFaultOperation>
{
protected:
    KCallFaultTest() : mFiles(kManyPieces)
    {
        KStage lStage(mFiles);
        Prepare(lStage);
        EXPECT_TRUE(GetParam().mRun(lStage)) << lStage.mTold;
        mScene = lStage.Describe();
        mOutputs = mFiles.GetOutputs();
    }

    void Prepare(KStage& pStage) const
    {
        mFiles.ResetOutputs();
        if (GetParam().mHasMotion)
        {
            pStage.ImportMotion();
        }
    }

    /// Runs the operation with call \p pNumber failing. \return how many calls of the kind it made.
    int Try(const KCallFault& pFault, int pNumber, bool pOnwards) const
    {
        KStage lStage(mFiles);
        Prepare(lStage);
        const std::string lScene = lStage.Describe();
        const auto        lOutputs = mFiles.GetOutputs();
        int               lCalls = 0;
        bool              lOk = false;
        {
            KFileFaults lFaults;
            lFaults.Fail(pFault.mCall, pNumber, pFault.mError, pOnwards);
            lOk = GetParam().mRun(lStage);
            lCalls = lFaults.GetCount(pFault.mCall);
        }
        if (lOk)
        {
            EXPECT_FALSE(pFault.mIsFatal && lCalls >= pNumber) << "went unnoticed";
        }
        else
        {
            EXPECT_FALSE(pFault.mIsHarmless) << lStage.mTold;
            ExpectTold(pFault, lStage);
            lStage.mSkeleton.reset();
            EXPECT_TRUE(lStage.Describe() == lScene) << "another scene";
            ExpectOutputs(pFault, pOnwards, lOutputs);
            EXPECT_TRUE(GetParam().mRun(lStage)) << "the next try: " << lStage.mTold;
        }
        EXPECT_TRUE(lStage.Describe() == mScene) << "other results";
        ExpectSameFiles(mFiles.GetOutputs(), mOutputs);
        return lCalls;
    }

    /// Nothing is lost, and nothing half-made or left behind.
    void ExpectOutputs(const KCallFault& pFault, bool pOnwards, std::map<std::string, std::string> pOld) const
    {
        const std::map<std::string, std::string> lNow = mFiles.GetOutputs();
        // Where no file can take a name any more, one of several that has its name keeps it.
        for (const auto& [lName, lBytes] : lNow)
        {
            const bool lIsNew = pFault.mCall == KFileFaults::eRENAME && pOnwards && lBytes == mOutputs.at(lName);
            pOld[lName] = lIsNew ? lBytes : pOld[lName];
        }
        ExpectSameFiles(lNow, pOld);
    }

    void ExpectTold(const KCallFault& pFault, const KStage& pStage) const
    {
        const bool lNamesFile =
            pStage.mTold.find(mFiles.In("a.")) != std::string::npos || pStage.mTold.find(mFiles.Out("a.")) != std::string::npos;
        EXPECT_TRUE(lNamesFile) << pStage.mTold;
        EXPECT_NE(pStage.mTold.find(std::strerror(pFault.mError)), std::string::npos) << pStage.mTold;
    }

    KFaultFiles                        mFiles;
    std::string                        mScene;   ///< What the operation makes when nothing fails.
    std::map<std::string, std::string> mOutputs; ///< The same for files.
};

TEST_P(KCallFaultTest, LosesNothing)
{
    std::printf("%-20s", GetParam().mName);
    for (const KCallFault& lFault : kFaults)
    {
        int lTries = 0;
        for (const bool lOnwards : {false, true})
        {
            // What never ends being interrupted has no result.
            if (lOnwards && lFault.mError == EINTR)
            {
                continue;
            }
            // A call that fails is often the last one, so that only a try in which none failed ends the series.
            bool lHasFailed = true;
            for (int lNumber = 1; lHasFailed && !HasFailure(); ++lNumber)
            {
                SCOPED_TRACE(std::string(lFault.mName) + ", call " + std::to_string(lNumber) + (lOnwards ? " and all after it" : ""));
                lHasFailed = Try(lFault, lNumber, lOnwards) >= lNumber;
                lTries += lHasFailed ? 1 : 0;
            }
        }
        if (lTries > 0)
        {
            std::printf(" | %s %d", lFault.mName, lTries);
        }
        EXPECT_TRUE(lTries > 0 || (lFault.mCall == KFileFaults::eREAD ? GetParam().mInputs.empty() : lFault.mCall != KFileFaults::eOPEN));
    }
    std::printf("\n");
}

INSTANTIATE_TEST_SUITE_P(Operations, KCallFaultTest, testing::ValuesIn(FaultOperations()),
                         [](const testing::TestParamInfo<KFaultOperation>& pInfo) { return std::string(pInfo.param.mName); });

} // namespace
