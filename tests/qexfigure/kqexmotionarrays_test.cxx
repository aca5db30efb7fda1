#include <qexfigure/kqexmotionarrays.h>

#include <qexfigure/kqexdofcolumns.h>
#include <tests/qexfigure/figuresupport.h>
#include <tests/support/filefaults.h>

#include <cerrno>
#include <limits>
#include <string>
#include <vector>

using namespace qexsdk;
using namespace qextest;

// The numbers of all arrays are checked by tests/arrays.

namespace
{

class KMotionArraysTest : public testing::Test
{
protected:
    void Load(const std::string& pSkeleton, const std::string& pMotion)
    {
        KQexFigureFiles lFiles;
        ASSERT_TRUE(lFiles.mFigure.OpenBuffer(pSkeleton, "figure", mReport));
        if (!pMotion.empty())
        {
            lFiles.mMotions.emplace_back();
            ASSERT_TRUE(lFiles.mMotions[0].OpenBuffer(pMotion, "motion.amc", mReport));
        }
        KQexFigureOptions lOptions;
        lOptions.mKeepDofValues = true;
        ASSERT_TRUE(mFigure.Load(lFiles, lOptions, mReport)) << TextOf(mReport);
    }

    KQexMotionArrayOptions Options(KQexArraySet pSet, long long pFrames) const
    {
        KQexMotionArrayOptions lOptions;
        lOptions.mSet = pSet;
        lOptions.mTake = mFigure.GetTakes().empty() ? nullptr : &mFigure.GetTakes().front();
        lOptions.mSampling = KQexSampling{KTime(0), KTime(KTime::kTicksPerSecond / 10), pFrames};
        return lOptions;
    }

    /// Writes all arrays. False if the run or the file fails.
    bool Write(const KQexMotionArrayOptions& pOptions, KOutputFile& pOut, KQexRunResult pResult = KQexRunResult::eDONE)
    {
        KQexNpzFile                          lFile(pOut);
        const std::unique_ptr<KQexFrameSink> lSink = KQexMakeMotionArrays(mFigure, pOptions, lFile);
        EXPECT_NE(lSink, nullptr);
        KQexFrameSink*       lSinks[] = {lSink.get()};
        const KQexAnimLayer* lLayer = pOptions.mTake != nullptr ? pOptions.mTake->mStack->GetMember<KQexAnimLayer>(0) : nullptr;
        const KQexRunResult  lResult = KQexRunFrames(mFigure.GetRoots(), lLayer, pOptions.mSampling, lSinks, 1, 2, KQexProgress());
        EXPECT_EQ(lResult, pResult);
        return lResult == KQexRunResult::eDONE && lFile.Finish();
    }

