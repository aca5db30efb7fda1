#include <qexfigure/kqexfigure.h>

#include <qexioplugins/bvh/kqexfilebvh.h>
#include <tests/qexfigure/figuresupport.h>

#ifdef QEX_WITH_GLTF
#include <qexioplugins/gltf/kqexfilegltf.h>
#endif

#include <cmath>

using namespace qexsdk;
using namespace qextest;

namespace
{

KQexFigureFile Buffer(const std::string& pBytes, const std::string& pName)
{
    KQexFigureFile   lFile;
    KQexFigureReport lReport;
    EXPECT_TRUE(lFile.OpenBuffer(pBytes, pName, lReport)) << TextOf(lReport);
    return lFile;
}

KQexFigureFiles HandFiles(const std::string& pMotion = HandMotion())
{
    KQexFigureFiles lFiles;
    lFiles.mFigure = Buffer(HandSkeleton(), "hand.asf");
    lFiles.mMotions.push_back(Buffer(pMotion, "folder/wave.amc"));
    return lFiles;
}

KQexFigureFiles OneFile(const std::string& pBytes, const std::string& pName)
{
    KQexFigureFiles lFiles;
    lFiles.mFigure = Buffer(pBytes, pName);
    return lFiles;
}

std::vector<std::string> SamplePaths()
{
    return {(SamplesDir() / "walker.asf").string(), (SamplesDir() / "walk.amc").string()};
}

/// The largest distance of two figures' joints in the frames of their first takes, which must have the same joints and numbers of frames.
double LargestDistance(KQexFigure& pOne, KQexFigure& pOther)
{
    KQexFigureFrames lFrames[2];
    EXPECT_EQ(JointsOf(pOne), JointsOf(pOther));
    EXPECT_TRUE(pOne.CollectFrames(pOne.GetTakes().at(0), lFrames[0]));
    EXPECT_TRUE(pOther.CollectFrames(pOther.GetTakes().at(0), lFrames[1]));
    EXPECT_EQ(lFrames[0].mNumbers, lFrames[1].mNumbers);
    double lLargest = lFrames[0].mTimes.size() == lFrames[1].mTimes.size() ? 0 : 1e9;
    for (size_t lFrame = 0; lFrame < lFrames[0].mTimes.size() && lLargest < 1e9; ++lFrame)
    {
        std::vector<KQexFigurePoint> lPositions[2];
        EXPECT_TRUE(pOne.Evaluate(&pOne.GetTakes()[0], lFrames[0].mTimes[lFrame], lPositions[0]));
        EXPECT_TRUE(pOther.Evaluate(&pOther.GetTakes()[0], lFrames[1].mTimes[lFrame], lPositions[1]));
        for (size_t lJoint = 0; lJoint < lPositions[0].size() && lJoint < lPositions[1].size(); ++lJoint)
        {
            const KQexFigurePoint& lA = lPositions[0][lJoint];
            const KQexFigurePoint& lB = lPositions[1][lJoint];
            lLargest = std::max(lLargest, std::hypot(lA.mX - lB.mX, lA.mY - lB.mY, lA.mZ - lB.mZ));
        }
    }
    return lLargest;
}

KQexSampling SamplingOf(KQexFigure& pFigure)
{
    KQexSampling lSampling;
    EXPECT_TRUE(MakeSampling(pFigure.GetRoots(), pFigure.GetTakes().at(0).mStack, {}, lSampling));
    return lSampling;
}

TEST(KQexFigure, AcclaimKeepsNumbersAndGaps)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    ASSERT_TRUE(lFigure.Load(HandFiles(), KQexFigureOptions(), lReport)) << TextOf(lReport);
    EXPECT_EQ(TextOf(lReport), "");
    EXPECT_EQ(JointsOf(lFigure), "root -1\narm 0\nhand 1\nhand_End 2 end\n");
    ASSERT_EQ(lFigure.GetTakes().size(), 1u);
    const KQexFigureTake& lTake = lFigure.GetTakes()[0];
    EXPECT_EQ(lTake.mName, "wave");
    EXPECT_EQ(lTake.mRate, 10);
    EXPECT_EQ(lTake.mFrames, 3);
    KQexFigureFrames lFrames;
    ASSERT_TRUE(lFigure.CollectFrames(lTake, lFrames));
    EXPECT_EQ(lFrames.mNumbers, std::vector<long long>({4, 5, 8}));
    EXPECT_NEAR(lFrames.mTimes[2].GetSeconds(), 0.4, 1e-9);

