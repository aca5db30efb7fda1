#include <kbaselib/kbase/knumber.h>

#include <kbaselib/kbase/koutputfile.h>
#include <kbaselib/kbase/kstring.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <tests/faults/faultstage.h>
#include <tests/faults/foreachallocation.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

// Runs operations that build or return strings, lists and tables with each allocation failing, alone and with all later ones. None may
// throw or leak, and the result is complete or shows that memory ran out.

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr int        kFrames = 3;
constexpr const char kLong[] = "space:a name that is long enough to need memory of its own";
constexpr const char kLongBare[] = "a name that is long enough to need memory of its own";

static_assert(std::is_nothrow_default_constructible_v<KString> && std::is_nothrow_copy_constructible_v<KString> &&
              std::is_nothrow_move_constructible_v<KString> && std::is_nothrow_copy_assignable_v<KString> &&
              std::is_nothrow_constructible_v<KString, const char*>);
static_assert(noexcept(std::declval<const KQexObject&>().GetNameWithoutNameSpacePrefix()));
static_assert(noexcept(KQexAcclaimSource::File("")) && noexcept(KQexAcclaimSource::Buffer("", 0, "")));
static_assert(noexcept(std::declval<KOutputFile&>().GetReason()));

/// What an operation returned.
enum class KOutcome
{
    eCOMPLETE, ///< All of the result is there.
    eFAILED,   ///< It says that it failed.
    eWRONG     ///< Something is missing, and nothing says so.
};

KOutcome Judge(bool pSaysOk, bool pIsComplete)
{
    return !pSaysOk ? KOutcome::eFAILED : pIsComplete ? KOutcome::eCOMPLETE : KOutcome::eWRONG;
}

struct KNoThrowCase
{
    const char* mName;
    KOutcome (*mRun)(KStage& pStage);
};

std::ostream& operator<<(std::ostream& pOut, const KNoThrowCase& pCase)
{
    return pOut << pCase.mName;
}

/// The path of an input, made while no allocation fails.
std::string In(const KStage& pStage, const char* pName)
{
    const KUnfailingMemory lUnfailing;
    return pStage.mFiles.In(pName);
}

KOutcome Strings(KStage&)
{
    const KString lName(kLong);
    KString       lSum = lName + "!";
    lSum += lName;
    const KString lCopy = lSum;
    lSum = lCopy;
    const bool lIsWhole = lSum.GetLength() == 2 * lName.GetLength() + 1 && lSum == lCopy && lName == kLong;
    return Judge(!lName.HasFailed() && !lSum.HasFailed() && !lCopy.HasFailed(), lIsWhole);
}

KOutcome BareName(KStage& pStage)
{
    pStage.mRoots.front()->SetName(kLong);
    const KString lName = pStage.mRoots.front()->GetNameWithoutNameSpacePrefix();
    return Judge(!lName.HasFailed() && std::strcmp(pStage.mRoots.front()->GetName(), kLong) == 0, lName == kLongBare);
}

KOutcome Numbers(KStage&)
{
    std::string lText;
    const bool  lOk = KNumberAppendFixed(lText, 12345678.125, 3) && KNumberAppendShortest(lText, -1.0 / 3.0);
    return Judge(lOk, lText == "12345678.125-0.3333333333333333");
}

KOutcome Reason(KStage&)
{
    KOutputFile lFile;
    if (lFile.Open("/no folder of this name/file"))
    {
        return KOutcome::eWRONG;
    }
    const std::string lReason = lFile.GetReason();
    return Judge(!lReason.empty() && lFile.GetError() == ENOENT, lReason == "No such file or directory");
}

KOutcome Sources(KStage&)
{
    const KQexAcclaimSource lFile = KQexAcclaimSource::File(kLong);
    const KQexAcclaimSource lBuffer = KQexAcclaimSource::Buffer(kLong, 5, kLong);
    const bool              lOk = !lFile.mPath.empty() && !lBuffer.mPath.empty();
    return Judge(lOk, lFile.mPath == kLong && lBuffer.mPath == kLong && lBuffer.mData == kLong && lBuffer.mSize == 5);
}

