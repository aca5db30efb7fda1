#ifndef QEXIOPLUGINS_MOTION_KQEXFRAMEWRITER_H
#define QEXIOPLUGINS_MOTION_KQEXFRAMEWRITER_H

#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// What a text format of motion does with each frame. Frames are evaluated and formatted in blocks on several threads; in between,
/// they are put in relation to each other in their order, so that the bytes written do not depend on blocks and threads.
class KQexFrameFormat
{
public:
    virtual ~KQexFrameFormat() = default;

    /// Computes the values of the frame at \p pTime. Called on several threads at once, each with its own \p pThread from 0 on.
    /// False when memory runs out.
    virtual bool Evaluate(int pThread, KTime pTime, double* pValues) = 0;

    /// Continues from the frame before: called once for each frame, in their order, on one thread.
    virtual void Continue(double* pValues) = 0;

    /// Appends the text of frame \p pFrame. Called on several threads at once. May throw std::bad_alloc.
    virtual void Format(long long pFrame, const double* pValues, std::string& pText) const = 0;
};

/// How a run over frames ended.
enum class KQexFrameRun
{
    eDONE,
    eOUT_OF_MEMORY,
    eNOT_WRITTEN, ///< The output failed and says why.
    eCANCELLED
};

/// Writes all frames of \p pSampling, \p pValueCount values each, on \p pThreads threads. Memory does not grow with their number.
/// May throw std::bad_alloc.
QEX_API KQexFrameRun WriteFrames(KQexFrameFormat& pFormat, const KQexSampling& pSampling, size_t pValueCount, int pThreads,
                                 KOutputFile& pOutput, const KQexProgress& pProgress);

} // namespace qexsdk

#endif
