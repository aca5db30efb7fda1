// Motion: parsing alone beside the bare numbers, and whole imports of one, ten and a hundred times a real motion.

#include <bench/benchsupport.h>

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

using namespace qexsdk;
using namespace qexbench;

namespace
{

namespace fs = std::filesystem;

constexpr int kGeneratedBones = 30;
constexpr int kGeneratedFrames = 2751;

void Demand(bool pDone)
{
    if (!pDone)
    {
        std::abort();
    }
}

// A motion and its skeleton: the first real one, or a generated one of the same shape.
struct KMotion
{
    std::string mName;
    std::string mAsf;
    std::string mAmc;
};

KMotion ChooseMotion()
{
    for (const std::string& lAmc : CorpusFiles(".amc"))
    {
        for (const std::string& lAsf : CorpusFiles(".asf"))
        {
            const bool lBeside = fs::path(lAsf).parent_path() == fs::path(lAmc).parent_path();
            if (lBeside && fs::path(lAmc).stem().string().rfind(fs::path(lAsf).stem().string(), 0) == 0)
            {
                return {fs::path(lAmc).filename().string(), ReadWholeFile(lAsf), ReadWholeFile(lAmc)};
            }
        }
    }
    return {"generated", SkeletonText(eRANDOM, kGeneratedBones), MotionText(kGeneratedBones, kGeneratedFrames)};
}

bool IsFrameNumber(const std::string& pLine)
{
    const size_t lEnd = pLine.find_last_not_of("\r\n\t ");
    return lEnd != std::string::npos && pLine.find_first_not_of("0123456789") > lEnd;
}

// A file of pTimes times a motion, its frames numbered on. Gone with the object.
class KLongMotion
{
public:
    KLongMotion(const KMotion& pMotion, int pTimes)
        : mPath(fs::temp_directory_path() / ("qex_bench_" + std::to_string(pTimes) + "_" + std::to_string(std::rand()) + ".amc"))
    {
        std::ofstream lFile(mPath, std::ios::binary);
        for (int i = 0; i < pTimes; ++i)
        {
            std::istringstream lText(pMotion.mAmc);
            for (std::string lLine; std::getline(lText, lLine);)
            {
                const bool lNumber = IsFrameNumber(lLine);
                if (i > 0 && mFrames % pTimes == 0 && !lNumber && (lLine[0] == ':' || lLine[0] == '#'))
                {
                    continue;
                }
                lFile << (lNumber ? std::to_string(++mFrames) : lLine) << '\n';
            }
        }
        Demand(lFile.flush().good());
        mSize = static_cast<size_t>(fs::file_size(mPath));
    }
    ~KLongMotion() { fs::remove(mPath); }
    KLongMotion(const KLongMotion&) = delete;
    KLongMotion& operator=(const KLongMotion&) = delete;

    std::string Path() const { return mPath.string(); }
    size_t      Size() const { return mSize; }
    int         Frames() const { return mFrames; }

private:
    fs::path mPath;
    size_t   mSize = 0;
    int      mFrames = 0;
};

// Reading a file and std::from_chars over its numbers, through a buffer: what parsing could cost at the least.
void ScanFile(const std::string& pPath)
{
    std::vector<char> lBuffer(1 << 20);
    std::FILE*        lFile = std::fopen(pPath.c_str(), "rb");
    Demand(lFile != nullptr);
    for (size_t lRead = std::fread(lBuffer.data(), 1, lBuffer.size(), lFile); lRead > 0;
         lRead = std::fread(lBuffer.data(), 1, lBuffer.size(), lFile))
    {
        benchmark::DoNotOptimize(ScanNumbers(lBuffer.data(), lRead));
    }
    std::fclose(lFile);
}

KQexAsfSceneOwner ReadSkeleton(const KMotion& pMotion, KQexImportAcclaimResult& pResult)
{
    KQexAsfSceneOwner lScene = KQexImporterAcclaim::ReadSkeleton(
        KQexAcclaimSource::Buffer(pMotion.mAsf.data(), pMotion.mAsf.size(), "skeleton"), KQexImportAcclaimOptions(), pResult);
    Demand(lScene != nullptr);
    return lScene;
}

class KNothing : public KQexAmcVisitor
{
public:
    bool Frame(const KQexAmcFrame&) override { return true; }
};

void ParseAlone(benchmark::State& pState, const KMotion& pMotion, int pTimes)
{
    const KLongMotion       lLong(pMotion, pTimes);
    KQexImportAcclaimResult lResult;
    const KQexAsfSceneOwner lScene = ReadSkeleton(pMotion, lResult);
    KBeside                 lBeside;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound([&lLong] { ScanFile(lLong.Path()); });
        lBeside.Work(pState,
                     [&]
                     {
                         KQexFileAcclaimAmc lFile(false);
                         KNothing           lNothing;
                         KQexAmcReadOptions lOptions;
                         lOptions.mSkeletonNotes = lResult.mSkeletonNotes;
                         Demand(lFile.OpenRead(lLong.Path().c_str()) && lFile.ReadFrames(lScene.get(), lOptions, lNothing));
                     });
    }
    lBeside.ReportBytes(pState, lLong.Size());
    lBeside.ReportPieces(pState, "frame", lLong.Frames());
}

