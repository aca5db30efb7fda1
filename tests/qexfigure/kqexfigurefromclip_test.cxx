#include <qexclip/kqexclipsteps.h>
#include <qexfigure/output/kqexfigurewrite.h>

#include <tests/qexfigure/figuresupport.h>
#include <tests/support/runprogram.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

using namespace qexsdk;
using namespace qextest;

// A figure of a clip is written in every format, and read again.

namespace
{

/// A skeleton whose bones have one, two and three degrees of freedom, in several orders, with limits.
std::string ArmSkeleton()
{
    return ":version 1.10\n:name arm\n:units\n  mass 1.0\n  length 2.54\n  angle deg\n:root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n"
           "  position 0 0 0\n  orientation 0 0 0\n:bonedata\n"
           "  begin\n    id 1\n    name upper\n    direction 1 0 0\n    length 10\n    axis 0 0 0 XYZ\n    dof ry rx\n    limits (-90 90)\n"
           "      (-inf 45)\n  end\n"
           "  begin\n    id 2\n    name fore\n    direction 1 0 0\n    length 8\n    axis 0 20 0 XYZ\n    dof rz\n    limits (0 170)\n  "
           "end\n"
           "  begin\n    id 3\n    name fixed\n    direction 0 1 0\n    length 4\n    axis 0 0 0 XYZ\n  end\n"
           "  begin\n    id 4\n    name hand\n    direction 1 0 0\n    length 5\n    axis 0 0 0 XYZ\n    dof rz rx ry\n  end\n"
           ":hierarchy\n  begin\n    root upper\n    upper fore fixed\n    fore hand\n  end\n";
}

std::string ArmMotion()
{
    return ":FULLY-SPECIFIED\n:DEGREES\n:SAMPLES-PER-SECOND 30\n1\nroot 0 0 0 0 0 0\nupper 0 0\nfore 0\nhand 0 0 0\n"
           "2\nroot 0 1 0 0 5 0\nupper 40 30\nfore 90\nhand 10 20 30\n3\nroot 1 2 0 0 10 0\nupper 80 -50\nfore 170\nhand 370 0 -60\n";
}

std::string DofTextOf(const KQexBoneDof& pDof)
{
    char lText[100];
    std::snprintf(lText, sizeof lText, "%s(%g %g)", pDof.mWord.c_str(), std::round(pDof.GetMin() * 1e4) / 1e4,
                  std::round(pDof.GetMax() * 1e4) / 1e4);
    return lText;
}

/// "upper: ry(-90 90) rx(-inf 45)", sorted by name; bones without any are left out.
std::string DofsOf(const KQexFigure& pFigure)
{
    std::map<std::string, std::string> lSorted;
    for (const auto& [lName, lDofs] : *pFigure.GetBoneDofs())
    {
        for (const KQexBoneDof& lDof : lDofs)
        {
            lSorted[lName] += " " + DofTextOf(lDof);
        }
    }
    std::string lText;
    for (const auto& [lName, lDofs] : lSorted)
    {
        lText += lName + ":" + lDofs + "\n";
    }
    return lText;
}

class KFigureFromClipTest : public testing::Test
{
protected:
    /// Loads mSource with the values of degrees of freedom, and makes mClip and mFigure of its first take.
    void Load(const std::vector<std::string>& pPaths)
    {
        KQexFigureOptions lOptions;
        lOptions.mKeepDofValues = true;
        ASSERT_TRUE(mSource.Load(pPaths, lOptions, mReport)) << TextOf(mReport);
        const KQexFigureTake* lTake = mSource.GetTakes().empty() ? nullptr : &mSource.GetTakes().front();
        ASSERT_TRUE(mSource.MakeClip(lTake, 0.0, {}, mClip, mReport)) << TextOf(mReport);
        ASSERT_TRUE(mFigure.Assign(mClip, "take", mReport)) << TextOf(mReport);
    }

    void LoadArm()
    {
        WriteFile(mFolder / "arm.asf", ArmSkeleton());
        WriteFile(mFolder / "arm.amc", ArmMotion());
        Load({In("arm.asf"), In("arm.amc")});
    }

    void LoadWalk() { Load({(SamplesDir() / "walker.asf").string(), (SamplesDir() / "walk.amc").string()}); }