    std::vector<KQexFigurePoint> lPositions;
    ASSERT_TRUE(lFigure.Evaluate(&lTake, lFrames.mTimes[1], lPositions));
    // The hand starts at (10, 1, 0) and points up.
    EXPECT_NEAR(lPositions[2].mX, 10, 1e-5);
    EXPECT_NEAR(lPositions[3].mX, 10, 1e-5);
    EXPECT_NEAR(lPositions[3].mY, 6, 1e-5);
    ASSERT_TRUE(lFigure.Evaluate(nullptr, KTime(0), lPositions));
    EXPECT_NEAR(lPositions[3].mX, 15, 1e-5);
    EXPECT_EQ(lFigure.GetScene()->GetEvaluator()->GetContext(), lTake.mStack) << "the context stays";
    EXPECT_NE(lFigure.GetSkeleton(), nullptr);
    ASSERT_NE(lFigure.GetBoneDofs(), nullptr);
    EXPECT_EQ(lFigure.GetBoneDofs()->at("hand").size(), 3u);
}

TEST(KQexFigure, ASingleFrameIsOne)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    ASSERT_TRUE(lFigure.Load(HandFiles(":DEGREES\n7\nroot 0 0 0 0 0 0\nhand 0 0 0\n"), KQexFigureOptions(), lReport)) << TextOf(lReport);
    EXPECT_EQ(TextOf(lReport), "note folder/wave.amc:0: has no frame rate, using 120 frames per second\n");
    EXPECT_TRUE(lFigure.GetTakes()[0].mIsDefaultRate);
    KQexFigureFrames lFrames;
    ASSERT_TRUE(lFigure.CollectFrames(lFigure.GetTakes()[0], lFrames));
    EXPECT_EQ(lFrames.mNumbers, std::vector<long long>({7}));
}

TEST(KQexFigure, Bvh)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    ASSERT_TRUE(lFigure.Load(OneFile(LegBvh(), "leg.bvh"), KQexFigureOptions(), lReport)) << TextOf(lReport);
    EXPECT_EQ(JointsOf(lFigure), "Hips -1\nLeg 0\nLeg_End 1 end\n");
    const KQexFigureTake& lTake = lFigure.GetTakes().at(0);
    EXPECT_EQ(lTake.mName, "leg");
    EXPECT_NEAR(lTake.mRate, 30, 1e-9);
    KQexFigureFrames lFrames;
    ASSERT_TRUE(lFigure.CollectFrames(lTake, lFrames));
    EXPECT_EQ(lFrames.mNumbers, std::vector<long long>({1, 2}));
    std::vector<KQexFigurePoint> lPositions;
    ASSERT_TRUE(lFigure.Evaluate(&lTake, lFrames.mTimes[1], lPositions));
    EXPECT_NEAR(lPositions[2].mX, 45, 1e-4) << "the leg points to the left";
    EXPECT_NEAR(lPositions[2].mY, 51, 1e-4);
    EXPECT_EQ(lFigure.GetSkeleton(), nullptr);
    EXPECT_EQ(lFigure.GetBoneDofs(), nullptr);
}

TEST(KQexFigure, SeveralRootsAreSeveralTrees)
{
    const std::string lTwo = "HIERARCHY\nROOT A\n{\n OFFSET 1 0 0\n CHANNELS 3 Zrotation Xrotation Yrotation\n}\nROOT B\n{\n OFFSET 2 0 0\n"
                             " CHANNELS 3 Zrotation Xrotation Yrotation\n}\nMOTION\nFrames: 1\nFrame Time: 0.1\n0 0 0 0 0 0\n";
    KQexFigure        lFigure;
    KQexFigureReport  lReport;
    ASSERT_TRUE(lFigure.Load(OneFile(lTwo, "two.bvh"), KQexFigureOptions(), lReport)) << TextOf(lReport);
    EXPECT_EQ(JointsOf(lFigure), "A -1\nB -1\n");
    std::vector<KQexFigurePoint> lPositions;
    ASSERT_TRUE(lFigure.Evaluate(nullptr, KTime(0), lPositions));
    ASSERT_EQ(lPositions.size(), 2u);
    EXPECT_EQ(lPositions[0].mX, 1);
    EXPECT_EQ(lPositions[1].mX, 2);
}