// How many rotation DOFs, and how many bones that have one.
void CountRotations(HKQexAsfNode pBone, int& pDofs, int& pBones)
{
    std::vector<HKQexAsfNode> lLeft{pBone};
    while (!lLeft.empty())
    {
        const HKQexAsfNode lBone = lLeft.back();
        lLeft.pop_back();
        int lDofs = 0;
        for (int i = 0; i < lBone->mOrderCount; ++i)
        {
            lDofs += lBone->mOrderBuf[i] >= 3 ? 1 : 0;
        }
        pDofs += lDofs;
        pBones += lDofs > 0 ? 1 : 0;
        for (int i = 0; i < lBone->mChildBuf.GetCount(); ++i)
        {
            lLeft.push_back(lBone->mChildBuf[i]);
        }
    }
}

// The trigonometry that sampling cannot do without: a sine-cosine pair a rotation DOF, three arc tangents a rotating bone.
double TurnBones(int pFrames, int pDofs, int pBones)
{
    double lSum = 0.0;
    double lAngle = 0.1;
    for (int i = 0; i < pFrames; ++i)
    {
        for (int k = 0; k < pDofs; ++k)
        {
            lAngle += 1e-3;
            lSum += std::sin(lAngle) * std::cos(lAngle);
        }
        for (int k = 0; k < 3 * pBones; ++k)
        {
            lSum += std::atan2(lSum, lAngle);
        }
    }
    return lSum;
}

void WholeImport(benchmark::State& pState, const KMotion& pMotion, int pTimes)
{
    const KLongMotion       lLong(pMotion, pTimes);
    KQexImportAcclaimResult lResult;
    int                     lDofs = 0;
    int                     lBones = 0;
    CountRotations(ReadSkeleton(pMotion, lResult)->mRoot, lDofs, lBones);
    KBeside lBeside;
    size_t  lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound(
            [&]
            {
                ScanFile(lLong.Path());
                benchmark::DoNotOptimize(TurnBones(lLong.Frames(), lDofs, lBones));
            });
        KQexScene* lScene = KQexScene::Create("bench");
        ResetPeakMemory();
        lBeside.Work(pState,
                     [&]
                     {
                         KQexImportAcclaimOptions lOptions;
                         Demand(KQexImporterAcclaim::Import(lScene,
                                                            KQexAcclaimSource::Buffer(pMotion.mAsf.data(), pMotion.mAsf.size(), "skeleton"),
                                                            {KQexAcclaimSource::File(lLong.Path())}, lOptions, lResult));
                     });
        lPeak = std::max(lPeak, PeakMemory());
        lScene->Destroy();
    }
    lBeside.ReportBytes(pState, lLong.Size());
    lBeside.ReportPieces(pState, "frame", lLong.Frames());
    pState.counters["peak_MB"] = static_cast<double>(lPeak) / 1e6;
}

} // namespace

void RegisterBenches()
{
    const auto lMotion = std::make_shared<KMotion>(ChooseMotion());
    for (const int lTimes : {1, 10})
    {
        benchmark::RegisterBenchmark(("ParseMotion/" + lMotion->mName + "/x" + std::to_string(lTimes)).c_str(),
                                     [=](benchmark::State& pState) { ParseAlone(pState, *lMotion, lTimes); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    for (const int lTimes : {1, 10, 100})
    {
        benchmark::RegisterBenchmark(("Import/" + lMotion->mName + "/x" + std::to_string(lTimes)).c_str(),
                                     [=](benchmark::State& pState) { WholeImport(pState, *lMotion, lTimes); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}
