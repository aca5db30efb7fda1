#include <tests/faults/faultstage.h>

#include <apps/asf/asfprogram.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <tests/faults/failingallocator.h>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace qextest
{

using namespace qexsdk;
namespace fs = std::filesystem;

namespace
{

constexpr const char* kOutputs[] = {"a.asf", "a.amc", "a.bvh", "a.glb", "a.gltf", "a.bin", "a.npz"};

constexpr const char* kAsf =
    ":version 1.10\n:name s\n:units\n length 0.45\n angle deg\n:root\n order TX TY TZ RX RY RZ\n axis XYZ\n"
    " position 0 0 0\n orientation 0 0 0\n:bonedata\n"
    "begin\nid 1\nname thigh\ndirection 0 -1 0\nlength 8\naxis 0 0 20 XYZ\ndof rx ry rz\nlimits (-160 20)\n(-70 70)\n(-60 70)\nend\n"
    "begin\nid 2\nname shin\ndirection 0 -1 0\nlength 7\naxis 0 0 20 XYZ\ndof rx l\nlimits (-10 170)\nend\n"
    "begin\nname ball\ndirection 0 0 1\nlength 1\naxis 0 0 0 XYZ\nend\n"
    ":hierarchy\nbegin\nroot thigh\nthigh shin\nshin ball\nend\n";

/// A motion that the key reducer cannot shorten; its third frame has an unknown bone.
std::string MakeAmc(int pFrames)
{
    std::string lText = ":FULLY-SPECIFIED\n:DEGREES\n:ODD\n";
    for (int i = 1; i <= pFrames; ++i)
    {
        const auto lAngle = [i](int pPeriod)
        {
            return " " + std::to_string(i * i % pPeriod);
        };
        lText += std::to_string(i) + "\nroot 1 2 " + std::to_string(i % 100) + lAngle(31) + lAngle(29) + lAngle(27) + "\n";
        lText += i == 3 ? "stranger 1\n" : "";
        lText += "thigh" + lAngle(37) + lAngle(41) + lAngle(43) + "\nshin" + lAngle(47) + " 5\n";
    }
    return lText;
}

/// Redirects standard error to a file while it exists. Allocates nothing.
class KErrorCatcher
{
public:
    explicit KErrorCatcher(const std::string& pPath) : mPath(pPath), mSaved(::dup(STDERR_FILENO))
    {
        const int lFile = ::open(mPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        ::dup2(lFile, STDERR_FILENO);
        ::close(lFile);
    }
    ~KErrorCatcher()
    {
        ::dup2(mSaved, STDERR_FILENO);
        ::close(mSaved);
    }
    KErrorCatcher(const KErrorCatcher&) = delete;
    KErrorCatcher& operator=(const KErrorCatcher&) = delete;

    /// Whether nothing was printed.
    bool IsEmpty() const { return ::lseek(STDERR_FILENO, 0, SEEK_END) == 0; }

private:
    const std::string& mPath;
    int                mSaved;
};

/// Runs \p pMake, which prepares what an operation needs, while no allocation fails.
template <typename TMake>
auto MakeUnfailing(const TMake& pMake)
{
    const KUnfailingMemory lUnfailing;
    return pMake();
}

/// Records the outcome in the stage and, on failure, the error texts that \p pText returns.
template <typename TText>
bool Record(KStage& pStage, bool pOk, bool pHasError, const TText& pText)
{
    const KUnfailingMemory lUnfailing;
    pStage.mHasError = pHasError;
    pStage.mErrors = !pOk && pHasError ? pText() : std::string();
    return pOk;
}

std::string ErrorsOf(const std::vector<KQexTextMessage>& pMessages)
{
    std::string lText;
    for (const KQexTextMessage& lMessage : pMessages)
    {
        lText += lMessage.mSeverity == KQexTextMessage::eERROR ? lMessage.mText + "\n" : "";
    }
    return lText;
}

std::string ErrorsOf(const std::vector<KQexImportMessage>& pMessages)
{
    std::string lText;
    for (const KQexImportMessage& lMessage : pMessages)
    {
        lText += lMessage.mPath + ": " + ErrorsOf(std::vector<KQexTextMessage>{lMessage.mMessage});
    }
    return lText;
}

bool RecordFile(KStage& pStage, bool pOk, const KQexTextFile& pFile)
{
    return Record(pStage, pOk, pFile.GetErrorCount() > 0, [&pFile] { return ErrorsOf(pFile.GetMessages()); });
}

bool RecordGltf(KStage& pStage, bool pOk)
{
    return Record(pStage, pOk, !pStage.mGltf.GetMessages().empty(), [&pStage] { return ErrorsOf(pStage.mGltf.GetMessages()); });
}

/// All frames of the first take.
KQexSampling AllFrames(const KStage& pStage)
{
    KQexSampling lSampling;
    MakeSampling(pStage.mRoots, pStage.mScene->GetAnimStack(0), {}, lSampling);
    return lSampling;
}

bool ReadAsf(KStage& pStage)
{
    pStage.mSkeleton.reset(QexSdkNew<KQexAsfScene>());
    if (!pStage.mSkeleton)
    {
        return Record(pStage, false, true, [] { return std::string("Out of memory"); });
    }
    const std::string lPath = MakeUnfailing([&] { return pStage.mFiles.In("a.asf"); });
    const bool        lOk = pStage.mAsf.OpenRead(lPath.c_str()) && pStage.mAsf.Read(pStage.mSkeleton.get(), true, false, false);
    RecordFile(pStage, lOk, pStage.mAsf);
    pStage.mAsf.Close();
    return lOk;
}

/// Hashes the numbers and values of all frames.
class KFrameHash : public KQexAmcVisitor
{
public:
    bool Frame(const KQexAmcFrame& pFrame) override
    {
        mHash = mHash * 3 + static_cast<unsigned long long>(pFrame.mNumber);
        for (const int lBone : *pFrame.mPresent)
        {
            for (const double lValue : (*pFrame.mBones)[static_cast<size_t>(lBone)].mValues)
            {
                mHash = mHash * 5 + static_cast<unsigned long long>(static_cast<long long>(lValue * 1000));
            }
        }
        return true;
    }

    unsigned long long mHash = 0;
};

bool ReadAmc(KStage& pStage)
{
    if (!ReadAsf(pStage))
    {
        return false;
    }
    KFrameHash        lHash;
    const std::string lPath = MakeUnfailing([&] { return pStage.mFiles.In("a.amc"); });
    const bool lOk = pStage.mAmc.OpenRead(lPath.c_str()) && pStage.mAmc.ReadFrames(pStage.mSkeleton.get(), KQexAmcReadOptions(), lHash);
    RecordFile(pStage, lOk, pStage.mAmc);
    pStage.mAmc.Close();
    pStage.mFrameHash = MakeUnfailing([&] { return lOk ? std::to_string(lHash.mHash) : std::string(); });
    return lOk;
}

/// Imports the skeleton with its motion.
bool RunImport(KStage& pStage, const KQexImportAcclaimOptions& pOptions)
{
    KQexImportAcclaimResult lResult;
    const auto              lSkeleton = MakeUnfailing([&] { return KQexAcclaimSource::File(pStage.mFiles.In("a.asf")); });
    const auto              lMotions = MakeUnfailing([&] { return std::vector{KQexAcclaimSource::File(pStage.mFiles.In("a.amc"))}; });
    const bool              lOk = KQexImporterAcclaim::Import(pStage.mScene.get(), lSkeleton, lMotions, pOptions, lResult);
    return Record(pStage, lOk, lResult.CountMessages(true) > 0, [&lResult] { return ErrorsOf(lResult.mMessages); });
}

bool Import(KStage& pStage)
{
    KQexImportAcclaimOptions lOptions;
    lOptions.mUseConstantKeyReducer = true;
    return RunImport(pStage, lOptions);
}

/// Imports the motion again, as another take of the existing nodes.
bool Merge(KStage& pStage)
{
    KQexImportAcclaimOptions lOptions;
    lOptions.mMergeRoot = pStage.mScene->GetRootNode();
    return RunImport(pStage, lOptions);
}

/// The same with a skeleton read beforehand.
bool ImportMotion(KStage& pStage)
{
    KQexImportAcclaimOptions lOptions;
    KQexImportAcclaimResult  lResult;
    const auto               lSource = MakeUnfailing([&] { return KQexAcclaimSource::File(pStage.mFiles.In("a.asf")); });
    const auto               lMotions = MakeUnfailing([&] { return std::vector{KQexAcclaimSource::File(pStage.mFiles.In("a.amc"))}; });
    const KQexAsfSceneOwner  lSkeleton = KQexImporterAcclaim::ReadSkeleton(lSource, lOptions, lResult);
    const bool lOk = lSkeleton && KQexImporterAcclaim::ImportMotion(pStage.mScene.get(), lSkeleton.get(), lResult.mSkeletonNotes, lMotions,
                                                                    lOptions, lResult);
    return Record(pStage, lOk, lResult.CountMessages(true) > 0, [&lResult] { return ErrorsOf(lResult.mMessages); });
}

bool ReadBvh(KStage& pStage)
{
    KQexBvhReadResult lResult;
    const std::string lPath = MakeUnfailing([&] { return pStage.mFiles.In("a.bvh"); });
    const bool        lOk = pStage.mBvh.OpenRead(lPath.c_str()) && pStage.mBvh.Read(pStage.mScene.get(), KQexBvhReadOptions(), lResult);
    RecordFile(pStage, lOk, pStage.mBvh);
    pStage.mBvh.Close();
    return lOk;
}

bool ReadGltfFile(KStage& pStage, const char* pName)
{
    KQexGltfReadResult lResult;
    const std::string  lPath = MakeUnfailing([&] { return pStage.mFiles.In(pName); });
    return RecordGltf(pStage, pStage.mGltf.Read(lPath, pStage.mScene.get(), KQexGltfReadOptions(), lResult));
}

bool ReadGlb(KStage& pStage)
{
    return ReadGltfFile(pStage, "a.glb");
}

bool ReadGltf(KStage& pStage)
{
    return ReadGltfFile(pStage, "a.gltf");
}

bool WriteBvh(KStage& pStage)
{
    KQexBvhWriteOptions lOptions;
    lOptions.mStack = pStage.mScene->GetAnimStack(0);
    lOptions.mThreads = 1;
    lOptions.mSampling = MakeUnfailing([&] { return AllFrames(pStage); });
    const std::string lPath = MakeUnfailing([&] { return pStage.mFiles.Out("a.bvh"); });
    const bool        lOk = pStage.mBvh.OpenWrite(lPath.c_str()) && pStage.mBvh.Write(pStage.mRoots, lOptions) && pStage.mBvh.Close();
    if (!lOk)
    {
        pStage.mBvh.Discard();
    }
    return RecordFile(pStage, lOk, pStage.mBvh);
}

bool WriteGltfFile(KStage& pStage, const char* pName)
{
    KQexGltfWriteOptions lOptions;
    lOptions.mThreads = 1;
    lOptions.mTakes = MakeUnfailing([&] { return std::vector{KQexGltfTake{pStage.mScene->GetAnimStack(0), AllFrames(pStage)}}; });
    const std::string lPath = MakeUnfailing([&] { return pStage.mFiles.Out(pName); });
    return RecordGltf(pStage, pStage.mGltf.Write(lPath, pStage.mRoots, lOptions));
}

bool WriteGlb(KStage& pStage)
{
    return WriteGltfFile(pStage, "a.glb");
}

bool WriteGltf(KStage& pStage)
{
    return WriteGltfFile(pStage, "a.gltf");
}

bool ExportAcclaim(KStage& pStage)
{
    KQexExportAcclaimOptions lOptions;
    KQexExportAcclaimResult  lResult;
    lOptions.mThreads = 1;
    const std::string lAsf = MakeUnfailing([&] { return pStage.mFiles.Out("a.asf"); });
    const std::string lAmc = MakeUnfailing([&] { return pStage.mFiles.Out("a.amc"); });
    const bool        lOk = KQexExporterAcclaim::Export(pStage.mRoots.front(), lAsf.c_str(), lAmc.c_str(), lOptions, lResult);
    return Record(pStage, lOk, !lResult.mMessages.empty(), [&lResult] { return ErrorsOf(lResult.mMessages); });
}

/// Writes the motion of an existing skeleton.
bool WriteAmc(KStage& pStage)
{
    KQexExportAcclaimOptions lOptions;
    KQexExportAcclaimResult  lResult;
    lOptions.mThreads = 1;
    const std::string lAmc = MakeUnfailing([&] { return pStage.mFiles.Out("a.amc"); });
    if (!ReadAsf(pStage))
    {
        return false;
    }
    const bool lOk = KQexExporterAcclaim::ExportMotion(pStage.mRoots.front(), pStage.mSkeleton.get(), lAmc.c_str(), lOptions, lResult);
    return Record(pStage, lOk, !lResult.mMessages.empty(), [&lResult] { return ErrorsOf(lResult.mMessages); });
}

/// Runs `asf convert` in this process, from \p pInputs to \p pOutputs.
bool Convert(KStage& pStage, std::initializer_list<const char*> pInputs, std::initializer_list<const char*> pOutputs)
{
    std::vector<std::string> lArguments;
    std::vector<char*>       lArgv;
    const std::string        lErrorPath = MakeUnfailing([&] { return pStage.mFiles.In("stderr"); });
    {
        const KUnfailingMemory lUnfailing;
        lArguments = {"asf", "convert", "--quiet", "--threads", "1"};
        for (const char* lInput : pInputs)
        {
            lArguments.push_back(pStage.mFiles.In(lInput));
        }
        for (const char* lOutput : pOutputs)
        {
            lArguments.insert(lArguments.end(), {"-o", pStage.mFiles.Out(lOutput)});
        }
        for (std::string& lArgument : lArguments)
        {
            lArgv.push_back(lArgument.data());
        }
    }
    int  lExit = 0;
    bool lHasError = false;
    {
        const KErrorCatcher lCatcher(lErrorPath);
        lExit = asfapp::RunProgram(static_cast<int>(lArgv.size()), lArgv.data());
        lHasError = !lCatcher.IsEmpty();
    }
    return Record(pStage, lExit == 0, lHasError, [&lErrorPath] { return ReadFile(lErrorPath); });
}

bool ConvertToBvhAndGlb(KStage& pStage)
{
    return Convert(pStage, {"a.asf", "a.amc"}, {"a.bvh", "a.glb"});
}

bool ConvertToNpz(KStage& pStage)
{
    return Convert(pStage, {"a.asf", "a.amc"}, {"a.npz"});
}

bool ConvertToGltf(KStage& pStage)
{
    return Convert(pStage, {"a.glb"}, {"a.gltf"});
}

bool ConvertToBvhAndGltf(KStage& pStage)
{
    return Convert(pStage, {"a.glb"}, {"a.gltf", "a.bvh"});
}

bool ConvertToAcclaimAndGlb(KStage& pStage)
{
    return Convert(pStage, {"a.bvh"}, {"a.asf", "a.amc", "a.glb"});
}

} // namespace

KFaultFiles::KFaultFiles(int pFrames)
{
    fs::create_directory(mFolder / "in");
    fs::create_directory(mFolder / "out");
    WriteFile(In("a.asf"), kAsf);
    WriteFile(In("a.amc"), MakeAmc(pFrames));
    ResetOutputs();
    KStage lStage(*this);
    lStage.ImportMotion();
    EXPECT_TRUE(WriteBvh(lStage) && WriteGlb(lStage) && WriteGltf(lStage)) << lStage.mErrors;
    fs::rename(Out("a.bvh"), In("a.bvh"));
    fs::rename(Out("a.glb"), In("a.glb"));
    fs::rename(Out("a.gltf"), In("a.gltf"));
    fs::rename(Out("a.bin"), In("a.bin"));
    ResetOutputs();
}

void KFaultFiles::ResetOutputs() const
{
    fs::remove_all(OutFolder());
    fs::create_directory(OutFolder());
    for (const char* lName : kOutputs)
    {
        WriteFile(Out(lName), "old");
    }
}

std::map<std::string, std::string> KFaultFiles::GetOutputs() const
{
    std::map<std::string, std::string> lFiles;
    for (const fs::directory_entry& lEntry : fs::directory_iterator(OutFolder()))
    {
        lFiles[lEntry.path().filename().string()] = ReadFile(lEntry.path());
    }
    return lFiles;
}

void ExpectSameFiles(const std::map<std::string, std::string>& pNow, const std::map<std::string, std::string>& pExpected)
{
    for (const auto& [lName, lBytes] : pNow)
    {
        EXPECT_EQ(pExpected.count(lName), 1u) << lName << " was left behind";
    }
    for (const auto& [lName, lBytes] : pExpected)
    {
        const auto lNow = pNow.find(lName);
        EXPECT_TRUE(lNow != pNow.end() && lNow->second == lBytes) << lName << (lNow == pNow.end() ? " is gone" : " differs");
    }
}

void KStage::ImportMotion()
{
    KQexImportAcclaimResult lResult;
    ASSERT_TRUE(KQexImporterAcclaim::Import(mScene.get(), KQexAcclaimSource::File(mFiles.In("a.asf")),
                                            {KQexAcclaimSource::File(mFiles.In("a.amc"))}, KQexImportAcclaimOptions(), lResult));
    mRoots = {lResult.mRootNode};
}

std::string KStage::Describe() const
{
    std::string        lText = mFrameHash + " " + std::to_string(mScene->GetObjectCount()) + "\n";
    KQexAnimEvaluator* lEvaluator = mScene->GetEvaluator();
    KQexAnimStack*     lOldContext = lEvaluator->GetContext();
    KQexNode*          lRoot = mScene->GetRootNode();
    lText += lOldContext != nullptr ? lOldContext->GetName() : "no take";
    for (int lStack = -1; lStack < mScene->GetAnimStackCount(); ++lStack)
    {
        lEvaluator->SetContext(lStack < 0 ? nullptr : mScene->GetAnimStack(lStack));
        lText += lStack < 0 ? "" : std::string("\n") + mScene->GetAnimStack(lStack)->GetName() + "\n";
        for (KQexNode* lNode = lRoot; lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
        {
            lText += lNode->GetName();
            for (const int lFrame : {0, 1, 2, 7, 1000, 1999, 2001})
            {
                const KQexMatrix lTransform = lEvaluator->GetNodeGlobalTransform(lNode, FrameTime(lFrame));
                lText.append(reinterpret_cast<const char*>(&lTransform), sizeof lTransform);
            }
        }
    }
    lEvaluator->SetContext(lOldContext);
    if (mSkeleton && mSkeleton->mRoot != nullptr)
    {
        KQexFileAcclaimAsf lFile(false);
        std::string        lAsf;
        lFile.OpenWriteBuffer(&lAsf);
        lFile.Write(mSkeleton.get());
        lFile.Close();
        lText += lAsf;
    }
    return lText;
}

std::ostream& operator<<(std::ostream& pOut, const KFaultOperation& pOperation)
{
    return pOut << pOperation.mName;
}

const std::vector<KFaultOperation>& FaultOperations()
{
    static const std::vector<KFaultOperation> sOperations = {
        {"ReadAsf", false, {"a.asf"}, {}, false, ReadAsf},
        {"ReadAmc", false, {"a.asf", "a.amc"}, {}, false, ReadAmc},
        {"Import", false, {"a.asf", "a.amc"}, {}, false, Import},
        {"Merge", true, {"a.asf", "a.amc"}, {}, false, Merge},
        {"ImportMotion", true, {"a.asf", "a.amc"}, {}, false, ImportMotion},
        {"ReadBvh", false, {"a.bvh"}, {}, false, ReadBvh},
        {"ReadGlb", false, {"a.glb"}, {}, false, ReadGlb},
        {"ReadGltf", false, {"a.gltf", "a.bin"}, {}, false, ReadGltf},
        {"WriteBvh", true, {}, {"a.bvh"}, false, WriteBvh},
        {"WriteGlb", true, {}, {"a.glb"}, false, WriteGlb},
        {"WriteGltf", true, {}, {"a.gltf", "a.bin"}, false, WriteGltf},
        {"WriteAmc", true, {"a.asf"}, {"a.amc"}, false, WriteAmc},
        {"ExportAcclaim", true, {}, {"a.asf", "a.amc"}, false, ExportAcclaim},
        {"ConvertToBvhAndGlb", false, {"a.asf", "a.amc"}, {"a.bvh", "a.glb"}, true, ConvertToBvhAndGlb},
        {"ConvertToNpz", false, {"a.asf", "a.amc"}, {"a.npz"}, true, ConvertToNpz, true},
        {"ConvertToGltf", false, {"a.glb"}, {"a.gltf", "a.bin"}, true, ConvertToGltf},
        {"ConvertToBvhAndGltf", false, {"a.glb"}, {"a.bvh", "a.gltf", "a.bin"}, true, ConvertToBvhAndGltf},
        {"ConvertToAcclaimAndGlb", false, {"a.bvh"}, {"a.asf", "a.amc", "a.glb"}, true, ConvertToAcclaimAndGlb},
    };
    return sOperations;
}

} // namespace qextest
