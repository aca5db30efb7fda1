#include <qexfigure/output/kqexframeoutput.h>
#include <qexfigure/table/kqextabletext.h>
#include <qexfigure/table/kqextablevalues.h>

namespace qexsdk
{

namespace
{

/// The joints of a figure that are no ends.
std::vector<size_t> JointsToWrite(const std::vector<KQexFigureJoint>& pJoints)
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
class KPositionSink : public KQexFrameSink
{
public:
    KPositionSink(const std::vector<KQexFigureJoint>& pJoints, const KQexOutputSpace& pSpace, const KQexSampledTake& pTake,
                  KOutputFile& pOut)
        : mTake(pTake), mValues(pJoints, JointsToWrite(pJoints), pSpace), mOut(pOut)
    {
        mTable.mComponents = {"x", "y", "z"};
        for (const size_t lJoint : JointsToWrite(pJoints))
        {
            KQexTableItem lItem;
            lItem.mName = lItem.mBone = pJoints[lJoint].mName;
            lItem.mDecimals = DecimalsOf(pSpace.mPerCentimetre);
            mTable.mItems.push_back(lItem);
        }
        mText = MakeCsvText(mTable, false);
        Put(mText->Head());
    }

    void         Begin(const KQexFrameNodes& pNodes, int pThreads) override { mValues.Begin(pNodes, pThreads); }
    unsigned int GetParts() const override { return mValues.GetParts(); }
    size_t       GetValueCount() const override { return mTable.GetNumberCount(); }
    void Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept override { mValues.Compute(pThread, pFrame, pValues); }

    void Format(long long pFrame, const double* pValues, std::string& pText) const override
    {
        const KTime lTime = mTake.mSampling.GetTime(pFrame);
        mText->Append(pFrame, FrameNumberText(*mTake.mTake, lTime), lTime.GetSeconds() - mTake.mTake->mOrigin.GetSeconds(), pValues, pText);
    }

    bool Write(const KQexFrameBlock& pBlock) override { return Put(pBlock.mText); }

private:
    bool Put(const std::string& pText) { return mOut.Write(pText.data(), pText.size()); }

    const KQexSampledTake&         mTake;
    KQexTable                      mTable;
    KQexPositionValues             mValues;
    std::unique_ptr<KQexTableText> mText;
    KOutputFile&                   mOut;
};

class KTableOutput : public KQexFileOutput
{
public:
    using KQexFileOutput::KQexFileOutput;

    bool BeginTake(const KQexSampledTake& pTake, KQexFrameSink*& pSink) override
    {
        if (pTake.mTake == nullptr)
        {
            return Refuse("holds positions over time, but there is no motion to write");
        }
        if (!Open(*mOut))
        {
            return false;
        }
        mSink = std::make_unique<KPositionSink>(mOutputs.mFigure.GetJoints(), GetSpace(), pTake, *mOut);
        pSink = mSink.get();
        return true;
    }

    bool EndTake(KQexRunResult pResult) override
    {
        return (pResult == KQexRunResult::eDONE && mOut->Prepare()) || (mOut->HasFailed() && ReportFailure(*mOut));
    }

private:
    std::unique_ptr<KPositionSink> mSink;
};

} // namespace

std::unique_ptr<KQexFrameOutput> KMakeTableOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                  const std::vector<const KQexSampledTake*>& pTakes)
{
    return std::make_unique<KTableOutput>(pOutputs, pPath, pTakes);
}

} // namespace qexsdk