KOutcome ImportPaths(KStage& pStage)
{
    const std::string       lAsf = In(pStage, "a.asf");
    const std::string       lAmc = In(pStage, "a.amc");
    KQexImportAcclaimResult lResult;
    const bool lOk = KQexImporterAcclaim::Import(pStage.mScene.get(), lAsf.c_str(), lAmc.c_str(), KQexImportAcclaimOptions(), lResult);
    return Judge(lOk, lResult.mTakes.size() == 1 && lResult.mTakes[0].mStack != nullptr && lResult.mTakes[0].mInfo.mFrameCount == kFrames);
}

KOutcome PeekHeader(KStage&)
{
    constexpr char kHeader[] =
        ":ASF-FILE a name that is long enough to need memory of its own.asf\n:ASF-PATH c:\\a folder's long name\n1\n";
    KQexAmcHeader lHeader;
    const bool    lOk = KQexFileAcclaimAmc::PeekHeaderBuffer(kHeader, sizeof kHeader - 1, lHeader);
    return Judge(lOk, lHeader.mAsfFile == std::string_view(kHeader).substr(10, 56) && lHeader.mAsfPath == "c:\\a folder's long name");
}

KOutcome PeekHeaderFile(KStage& pStage)
{
    const std::string lPath = In(pStage, "a.amc");
    KQexAmcHeader     lHeader;
    std::string       lReason;
    const bool        lOk = KQexFileAcclaimAmc::PeekHeader(lPath.c_str(), lHeader, lReason);
    return Judge(lOk || lReason.empty(), lHeader.mAngle == eAMC_ANGLE_DEGREES);
}

KOutcome BoneDofs(KStage& pStage)
{
    const KQexBoneDofs lDofs = KQexExporterAcclaim::GetBoneDofs(pStage.mSkeleton.get());
    if (lDofs.empty())
    {
        return KOutcome::eFAILED;
    }
    const KUnfailingMemory lUnfailing;
    return Judge(true, lDofs.size() == 4 && lDofs.at("root").size() == 6 && lDofs.at("thigh").size() == 3);
}

KOutcome ExportToMemory(KStage& pStage)
{
    KQexExportAcclaimOptions lOptions;
    KQexExportAcclaimResult  lResult;
    std::string              lAsf;
    std::string              lAmc;
    lOptions.mThreads = 1;
    const bool lOk = KQexExporterAcclaim::ExportBuffers(pStage.mRoots.front(), lAsf, lAmc, lOptions, lResult) &&
                     KQexExporterAcclaim::ExportSkeleton(pStage.mRoots.front(), lAsf, lOptions, lResult);
    return Judge(lOk, lAsf.find("shin ball") != std::string::npos && lAmc.find("\n3\nroot") != std::string::npos);
}

KOutcome ExportOfNothing(KStage&)
{
    KQexExportAcclaimResult lResult;
    const bool              lOk = KQexExporterAcclaim::Export(nullptr, nullptr, nullptr, KQexExportAcclaimOptions(), lResult);
    return Judge(lOk, false);
}

KOutcome GltfOfNothing(KStage& pStage)
{
    std::string lOut;
    return Judge(pStage.mGltf.WriteBuffer(lOut, std::vector<KQexNode*>(), KQexGltfWriteOptions()), false);
}

KOutcome GltfInMemory(KStage& pStage)
{
    std::string          lOut;
    KQexGltfWriteOptions lWrite;
    KQexGltfReadResult   lRead;
    lWrite.mThreads = 1;
    const bool lOk = pStage.mGltf.WriteBuffer(lOut, pStage.mRoots, lWrite) &&
                     pStage.mGltf.ReadBuffer(lOut.data(), lOut.size(), pStage.mScene.get(), KQexGltfReadOptions(), lRead);
    return Judge(lOk, lRead.mRoots.size() == 1 && lRead.mRoots[0]->GetChildCount(true) == pStage.mRoots[0]->GetChildCount(true));
}

KOutcome SkeletonToNodes(KStage& pStage)
{
    KQexNode* lNode = pStage.mSkeleton->ASFToQEX(pStage.mScene.get(), "take", true, false, false);
    return Judge(lNode != nullptr &&
                     pStage.mSkeleton->MergeASFToQEX(pStage.mScene.get(), pStage.mRoots.front(), "take", true, false, false),
                 lNode != nullptr && lNode->GetChildCount(true) == 4);
}

