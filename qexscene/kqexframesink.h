#ifndef QEXSCENE_KQEXFRAMESINK_H
#define QEXSCENE_KQEXFRAMESINK_H

#include <qexscene/kqexframe.h>
#include <qexscene/kqexsampling.h>

#include <cstddef>
#include <string>
#include <vector>

namespace qexsdk
{

/// Consecutive frames as a KQexFrameSink made them.
struct QEX_API KQexFrameBlock
{
    long long           mFirst = 0; ///< Number of the first frame.
    long long           mEnd = 0;   ///< Number after that of the last frame.
    std::vector<double> mValues;    ///< GetValueCount() numbers for each frame.
    std::string         mText;      ///< What Format() appended.
};

/// Takes the frames of a take as KQexRunFrames() evaluates them: a file that is written, an array that is filled. Blocks of frames are
/// computed and formatted in parallel; in between, MakeContinuous() sees all frames in order on one thread, so the result does not depend
/// on blocks or threads.
class QEX_API KQexFrameSink
{
public:
    virtual ~KQexFrameSink();

    /// Called once, before all others: finds its nodes in \p pNodes, which stays valid for the run, and makes buffers for \p pThreads
    /// threads. May throw std::bad_alloc.
    virtual void Begin(const KQexFrameNodes& pNodes, int pThreads) = 0;

    /// What it needs of a frame: a sum of KQexFrameParts.
    virtual unsigned int GetParts() const = 0;

    /// How many numbers it keeps of each frame.
    virtual size_t GetValueCount() const = 0;

    /// Computes the numbers of a frame. Called on several threads at once, each with its own \p pThread, from 0.
    virtual void Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept = 0;

    /// Adjusts a frame's numbers to the previous frame's. Called once for each frame, in order, on one thread.
    virtual void MakeContinuous(double* pValues);

    /// Appends the text of frame \p pFrame. Called on several threads at once. May throw std::bad_alloc.
    virtual void Format(long long pFrame, const double* pValues, std::string& pText) const;

    /// Takes a block; all blocks in order, on one thread. False to stop the run. May throw std::bad_alloc.
    virtual bool Write(const KQexFrameBlock& pBlock) = 0;
};

/// Times of frames.
class QEX_API KQexFrameTimes
{
public:
    /// Evenly spaced.
    KQexFrameTimes(const KQexSampling& pSampling) : mSampling(pSampling) {}

    /// Any times; \p pTimes must outlive it.
    explicit KQexFrameTimes(const std::vector<KTime>& pTimes) : mTimes(&pTimes) {}

    /// Number of frames.
    long long GetCount() const { return mTimes != nullptr ? static_cast<long long>(mTimes->size()) : mSampling.mCount; }

    /// Time of frame \p pFrame, 0 to GetCount() - 1.
    KTime GetTime(long long pFrame) const { return mTimes != nullptr ? (*mTimes)[static_cast<size_t>(pFrame)] : mSampling.GetTime(pFrame); }

private:
    KQexSampling              mSampling;
    const std::vector<KTime>* mTimes = nullptr;
};

/// Result of KQexRunFrames().
enum class KQexRunResult
{
    eDONE,
    eOUT_OF_MEMORY,
    eSTOPPED,  ///< A sink did not take a block.
    eCANCELLED ///< By the progress callback.
};

/// Evaluates the nodes of \p pRoots, and those below and above them, in the take of \p pLayer (null: at rest) at all \p pTimes, once for
/// all \p pSinkCount sinks, on \p pThreads threads (0: as many as the machine has, at most four). The scene must not change meanwhile; its
/// evaluator's context does not count. Memory does not grow with the number of frames. A std::bad_alloc of a sink ends the run as
/// eOUT_OF_MEMORY.
QEX_API KQexRunResult KQexRunFrames(const std::vector<KQexNode*>& pRoots, const KQexAnimLayer* pLayer, const KQexFrameTimes& pTimes,
                                    KQexFrameSink* const* pSinks, size_t pSinkCount, int pThreads, const KQexProgress& pProgress) noexcept;

} // namespace qexsdk

#endif
