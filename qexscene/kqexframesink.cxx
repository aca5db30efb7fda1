#include <qexscene/kqexframesink.h>

#include <kbaselib/kbase/kparallel.h>

#include <algorithm>
#include <atomic>
#include <exception>

namespace qexsdk
{

namespace
{

constexpr int kBlockFrames = 64;    ///< Frames per block.
constexpr int kBlocksPerThread = 4; ///< Blocks in a batch, per thread.

/// One run of KQexRunFrames(). May throw std::bad_alloc.
class KFrameRun
{
public:
    KFrameRun(const std::vector<KQexNode*>& pRoots, const KQexAnimLayer* pLayer, const KQexFrameTimes& pTimes, KQexFrameSink* const* pSinks,
              size_t pSinkCount, int pThreads)
        : mNodes(pRoots, pLayer), mTimes(pTimes), mSinks(pSinks, pSinks + pSinkCount), mThreads(pThreads), mBlocks(pSinkCount)
    {
        unsigned int lParts = eFRAME_CHANNELS;
        for (KQexFrameSink* lSink : mSinks)
        {
            lSink->Begin(mNodes, mThreads);
            lParts |= lSink->GetParts();
        }
        for (int i = 0; i < mThreads; ++i)
        {
            mFrames.emplace_back(mNodes, lParts);
        }
    }

    KQexRunResult Run(const KQexProgress& pProgress)
    {
        const long long lBatch = static_cast<long long>(kBlockFrames) * kBlocksPerThread * mThreads;
        const long long lCount = mTimes.GetCount();
        for (long long lFirst = 0; lFirst < lCount; lFirst += lBatch)
        {
            const long long lEnd = std::min(lCount, lFirst + lBatch);
            MakeBlocks(lFirst, lEnd);
            ForBlocks([this](size_t pBlock, int pThread) { Compute(pBlock, pThread); });
            MakeContinuous();
            ForBlocks([this](size_t pBlock, int) { Format(pBlock); });
            if (mIsOutOfMemory)
            {
                return KQexRunResult::eOUT_OF_MEMORY;
            }
            if (!Write())
            {
                return KQexRunResult::eSTOPPED;
            }
            if (pProgress && !pProgress(static_cast<double>(lEnd) / static_cast<double>(lCount)))
            {
                return KQexRunResult::eCANCELLED;
            }
        }
        return KQexRunResult::eDONE;
    }

private:
    /// Divides the frames [pFirst, pEnd) into blocks.
    void MakeBlocks(long long pFirst, long long pEnd)
    {
        mBlockCount = static_cast<size_t>((pEnd - pFirst + kBlockFrames - 1) / kBlockFrames);
        for (size_t i = 0; i < mSinks.size(); ++i)
        {
            mBlocks[i].resize(mBlockCount);
            long long lFirst = pFirst;
            for (KQexFrameBlock& lBlock : mBlocks[i])
            {
                lBlock.mFirst = lFirst;
                lBlock.mEnd = std::min(pEnd, lFirst + kBlockFrames);
                lBlock.mValues.resize(static_cast<size_t>(lBlock.mEnd - lFirst) * mSinks[i]->GetValueCount());
                lBlock.mText.clear();
                lFirst = lBlock.mEnd;
            }
        }
    }

    template <typename TDo>
    void ForBlocks(const TDo& pDo)
    {
        KParallelFor(static_cast<int>(mBlockCount), mThreads, [&](int pBlock) { pDo(static_cast<size_t>(pBlock), pBlock % mThreads); });
    }

    void Compute(size_t pBlock, int pThread)
    {
        KQexFrame&            lFrame = mFrames[static_cast<size_t>(pThread)];
        const KQexFrameBlock& lFrames = mBlocks.front()[pBlock];
        for (long long i = lFrames.mFirst; i < lFrames.mEnd; ++i)
        {
            lFrame.Evaluate(i, mTimes.GetTime(i));
            for (size_t lSink = 0; lSink < mSinks.size(); ++lSink)
            {
                mSinks[lSink]->Compute(pThread, lFrame, ValuesOf(lSink, mBlocks[lSink][pBlock], i));
            }
        }
    }

    double* ValuesOf(size_t pSink, KQexFrameBlock& pBlock, long long pFrame) const
    {
        return pBlock.mValues.data() + static_cast<size_t>(pFrame - pBlock.mFirst) * mSinks[pSink]->GetValueCount();
    }

    /// Calls pDo(frame, values) for each frame of a sink's block.
    template <typename TDo>
    void ForFrames(size_t pSink, size_t pBlock, const TDo& pDo)
    {
        KQexFrameBlock& lBlock = mBlocks[pSink][pBlock];
        for (long long i = lBlock.mFirst; i < lBlock.mEnd; ++i)
        {
            pDo(i, ValuesOf(pSink, lBlock, i));
        }
    }

    void MakeContinuous()
    {
        for (size_t lSink = 0; lSink < mSinks.size(); ++lSink)
        {
            for (size_t i = 0; i < mBlockCount; ++i)
            {
                ForFrames(lSink, i, [&](long long, double* pValues) { mSinks[lSink]->MakeContinuous(pValues); });
            }
        }
    }

    void Format(size_t pBlock)
    {
        try
        {
            for (size_t lSink = 0; lSink < mSinks.size(); ++lSink)
            {
                std::string& lText = mBlocks[lSink][pBlock].mText;
                ForFrames(lSink, pBlock, [&](long long pFrame, double* pValues) { mSinks[lSink]->Format(pFrame, pValues, lText); });
            }
        }
        catch (const std::exception&)
        {
            mIsOutOfMemory = true;
        }
    }

    bool Write()
    {
        for (size_t lSink = 0; lSink < mSinks.size(); ++lSink)
        {
            for (const KQexFrameBlock& lBlock : mBlocks[lSink])
            {
                if (!mSinks[lSink]->Write(lBlock))
                {
                    return false;
                }
            }
        }
        return true;
    }

    KQexFrameNodes                           mNodes;
    const KQexFrameTimes&                    mTimes;
    const std::vector<KQexFrameSink*>        mSinks;
    const int                                mThreads;
    std::vector<KQexFrame>                   mFrames; ///< One for each thread.
    std::vector<std::vector<KQexFrameBlock>> mBlocks; ///< A batch's, for each sink.
    size_t                                   mBlockCount = 0;
    std::atomic<bool>                        mIsOutOfMemory{false};
};

} // namespace

KQexFrameSink::~KQexFrameSink() = default;

void KQexFrameSink::MakeContinuous(double*) {}

void KQexFrameSink::Format(long long, const double*, std::string&) const {}

KQexRunResult KQexRunFrames(const std::vector<KQexNode*>& pRoots, const KQexAnimLayer* pLayer, const KQexFrameTimes& pTimes,
                            KQexFrameSink* const* pSinks, size_t pSinkCount, int pThreads, const KQexProgress& pProgress) noexcept
{
    if (pSinkCount == 0)
    {
        return KQexRunResult::eDONE;
    }
    try
    {
        return KFrameRun(pRoots, pLayer, pTimes, pSinks, pSinkCount, KThreadCount(pThreads)).Run(pProgress);
    }
    catch (const std::exception&)
    {
        return KQexRunResult::eOUT_OF_MEMORY; // bad_alloc, or length_error from sizes that no memory has.
    }
}

} // namespace qexsdk
