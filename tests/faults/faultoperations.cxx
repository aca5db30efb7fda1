#include <tests/faults/faultoperations.h>

#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <tests/faults/faultconvert.h>

namespace qextest
{

using namespace qexsdk;

namespace
{

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

bool ConvertToBvhAndGlb(KStage& pStage)
{
    return RunConvert(pStage, {"a.asf", "a.amc"}, {"a.bvh", "a.glb"});
}

bool ConvertToNpz(KStage& pStage)
{
    return RunConvert(pStage, {"a.asf", "a.amc"}, {"a.npz"});
}

bool ConvertToGltf(KStage& pStage)
{
    return RunConvert(pStage, {"a.glb"}, {"a.gltf"});
}

bool ConvertToBvhAndGltf(KStage& pStage)
{
    return RunConvert(pStage, {"a.glb"}, {"a.gltf", "a.bvh"});
}

bool ConvertToAcclaimAndGlb(KStage& pStage)
{
    return RunConvert(pStage, {"a.bvh"}, {"a.asf", "a.amc", "a.glb"});
}

} // namespace

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