KOutcome NodesToSkeleton(KStage& pStage)
{
    KQexAsfScene lSkeleton;
    const bool   lOk = lSkeleton.QEXToASF(pStage.mRoots.front(), true, KQexVector4(1, 1, 1, 1), true) &&
                     pStage.mSkeleton->MergeQEXToASF(pStage.mRoots.front());
    return Judge(lOk, lSkeleton.mRoot != nullptr && lSkeleton.mRoot->Find("shin") != nullptr);
}

KOutcome Evaluation(KStage& pStage)
{
    KQexGlobalTransforms lTransforms;
    const bool           lOk = pStage.mScene->GetEvaluator()->EvaluateGlobalTransforms(pStage.mRoots.front(), FrameTime(1), lTransforms);
    return Judge(lOk, lTransforms.GetCount() == pStage.mRoots.front()->GetChildCount(true) + 1);
}

KOutcome Takes(KStage& pStage)
{
    KQexAnimStack*     lStack = pStage.mScene->CreateAnimStack(kLong);
    KQexAnimCurveNode* lCurveNode = pStage.mRoots.front()->mLocalRotation.GetCurveNode(true, kLong);
    KQexAnimCurve*     lCurve = KQexAnimCurve::Create(pStage.mScene.get(), kLong);
    bool               lOk = lStack != nullptr && lCurveNode != nullptr && lCurve != nullptr;
    for (int i = 0; lOk && i < 40; ++i)
    {
        lOk = lCurve->AppendSample(FrameTime(i * i), static_cast<float>(i));
    }
    lOk = lOk && lCurveNode->ConnectToChannel(lCurve, 0, true);
    return Judge(lOk, lOk && lCurveNode->GetCurve(0)->GetKeyCount() == 40);
}

class KNoThrow : public testing::TestWithParam<KNoThrowCase>
{
protected:
    KNoThrow() : mFiles(kFrames) {}

    /// Runs the operation with allocation \p pCall failing. False when it makes fewer allocations.
    bool Try(KFailingAllocator& pAllocator, long pCall, bool pOnwards) const
    {
        KStage lStage(mFiles);
        lStage.ImportMotion();
        KQexImportAcclaimResult lResult;
        lStage.mSkeleton = KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::File(mFiles.In("a.asf")), {}, lResult);
        KOutcome lOutcome = KOutcome::eWRONG;
        pAllocator.Arm(pCall, pOnwards);
        EXPECT_NO_THROW(lOutcome = GetParam().mRun(lStage));
        const bool lFails = pAllocator.Disarm() >= pCall;
        EXPECT_NE(lOutcome, KOutcome::eWRONG) << "nothing says that the result is not complete";
        return lFails;
    }

    KFaultFiles mFiles;
};

TEST_P(KNoThrow, NeverThrowsAndNeverHidesALoss)
{
    ForEachAllocation([this](KFailingAllocator& pAllocator, long pCall, bool pOnwards) { return Try(pAllocator, pCall, pOnwards); }, 1);
}

INSTANTIATE_TEST_SUITE_P(Operations, KNoThrow,
                         testing::Values(KNoThrowCase{"Strings", Strings}, KNoThrowCase{"BareName", BareName},
                                         KNoThrowCase{"Numbers", Numbers}, KNoThrowCase{"Reason", Reason}, KNoThrowCase{"Sources", Sources},
                                         KNoThrowCase{"ImportPaths", ImportPaths}, KNoThrowCase{"PeekHeader", PeekHeader},
                                         KNoThrowCase{"PeekHeaderFile", PeekHeaderFile}, KNoThrowCase{"BoneDofs", BoneDofs},
                                         KNoThrowCase{"ExportToMemory", ExportToMemory}, KNoThrowCase{"ExportOfNothing", ExportOfNothing},
                                         KNoThrowCase{"GltfOfNothing", GltfOfNothing}, KNoThrowCase{"GltfInMemory", GltfInMemory},
                                         KNoThrowCase{"SkeletonToNodes", SkeletonToNodes}, KNoThrowCase{"NodesToSkeleton", NodesToSkeleton},
                                         KNoThrowCase{"Evaluation", Evaluation}, KNoThrowCase{"Takes", Takes}),
                         [](const testing::TestParamInfo<KNoThrowCase>& pInfo) { return std::string(pInfo.param.mName); });

} // namespace
