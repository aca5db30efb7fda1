#ifndef BENCH_BENCHSUPPORT_H
#define BENCH_BENCHSUPPORT_H

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// \file
/// Shared by all benchmarks: generated skeletons of any size, timing against a bound, memory use.

/// Registers a program's benchmarks. Each *_bench.cxx defines it; main() calls it once.
void RegisterBenchmarks();

namespace qexbench
{

/// Aborts unless \p pDone, so that no benchmark reports a time for work that failed.
void Require(bool pDone);

/// The hierarchy of a generated skeleton.
enum EShape
{
    eCHAIN, ///< each bone is the child of the previous one
    eFAN,   ///< all bones are children of the root
    eRANDOM ///< each bone is the child of a random earlier one, with a fixed seed
};

/// "chain", "fan" or "random".
const char* ShapeName(EShape pShape);

/// The text of a skeleton file with \p pBones bones, not counting the root. Two of three bones have degrees of freedom and limits, the
/// others are dummies. The same arguments always give the same text.
std::string SkeletonText(EShape pShape, int pBones);

/// The text of a motion of \p pFrames frames for a skeleton of SkeletonText() with \p pBones bones.
std::string MotionText(int pBones, int pFrames);

/// Lower bound for reading \p pText: std::from_chars over its numbers and a byte loop over the rest.
/// \return a sum that depends on every byte, so that the compiler cannot optimise the work away
double ScanNumbers(const char* pText, size_t pSize);

/// The bound of every text reader: reads a file through one preallocated buffer and runs ScanNumbers() on its bytes.
void ScanFile(const std::string& pPath);

/// A path for a temporary file that no other file has, also none of another process.
std::string ScratchPath(const std::string& pExtension);

/// A temporary text file, deleted with the object.
class KTextFile
{
public:
    /// Writes \p pText. Exits with a message when it cannot.
    explicit KTextFile(const std::string& pText);
    ~KTextFile();
    KTextFile(const KTextFile&) = delete;
    KTextFile& operator=(const KTextFile&) = delete;

    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

/// The contents of a file. Exits with a message when it cannot be read.
std::string ReadWholeFile(const std::string& pPath);

/// Paths of all files in the folder ASF_CORPUS_DIR, at any depth, that end in \p pExtension (".asf"), sorted. Empty when it is unset.
std::vector<std::string> CorpusFiles(const std::string& pExtension);

/// Makes the allocator keep freed memory from now on, so that the next benchmark reuses it. Otherwise a benchmark would also measure
/// page faults or not, depending on what was freed before.
void KeepFreedMemory();

/// Returns freed memory to the system, so that the next allocations get fresh pages.
void TrimHeap();

/// Merges free blocks now; the allocator would otherwise do so in the next large allocation, which a benchmark may time.
void ConsolidateHeap();

/// Bytes of heap in use now.
size_t HeapInUse();

/// Peak resident memory of the process in bytes, since its start or the last successful ResetPeakMemory().
size_t PeakMemory();

/// Resets PeakMemory() to what is in use now. Does nothing where the system does not support it.
void ResetPeakMemory();

/// Compares the best times of some work and of its bound. The two run alternately, so that both see the same load: on a busy
/// machine only their ratio means much.
class KComparison
{
public:
    /// \param pBoundName the bound's name in the counters; "bound" only for a true lower bound
    explicit KComparison(const char* pBoundName = "bound") : mBoundName(pBoundName) {}

    /// Times one call of \p pWork as one iteration of the benchmark.
    template <typename TWork>
    void Work(benchmark::State& pState, TWork&& pWork)
    {
        const double lSeconds = Time(pWork);
        pState.SetIterationTime(lSeconds);
        mWork = (mCount == 0 || lSeconds < mWork) ? lSeconds : mWork;
        ++mCount;
    }

    /// Times one call of the bound.
    template <typename TWork>
    void Bound(TWork&& pWork)
    {
        const double lSeconds = Time(pWork);
        mBound = (mBoundCount == 0 || lSeconds < mBound) ? lSeconds : mBound;
        ++mBoundCount;
    }

    /// Seconds of the fastest work.
    double BestWork() const { return mWork; }

    /// Adds counters for the best times over \p pBytes: MB/s, bound_MB/s, and of_bound, their ratio (1: as fast as the bound).
    void ReportBytes(benchmark::State& pState, size_t pBytes) const;

    /// Adds counters for the best times: ns/ITEM and, when a bound was timed, bound_ns/ITEM and of_bound.
    void ReportItems(benchmark::State& pState, const char* pItem, double pItems) const;

private:
    template <typename TWork>
    static double Time(TWork&& pWork)
    {
        const auto lStart = std::chrono::steady_clock::now();
        pWork();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - lStart).count();
    }

    std::string mBoundName;
    double      mWork = 0.0;  ///< seconds of the fastest work
    double      mBound = 0.0; ///< seconds of the fastest bound
    int64_t     mCount = 0;
    int64_t     mBoundCount = 0;
};

} // namespace qexbench

#endif
