#include <qexfigure/kqexfigure.h>

#include <tests/qexfigure/figuresupport.h>

#include <string>
#include <vector>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// "joint.word: values", the values at frames 0 to pFrames - 1 of 10 a second; one degree of freedom a line.
std::string ValuesOf(const std::vector<KQexDofTrack>& pTracks, int pFrames)
{
    std::string lText;
    for (const KQexDofTrack& lTrack : pTracks)
    {
        KQexKeyTimes::KCursor lCursor;
        lText += lTrack.mJoint + "." + lTrack.mDof.mWord + ":";
        for (int i = 0; i < pFrames; ++i)
        {
            char lNumber[32];
            std::snprintf(lNumber, sizeof lNumber, " %g", lTrack.Evaluate(KTime(i * KTime::kTicksPerSecond / 10), lCursor));
            lText += lNumber;
        }
        lText += "\n";
    }
    return lText;
}

class KFigureClipTest : public testing::Test
{
protected:
    bool LoadHand(const std::string& pFrames)
    {
        KQexFigureFiles lFiles;
        EXPECT_TRUE(lFiles.mFigure.OpenBuffer(HandSkeleton(), "hand.asf", mReport));
        lFiles.mMotions.emplace_back();
        EXPECT_TRUE(lFiles.mMotions[0].OpenBuffer(":FULLY-SPECIFIED\n:DEGREES\n:SAMPLES-PER-SECOND 10\n" + pFrames, "wave.amc", mReport));
        return mFigure.Load(lFiles, mOptions, mReport);
    }

    bool LoadLeg()
    {
        mOptions.mKeepDofValues = true;
        KQexFigureFiles lFiles;
        EXPECT_TRUE(lFiles.mFigure.OpenBuffer(LegBvh(), "leg.bvh", mReport));
        return mFigure.Load(lFiles, mOptions, mReport);
    }

    std::vector<KQexDofTrack> Tracks() const
    {
        std::vector<KQexDofTrack> lTracks;
        EXPECT_TRUE(mFigure.GetDofTracks(mFigure.GetTakes().at(0), lTracks));
        return lTracks;
    }

    KQexFigure        mFigure;
    KQexFigureOptions mOptions;
    KQexFigureReport  mReport;
};

TEST_F(KFigureClipTest, AcclaimValuesAreTheFilesOwn)
{
    mOptions.mKeepDofValues = true;
    ASSERT_TRUE(LoadHand("1\nroot 1 2 3 0 0 0\nhand 0 0 350\n2\nroot 1 2 4 0 0 0\nhand 0 -200 720\n")) << TextOf(mReport);
    EXPECT_EQ(ValuesOf(Tracks(), 2), "root.tx: 1 1\nroot.ty: 2 2\nroot.tz: 3 4\nroot.rx: 0 0\nroot.ry: 0 0\nroot.rz: 0 0\n"
                                     "hand.rx: 0 0\nhand.ry: 0 -200\nhand.rz: 350 720\n");
}

TEST_F(KFigureClipTest, AcclaimValuesHoldWhereLinesLack)
{
    mOptions.mKeepDofValues = true;
    ASSERT_TRUE(LoadHand("1\nroot 0 0 0 0 0 0\n2\nroot 0 0 0 0 0 0\n3\nroot 0 0 0 0 0 0\nhand 0 0 9\n4\nroot 0 0 0 0 0 0\n"
                         "5\nroot 0 0 0 0 0 0\nhand 0 0 5\n6\nroot 0 0 0 0 0 0\n"))
        << TextOf(mReport);
    EXPECT_EQ(ValuesOf(Tracks(), 6).substr(ValuesOf(Tracks(), 6).find("hand.rz")), "hand.rz: 0 0 9 9 5 5\n");
}

TEST_F(KFigureClipTest, LateFramesHaveTheirPlace)
{
    mOptions.mKeepDofValues = true;
    ASSERT_TRUE(LoadHand("1\nroot 0 0 0 0 0 0\nhand 0 0 1\n4\nroot 0 0 0 0 0 0\nhand 0 0 4\n3\nroot 0 0 0 0 0 0\nhand 0 0 30\n"
                         "2\nroot 0 0 0 0 0 0\nhand 0 0 20\n3\nroot 0 0 0 0 0 0\nhand 0 0 33\n"))
        << TextOf(mReport);
    EXPECT_EQ(ValuesOf(Tracks(), 4).substr(ValuesOf(Tracks(), 4).find("hand.rz")), "hand.rz: 1 20 33 4\n");
}

