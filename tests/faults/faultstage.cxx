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

constexpr const char* kOutputs[] = {"a.asf", "a.amc", "a.bvh", "a.glb", "a.gltf", "a.bin"};

constexpr const char* kAsf =
    ":version 1.10\n:name s\n:units\n length 0.45\n angle deg\n:root\n order TX TY TZ RX RY RZ\n axis XYZ\n"
    " position 0 0 0\n orientation 0 0 0\n:bonedata\n"
    "begin\nid 1\nname thigh\ndirection 0 -1 0\nlength 8\naxis 0 0 20 XYZ\ndof rx ry rz\nlimits (-160 20)\n(-70 70)\n(-60 70)\nend\n"
    "begin\nid 2\nname shin\ndirection 0 -1 0\nlength 7\naxis 0 0 20 XYZ\ndof rx l\nlimits (-10 170)\nend\n"
    "begin\nname ball\ndirection 0 0 1\nlength 1\naxis 0 0 0 XYZ\nend\n"
    ":hierarchy\nbegin\nroot thigh\nthigh shin\nshin ball\nend\n";

/// A motion that no reducer can shorten; its third frame names a bone that is none.
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

/// Keeps what is printed to standard error from being seen while it lives, and gives it. Asks for no memory until the end.
class KErrorCatcher
{
public:
    explicit KErrorCatcher(const std::string& pPath) : mPath(pPath), mOld(::dup(STDERR_FILENO))
    {
        const int lFile = ::open(mPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        ::dup2(lFile, STDERR_FILENO);
        ::close(lFile);
    }
    ~KErrorCatcher()
    {
        ::dup2(mOld, STDERR_FILENO);
        ::close(mOld);
    }
    KErrorCatcher(const KErrorCatcher&) = delete;
    KErrorCatcher& operator=(const KErrorCatcher&) = delete;

    /// Whether anything was printed.
    bool IsEmpty() const { return ::lseek(STDERR_FILENO, 0, SEEK_END) == 0; }

private:
    const std::string& mPath;
    int                mOld;
};

/// What an operation needs of the test's own, made without failing. The result has to be movable.
template <typename TMake>
auto Own(const TMake& pMake)
{
    const KUnfailingMemory lUnfailing;
    return pMake();
}

/// Notes a failure and the texts that \p pText gives.
template <typename TText>
bool Note(KStage& pStage, bool pOk, bool pHasError, const TText& pText)
{
    const KUnfailingMemory lUnfailing;
    pStage.mHasError = pHasError;
    pStage.mTold = !pOk && pHasError ? pText() : std::string();
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

bool NoteFile(KStage& pStage, bool pOk, const KQexTextFile& pFile)
{
    return Note(pStage, pOk, pFile.GetErrorCount() > 0, [&pFile] { return ErrorsOf(pFile.GetMessages()); });
}

bool NoteGltf(KStage& pStage, bool pOk)
{
    return Note(pStage, pOk, !pStage.mGltf.GetMessages().empty(), [&pStage] { return ErrorsOf(pStage.mGltf.GetMessages()); });
}

/// Frames of the take there is.
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
        return Note(pStage, false, true, [] { return std::string("Out of memory"); });
    }
    const std::string lPath = Own([&] { return pStage.mFiles.In("a.asf"); });
    const bool        lOk = pStage.mAsf.OpenRead(lPath.c_str()) && pStage.mAsf.Read(pStage.mSkeleton.get(), true, false, false);
    NoteFile(pStage, lOk, pStage.mAsf);
    pStage.mAsf.Close();
    return lOk;
}

/// Adds up the values of all frames.
class KSum : public KQexAmcVisitor
{
public:
    bool Frame(const KQexAmcFrame& pFrame) override
    {
        mSum = mSum * 3 + static_cast<unsigned long long>(pFrame.mNumber);
        for (const int lBone : *pFrame.mPresent)
        {
            for (const double lValue : (*pFrame.mBones)[static_cast<size_t>(lBone)].mValues)
            {
                mSum = mSum * 5 + static_cast<unsigned long long>(static_cast<long long>(lValue * 1000));
            }
        }
        return true;
    }

    unsigned long long mSum = 0;
};

bool ReadAmc(KStage& pStage)
{
    if (!ReadAsf(pStage))
    {
        return false;
    }
    KSum              lSum;
    const std::string lPath = Own([&] { return pStage.mFiles.In("a.amc"); });
    const bool lOk = pStage.mAmc.OpenRead(lPath.c_str()) && pStage.mAmc.ReadFrames(pStage.mSkeleton.get(), KQexAmcReadOptions(), lSum);
    NoteFile(pStage, lOk, pStage.mAmc);
    pStage.mAmc.Close();
    pStage.mSeen = Own([&] { return lOk ? std::to_string(lSum.mSum) : std::string(); });
    return lOk;
}

