#include <kbaselib/kbase/kassert.h>

#include <kbaselib/kbase/koutputfile.h>
#include <qexclip/kqexclipquantities.h>
#include <qexclip/kqexclipsteps.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/bvh/kqexfilebvh.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

// Runs concurrently what may run concurrently. ./dev tsan runs these under ThreadSanitizer, which checks the memory accesses; the
// expectations here check the results.

using namespace qexsdk;
using namespace qextest;

namespace
{

/// Runs \p pWork(0) to \p pWork(pCount - 1) on one thread each, all started at once.
void RunAtOnce(int pCount, const std::function<void(int)>& pWork)
{
    std::atomic<int>         lWaiting{pCount};
    std::vector<std::thread> lThreads;
    for (int i = 0; i < pCount; ++i)
    {
        lThreads.emplace_back(
            [&, i]
            {
                --lWaiting;
                while (lWaiting > 0)
                {
                    std::this_thread::yield();
                }
                pWork(i);
            });
    }
    for (std::thread& lThread : lThreads)
    {
        lThread.join();
    }
}

constexpr const char* kAsf =
    ":version 1.10\n:name s\n:root\norder TX TY TZ RX RY RZ\naxis XYZ\nposition 0 0 0\norientation 0 0 0\n:bonedata\n"
    "begin\nname arm\ndirection 1 0 0\nlength 3\naxis 0 0 20 XYZ\ndof rx ry rz\nlimits (-10.5 20.25)(-30 40)(-50 60)\nend\n"
    "begin\nname hand\ndirection 1 0 0\nlength 1\naxis 0 0 20 XYZ\ndof rz\nend\n"
    ":hierarchy\nbegin\nroot arm\narm hand\nend\n";
constexpr const char* kAmc = ":FULLY-SPECIFIED\n:DEGREES\n1\nroot 1 2 3 4 5 6\narm 1 2 3\nhand 4\n2\nroot 2 2 3 4 5 6\narm 2 3 4\nhand 5\n";
constexpr const char* kBvh =
    "HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\nEnd Site\n{\n"
    "OFFSET 0 -5 0\n}\n}\nMOTION\nFrames: 2\nFrame Time: .0083333\n0 0 0 10 20 30\n4 5 6 11 21 31\n";

KQexAcclaimSource Source(const std::string& pText, const char* pName)
{
    return KQexAcclaimSource::Buffer(pText.data(), pText.size(), pName);
}

/// A scene with the sample's skeleton and motion.
struct KWalk
{
    KWalk()
    {
        const std::string lFolder = SamplesDir().string();
        EXPECT_TRUE(KQexImporterAcclaim::Import(mScene.get(), (lFolder + "/walker.asf").c_str(), (lFolder + "/walk.amc").c_str(),
                                                KQexImportAcclaimOptions(), mResult));
        mStack = mScene->GetEvaluator()->GetContext();
    }

