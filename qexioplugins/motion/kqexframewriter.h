#ifndef QEXIOPLUGINS_MOTION_KQEXFRAMEWRITER_H
#define QEXIOPLUGINS_MOTION_KQEXFRAMEWRITER_H

#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// What a text format of motion does with each frame. Blocks of frames are evaluated and formatted in parallel; in between,
/// MakeContinuous() sees all frames in order on one thread, so the output does not depend on blocks or threads.
class KQexFrameFormat
{
public:
    virtual ~KQexFrameFormat() = default;

    /// Computes the values of the frame at \p pTime. Called on several threads at once, each with its own \p pThread, from 0.
    /// False when memory runs out.
    virtual bool Evaluate(int pThread, KTime pTime, double* pValues) = 0;

    /// Adjusts a frame's values to the previous frame's. Called once per frame, in order, on one thread.
    virtual void MakeContinuous(double* pValues) = 0;

    /// Appends the text of frame \p pFrame. Called on several threads at once. May throw std::bad_alloc.
    virtual void Format(long long pFrame, const double* pValues, std::string& pText) const = 0;
};

/// Result of WriteFrames().
enum class KQexWriteResult
{
    eDONE,
    eOUT_OF_MEMORY,
    eNOT_WRITTEN, ///< The output failed; see KOutputFile::GetReason().
    eCANCELLED
};

/// Writes all frames of \p pSampling, \p pValueCount values each, on \p pThreads threads. Memory does not grow with the frame count.
/// May throw std::bad_alloc.
QEX_API KQexWriteResult WriteFrames(KQexFrameFormat& pFormat, const KQexSampling& pSampling, size_t pValueCount, int pThreads,
                                    KOutputFile& pOutput, const KQexProgress& pProgress);

} // namespace qexsdk

#endif
