#include <qexfigure/output/kqexfigurewrite.h>

#include <tests/faults/foreachallocation.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <map>

// A figure is made of a clip, and written to several files, with each allocation failing, alone and with all later ones: the figure is
// complete or empty, the files are all new or all old, nothing throws and nothing leaks.

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr int kSmallFrames = 3;

/// A root, an arm with one degree of freedom that has values, and a leg, with names that need memory of their own.
KQexClip SmallClip()
{
    KQexClip     lClip;
    KQexClipData lData;
    lData.mNames = {"a long name of the root", "a long name of the arm", "a long name of the leg"};
    lData.mParents = {-1, 0, 0};
    lData.mRest.resize(3);
    lData.mRest[1].mTranslation[0] = lData.mRest[2].mTranslation[1] = 10.0F;
    lData.mSampling = KQexSampling{KTime(0), KTime(KTime::kTicksPerSecond / 30), kSmallFrames};
    for (int i = 0; i < 3 * kSmallFrames; ++i)
    {
        lData.mRotations.insert(lData.mRotations.end(), {0.6F, 0.8F, 0.0F, 0.0F});
    }
    lData.mMovingJoints = {0};
    lData.mTranslations = {0, 0, 0, 1, 2, 3, 4, 5, 6};
    lData.mDofs = {KQexClipDof{1, {"rx", true, true, -10.0, 10.0}}};
    lData.mDofValues.assign(kSmallFrames, 20.0F);
    EXPECT_TRUE(KQexClip::FromArrays(std::move(lData), lClip));
    return lClip;
}

TEST(FigureFaults, AFigureOfAClipIsCompleteOrEmpty)
{
    const KQexClip lClip = SmallClip();
    const auto     lTry = [&](KFailingAllocator& pAllocator, long pCall, bool pAndLater)
    {
        KQexFigure        lFigure;
        KQexFigureReport  lReport;
        const std::string lName = "a long name of the take";
        pAllocator.Arm(pCall, pAndLater);
        const bool lOk = lFigure.Assign(lClip, lName, lReport);
        const bool lIsDone = pAllocator.Disarm() < pCall;
        EXPECT_TRUE(lOk || !lIsDone);
        EXPECT_EQ(lReport.IsOutOfMemory(), !lOk);
        EXPECT_EQ(lFigure.GetScene() != nullptr, lOk);
        EXPECT_EQ(lFigure.GetJoints().size(), lOk ? 3u : 0u);
        EXPECT_EQ(lFigure.GetTakes().size(), lOk ? 1u : 0u);
        KQexFigureReport          lRetry;
        std::vector<KQexDofTrack> lTracks;
        EXPECT_TRUE(lOk || lFigure.Assign(lClip, lName, lRetry)) << "retry";
        EXPECT_TRUE(lFigure.GetDofTracks(lFigure.GetTakes().front(), lTracks));
        EXPECT_EQ(lTracks.size(), 1u);
        EXPECT_EQ(lFigure.GetBoneDofs()->size(), 3u);
        return !lIsDone;
    };
    ForEachAllocation(lTry, 10);
}

/// The files of a run, in a folder of its own.
class KFigureFiles
{
public:
    explicit KFigureFiles(const std::vector<const char*>& pNames)
    {
        for (const char* lName : pNames)
        {
            mOutputs.emplace_back();
            mOutputs.back().mPath = (mFolder / lName).string();
            EXPECT_TRUE(KQexOutputFormatOf(lName, mOutputs.back().mFormat));
        }
        Reset();
    }

    const std::vector<KQexFigureOutput>& GetOutputs() const { return mOutputs; }

    void Reset() const
    {
        for (const KQexFigureOutput& lOutput : mOutputs)
        {
            WriteFile(lOutput.mPath, "old");
        }
    }

    /// All files of the folder, temporary ones too.
    std::map<std::string, std::string> Read() const
    {
        std::map<std::string, std::string> lFiles;
        for (const auto& lEntry : std::filesystem::directory_iterator(mFolder.Path()))
        {
            lFiles[lEntry.path().filename().string()] = ReadFile(lEntry.path());
        }
        return lFiles;
    }

private:
    KTempDir                      mFolder;
    std::vector<KQexFigureOutput> mOutputs;
};

void ExpectAllOrNone(const std::vector<const char*>& pNames, bool pZUp)
{
    const KQexClip         lClip = SmallClip();
    const KFigureFiles     lFiles(pNames);
    KQexFigureWriteOptions lOptions;
    lOptions.mThreads = 1;
    lOptions.mZUp = pZUp;
    const std::map<std::string, std::string> lOld = lFiles.Read();
    std::map<std::string, std::string>       lNew;
    const auto                               lTry = [&](KFailingAllocator& pAllocator, long pCall, bool pAndLater)
    {
        KQexFigure       lFigure;
        KQexFigureReport lReport;
        EXPECT_TRUE(lFigure.Assign(lClip, "take", lReport));
        pAllocator.Arm(pCall, pAndLater);
        const bool lOk = KQexWriteFigure(lFigure, lFiles.GetOutputs(), lOptions, lReport);
        const bool lIsDone = pAllocator.Disarm() < pCall;
        EXPECT_TRUE(lOk || !lIsDone);
        EXPECT_EQ(lReport.GetStatus(), lOk ? eFIGURE_OK : eFIGURE_SYSTEM);
        EXPECT_TRUE(lOk || lReport.IsOutOfMemory() || !lReport.GetMessages().empty()) << "failed without an error";
        const std::map<std::string, std::string> lResult = lFiles.Read();
        lNew = lNew.empty() ? lResult : lNew; // Of the first run, in which nothing fails.
        EXPECT_TRUE(lResult == (lOk ? lNew : lOld));
        lFiles.Reset();
        return !lIsDone;
    };
    ForEachAllocation(lTry, 10);
}

TEST(FigureFaults, AllFilesAreNewOrOld)
{
    ExpectAllOrNone({"a.bvh", "a.npz", "a.csv"}, false);
}

TEST(FigureFaults, AllFilesOfASkeletonAreNewOrOld)
{
    ExpectAllOrNone({"a.asf", "a.amc", "a.glb"}, true);
}

} // namespace