    std::string In(const std::string& pName) const { return (mFolder / pName).string(); }

    /// Writes mFigure to files of the folder.
    void Write(const std::vector<std::string>& pNames)
    {
        std::vector<KQexFigureOutput> lOutputs(pNames.size());
        for (size_t i = 0; i < pNames.size(); ++i)
        {
            lOutputs[i].mPath = In(pNames[i]);
            ASSERT_TRUE(KQexOutputFormatOf(pNames[i], lOutputs[i].mFormat));
        }
        ASSERT_TRUE(KQexWriteFigure(mFigure, lOutputs, KQexFigureWriteOptions(), mReport)) << TextOf(mReport);
    }

    /// Expects the joints of \p pFigure where those of mFigure with their names are, in every frame.
    void ExpectSame(KQexFigure& pFigure, const std::string& pWhat)
    {
        const KQexFigureTake&         lTake = mFigure.GetTakes().front();
        const KQexFigureTake&         lOther = pFigure.GetTakes().front();
        std::map<std::string, size_t> lJoints;
        for (size_t i = 0; i < pFigure.GetJoints().size(); ++i)
        {
            lJoints.emplace(pFigure.GetJoints()[i].mName, i);
        }
        std::vector<KQexFigurePoint> lMine;
        std::vector<KQexFigurePoint> lOthers;
        for (long long lFrame = 0; lFrame < lTake.mFrames; ++lFrame)
        {
            const long long lTime = lFrame * lTake.mStep.Get();
            ASSERT_TRUE(mFigure.Evaluate(&lTake, KTime(lTake.mStart.Get() + lTime), lMine));
            ASSERT_TRUE(pFigure.Evaluate(&lOther, KTime(lOther.mStart.Get() + lTime), lOthers));
            for (size_t i = 0; i < lMine.size(); ++i)
            {
                // The root of an ASF file has no name of its own.
                const auto lFound = lJoints.find((i == 0 ? pFigure : mFigure).GetJoints()[i].mName);
                ASSERT_NE(lFound, lJoints.end()) << pWhat << " has no " << mFigure.GetJoints()[i].mName;
                const KQexFigurePoint& lPoint = lOthers[lFound->second];
                const double lDistance = std::hypot(lPoint.mX - lMine[i].mX, std::hypot(lPoint.mY - lMine[i].mY, lPoint.mZ - lMine[i].mZ));
                ASSERT_LT(lDistance, 1e-4 * kSize) << pWhat << ", frame " << lFrame << ", " << lFound->first;
            }
        }
    }

    static constexpr double kSize = 27; ///< Of the smallest figure, in centimetres.

