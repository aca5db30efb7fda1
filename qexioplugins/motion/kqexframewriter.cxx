#include <qexioplugins/motion/kqexframewriter.h>

#include <kbaselib/kbase/kparallel.h>

#include <algorithm>
#include <atomic>
#include <new>

namespace qexsdk
{

namespace
{

constexpr int kBlockFrames = 64;    ///< Frames per block.
constexpr int kBlocksPerThread = 4; ///< Blocks in a batch, per thread.

/// Consecutive frames, processed by one thread at a time.
struct KFrameBlock
{
    long long           mFirst = 0;
    long long           mEnd = 0;
    std::vector<double> mValues;
    std::string         mText;
};

/// Divides the frames [\p pFirst, \p pEnd) into blocks.
void MakeBlocks(std::vector<KFrameBlock>& pBlocks, long long pFirst, long long pEnd, size_t pValueCount)
{
    pBlocks.resize(static_cast<size_t>((pEnd - pFirst + kBlockFrames - 1) / kBlockFrames));
    for (KFrameBlock& lBlock : pBlocks)
    {
        lBlock.mFirst = pFirst;
        lBlock.mEnd = std::min(pEnd, pFirst + kBlockFrames);
        lBlock.mValues.resize(static_cast<size_t>(lBlock.mEnd - lBlock.mFirst) * pValueCount);
        lBlock.mText.clear();
        pFirst = lBlock.mEnd;
    }
}

/// Calls pDo(frame, values) for each frame of the block.
template <typename TDo>
void ForFrames(KFrameBlock& pBlock, size_t pValueCount, const TDo& pDo)
{
    double* lValues = pBlock.mValues.data();
    for (long long lFrame = pBlock.mFirst; lFrame < pBlock.mEnd; ++lFrame)
    {
        pDo(lFrame, lValues);
        lValues += pValueCount;
    }
}

bool RunBatch(KQexFrameFormat& pFormat, std::vector<KFrameBlock>& pBlocks, const KQexSampling& pSampling, size_t pValueCount, int pThreads)
{
    std::atomic<bool> lOk{true};
    const int         lCount = static_cast<int>(pBlocks.size());
    const auto        lBlock = [&](int pIndex) -> KFrameBlock&
    {
        return pBlocks[static_cast<size_t>(pIndex)];
    };
    KParallelFor(lCount, pThreads,
                 [&](int pIndex)
                 {
                     ForFrames(lBlock(pIndex), pValueCount,
                               [&](long long pFrame, double* pValues)
                               {
                                   if (!pFormat.Evaluate(pIndex % pThreads, pSampling.GetTime(pFrame), pValues))
                                   {
                                       lOk = false;
                                   }
                               });
                 });
    for (int i = 0; i < lCount; ++i)
    {
        ForFrames(lBlock(i), pValueCount, [&](long long, double* pValues) { pFormat.MakeContinuous(pValues); });
    }
    KParallelFor(lCount, pThreads,
                 [&](int pIndex)
                 {
                     try
                     {
                         ForFrames(lBlock(pIndex), pValueCount,
                                   [&](long long pFrame, double* pValues) { pFormat.Format(pFrame, pValues, lBlock(pIndex).mText); });
                     }
                     catch (const std::bad_alloc&)
                     {
                         lOk = false;
                     }
                 });
    return lOk;
}

} // namespace

KQexWriteResult WriteFrames(KQexFrameFormat& pFormat, const KQexSampling& pSampling, size_t pValueCount, int pThreads, KOutputFile& pOutput,
                            const KQexProgress& pProgress)
{
    const long long          lBatch = static_cast<long long>(kBlockFrames) * kBlocksPerThread * pThreads;
    std::vector<KFrameBlock> lBlocks;
    for (long long lFirst = 0; lFirst < pSampling.mCount; lFirst += lBatch)
    {
        const long long lEnd = std::min(pSampling.mCount, lFirst + lBatch);
        MakeBlocks(lBlocks, lFirst, lEnd, pValueCount);
        if (!RunBatch(pFormat, lBlocks, pSampling, pValueCount, pThreads))
        {
            return KQexWriteResult::eOUT_OF_MEMORY;
        }
        for (const KFrameBlock& lBlock : lBlocks)
        {
            if (!pOutput.Write(lBlock.mText.data(), lBlock.mText.size()))
            {
                return KQexWriteResult::eNOT_WRITTEN;
            }
        }
        if (pProgress && !pProgress(static_cast<double>(lEnd) / static_cast<double>(pSampling.mCount)))
        {
            return KQexWriteResult::eCANCELLED;
        }
    }
    return KQexWriteResult::eDONE;
}

} // namespace qexsdk