/// Imports the skeleton with its motion.
bool RunImport(KStage& pStage, const KQexImportAcclaimOptions& pOptions)
{
    KQexImportAcclaimResult lResult;
    const auto              lSkeleton = Own([&] { return KQexAcclaimSource::File(pStage.mFiles.In("a.asf")); });
    const auto              lMotions = Own([&] { return std::vector{KQexAcclaimSource::File(pStage.mFiles.In("a.amc"))}; });
    const bool              lOk = KQexImporterAcclaim::Import(pStage.mScene.get(), lSkeleton, lMotions, pOptions, lResult);
    return Note(pStage, lOk, lResult.CountMessages(true) > 0, [&lResult] { return ErrorsOf(lResult.mMessages); });
}

bool Import(KStage& pStage)
{
    KQexImportAcclaimOptions lOptions;
    lOptions.mUseConstantKeyReducer = true;
    return RunImport(pStage, lOptions);
}

/// The same motion once more, as another take of the nodes that are there.
bool Merge(KStage& pStage)
{
    KQexImportAcclaimOptions lOptions;
    lOptions.mMergeRoot = pStage.mScene->GetRootNode();
    return RunImport(pStage, lOptions);
}

/// The same by a skeleton that was read before.
bool ImportMotion(KStage& pStage)
{
    KQexImportAcclaimOptions lOptions;
    KQexImportAcclaimResult  lResult;
    const auto               lSource = Own([&] { return KQexAcclaimSource::File(pStage.mFiles.In("a.asf")); });
    const auto               lMotions = Own([&] { return std::vector{KQexAcclaimSource::File(pStage.mFiles.In("a.amc"))}; });
    const KQexAsfSceneOwner  lSkeleton = KQexImporterAcclaim::ReadSkeleton(lSource, lOptions, lResult);
    const bool lOk = lSkeleton && KQexImporterAcclaim::ImportMotion(pStage.mScene.get(), lSkeleton.get(), lResult.mSkeletonNotes, lMotions,
                                                                    lOptions, lResult);
    return Note(pStage, lOk, lResult.CountMessages(true) > 0, [&lResult] { return ErrorsOf(lResult.mMessages); });
}

bool ReadBvh(KStage& pStage)
{
    KQexBvhReadResult lResult;
    const std::string lPath = Own([&] { return pStage.mFiles.In("a.bvh"); });
    const bool        lOk = pStage.mBvh.OpenRead(lPath.c_str()) && pStage.mBvh.Read(pStage.mScene.get(), KQexBvhReadOptions(), lResult);
    NoteFile(pStage, lOk, pStage.mBvh);
    pStage.mBvh.Close();
    return lOk;
}

bool ReadGltfFile(KStage& pStage, const char* pName)
{
    KQexGltfReadResult lResult;
    const std::string  lPath = Own([&] { return pStage.mFiles.In(pName); });
    return NoteGltf(pStage, pStage.mGltf.Read(lPath, pStage.mScene.get(), KQexGltfReadOptions(), lResult));
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
    lOptions.mSampling = Own([&] { return AllFrames(pStage); });
    const std::string lPath = Own([&] { return pStage.mFiles.Out("a.bvh"); });
    const bool        lOk = pStage.mBvh.OpenWrite(lPath.c_str()) && pStage.mBvh.Write(pStage.mRoots, lOptions) && pStage.mBvh.Close();
    if (!lOk)
    {
        pStage.mBvh.Discard();
    }
    return NoteFile(pStage, lOk, pStage.mBvh);
}

bool WriteGltfFile(KStage& pStage, const char* pName)
{
    KQexGltfWriteOptions lOptions;
    lOptions.mThreads = 1;
    lOptions.mTakes = Own([&] { return std::vector{KQexGltfTake{pStage.mScene->GetAnimStack(0), AllFrames(pStage)}}; });
    const std::string lPath = Own([&] { return pStage.mFiles.Out(pName); });
    return NoteGltf(pStage, pStage.mGltf.Write(lPath, pStage.mRoots, lOptions));
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
    const std::string lAsf = Own([&] { return pStage.mFiles.Out("a.asf"); });
    const std::string lAmc = Own([&] { return pStage.mFiles.Out("a.amc"); });
    const bool        lOk = KQexExporterAcclaim::Export(pStage.mRoots.front(), lAsf.c_str(), lAmc.c_str(), lOptions, lResult);
    return Note(pStage, lOk, !lResult.mMessages.empty(), [&lResult] { return ErrorsOf(lResult.mMessages); });
}