TEST_F(KFigureClipTest, LimitsComeWithTheValues)
{
    mOptions.mKeepDofValues = true;
    ASSERT_TRUE(mFigure.Load({(SamplesDir() / "walker.asf").string(), (SamplesDir() / "walk.amc").string()}, mOptions, mReport));
    size_t lLimits = 0;
    for (const KQexDofTrack& lTrack : Tracks())
    {
        for (const KQexBoneDof& lDof : mFigure.GetBoneDofs()->at(lTrack.mJoint))
        {
            if (lDof.mWord == lTrack.mDof.mWord)
            {
                EXPECT_EQ(lTrack.mDof.mHasMin, lDof.mHasMin);
                EXPECT_EQ(lTrack.mDof.mMin, lDof.mMin);
                EXPECT_EQ(lTrack.mDof.mMax, lDof.mMax);
                lLimits += lDof.mHasMin ? 1 : 0;
            }
        }
    }
    EXPECT_GT(lLimits, 10U);
}

TEST_F(KFigureClipTest, AWholeTakeAtItsOwnRateOrAnother)
{
    ASSERT_TRUE(LoadHand("1\nroot 0 0 0 0 0 0\n2\nroot 0 0 0 0 0 0\n3\nroot 0 0 0 0 0 0\n4\nroot 0 0 0 0 0 0\n"));
    const KQexFigureTake* lTake = &mFigure.GetTakes().front();
    KQexClip              lClip;
    ASSERT_TRUE(mFigure.MakeClip(lTake, 0.0, {}, lClip, mReport));
    EXPECT_EQ(lClip.GetFrameCount(), 4);
    EXPECT_EQ(lClip.GetRate(), 10.0);
    ASSERT_TRUE(mFigure.MakeClip(lTake, 25.0, {}, lClip, mReport));
    EXPECT_EQ(lClip.GetFrameCount(), 8) << "frame 7 is at 0.28 seconds, the last one of the file at 0.3";
    ASSERT_TRUE(mFigure.MakeClip(nullptr, 0.0, {}, lClip, mReport));
    EXPECT_EQ(lClip.GetFrameCount(), 1) << "at rest";
    EXPECT_FALSE(mFigure.MakeClip(lTake, -1.0, {}, lClip, mReport));
    EXPECT_FALSE(KQexFigure().MakeClip(nullptr, 0.0, {}, lClip, mReport));
    KQexClipOptions lOptions;
    lOptions.mProgress = [](double)
    {
        return false;
    };
    EXPECT_FALSE(mFigure.MakeClip(lTake, 0.0, lOptions, lClip, mReport));
    EXPECT_TRUE(mReport.IsCancelled());
    EXPECT_EQ(lClip.GetFrameCount(), 1) << "the clip stays";
}

TEST_F(KFigureClipTest, ASingleFrameIsOneFrame)
{
    KQexClip lClip;
    ASSERT_TRUE(LoadHand("1\nroot 1 2 3 0 0 0\nhand 0 0 350\n"));
    ASSERT_TRUE(mFigure.MakeClip(&mFigure.GetTakes().front(), 0.0, {}, lClip, mReport));
    EXPECT_EQ(lClip.GetFrameCount(), 1);
}

TEST_F(KFigureClipTest, NothingIsKeptUnlessAsked)
{
    ASSERT_TRUE(LoadHand("1\nroot 1 2 3 0 0 0\nhand 0 0 350\n"));
    EXPECT_TRUE(Tracks().empty());
}

TEST_F(KFigureClipTest, BvhValuesAreItsChannels)
{
    ASSERT_TRUE(LoadLeg()) << TextOf(mReport);
    std::vector<std::string> lNames;
    KQexKeyTimes::KCursor    lCursor;
    for (const KQexDofTrack& lTrack : Tracks())
    {
        lNames.push_back(lTrack.mJoint + "." + lTrack.mDof.mWord);
        EXPECT_FALSE(lTrack.mDof.mHasMin || lTrack.mDof.mHasMax);
    }
    EXPECT_EQ(lNames,
              (std::vector<std::string>{"Hips.tx", "Hips.ty", "Hips.tz", "Hips.ry", "Hips.rx", "Hips.rz", "Leg.ry", "Leg.rx", "Leg.rz"}));
    EXPECT_EQ(Tracks()[1].Evaluate(mFigure.GetTakes()[0].mEnd, lCursor), 91.0);
    EXPECT_EQ(Tracks()[8].Evaluate(mFigure.GetTakes()[0].mEnd, lCursor), 90.0);
}