    KScenePtr               mScene = MakeScene();
    KQexImportAcclaimResult mResult;
    KQexAnimStack*          mStack = nullptr;
};

/// The node positions of a walk in some frames, and the files of all formats, written with \p pThreads threads each.
std::string AllOutputs(const KWalk& pWalk, int pThreads)
{
    const std::vector<KQexNode*> lRoots = {pWalk.mResult.mRootNode};
    std::string                  lAll;
    KQexGlobalTransforms         lPose;
    for (long long lFrame = 0; lFrame < 20; ++lFrame)
    {
        EXPECT_TRUE(pWalk.mScene->GetEvaluator()->EvaluateGlobalTransforms(lRoots[0], FrameTime(lFrame), lPose));
        for (int i = 0; i < lPose.GetCount(); ++i)
        {
            lAll += std::to_string(lPose.GetTransform(i).GetT().Length()) + ' ';
        }
    }

    KQexSampling lSampling;
    EXPECT_TRUE(MakeSampling(lRoots, pWalk.mStack, KQexSamplingRequest(), lSampling));
    std::string         lText;
    KQexBvhWriteOptions lBvh;
    lBvh.mStack = pWalk.mStack;
    lBvh.mSampling = lSampling;
    lBvh.mThreads = pThreads;
    KQexFileBvh lFile;
    EXPECT_TRUE(lFile.OpenWriteBuffer(&lText) && lFile.Write(lRoots, lBvh) && lFile.Close());
    lAll += lText;

    KQexGltfWriteOptions lGltf;
    lGltf.mTakes = {{pWalk.mStack, lSampling}};
    lGltf.mThreads = pThreads;
    EXPECT_TRUE(KQexFileGltf().WriteBuffer(lText, lRoots, lGltf));
    lAll += lText;

    KQexExportAcclaimOptions lOptions;
    KQexExportAcclaimResult  lResult;
    std::string              lAmc;
    lOptions.mThreads = pThreads;
    EXPECT_TRUE(KQexExporterAcclaim::ExportBuffers(lRoots[0], lText, lAmc, lOptions, lResult));
    return lAll + lText + lAmc;
}

TEST(Threads, ScenesAreEvaluatedAndWrittenConcurrently)
{
    const std::string lSequential = AllOutputs(KWalk(), 1);
    ASSERT_GT(lSequential.size(), 100000U);
    std::string lOutputs[2];
    RunAtOnce(2,
              [&](int pThread)
              {
                  const KWalk lWalk;
                  lOutputs[pThread] = AllOutputs(lWalk, 3);
              });
    EXPECT_TRUE(lOutputs[0] == lSequential);
    EXPECT_TRUE(lOutputs[1] == lSequential);
}

TEST(Threads, ImportsAreSerialised)
{
    // Every import has its own filter settings, result and messages, in whatever order the threads run.
    const std::string lBad = std::string(kAmc) + "3\nroot 2 2 3 4 5 6\narm 2 nonsense 4\n";
    std::atomic<int>  lAsExpected{0};
    RunAtOnce(4,
              [&](int pThread)
              {
                  for (int i = 0; i < 10; ++i)
                  {
                      const KScenePtr          lScene = MakeScene();
                      KQexImportAcclaimOptions lOptions;
                      KQexImportAcclaimResult  lResult;
                      lOptions.mRotationFilter = pThread % 2 == 0 ? eROTATION_FILTER_GIMBAL : eROTATION_FILTER_UNROLL;
                      lOptions.mUseConstantKeyReducer = pThread % 2 == 0;
                      const bool lIsBad = (pThread + i) % 3 == 0;
                      const bool lOk = KQexImporterAcclaim::Import(lScene.get(), Source(kAsf, "a.asf"),
                                                                   {Source(lIsBad ? lBad : kAmc, "a.amc")}, lOptions, lResult);
                      const int  lNodes = lScene->GetRootNode()->GetChildCount(true);
                      lAsExpected += lOk != lIsBad && (lNodes == 0) == lIsBad && (lResult.CountMessages(true) > 0) == lIsBad;
                  }
              });
    EXPECT_EQ(lAsExpected, 40);
    EXPECT_EQ(KFCURVE_GetRotationFilterToApply(), 0);
    EXPECT_FALSE(KFCURVE_GetUseConstantKeyReducer());
}

TEST(Threads, CurveSettingsOfAThreadAreItsOwn)
{
    KFCURVE_SetRotationFilterToApply(1);
    {
        const KQexCurveSettings lOuter(2, true);
        {
            const KQexCurveSettings lInner(0, false);
            EXPECT_EQ(KFCURVE_GetRotationFilterToApply(), 0);
            EXPECT_FALSE(KFCURVE_GetUseConstantKeyReducer());
        }
        EXPECT_EQ(KFCURVE_GetRotationFilterToApply(), 2);
        EXPECT_TRUE(KFCURVE_GetUseConstantKeyReducer());
        std::thread(
            []
            {
                EXPECT_EQ(KFCURVE_GetRotationFilterToApply(), 1);
                EXPECT_FALSE(KFCURVE_GetUseConstantKeyReducer());
            })
            .join();
    }
    EXPECT_EQ(KFCURVE_GetRotationFilterToApply(), 1);
    KFCURVE_SetRotationFilterToApply(0);
}

TEST(Threads, ExportsShareTheImportersLock)
{
    const KWalk       lWalk;
    const std::string lSequential = AllOutputs(lWalk, 1);
    std::atomic<int>  lImports{0};
    std::string       lConcurrent;
    RunAtOnce(2,
              [&](int pThread)
              {
                  if (pThread == 0)
                  {
                      lConcurrent = AllOutputs(lWalk, 2);
                      return;
                  }
                  for (int i = 0; i < 20; ++i)
                  {
                      const KScenePtr         lScene = MakeScene();
                      KQexImportAcclaimResult lResult;
                      lImports += KQexImporterAcclaim::Import(lScene.get(), Source(kAsf, "a.asf"), {Source(kAmc, "a.amc")},
                                                              KQexImportAcclaimOptions(), lResult);
                  }
              });
    EXPECT_TRUE(lConcurrent == lSequential);
    EXPECT_EQ(lImports, 20);
}

TEST(Threads, OtherReadersNeedNoLock)
{
    const KWalk          lWalk;
    std::string          lGlb;
    KQexGltfWriteOptions lWrite;
    ASSERT_TRUE(KQexFileGltf().WriteBuffer(lGlb, {lWalk.mResult.mRootNode}, lWrite));
    std::atomic<int> lGood{0};
    RunAtOnce(3,
              [&](int)
              {
                  for (int i = 0; i < 5; ++i)
                  {
                      const KScenePtr    lScene = MakeScene();
                      KQexFileBvh        lBvh;
                      KQexBvhReadResult  lBvhResult;
                      KQexGltfReadResult lGltfResult;
                      lGood += lBvh.OpenReadBuffer(kBvh, std::string_view(kBvh).size()) &&
                               lBvh.Read(lScene.get(), KQexBvhReadOptions(), lBvhResult) && lBvhResult.mFrames == 2;
                      lGood += KQexFileGltf().ReadBuffer(lGlb.data(), lGlb.size(), lScene.get(), KQexGltfReadOptions(), lGltfResult) &&
                               lGltfResult.mRoots.size() == 1;
                  }
              });
    EXPECT_EQ(lGood, 30);
}

TEST(Threads, SettingsMayBeChangedConcurrently)
{
    const KQexAnimCurveKeyAllocatorFct lAllocator = KQexAnimCurveKey::GetAllocatorFct();
    RunAtOnce(4,
              [&](int pThread)
              {
                  for (int i = 0; i < 200; ++i)
                  {
                      KFCURVE_SetRotationFilterToApply(pThread % 3);
                      KFCURVE_SetUseConstantKeyReducer(pThread % 2 == 0);
                      EXPECT_TRUE(KFCURVE_GetRotationFilterToApply() >= 0 && KFCURVE_GetRotationFilterToApply() <= 2);
                      KQexAnimCurveKey::SetAllocatorFct(lAllocator);
                      EXPECT_EQ(KQexAnimCurveKey(FrameTime(i), 1.0F).GetValue(), 1.0F);
                  }
              });
    KFCURVE_SetRotationFilterToApply(0);
    KFCURVE_SetUseConstantKeyReducer(false);
}

TEST(Threads, ConcurrentOutputsToOnePathLeaveOneCompleteFile)
{
    const KTempDir    lFolder;
    const std::string lPath = lFolder / "out.txt";
    std::atomic<int>  lWritten{0};
    RunAtOnce(4,
              [&](int pThread)
              {
                  const std::string lText(100000, static_cast<char>('a' + pThread));
                  for (int i = 0; i < 5; ++i)
                  {
                      KOutputFile lFile;
                      lWritten += lFile.Open(lPath.c_str()) && lFile.Write(lText.data(), lText.size()) && lFile.Close();
                  }
              });
    EXPECT_EQ(lWritten, 20);
    const std::string lText = ReadFile(lPath);
    ASSERT_EQ(lText.size(), 100000U);
    EXPECT_EQ(lText.find_first_not_of(lText[0]), std::string::npos);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(lFolder.Path()), std::filesystem::directory_iterator()), 1);
}