TEST(KQexFigure, EveryFormatGivesTheSamePositions)
{
    KTempDir         lFolder;
    KQexFigure       lAcclaim;
    KQexFigureReport lReport;
    ASSERT_TRUE(lAcclaim.Load(SamplePaths(), KQexFigureOptions(), lReport)) << TextOf(lReport);
    EXPECT_GT(lAcclaim.GetJoints().size(), 20u);

    const std::string   lBvhPath = (lFolder / "walk.bvh").string();
    KQexFileBvh         lBvhFile;
    KQexBvhWriteOptions lBvhOptions;
    lBvhOptions.mStack = lAcclaim.GetTakes()[0].mStack;
    lBvhOptions.mSampling = SamplingOf(lAcclaim);
    ASSERT_TRUE(lBvhFile.OpenWrite(lBvhPath.c_str()) && lBvhFile.Write(lAcclaim.GetRoots(), lBvhOptions) && lBvhFile.Close());
    KQexFigure lBvh;
    ASSERT_TRUE(lBvh.Load({lBvhPath}, KQexFigureOptions(), lReport)) << TextOf(lReport);
    EXPECT_LT(LargestDistance(lAcclaim, lBvh), 2e-3);
    KQexFigure lBvhBuffer;
    ASSERT_TRUE(lBvhBuffer.Load(OneFile(ReadFile(lBvhPath), "walk.bvh"), KQexFigureOptions(), lReport)) << TextOf(lReport);
    EXPECT_EQ(LargestDistance(lBvh, lBvhBuffer), 0);

    KQexFigureFiles lFiles;
    lFiles.mFigure = Buffer(ReadFile(SamplePaths()[0]), "walker.asf");
    lFiles.mMotions.push_back(Buffer(ReadFile(SamplePaths()[1]), "walk.amc"));
    KQexFigure lBuffers;
    ASSERT_TRUE(lBuffers.Load(lFiles, KQexFigureOptions(), lReport)) << TextOf(lReport);
    EXPECT_EQ(LargestDistance(lAcclaim, lBuffers), 0);
}

#ifdef QEX_WITH_GLTF

TEST(KQexFigure, GltfGivesTheSamePositions)
{
    KTempDir         lFolder;
    KQexFigure       lAcclaim;
    KQexFigureReport lReport;
    ASSERT_TRUE(lAcclaim.Load(SamplePaths(), KQexFigureOptions(), lReport)) << TextOf(lReport);
    KQexGltfWriteOptions lOptions;
    lOptions.mTakes.push_back({lAcclaim.GetTakes()[0].mStack, SamplingOf(lAcclaim)});
    lOptions.mBoneDofs = lAcclaim.GetBoneDofs();
    for (const char* lName : {"walk.glb", "walk.gltf"})
    {
        KQexFileGltf      lFile;
        const std::string lPath = (lFolder / lName).string();
        ASSERT_TRUE(lFile.Write(lPath, lAcclaim.GetRoots(), lOptions));
        KQexFigure lFigure;
        ASSERT_TRUE(lFigure.Load({lPath}, KQexFigureOptions(), lReport)) << TextOf(lReport);
        EXPECT_EQ(lFigure.GetTakes().at(0).mName, "walk");
        EXPECT_LT(LargestDistance(lAcclaim, lFigure), 2e-3) << lName;
        ASSERT_NE(lFigure.GetBoneDofs(), nullptr);
        EXPECT_EQ(lFigure.GetBoneDofs()->size(), lAcclaim.GetBoneDofs()->size());
    }
    KQexFigure lBuffer;
    ASSERT_TRUE(lBuffer.Load(OneFile(ReadFile(lFolder / "walk.glb"), "walk.glb"), KQexFigureOptions(), lReport)) << TextOf(lReport);
    EXPECT_LT(LargestDistance(lAcclaim, lBuffer), 2e-3);
}

