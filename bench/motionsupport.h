#ifndef BENCH_MOTIONSUPPORT_H
#define BENCH_MOTIONSUPPORT_H

#include <bench/benchsupport.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// \file
/// Motions of any length for benchmarks, and lower bounds for working on them.

namespace qexbench
{

/// A motion and its skeleton, as text.
struct KMotion
{
    std::string mName;
    std::string mAsf;
    std::string mAmc;
};

/// The paths of a motion and its skeleton.
struct KMotionPaths
{
    std::string mAsf;
    std::string mAmc;
};

/// The first motion of ASF_CORPUS_DIR whose folder has a skeleton with a name that is a prefix of the motion's; else empty paths.
KMotionPaths FindMotion();

/// The motion of FindMotion(); else a generated one.
KMotion ChooseMotion();

/// A temporary file that repeats a motion \p pRepeats times, its frames numbered consecutively. Deleted with the object.
class KRepeatedMotion
{
public:
    KRepeatedMotion(const KMotion& pMotion, int pRepeats);
    ~KRepeatedMotion();
    KRepeatedMotion(const KRepeatedMotion&) = delete;
    KRepeatedMotion& operator=(const KRepeatedMotion&) = delete;

    std::string Path() const { return mPath.string(); }
    size_t      Size() const { return mSize; }
    int         Frames() const { return mFrames; }

private:
    std::filesystem::path mPath;
    size_t                mSize = 0;
    int                   mFrames = 0;
};

/// A path for a temporary file, which is deleted with the object.
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

/// Adds the counters of ReportBytes() and ReportItems() for a file of \p pBytes and \p pFrames frames, and the peak memory, \p pPeak
/// bytes, as peak_MB.
void ReportMotion(benchmark::State& pState, const KComparison& pComparison, size_t pBytes, double pFrames, size_t pPeak);

/// Size of a file in bytes.
size_t FileSize(const std::string& pPath);

/// An imported motion: the first step of every conversion from AMC.
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

/// Writes the figure to a BVH file.
void WriteBvh(const KImported& pFigure, const std::string& pPath);

/// All numbers of a text file, in order.
std::vector<double> NumbersOf(const std::string& pPath);

/// Lower bound for writing text: std::to_chars of each number, six decimals.
void PrintNumbers(const std::vector<double>& pNumbers);

/// The motion's skeleton.
qexsdk::KQexAsfSceneOwner ReadSkeleton(const KMotion& pMotion, qexsdk::KQexImportAcclaimResult& pResult);

/// Adds the rotation DOFs of a tree to \p pDofs, and its bones that have one to \p pBones.
void CountRotations(qexsdk::HKQexAsfNode pBone, int& pDofs, int& pBones);

/// Lower bound for sampling: per frame, a sine-cosine pair per rotation DOF and three arc tangents per rotating bone.
double RunTrigonometry(int pFrames, int pDofs, int pBones);

/// Registers \p pBench(state, motion, repeats) for a motion repeated \p pRepeats times.
template <typename TBench>
void RegisterRepeats(const std::string& pName, const std::shared_ptr<KMotion>& pMotion, int pRepeats, TBench pBench)
{
    benchmark::RegisterBenchmark((pName + "/" + pMotion->mName + "/x" + std::to_string(pRepeats)).c_str(),
                                 [=](benchmark::State& pState) { pBench(pState, *pMotion, pRepeats); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace qexbench

#endif