TEST(Threads, OneClipIsSampledByMany)
{
    constexpr int      kThreads = 8;
    constexpr int      kTimes = 200;
    const KWalk        lWalk;
    KQexSampling       lSampling;
    KQexClip           lClip;
    std::vector<float> lSequential;
    ASSERT_TRUE(MakeSampling({lWalk.mResult.mRootNode}, lWalk.mStack, KQexSamplingRequest(), lSampling));
    ASSERT_TRUE(KQexClip::FromScene({lWalk.mResult.mRootNode}, lWalk.mStack, lSampling, KQexClipOptions(), lClip));
    // All read the same frames, between them, beyond both ends, and as steps and quantities.
    const auto lSample = [&lClip](std::vector<float>& pPlaces)
    {
        KQexPose                        lPose(static_cast<size_t>(lClip.GetJointCount()));
        std::vector<KQexWorldTransform> lTransforms(lPose.size());
        std::vector<double>             lPositions(lPose.size() * 3);
        KQexClip                        lMirrored;
        for (int i = 0; i < kTimes; ++i)
        {
            const double lTime = lClip.GetDuration() * (1.2 * i / kTimes - 0.1);
            EXPECT_TRUE(lClip.Sample(lTime, lPose, i % 2 == 0 ? KQexClipEnds::eHOLD : KQexClipEnds::eLOOP));
            EXPECT_TRUE(lClip.WorldTransforms(lPose, lTransforms));
            EXPECT_TRUE(KQexGetPositions(lClip, i % lClip.GetFrameCount(), 1, lPositions.data()));
            pPlaces.insert(pPlaces.end(), lTransforms.back().mData[3], lTransforms.back().mData[3] + 3);
            pPlaces.push_back(static_cast<float>(lPositions.back()));
        }
        EXPECT_TRUE(KQexClipMirror(lClip, KQexMirrorPairs(lClip.GetData()), lMirrored));
        EXPECT_TRUE(lMirrored.SampleFrame(0, lPose));
        pPlaces.push_back(lPose.back().mRotation[0]);
    };
    lSample(lSequential);
    std::vector<float> lPlaces[kThreads];
    RunAtOnce(kThreads, [&](int pThread) { lSample(lPlaces[pThread]); });
    for (const std::vector<float>& lEach : lPlaces)
    {
        EXPECT_EQ(lEach, lSequential);
    }
}

std::atomic<int> sReports{0};

TEST(Threads, AnAssertionIsReportedOnceForAllThreads)
{
    sReports = 0;
    const KAssertHandler lBefore = KAssertSetHandler([](const char*, const char*, unsigned long, const char*, bool*) { ++sReports; });
    bool                 lHide = false;
    RunAtOnce(4,
              [&](int)
              {
                  for (int i = 0; i < 100; ++i)
                  {
                      KAssertFailed("some/source", "Function", 12, "a==b", &lHide);
                  }
              });
    KAssertSetHandler(lBefore);
    EXPECT_EQ(sReports, 1);
    EXPECT_TRUE(lHide);
}

} // namespace