    KTempDir         mFolder;
    KQexFigure       mSource;
    KQexClip         mClip;
    KQexFigure       mFigure;
    KQexFigureReport mReport;
};

TEST_F(KFigureFromClipTest, HasTheClipsJointsAndTake)
{
    LoadArm();
    EXPECT_EQ(JointsOf(mFigure), JointsOf(mSource));
    ASSERT_EQ(mFigure.GetTakes().size(), 1u);
    const KQexFigureTake& lTake = mFigure.GetTakes().front();
    EXPECT_EQ(lTake.mName, "take");
    EXPECT_EQ(lTake.mGivenName, "take");
    EXPECT_EQ(lTake.mFrames, 3);
    EXPECT_DOUBLE_EQ(lTake.mRate, 30);
    EXPECT_FALSE(lTake.mIsSingle || lTake.mIsDefaultRate || lTake.mHasNumbers);
    EXPECT_EQ(lTake.GetNumber(lTake.mEnd), 3);
    EXPECT_EQ(lTake.mEnd.Get() - lTake.mStart.Get(), 2 * lTake.mStep.Get());
    EXPECT_EQ(mFigure.GetScene()->GetEvaluator()->GetContext(), lTake.mStack);
    EXPECT_EQ(mFigure.GetSkeleton(), nullptr);
    ExpectSame(mSource, "the source");
}

TEST_F(KFigureFromClipTest, HasItsDegreesOfFreedomAndTheirValues)
{
    LoadArm();
    EXPECT_EQ(DofsOf(mFigure), DofsOf(mSource));
    std::vector<KQexDofTrack> lSource;
    std::vector<KQexDofTrack> lTracks;
    ASSERT_TRUE(mSource.GetDofTracks(mSource.GetTakes().front(), lSource));
    ASSERT_TRUE(mFigure.GetDofTracks(mFigure.GetTakes().front(), lTracks));
    ASSERT_EQ(lTracks.size(), 12u);
    ASSERT_EQ(lTracks.size(), lSource.size());
    for (size_t i = 0; i < lTracks.size(); ++i)
    {
        EXPECT_EQ(lTracks[i].mJoint + "." + DofTextOf(lTracks[i].mDof), lSource[i].mJoint + "." + DofTextOf(lSource[i].mDof));
        for (int lFrame = 0; lFrame < 3; ++lFrame)
        {
            KQexKeyTimes::KCursor lCursor;
            const KTime           lTime = mClip.GetData().mSampling.GetTime(lFrame);
            const double          lExpected = lSource[i].Evaluate(lTime, lCursor);
            EXPECT_NEAR(lTracks[i].Evaluate(lTime, lCursor), lExpected, 1e-5) << i << ", frame " << lFrame;
        }
    }
    KQexClip lBack;
    ASSERT_TRUE(mFigure.MakeClip(&mFigure.GetTakes().front(), 0.0, {}, lBack, mReport));
    EXPECT_EQ(lBack.GetData().mDofValues, mClip.GetData().mDofValues);
    mFigure.DropLimits();
    ASSERT_TRUE(mFigure.GetDofTracks(mFigure.GetTakes().front(), lTracks));
    EXPECT_FALSE(
        std::any_of(lTracks.begin(), lTracks.end(), [](const KQexDofTrack& pTrack) { return pTrack.mDof.mHasMin || pTrack.mDof.mHasMax; }));
}

TEST_F(KFigureFromClipTest, NodesRotateInTheOrderOfTheirDegreesOfFreedom)
{
    LoadArm();
    std::string lOrders;
    for (size_t i = 0; i < mFigure.GetJoints().size(); ++i)
    {
        if (!mFigure.GetJoints()[i].mIsEnd)
        {
            EXPECT_EQ(mFigure.GetJoints()[i].mNode->GetRotationOrder(), mSource.GetJoints()[i].mNode->GetRotationOrder()) << i;
            lOrders += std::to_string(mFigure.GetJoints()[i].mNode->GetRotationOrder());
        }
    }
    EXPECT_EQ(lOrders, "05040") << "XYZ, ZYX for ry rx, XYZ for rz, ZXY, XYZ";
}

TEST_F(KFigureFromClipTest, EveryFormatHasItsPositions)
{
    const std::vector<std::vector<std::string>> lFormats = {{"a.asf", "a.amc"}, {"a.bvh"}, {"a.glb"}, {"a.gltf"}};
    LoadArm();
    Write({"arm.glb"});
    WriteFile(mFolder / "leg.bvh", LegBvh());
    const std::string lSamples = SamplesDir().string();
    for (const std::vector<std::string>& lSource :
         {std::vector{In("arm.asf"), In("arm.amc")}, {In("arm.glb")}, {In("leg.bvh")}, {lSamples + "/walker.asf", lSamples + "/walk.amc"}})
    {
        SCOPED_TRACE(lSource.front());
        Load(lSource);
        Write({"a.asf", "a.amc", "a.bvh", "a.glb", "a.gltf", "a.npz", "a.csv"});
        for (const std::vector<std::string>& lNames : lFormats)
        {
            std::vector<std::string> lPaths;
            std::transform(lNames.begin(), lNames.end(), std::back_inserter(lPaths),
                           [this](const std::string& pName) { return In(pName); });
            KQexFigure lRead;
            ASSERT_TRUE(lRead.Load(lPaths, KQexFigureOptions(), mReport)) << TextOf(mReport);
            ExpectSame(lRead, lNames.front());
        }
    }
}

TEST_F(KFigureFromClipTest, AsfAndGlbKeepDegreesOfFreedom)
{
    LoadArm();
    const std::string lExpected = DofsOf(mSource);
    EXPECT_EQ(lExpected, "fore: rz(0 170)\nhand: rz(-inf inf) rx(-inf inf) ry(-inf inf)\n"
                         "root: tx(-inf inf) ty(-inf inf) tz(-inf inf) rx(-inf inf) ry(-inf inf) rz(-inf inf)\n"
                         "upper: ry(-90 90) rx(-inf 45)\n");
    Write({"b.asf", "b.amc", "b.glb"});
    KQexFigure lAsf;
    KQexFigure lGlb;
    ASSERT_TRUE(lAsf.Load({In("b.asf"), In("b.amc")}, KQexFigureOptions(), mReport)) << TextOf(mReport);
    ASSERT_TRUE(lGlb.Load({In("b.glb")}, KQexFigureOptions(), mReport)) << TextOf(mReport);
    EXPECT_EQ(DofsOf(lAsf), lExpected);
    EXPECT_EQ(DofsOf(lGlb), lExpected);
    ExpectSame(lAsf, "a bone with two degrees of freedom reaches its poses in their order only");
}

TEST_F(KFigureFromClipTest, ArraysAreThoseOfTheSource)
{
    LoadWalk();
    Write({"clip.npz"});
    KQexFigureOutput lOutput{In("source.npz"), eOUTPUT_NPZ, {}};
    ASSERT_TRUE(KQexWriteFigure(mSource, {lOutput}, KQexFigureWriteOptions(), mReport)) << TextOf(mReport);
    const KRunResult lResult = RunProgram({QEX_TEST_PYTHON, "-c",
                                           "import numpy, sys\na, b = (numpy.load(name) for name in sys.argv[1:])\n"
                                           "assert sorted(a) == sorted(b), (sorted(a), sorted(b))\n"
                                           "for name in a:\n"
                                           "    assert a[name].shape == b[name].shape, name\n"
                                           "    if a[name].dtype.kind in 'fi':\n"
                                           "        numpy.testing.assert_allclose(a[name], b[name], rtol=1e-5, atol=1e-5, err_msg=name)\n"
                                           "    else:\n"
                                           "        assert (a[name] == b[name]).all(), name\n"
                                           "print(len(a['dof_names']), a['dof_angles'].shape[0])\n",
                                           In("clip.npz"), In("source.npz")});
    EXPECT_EQ(lResult.mErr, "");
    EXPECT_EQ(lResult.mOut, std::to_string(mClip.GetData().mDofs.size()) + " " + std::to_string(mClip.GetFrameCount()) + "\n");
}

TEST_F(KFigureFromClipTest, ChangedMotions)
{
    LoadWalk();
    KQexClip lChanged;
    ASSERT_TRUE(KQexClipMirror(mClip, KQexMirrorPairs(mClip.GetData()), lChanged) && KQexClipInPlace(lChanged, true, lChanged) &&
                KQexClipResample(lChanged, 25, lChanged));
    ASSERT_TRUE(mFigure.Assign(lChanged, "mirrored", mReport)) << TextOf(mReport);
    Write({"a.bvh", "a.glb"});
    for (const char* lName : {"a.bvh", "a.glb"})
    {
        KQexFigure lRead;
        ASSERT_TRUE(lRead.Load({In(lName)}, KQexFigureOptions(), mReport)) << TextOf(mReport);
        EXPECT_DOUBLE_EQ(lRead.GetTakes().front().mRate, 25) << lName;
        ExpectSame(lRead, lName);
    }
}

TEST_F(KFigureFromClipTest, OneFrameKeepsItsRate)
{
    LoadArm();
    KQexClip lOne;
    KQexClip lBack;
    ASSERT_TRUE(KQexClipCut(mClip, 1, 1, 1, lOne));
    ASSERT_TRUE(mFigure.Assign(lOne, "pose", mReport)) << TextOf(mReport);
    EXPECT_TRUE(mFigure.GetTakes().front().mIsSingle);
    ASSERT_TRUE(mFigure.MakeClip(&mFigure.GetTakes().front(), 0.0, {}, lBack, mReport));
    EXPECT_EQ(lBack.GetFrameCount(), 1);
    EXPECT_DOUBLE_EQ(lBack.GetRate(), 30);
    Write({"a.bvh", "a.asf", "a.amc"});
    KQexFigure lRead;
    ASSERT_TRUE(lRead.Load({In("a.bvh")}, KQexFigureOptions(), mReport)) << TextOf(mReport);
    EXPECT_EQ(lRead.GetTakes().front().mFrames, 1);
    EXPECT_DOUBLE_EQ(lRead.GetTakes().front().mRate, 30);
    ExpectSame(lRead, "a.bvh");
}

/// Two trees whose joints are mixed, with one name three times, names of odd characters, and degrees of freedom of two of the joints.
KQexClipData OddData()
{
    KQexClipData lData;
    lData.mNames = {"a", "\xC3\xA4 \"b\",{}", "a", "line\nfeed", "", "a", "a_End"};
    lData.mParents = {-1, -1, 0, 1, 0, 2, 5};
    lData.mRest.resize(7);
    lData.mSampling = KQexSampling{KTime(7), KTime(KTime::kTicksPerSecond / 10), 2};
    for (size_t i = 0; i < 7; ++i)
    {
        lData.mRest[i].mTranslation[1] = static_cast<float>(i + 1);
    }
    for (int i = 0; i < 14; ++i)
    {
        lData.mRotations.insert(lData.mRotations.end(), {0.6F, i < 7 ? 0.8F : -0.8F, 0.0F, 0.0F});
    }
    lData.mDofs = {{2, {"rx", true, false, -5, 0}}, {5, {"bad", false, false, 0, 0}}, {5, {"rz", false, true, 0, 9}}};
    lData.mDofValues = {1, 2, 3, 4, 5, 6};
    return lData;
}

TEST_F(KFigureFromClipTest, OddJoints)
{
    ASSERT_TRUE(KQexClip::FromArrays(OddData(), mClip));
    ASSERT_TRUE(mFigure.Assign(mClip, "t\xFFk \n", mReport)) << TextOf(mReport);
    EXPECT_EQ(mFigure.GetRoots().size(), 2u);
    EXPECT_EQ(mFigure.GetJoints().size(), 7u);
    EXPECT_TRUE(mFigure.GetBoneDofs()->at("a").empty()) << "those of the first joint of that name";
    std::vector<KQexDofTrack> lTracks;
    ASSERT_TRUE(mFigure.GetDofTracks(mFigure.GetTakes().front(), lTracks));
    ASSERT_EQ(lTracks.size(), 3u);
    EXPECT_EQ(lTracks[0].mNode->GetParent(), mFigure.GetRoots()[0]);
    EXPECT_EQ(lTracks[1].mNode->GetParent(), lTracks[0].mNode);
    KQexKeyTimes::KCursor lCursor;
    EXPECT_EQ(lTracks[2].Evaluate(mFigure.GetTakes().front().mEnd, lCursor), 6.0);
    Write({"a.asf", "a.amc", "a.bvh", "a.glb", "a.npz", "a.csv"});
    for (const std::vector<std::string>& lPaths : {std::vector{In("a.asf"), In("a.amc")}, {In("a.bvh")}, {In("a.glb")}})
    {
        KQexFigure lRead;
        EXPECT_TRUE(lRead.Load(lPaths, KQexFigureOptions(), mReport)) << lPaths.front() << "\n" << TextOf(mReport);
    }
}

TEST_F(KFigureFromClipTest, NothingToMakeOne)
{
    LoadArm();
    const auto lExpect = [this](const KQexClip& pClip, const std::string& pName, const std::string& pText)
    {
        KQexFigureReport lReport;
        ASSERT_TRUE(mFigure.Assign(mClip, "take", lReport));
        EXPECT_FALSE(mFigure.Assign(pClip, pName, lReport));
        EXPECT_EQ(TextOf(lReport), "error :0: " + pText + "\n");
        EXPECT_EQ(lReport.GetStatus(), eFIGURE_USAGE);
        EXPECT_EQ(mFigure.GetScene(), nullptr);
        EXPECT_TRUE(mFigure.GetTakes().empty() && mFigure.GetJoints().empty() && mFigure.GetRoots().empty());
        EXPECT_EQ(mFigure.GetBoneDofs(), nullptr);
    };
    lExpect(KQexClip(), "take", "the clip is empty");
    lExpect(mClip, "", "a take needs a name");
}

} // namespace
