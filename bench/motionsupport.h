#ifndef BENCH_MOTIONSUPPORT_H
#define BENCH_MOTIONSUPPORT_H

#include <bench/benchsupport.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// \file
/// Motions of any length for benches, and what working on them costs at the least.

namespace qexbench
{

/// A motion and its skeleton, as text.
struct KMotion
{
    std::string mName;
    std::string mAsf;
    std::string mAmc;
};

/// The first real motion, or a generated one of the same shape.
KMotion ChooseMotion();

/// A file of \p pTimes times a motion, its frames numbered on. Gone with the object.
class KLongMotion
{
public:
    KLongMotion(const KMotion& pMotion, int pTimes);
    ~KLongMotion();
    KLongMotion(const KLongMotion&) = delete;
    KLongMotion& operator=(const KLongMotion&) = delete;

    std::string Path() const { return mPath.string(); }
    size_t      Size() const { return mSize; }
    int         Frames() const { return mFrames; }

private:
    std::filesystem::path mPath;
    size_t                mSize = 0;
    int                   mFrames = 0;
};

/// A path that is free, and free again afterwards.
class KScratchFile
{
public:
    explicit KScratchFile(const char* pExtension);
    ~KScratchFile();
    KScratchFile(const KScratchFile&) = delete;
    KScratchFile& operator=(const KScratchFile&) = delete;

    std::string Path() const { return mPath.string(); }

private:
    std::filesystem::path mPath;
};

/// Adds the counters of a job on a file of \p pBytes and \p pFrames frames: those of ReportBytes() and ReportPieces(), and the most
/// memory it held, \p pPeak bytes, as peak_MB.
void ReportMotion(benchmark::State& pState, const KBeside& pBeside, size_t pBytes, double pFrames, size_t pPeak);

/// Bytes of a file.
size_t FileSize(const std::string& pPath);

/// An imported motion: what every conversion from AMC begins with.
class KImported
{
public:
    KImported(const qexsdk::KQexAcclaimSource& pAsf, const std::string& pAmcPath);
    KImported(const KMotion& pMotion, const std::string& pAmcPath)
        : KImported(qexsdk::KQexAcclaimSource::Buffer(pMotion.mAsf.data(), pMotion.mAsf.size(), "skeleton"), pAmcPath)
    {
    }
    ~KImported();
    KImported(const KImported&) = delete;
    KImported& operator=(const KImported&) = delete;

    qexsdk::KQexScene*              mScene;
    qexsdk::KQexImportAcclaimResult mResult;
    qexsdk::KQexAnimStack*          mStack = nullptr;
    qexsdk::KQexSampling            mSampling;
};

/// The figure as BVH.
void WriteBvh(const KImported& pFigure, const std::string& pPath);

/// All numbers of a text file, as they are at the end of a parse.
std::vector<double> NumbersOf(const std::string& pPath);

/// std::to_chars of numbers, six decimals: what writing text could cost at the least.
void PrintNumbers(const std::vector<double>& pNumbers);

/// The motion's skeleton.
qexsdk::KQexAsfSceneOwner ReadSkeleton(const KMotion& pMotion, qexsdk::KQexImportAcclaimResult& pResult);

/// Counts rotation DOFs, and bones that have one.
void CountRotations(qexsdk::HKQexAsfNode pBone, int& pDofs, int& pBones);

/// The trigonometry that sampling cannot do without: a sine-cosine pair a rotation DOF, three arc tangents a rotating bone.
double TurnBones(int pFrames, int pDofs, int pBones);

/// Registers \p pBench(state, motion, times) for one so many times as long as a motion.
template <typename TBench>
void RegisterTimes(const std::string& pName, const std::shared_ptr<KMotion>& pMotion, int pTimes, TBench pBench)
{
    benchmark::RegisterBenchmark((pName + "/" + pMotion->mName + "/x" + std::to_string(pTimes)).c_str(),
                                 [=](benchmark::State& pState) { pBench(pState, *pMotion, pTimes); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace qexbench

#endif