TEST(KQexFigure, FramesOfGltfAreNumberedFromOne)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    ASSERT_TRUE(lFigure.Load(HandFiles(Replaced(HandMotion(), "SECOND 10", "SECOND 30")), KQexFigureOptions(), lReport)) << TextOf(lReport);
    KQexGltfWriteOptions lOptions;
    lOptions.mTakes.push_back({lFigure.GetTakes()[0].mStack, SamplingOf(lFigure)});
    std::string  lBytes;
    KQexFileGltf lFile;
    ASSERT_TRUE(lFile.WriteBuffer(lBytes, lFigure.GetRoots(), lOptions));
    KQexFigure lRead;
    ASSERT_TRUE(lRead.Load(OneFile(lBytes, "hand.glb"), KQexFigureOptions(), lReport)) << TextOf(lReport);
    KQexFigureFrames lFrames;
    ASSERT_TRUE(lRead.CollectFrames(lRead.GetTakes().at(0), lFrames));
    EXPECT_EQ(lFrames.mNumbers, std::vector<long long>({1, 2, 3, 4, 5}));
    EXPECT_EQ(JointsOf(lRead), JointsOf(lFigure));
}

#else

TEST(KQexFigure, WithoutGltfItSaysSo)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    EXPECT_FALSE(lFigure.Load(OneFile("{\"asset\":{\"version\":\"2.0\"}}", "a.gltf"), KQexFigureOptions(), lReport));
    EXPECT_EQ(lReport.GetStatus(), eFIGURE_USAGE);
    EXPECT_EQ(TextOf(lReport), "error a.gltf:0: is glTF, but this program was built without it\n");
}

#endif

TEST(KQexFigure, TakesArePickedOrNamed)
{
    KQexFigureFiles   lFiles = HandFiles();
    KQexFigure        lFigure;
    KQexFigureReport  lReport;
    KQexFigureOptions lOptions;
    lOptions.mTake = "other";
    ASSERT_TRUE(lFigure.Load(lFiles, lOptions, lReport)) << TextOf(lReport);
    EXPECT_EQ(lFigure.GetTakes().at(0).mName, "other");
    lFiles.mMotions.push_back(Buffer(HandMotion(), "run.amc"));
    EXPECT_FALSE(lFigure.Load(lFiles, lOptions, lReport));
    EXPECT_EQ(lReport.GetStatus(), eFIGURE_USAGE);
    EXPECT_EQ(TextOf(lReport), "error :0: there is no take other; there are wave, run\n");
    lOptions.mTake = "run";
    ASSERT_TRUE(lFigure.Load(lFiles, lOptions, lReport));
    EXPECT_EQ(lFigure.GetTakes().size(), 1u);
    lOptions.mTake.clear();
    ASSERT_TRUE(lFigure.Load(lFiles, lOptions, lReport));
    EXPECT_EQ(lFigure.GetTakes().size(), 2u);
}

TEST(KQexFigure, AFailureLeavesItEmpty)
{
    KQexFigure       lFigure;
    KQexFigureReport lGood;
    ASSERT_TRUE(lFigure.Load(OneFile(LegBvh(), "leg.bvh"), KQexFigureOptions(), lGood));
    std::string       lCut = LegBvh();
    KQexFigureReport  lReport;
    const std::string lPart = lCut.substr(0, lCut.find("JOINT"));
    EXPECT_FALSE(lFigure.Load(OneFile(lPart, "cut.bvh"), KQexFigureOptions(), lReport));
    EXPECT_EQ(lReport.GetStatus(), eFIGURE_INPUT);
    EXPECT_EQ(TextOf(lReport).find("error cut.bvh:"), 0u) << TextOf(lReport);
    EXPECT_EQ(lFigure.GetScene(), nullptr);
    EXPECT_EQ(lFigure.GetTop(), nullptr);
    EXPECT_TRUE(lFigure.GetRoots().empty() && lFigure.GetTakes().empty() && lFigure.GetJoints().empty());
    std::vector<KQexFigurePoint> lPositions;
    EXPECT_FALSE(lFigure.Evaluate(nullptr, KTime(0), lPositions));

    KQexFigureReport lMotion;
    EXPECT_FALSE(lFigure.Load(HandFiles(":DEGREES\n1\nroot 0 0\n"), KQexFigureOptions(), lMotion));
    EXPECT_EQ(TextOf(lMotion).find("error folder/wave.amc:3: "), 0u) << TextOf(lMotion);
    EXPECT_EQ(lMotion.GetStatus(), eFIGURE_INPUT);
}

