#include <apps/asf/figure/frameoutput.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/outputs.h>
#include <qexfigure/table/kqextabletext.h>
#include <qexfigure/table/kqextablevalues.h>

namespace asfapp
{

namespace
{

/// The joints of a figure that are no ends.
std::vector<size_t> PickJoints(const std::vector<qexsdk::KQexFigureJoint>& pJoints)
{
    std::vector<size_t> lPicked;
    for (size_t i = 0; i < pJoints.size(); ++i)
    {
        if (!pJoints[i].mIsEnd)
        {
            lPicked.push_back(i);
        }
    }
    return lPicked;
}

/// Writes the positions of joints as text, frame by frame.
class KPositionSink : public qexsdk::KQexFrameSink
{
public:
    KPositionSink(const std::vector<qexsdk::KQexFigureJoint>& pJoints, const KWorldOptions& pWorld, const KSampledTake& pTake,
                  qexsdk::KOutputFile& pOut)
        : mTake(pTake), mValues(pJoints, PickJoints(pJoints), pWorld.GetSpace()), mOut(pOut)
    {
        mTable.mComponents = {"x", "y", "z"};
        for (const size_t lJoint : PickJoints(pJoints))
        {
            qexsdk::KQexTableItem lItem;
            lItem.mName = lItem.mBone = pJoints[lJoint].mName;
            lItem.mDecimals = qexsdk::DecimalsOf(pWorld.GetFactor());
            mTable.mItems.push_back(lItem);
        }
        mText = qexsdk::MakeCsvText(mTable, false);
        Put(mText->Head());
    }

    void         Begin(const qexsdk::KQexFrameNodes& pNodes, int pThreads) override { mValues.Begin(pNodes, pThreads); }
    unsigned int GetParts() const override { return mValues.GetParts(); }
    size_t       GetValueCount() const override { return mTable.GetNumberCount(); }
    void         Compute(int pThread, const qexsdk::KQexFrame& pFrame, double* pValues) noexcept override
    {
        mValues.Compute(pThread, pFrame, pValues);
    }

    void Format(long long pFrame, const double* pValues, std::string& pText) const override
    {
        const qexsdk::KTime lTime = mTake.mSampling.GetTime(pFrame);
        mText->Append(pFrame, qexsdk::FrameNumberText(*mTake.mTake, lTime), lTime.GetSeconds() - mTake.mTake->mOrigin.GetSeconds(), pValues,
                      pText);
    }

    bool Write(const qexsdk::KQexFrameBlock& pBlock) override { return Put(pBlock.mText); }

private:
    bool Put(const std::string& pText) { return mOut.Write(pText.data(), pText.size()); }

    const KSampledTake&                    mTake;
    qexsdk::KQexTable                      mTable;
    qexsdk::KQexPositionValues             mValues;
    std::unique_ptr<qexsdk::KQexTableText> mText;
    qexsdk::KOutputFile&                   mOut;
};

/// The same file as that of asf positions.
class KTableOutput : public KFrameOutput
{
public:
    using KFrameOutput::KFrameOutput;

    bool BeginTake(const KSampledTake& pTake, qexsdk::KQexFrameSink*& pSink) override
    {
        if (!OpenOutput(*mOut, mPath, mOutputs.mConsole))
        {
            return false;
        }
        mSink = std::make_unique<KPositionSink>(mOutputs.mFigure.GetJoints(), mOutputs.mOptions.mWorld, pTake, *mOut);
        pSink = mSink.get();
        return true;
    }

    bool EndTake(qexsdk::KQexRunResult pResult) override
    {
        if (pResult == qexsdk::KQexRunResult::eDONE && mOut->Prepare())
        {
            return true;
        }
        if (mOut->HasFailed())
        {
            ReportOutputError(*mOut, mPath, mOutputs.mConsole);
        }
        return false;
    }

    bool End() override
    {
        mOutputs.mFiles.push_back(std::move(mOut));
        return true;
    }

private:
    std::unique_ptr<qexsdk::KOutputFile> mOut = std::make_unique<qexsdk::KOutputFile>();
    std::unique_ptr<KPositionSink>       mSink;
};

} // namespace

std::unique_ptr<KFrameOutput> MakeTableOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                              const std::vector<const KSampledTake*>& pTakes)
{
    return std::make_unique<KTableOutput>(pOutputs, pPath, pTakes);
}

} // namespace asfapp
