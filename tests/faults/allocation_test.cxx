#include <tests/faults/failingallocator.h>

#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/motion/kqexfilebvh.h>

#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <functional>

// Every operation is run with allocation 1 failing, then 2, and so on until it succeeds: once failing that one alone, once that and
// all after it. What fails says so, leaks nothing and leaves the scene and existing files alone, and works at the next try.

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr const char* kAsf =
    ":version 1.10\n:name s\n:units\n length 0.45\n angle deg\n:root\n order TX TY TZ RX RY RZ\n axis XYZ\n"
    " position 0 0 0\n orientation 0 0 0\n:bonedata\n"
    "begin\nid 1\nname thigh\ndirection 0 -1 0\nlength 8\naxis 0 0 20 XYZ\ndof rx ry rz\nlimits (-160 20)\n(-70 70)\n(-60 70)\nend\n"
    "begin\nid 2\nname shin\ndirection 0 -1 0\nlength 7\naxis 0 0 20 XYZ\ndof rx l\nlimits (-10 170)\nend\n"
    "begin\nname ball\ndirection 0 0 1\nlength 1\naxis 0 0 0 XYZ\nend\n"
    ":hierarchy\nbegin\nroot thigh\nthigh shin\nshin ball\nend\n";
constexpr const char* kAmc =
    ":FULLY-SPECIFIED\n:DEGREES\n:ODD\n1\nroot 1 2 3 4 5 6\nthigh 1 2 3\nshin 4 5\n2\nroot 2 3 4 5 6 7\nthigh 2 3 4\nshin 5 6\n"
    "3\nroot 2 3 4 5 6 8\nstranger 1\nthigh 2 3 5\nshin 5 6\n";
constexpr const char* kBvh =
    "HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\nJOINT Leg\n{\n"
    "OFFSET 0 -10 0\nCHANNELS 3 Zrotation Yrotation Xrotation\nEnd Site\n{\nOFFSET 0 -5 0\n}\n}\n}\n"
    "MOTION\nFrames: 3\nFrame Time: .0083333\n0 0 0 10 20 30 1 2 3\n4 5 6 11 21 31 -1 -2 -3\n";

KQexAcclaimSource Source(const char* pText, const char* pName)
{
    return KQexAcclaimSource::Buffer(pText, std::string_view(pText).size(), pName);
}

/// What an operation works on, made anew for every try.
struct KStage
{
    KScenePtr                      mScene = MakeScene();
    std::vector<KQexNode*>         mRoots;
    std::string                    mFolder;
    std::string                    mBvh;
    std::string                    mAsf;
    std::string                    mAmc;
    KQexAcclaimSource              mSkeleton = Source(kAsf, "a.asf");
    std::vector<KQexAcclaimSource> mMotions = {Source(kAmc, "a.amc")};
};

struct KOperation
{
    const char*                         mName;
    bool                                mHasMotion; ///< The scene holds an imported motion before.
    std::function<bool(KStage&, bool&)> mRun;       ///< Says whether it succeeded; the flag: whether a failure was told.
};

bool ReadSkeleton(KStage&, bool& pTold)
{
    const KQexAsfSceneOwner lScene(QexSdkNew<KQexAsfScene>());
    KQexFileAcclaimAsf      lFile(false);
    const bool lOk = lScene && lFile.OpenReadBuffer(kAsf, std::string_view(kAsf).size()) && lFile.Read(lScene.get(), true, false, false);
    pTold = !lScene || lFile.GetErrorCount() > 0;
    return lOk;
}

bool ImportMotion(KStage& pStage, bool& pTold)
{
    KQexImportAcclaimOptions lOptions;
    KQexImportAcclaimResult  lResult;
    lOptions.mUseConstantKeyReducer = true;
    const bool lOk = KQexImporterAcclaim::Import(pStage.mScene.get(), pStage.mSkeleton, pStage.mMotions, lOptions, lResult);
    pTold = lResult.CountMessages(true) > 0;
    return lOk;
}

bool ReadBvh(KStage& pStage, bool& pTold)
{
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    const bool        lOk =
        lFile.OpenReadBuffer(kBvh, std::string_view(kBvh).size()) && lFile.Read(pStage.mScene.get(), KQexBvhReadOptions(), lResult);
    pTold = lFile.GetErrorCount() > 0;
    return lOk;
}

bool WriteBvh(KStage& pStage, bool& pTold)
{
    KQexFileBvh         lFile;
    KQexBvhWriteOptions lOptions;
    lOptions.mStack = pStage.mScene->GetAnimStack(0);
    lOptions.mThreads = 1;
    lOptions.mSampling.mStep = FrameTime(1);
    lOptions.mSampling.mCount = 3;
    const bool lOk = lFile.OpenWrite(pStage.mBvh.c_str()) && lFile.Write(pStage.mRoots, lOptions) && lFile.Close();
    if (!lOk)
    {
        lFile.Discard();
    }
    pTold = lFile.GetErrorCount() > 0;
    return lOk;
}

