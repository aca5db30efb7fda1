#include <apps/asf/report/tablesink.h>

#include <charconv>
#include <utility>

namespace asfapp
{

namespace
{

/// CSV, JSON or NPY.
class KTextSink : public KTableSink
{
public:
    KTextSink(std::unique_ptr<qexsdk::KQexTableText> pText, const qexsdk::KQexTable& pTable, const KLoadedMotion& pMotion,
              const qexsdk::KQexFrameTimes& pTimes, qexsdk::KQexTableValues& pValues, qexsdk::KOutputFile& pOut)
        : KTableSink(pTable, pMotion, pTimes, pValues), mText(std::move(pText)), mOut(pOut)
    {
        Put(mText->Head());
    }

    void Format(long long pFrame, const double* pValues, std::string& pText) const override
    {
        const qexsdk::KTime lTime = mTimes.GetTime(pFrame);
        mText->Append(pFrame, mMotion.GetNumberText(lTime), mMotion.GetSeconds(lTime), pValues, pText);
    }

    bool Write(const qexsdk::KQexFrameBlock& pBlock) override { return Put(pBlock.mText); }

    void Finish() override { Put(mText->Tail()); }

private:
    bool Put(const std::string& pText) { return mOut.Write(pText.data(), pText.size()); }

    std::unique_ptr<qexsdk::KQexTableText> mText;
    qexsdk::KOutputFile&                   mOut;
};

/// NPZ.
class KArchiveSink : public KTableSink
{
public:
    KArchiveSink(const qexsdk::KQexTable& pTable, const KLoadedMotion& pMotion, const qexsdk::KQexFrameTimes& pTimes,
                 qexsdk::KQexTableValues& pValues, qexsdk::KOutputFile& pOut)
        : KTableSink(pTable, pMotion, pTimes, pValues), mFile(pOut)
    {
        mFile.AddNumbers("fps", {qexsdk::KQexArrayType::eFLOAT64, {}}, {pTable.mRate});
        AddItems();
        const uint64_t lFrames = pTable.mFrameCount;
        mNumbers = mFile.Add("frames", {qexsdk::KQexArrayType::eFLOAT64, {lFrames}});
        mSeconds = mFile.Add("times", {qexsdk::KQexArrayType::eFLOAT64, {lFrames}});
        std::vector<uint64_t> lShape = {lFrames, pTable.mItems.size()};
        lShape.insert(lShape.end(), pTable.mShape.begin(), pTable.mShape.end());
        mArray = mFile.Add(pTable.mArray, {qexsdk::KQexArrayType::eFLOAT32, lShape});
    }

    bool Write(const qexsdk::KQexFrameBlock& pBlock) override
    {
        bool lOk = mFile.Append(mArray, pBlock.mValues.data(), pBlock.mValues.size());
        for (long long lFrame = pBlock.mFirst; lFrame < pBlock.mEnd; ++lFrame)
        {
            const qexsdk::KTime lTime = mTimes.GetTime(lFrame);
            const double        lSeconds = mMotion.GetSeconds(lTime);
            // As the texts have it: rounding the number itself differs from that where it is halfway between two decimals.
            const std::string lText = mMotion.GetNumberText(lTime);
            double            lNumber = 0;
            std::from_chars(lText.data(), lText.data() + lText.size(), lNumber);
            lOk = lOk && mFile.Append(mNumbers, &lNumber, 1) && mFile.Append(mSeconds, &lSeconds, 1);
        }
        return lOk;
    }

    void Finish() override { mFile.Finish(); }

private:
    void AddItems()
    {
        const uint64_t      lCount = mTable.mItems.size();
        std::vector<double> lParents;
        std::vector<double> lLimits;
        for (const qexsdk::KQexTableItem& lItem : mTable.mItems)
        {
            lParents.push_back(lItem.mParent);
            lLimits.push_back(lItem.mDof.GetMin());
            lLimits.push_back(lItem.mDof.GetMax());
        }
        mFile.AddTexts(mTable.mHasDofs ? "dof_names" : "names", mTable.GetNames());
        if (mTable.mHasDofs)
        {
            mFile.AddNumbers("dof_limits", {qexsdk::KQexArrayType::eFLOAT32, {lCount, 2}}, lLimits);
        }
        else
        {
            mFile.AddNumbers("parents", {qexsdk::KQexArrayType::eINT32, {lCount}}, lParents);
        }
    }

    qexsdk::KQexNpzFile mFile;
    int                 mNumbers = -1; ///< Arrays of the file.
    int                 mSeconds = -1;
    int                 mArray = -1;
};

} // namespace

std::unique_ptr<KTableSink> MakeTableSink(ETableFormat pFormat, const qexsdk::KQexTable& pTable, const KLoadedMotion& pMotion,
                                          const qexsdk::KQexFrameTimes& pTimes, qexsdk::KQexTableValues& pValues, qexsdk::KOutputFile& pOut)
{
    if (pFormat == eTABLE_NPZ)
    {
        return std::make_unique<KArchiveSink>(pTable, pMotion, pTimes, pValues, pOut);
    }
    return std::make_unique<KTextSink>(MakeTableText(pFormat, pTable), pTable, pMotion, pTimes, pValues, pOut);
}

} // namespace asfapp