/// A motion for a skeleton that is there.
bool WriteAmc(KStage& pStage)
{
    KQexExportAcclaimOptions lOptions;
    KQexExportAcclaimResult  lResult;
    lOptions.mThreads = 1;
    const std::string lAmc = Own([&] { return pStage.mFiles.Out("a.amc"); });
    if (!ReadAsf(pStage))
    {
        return false;
    }
    const bool lOk = KQexExporterAcclaim::ExportMotion(pStage.mRoots.front(), pStage.mSkeleton.get(), lAmc.c_str(), lOptions, lResult);
    return Note(pStage, lOk, !lResult.mMessages.empty(), [&lResult] { return ErrorsOf(lResult.mMessages); });
}

/// A call of the command line that reads \p pInputs and replaces \p pOutputs, in this process.
bool Convert(KStage& pStage, std::initializer_list<const char*> pInputs, std::initializer_list<const char*> pOutputs)
{
    std::vector<std::string> lWords;
    std::vector<char*>       lArguments;
    const std::string        lTold = Own([&] { return pStage.mFiles.In("told"); });
    {
        const KUnfailingMemory lUnfailing;
        lWords = {"asf", "convert", "--quiet", "--threads", "1"};
        for (const char* lInput : pInputs)
        {
            lWords.push_back(pStage.mFiles.In(lInput));
        }
        for (const char* lOutput : pOutputs)
        {
            lWords.insert(lWords.end(), {"-o", pStage.mFiles.Out(lOutput)});
        }
        for (std::string& lWord : lWords)
        {
            lArguments.push_back(lWord.data());
        }
    }
    int  lExit = 0;
    bool lHasError = false;
    {
        const KErrorCatcher lCatcher(lTold);
        lExit = asfapp::RunProgram(static_cast<int>(lArguments.size()), lArguments.data());
        lHasError = !lCatcher.IsEmpty();
    }
    return Note(pStage, lExit == 0, lHasError, [&lTold] { return ReadFile(lTold); });
}

bool ConvertToBvhAndGlb(KStage& pStage)
{
    return Convert(pStage, {"a.asf", "a.amc"}, {"a.bvh", "a.glb"});
}

bool ConvertToGltf(KStage& pStage)
{
    return Convert(pStage, {"a.glb"}, {"a.gltf"});
}

bool ConvertToAcclaim(KStage& pStage)
{
    return Convert(pStage, {"a.bvh"}, {"a.asf", "a.amc"});
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
    EXPECT_TRUE(WriteBvh(lStage) && WriteGlb(lStage) && WriteGltf(lStage)) << lStage.mTold;
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
        EXPECT_TRUE(lNow != pNow.end() && lNow->second == lBytes) << lName << (lNow == pNow.end() ? " is gone" : " has other bytes");
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
    std::string        lText = mSeen + " " + std::to_string(mScene->GetObjectCount()) + "\n";
    KQexAnimEvaluator* lEvaluator = mScene->GetEvaluator();
    KQexAnimStack*     lBefore = lEvaluator->GetContext();
    KQexNode*          lRoot = mScene->GetRootNode();
    lText += lBefore != nullptr ? lBefore->GetName() : "no take";
    for (int lStack = -1; lStack < mScene->GetAnimStackCount(); ++lStack)
    {
        lEvaluator->SetContext(lStack < 0 ? nullptr : mScene->GetAnimStack(lStack));
        lText += lStack < 0 ? "" : std::string("\n") + mScene->GetAnimStack(lStack)->GetName() + "\n";
        for (KQexNode* lNode = lRoot; lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
        {
            lText += lNode->GetName();
            for (const int lFrame : {0, 1, 2, 7, 1000, 1999, 2001})
            {
                const KQexMatrix lPlace = lEvaluator->GetNodeGlobalTransform(lNode, FrameTime(lFrame));
                lText.append(reinterpret_cast<const char*>(&lPlace), sizeof lPlace);
            }
        }
    }
    lEvaluator->SetContext(lBefore);
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
        {"ConvertToGltf", false, {"a.glb"}, {"a.gltf", "a.bin"}, true, ConvertToGltf},
        {"ConvertToAcclaim", false, {"a.bvh"}, {"a.asf", "a.amc"}, true, ConvertToAcclaim},
    };
    return sOperations;
}

} // namespace qextest