bool ExportAcclaim(KStage& pStage, bool& pTold)
{
    KQexExportAcclaimOptions lOptions;
    KQexExportAcclaimResult  lResult;
    lOptions.mThreads = 1;
    const bool lOk = KQexExporterAcclaim::Export(pStage.mRoots.front(), pStage.mAsf.c_str(), pStage.mAmc.c_str(), lOptions, lResult);
    pTold = !lResult.mMessages.empty();
    return lOk;
}

const KOperation kOperations[] = {{"ReadSkeleton", false, ReadSkeleton},
                                  {"ImportMotion", false, ImportMotion},
                                  {"ReadBvh", false, ReadBvh},
                                  {"WriteBvh", true, WriteBvh},
                                  {"ExportAcclaim", true, ExportAcclaim}};

class KAllocationFault : public testing::TestWithParam<KOperation>
{
protected:
    /// A scene ready for the operation, and files that it would replace.
    void Prepare(KStage& pStage) const
    {
        pStage.mFolder = mFolder.Path().string();
        pStage.mBvh = pStage.mFolder + "/out.bvh";
        pStage.mAsf = pStage.mFolder + "/out.asf";
        pStage.mAmc = pStage.mFolder + "/out.amc";
        for (const char* lName : {"/out.bvh", "/out.asf", "/out.amc"})
        {
            WriteFile(pStage.mFolder + lName, "old");
        }
        if (GetParam().mHasMotion)
        {
            KQexImportAcclaimResult lResult;
            ASSERT_TRUE(
                KQexImporterAcclaim::Import(pStage.mScene.get(), pStage.mSkeleton, pStage.mMotions, KQexImportAcclaimOptions(), lResult));
            pStage.mRoots = {lResult.mRootNode};
        }
    }

    void ExpectUntouched(const KStage& pStage, int pObjects, int pStacks, long pCall) const
    {
        EXPECT_EQ(pStage.mScene->GetObjectCount(), pObjects) << "allocation " << pCall;
        EXPECT_EQ(pStage.mScene->GetAnimStackCount(), pStacks) << "allocation " << pCall;
        int lFiles = 0;
        for (const auto& lEntry : std::filesystem::directory_iterator(pStage.mFolder))
        {
            ++lFiles;
            EXPECT_EQ(ReadFile(lEntry.path()), "old") << lEntry.path() << " allocation " << pCall;
        }
        EXPECT_EQ(lFiles, 3) << "allocation " << pCall;
    }

    /// Runs the operation with allocation \p pCall failing. False when it makes fewer allocations.
    bool Try(KFailingAllocator& pAllocator, long pCall, bool pOn) const
    {
        const long lLive = KFailingAllocator::GetLive();
        bool       lIsDone = false;
        {
            KStage lStage;
            Prepare(lStage);
            const int lObjects = lStage.mScene->GetObjectCount();
            const int lStacks = lStage.mScene->GetAnimStackCount();
            bool      lTold = false;
            pAllocator.Arm(pCall, pOn);
            const bool lOk = GetParam().mRun(lStage, lTold);
            lIsDone = pAllocator.Disarm() < pCall;
            EXPECT_TRUE(lOk || !lIsDone) << "nothing failed";
            if (!lOk)
            {
                EXPECT_TRUE(lTold || pOn) << "allocation " << pCall << " failed in silence";
                ExpectUntouched(lStage, lObjects, lStacks, pCall);
                EXPECT_TRUE(GetParam().mRun(lStage, lTold)) << "the next try, after allocation " << pCall;
            }
        }
        EXPECT_EQ(KFailingAllocator::GetLive(), lLive) << "allocation " << pCall << " leaks";
        return !lIsDone;
    }

    KTempDir mFolder;
};

TEST_P(KAllocationFault, LosesNothing)
{
    KFailingAllocator lAllocator;
    Try(lAllocator, 1000000, false); // What the standard library keeps for good is allocated now.
    for (const bool lOn : {false, true})
    {
        long lCall = 1;
        while (lCall < 100000 && !HasFailure() && Try(lAllocator, lCall, lOn))
        {
            ++lCall;
        }
        RecordProperty(lOn ? "allocations_from_on" : "allocations_once", static_cast<int>(lCall - 1));
        EXPECT_GT(lCall, 10);
        std::printf("%s: each of %ld allocations %s\n", GetParam().mName, lCall - 1, lOn ? "and all after it" : "alone");
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, KAllocationFault, testing::ValuesIn(kOperations),
                         [](const testing::TestParamInfo<KOperation>& pInfo) { return std::string(pInfo.param.mName); });

} // namespace
