#ifndef BENCH_BENCHSUPPORT_H
#define BENCH_BENCHSUPPORT_H

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// \file
/// What benches share: skeletons of any size, the bound beside each figure, memory.

/// Each *_bench.cxx defines it: registers that program's benches. The program's main() calls it once.
void RegisterBenches();

namespace qexbench
{

/// Ends the program unless \p pDone: a figure for a file that was not read would be worth nothing.
void Demand(bool pDone);

/// How the bones of a generated skeleton hang together.
enum EShape
{
    eCHAIN, ///< each bone under the one before
    eFAN,   ///< all bones under the root
    eRANDOM ///< each bone under a random earlier one, with a fixed seed
};

/// "chain", "fan" or "random".
const char* ShapeName(EShape pShape);

/// The text of a skeleton file with \p pBones bones beside the root. Two of three bones have degrees of freedom and limits, the
/// others are dummies. The same arguments always give the same text.
std::string SkeletonText(EShape pShape, int pBones);

/// The text of a motion of \p pFrames frames for a skeleton of SkeletonText() with \p pBones bones.
std::string MotionText(int pBones, int pFrames);

/// The least that reading \p pText could cost: std::from_chars over its numbers and a byte loop over the rest.
/// \return a sum that depends on every byte, so that no compiler leaves work out
double ScanNumbers(const char* pText, size_t pSize);

/// The bound of every reader of text: reading a file and ScanNumbers() over its bytes, through one buffer that is at hand already.
void ScanFile(const std::string& pPath);

/// A text as a file, gone with the object.
class KTextFile
{
public:
    /// Writes \p pText; a file that cannot be written ends the program with a message.
    explicit KTextFile(const std::string& pText);
    ~KTextFile();
    KTextFile(const KTextFile&) = delete;
    KTextFile& operator=(const KTextFile&) = delete;

    /// Where it lies.
    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

/// The whole of a file; a file that cannot be read ends the program with a message.
std::string ReadWholeFile(const std::string& pPath);

/// Files below the folder that ASF_CORPUS_DIR names whose names end in \p pExtension (".asf"), sorted; none when it is unset.
std::vector<std::string> CorpusFiles(const std::string& pExtension);

/// Has memory that is given back stay with the process from here on, so that the next bench finds it there. Without it that depends
/// on what was given back last, and a bench measures the system's pages or does not.
void KeepMemory();

/// Gives the memory that was given back to the system after all: the next one to ask for memory gets pages never seen before.
void DropMemory();

/// Completes what giving memory back left to whoever asks for memory next.
void SettleMemory();

/// Bytes of heap in use now.
size_t HeapInUse();

/// Largest resident memory of the process since it began or since ResetPeakMemory() worked last, in bytes.
size_t PeakMemory();

/// Makes PeakMemory() start again from what is in use now. Does nothing where the system does not know how.
void ResetPeakMemory();

/// Sums up two works that take turns, so that both see the same machine: only their ratio is worth much on a busy one.
class KBeside
{
public:
    /// \param pOther what the counters call the other work: "bound" only if no work of this kind could do with less
    explicit KBeside(const char* pOther = "bound") : mOther(pOther) {}

    /// Times one call of \p pWork, which counts as the bench's iteration.
    template <typename TWork>
    void Work(benchmark::State& pState, TWork&& pWork)
    {
        const double lSeconds = Time(pWork);
        pState.SetIterationTime(lSeconds);
        mWork = (mCount == 0 || lSeconds < mWork) ? lSeconds : mWork;
        ++mCount;
    }

    /// Times one call of the other work.
    template <typename TWork>
    void Bound(TWork&& pWork)
    {
        const double lSeconds = Time(pWork);
        mBound = (mBoundCount == 0 || lSeconds < mBound) ? lSeconds : mBound;
        ++mBoundCount;
    }

    /// Seconds of the fastest work.
    double BestWork() const { return mWork; }

    /// Adds the counters: MB/s of the best work and of the best other one (bound_MB/s) over \p pBytes, and of_bound, the first over
    /// the second (1: as fast as the bound).
    void ReportBytes(benchmark::State& pState, size_t pBytes) const;

    /// Adds the counters: ns a piece of the best work and, when there was another one, of that (bound_ns/PIECE), and of_bound.
    void ReportPieces(benchmark::State& pState, const char* pPiece, double pPieces) const;

private:
    template <typename TWork>
    static double Time(TWork&& pWork)
    {
        const auto lStart = std::chrono::steady_clock::now();
        pWork();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - lStart).count();
    }

    std::string mOther;
    double      mWork = 0.0;  ///< seconds of the fastest work
    double      mBound = 0.0; ///< seconds of the fastest other work
    int64_t     mCount = 0;
    int64_t     mBoundCount = 0;
};

} // namespace qexbench

#endif