TEST_F(KFigureClipTest, JointsOfOneNameKeepTheirOwnChannels)
{
    KQexFigureFiles   lFiles;
    const std::string lText = LegBvh();
    mOptions.mKeepDofValues = true;
    ASSERT_TRUE(lFiles.mFigure.OpenBuffer(std::string(lText).replace(lText.find("JOINT Leg"), 9, "JOINT Hips"), "twice.bvh", mReport));
    ASSERT_TRUE(mFigure.Load(lFiles, mOptions, mReport)) << TextOf(mReport);
    KQexSampling lSampling;
    KQexClip     lClip;
    ASSERT_TRUE(MakeSampling(mFigure.GetRoots(), mFigure.GetTakes()[0].mStack, {}, lSampling));
    ASSERT_TRUE(mFigure.MakeClip(&mFigure.GetTakes()[0], lSampling, KQexClipOptions(), lClip));
    std::string lJoints;
    for (const KQexClipDof& lDof : lClip.GetData().mDofs)
    {
        lJoints += std::to_string(lDof.mJoint) + lDof.mDof.mWord + " ";
    }
    EXPECT_EQ(lJoints, "0tx 0ty 0tz 0ry 0rx 0rz 1ry 1rx 1rz ");
}

TEST_F(KFigureClipTest, ClipHasTheJointsAndTheValues)
{
    mOptions.mKeepDofValues = true;
    ASSERT_TRUE(LoadHand("1\nroot 1 2 3 0 0 0\nhand 0 0 350\n2\nroot 1 2 4 0 0 0\nhand 0 -200 720\n"));
    KQexSampling lSampling;
    KQexClip     lClip;
    ASSERT_TRUE(MakeSampling(mFigure.GetRoots(), mFigure.GetTakes()[0].mStack, {}, lSampling));
    ASSERT_TRUE(mFigure.MakeClip(&mFigure.GetTakes()[0], lSampling, KQexClipOptions(), lClip));
    ASSERT_EQ(lClip.GetData().mDofs.size(), 9U);
    EXPECT_EQ(lClip.GetData().mDofs[7].mJoint, lClip.FindJoint("hand"));
    EXPECT_EQ(lClip.GetData().mDofs[7].mDof.mWord, "ry");
    EXPECT_EQ(lClip.GetData().mDofValues, (std::vector<float>{1, 2, 3, 0, 0, 0, 0, 0, 350, 1, 2, 4, 0, 0, 0, 0, -200, 720}));
    std::vector<KQexWorldTransform> lWorld(static_cast<size_t>(lClip.GetJointCount()));
    std::vector<KQexFigurePoint>    lPositions;
    ASSERT_TRUE(lClip.WorldTransforms(1, 1, lWorld.data(), lWorld.size()));
    ASSERT_TRUE(mFigure.Evaluate(&mFigure.GetTakes()[0], lSampling.GetTime(1), lPositions));
    for (size_t i = 0; i < lWorld.size(); ++i)
    {
        EXPECT_NEAR(static_cast<double>(lWorld[i].mData[3][0]), lPositions[i].mX, 2e-5);
        EXPECT_NEAR(static_cast<double>(lWorld[i].mData[3][1]), lPositions[i].mY, 2e-5);
        EXPECT_NEAR(static_cast<double>(lWorld[i].mData[3][2]), lPositions[i].mZ, 2e-5);
    }
}

TEST_F(KFigureClipTest, BvhTurnsTheShortWayWhereAnAngleWraps)
{
    std::string lText = LegBvh();
    lText.replace(lText.find("0 91 0 0 0 0 90 0 0"), 19, "0 91 0 0 0 0 -178 0 0");
    lText.replace(lText.find("0 90 0 0 0 0 0 0 0"), 18, "0 90 0 0 0 0 178 0 0");
    KQexFigureFiles lFiles;
    mOptions.mKeepDofValues = true;
    ASSERT_TRUE(lFiles.mFigure.OpenBuffer(lText, "wrap.bvh", mReport));
    ASSERT_TRUE(mFigure.Load(lFiles, mOptions, mReport)) << TextOf(mReport);
    // The leg's end swings about z: between 178 and 182 degrees it is at 180, above the leg.
    std::vector<KQexFigurePoint> lPositions;
    ASSERT_TRUE(mFigure.Evaluate(&mFigure.GetTakes()[0], KTime(mFigure.GetTakes()[0].mStep.Get() / 2), lPositions));
    EXPECT_NEAR(lPositions[2].mY, 90.5 - 40.0 + 45.0, 1e-4);
    KQexKeyTimes::KCursor lCursor;
    EXPECT_EQ(Tracks()[8].Evaluate(mFigure.GetTakes()[0].mEnd, lCursor), -178.0);
}

TEST_F(KFigureClipTest, ClipOfTheRestPoseOrOfNothing)
{
    KQexSampling lSampling;
    KQexClip     lClip;
    lSampling.mStep = kDefaultFrameStep;
    lSampling.mCount = 1;
    EXPECT_FALSE(mFigure.MakeClip(nullptr, lSampling, KQexClipOptions(), lClip));
    ASSERT_TRUE(LoadLeg());
    EXPECT_TRUE(mFigure.MakeClip(nullptr, lSampling, KQexClipOptions(), lClip));
    EXPECT_EQ(lClip.GetJointCount(), 3);
    EXPECT_TRUE(lClip.GetData().mDofs.empty());
}

} // namespace