TEST(KQexFigure, MissingFilesAreSystemErrors)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    EXPECT_FALSE(lFigure.Load({"/none/a.asf", "/none/a.amc"}, KQexFigureOptions(), lReport));
    EXPECT_EQ(lReport.GetStatus(), eFIGURE_SYSTEM);
    EXPECT_EQ(TextOf(lReport), "error /none/a.asf:0: cannot be read: No such file or directory\n");
    // A file that disappears after it was opened.
    KTempDir         lFolder;
    KQexFigureFiles  lFiles;
    KQexFigureReport lGone;
    WriteFile(lFolder / "a.bvh", LegBvh());
    ASSERT_TRUE(lFiles.Open({(lFolder / "a.bvh").string()}, KQexFigureFilesOptions(), lGone));
    std::filesystem::remove(lFolder / "a.bvh");
    EXPECT_FALSE(lFigure.Load(lFiles, KQexFigureOptions(), lGone));
    EXPECT_EQ(lGone.GetStatus(), eFIGURE_SYSTEM) << TextOf(lGone);
}

TEST(KQexFigure, ProgressCancels)
{
    KQexFigure        lFigure;
    KQexFigureReport  lReport;
    KQexFigureOptions lOptions;
    lOptions.mProgress = [](double)
    {
        return false;
    };
    EXPECT_FALSE(lFigure.Load(SamplePaths(), lOptions, lReport));
    EXPECT_TRUE(lReport.IsCancelled());
    EXPECT_EQ(lReport.GetStatus(), eFIGURE_OK) << TextOf(lReport);
    EXPECT_EQ(lFigure.GetScene(), nullptr);
}

TEST(KQexFigure, TheSceneCanBeReleased)
{
    KQexScene* lScene = nullptr;
    {
        KQexFigure       lFigure;
        KQexFigureReport lReport;
        ASSERT_TRUE(lFigure.Load(HandFiles(), KQexFigureOptions(), lReport));
        lScene = lFigure.ReleaseScene();
        EXPECT_EQ(lFigure.GetScene(), nullptr);
        EXPECT_EQ(lFigure.ReleaseScene(), nullptr);
    }
    ASSERT_NE(lScene, nullptr);
    EXPECT_NE(lScene->GetRootNode()->FindChild("hand", true, false), nullptr);
    EXPECT_NE(lScene->FindAnimStack("wave"), nullptr);
    lScene->Destroy();
}

TEST(KQexFigure, FarNumbersAreRefusedForEvenFrames)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    ASSERT_TRUE(lFigure.Load(HandFiles(":DEGREES\n1\nroot 0 0 0 0 0 0\nhand 0 0 0\n2\nroot 0 1 0 0 0 0\nhand 0 0 0\n"
                                       "100000001\nroot 0 0 0 0 0 0\nhand 0 0 0\n"),
                             KQexFigureOptions(), lReport))
        << TextOf(lReport);
    const KQexFigureTake& lTake = lFigure.GetTakes()[0];
    KQexFigureReport      lSpan;
    EXPECT_FALSE(KQexFigure::CheckSpan(lTake, SamplingOf(lFigure), lSpan));
    EXPECT_EQ(TextOf(lSpan), "error :0: take wave spans 100000001 frames, but its file has only 3\n");
    KQexFigureFrames lFrames;
    ASSERT_TRUE(lFigure.CollectFrames(lTake, lFrames));
    EXPECT_EQ(lFrames.mNumbers, std::vector<long long>({1, 2, 100000001}));
}

} // namespace