    KQexFigure       mFigure;
    KQexFigureReport mReport;
};

TEST_F(KMotionArraysTest, DegreesOfFreedomInUnitsOfTheOutput)
{
    Load(Replaced(HandSkeleton(), "dof rx ry rz", "dof rx ry tz\n    limits (-90 45)\n     (-inf inf)\n     (0 2)"),
         ":FULLY-SPECIFIED\n:DEGREES\n1\nroot 1 2 3 400 5 6\nhand 180 90 1\n");
    const std::vector<KQexDofColumn> lDofs = KQexDofColumnsOf(mFigure, &mFigure.GetTakes().front(), 0.01, 0.5);
    std::vector<double>              lValues(lDofs.size());
    std::string                      lNames;
    KQexEvaluateDofs(lDofs, KTime(0), lValues.data());
    for (const KQexDofColumn& lDof : lDofs)
    {
        lNames += lDof.mName + " " + std::to_string(lDof.mJoint) + (lDof.IsLength() ? " length, " : ", ");
    }
    EXPECT_EQ(lNames, "root.tx 0 length, root.ty 0 length, root.tz 0 length, root.rx 0, root.ry 0, root.rz 0, hand.rx 2, hand.ry 2, "
                      "hand.tz 2 length, ");
    const double lExpected[] = {0.01, 0.02, 0.03, 200, 2.5, 3, 90, 45, 0.01};
    for (size_t i = 0; i < lValues.size(); ++i)
    {
        EXPECT_NEAR(lValues[i], lExpected[i], 1e-6) << lDofs[i].mName;
    }
    constexpr double          kNone = std::numeric_limits<double>::infinity();
    const std::vector<double> lLimits = KQexLimitsOf(lDofs);
    EXPECT_EQ(std::vector<double>(lLimits.begin(), lLimits.begin() + 2), (std::vector<double>{-kNone, kNone}));
    EXPECT_EQ(std::vector<double>(lLimits.end() - 6, lLimits.end() - 1), (std::vector<double>{-45, 22.5, -kNone, kNone, 0}));
    EXPECT_NEAR(lLimits.back(), 0.02, 1e-12);
    EXPECT_TRUE(KQexDofColumnsOf(mFigure, nullptr, 1).empty());
}

TEST_F(KMotionArraysTest, OfNoFigureOrOfSeveralRoots)
{
    std::string lBytes;
    KOutputFile lOut;
    ASSERT_TRUE(lOut.OpenBuffer(&lBytes));
    KQexNpzFile lFile(lOut);
    EXPECT_EQ(KQexMakeMotionArrays(mFigure, Options(KQexArraySet::eMOTION, 1), lFile), nullptr) << "nothing is loaded";
    Load(Replaced(LegBvh(), "MOTION\nFrames: 2\nFrame Time: 0.0333333\n0 90 0 0 0 0 0 0 0\n0 91 0 0 0 0 90 0 0\n",
                  "ROOT Other\n{\n OFFSET 1 2 3\n CHANNELS 3 Zrotation Xrotation Yrotation\n}\nMOTION\nFrames: 1\nFrame Time: "
                  "0.1\n0 90 0 0 0 0 0 0 0 1 2 3\n"),
         "");
    EXPECT_EQ(KQexMakeMotionArrays(mFigure, Options(KQexArraySet::eIMITATION, 1), lFile), nullptr);
    EXPECT_NE(KQexMakeMotionArrays(mFigure, Options(KQexArraySet::eMOTION, 1), lFile), nullptr);
}

TEST_F(KMotionArraysTest, ThePoseAtRestIsOneFrame)
{
    Load(HandSkeleton(), "");
    for (const KQexArraySet lSet : {KQexArraySet::eMOTION, KQexArraySet::eIMITATION})
    {
        std::string lBytes;
        KOutputFile lOut;
        ASSERT_TRUE(lOut.OpenBuffer(&lBytes));
        EXPECT_TRUE(Write(Options(lSet, 1), lOut) && lOut.Close());
        EXPECT_NE(lBytes.find("'shape': (1, "), std::string::npos);
    }
}

// A full disk stops the run, and the old file stays.
TEST_F(KMotionArraysTest, AFullDiskStopsTheRun)
{
    Load(HandSkeleton(), HandMotion());
    for (const KQexArraySet lSet : {KQexArraySet::eMOTION, KQexArraySet::eIMITATION})
    {
        KTempDir lFolder;
        WriteFile(lFolder / "a.npz", "old");
        KFileFaults lFaults;
        lFaults.Fail(KFileFaults::eWRITE, 2, ENOSPC);
        KOutputFile lOut;
        ASSERT_TRUE(lOut.Open((lFolder / "a.npz").c_str()));
        EXPECT_FALSE(Write(Options(lSet, 20000), lOut, KQexRunResult::eSTOPPED));
        EXPECT_EQ(lOut.GetError(), ENOSPC);
        EXPECT_FALSE(lOut.Close());
        EXPECT_EQ(ReadFile(lFolder / "a.npz"), "old");
    }
}

} // namespace
