#include <qexfigure/table/kqextabletext.h>

#include <qexfigure/kqexnumbertext.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr int kDecimals = 5; // Of centimetres: the limit of single precision.
constexpr int kMaxDecimals = 15;
constexpr int kSecondDigits = 6;

std::string CsvField(const std::string& pText)
{
    if (pText.find_first_of(",\"\r\n") == std::string::npos)
    {
        return pText;
    }
    std::string lQuoted = "\"";
    for (const char lChar : pText)
    {
        lQuoted += lChar == '"' ? "\"\"" : std::string(1, lChar);
    }
    return lQuoted + "\"";
}

class KLongCsv : public KQexTableText
{
public:
    explicit KLongCsv(const KQexTable& pTable) : KQexTableText(pTable)
    {
        for (const KQexTableItem& lItem : pTable.mItems)
        {
            mStarts.push_back(CsvField(lItem.mBone) + (pTable.mHasDofs ? "," + lItem.mDof.mWord : "") + ",");
            mEnds.push_back(pTable.mHasDofs ? "," + LimitsOf(lItem) + "," : "");
        }
    }

    std::string Head() const override
    {
        std::string lHead = mTable.mHasDofs ? "frame,time,bone,dof" : "frame,time,bone";
        for (const std::string& lComponent : mTable.mComponents)
        {
            lHead += "," + lComponent;
        }
        return lHead + (mTable.mHasDofs ? ",min,max,outside\n" : "\n");
    }

    void Append(long long, const std::string& pNumber, double pSeconds, const double* pValues, std::string& pText) const override
    {
        const std::string lStart = pNumber + "," + SecondsText(pSeconds) + ",";
        for (size_t i = 0; i < mTable.mItems.size(); ++i)
        {
            const KQexTableItem& lItem = mTable.mItems[i];
            pText += lStart + mStarts[i];
            AppendNumbers(i, pValues, pText);
            pText +=
                mEnds[i] + (mTable.mHasDofs ? FixedText(lItem.mDof.GetExcess(pValues[i], lItem.mPerUnit), lItem.mDecimals) : "") + "\n";
        }
    }

private:
    static std::string LimitsOf(const KQexTableItem& pItem)
    {
        return (pItem.mDof.mHasMin ? FixedText(pItem.mDof.mMin, pItem.mDecimals) : "-inf") + "," +
               (pItem.mDof.mHasMax ? FixedText(pItem.mDof.mMax, pItem.mDecimals) : "inf");
    }

    std::vector<std::string> mStarts; ///< Of each item's rows, after the time.
    std::vector<std::string> mEnds;   ///< Of these, after the numbers.
};

class KWideCsv : public KQexTableText
{
public:
    using KQexTableText::KQexTableText;

    std::string Head() const override
    {
        std::string lRow = "frame,time";
        for (const KQexTableItem& lItem : mTable.mItems)
        {
            for (const std::string& lComponent : mTable.mComponents)
            {
                lRow += "," + CsvField(mTable.mHasDofs ? lItem.mName : lItem.mName + "." + lComponent);
            }
        }
        return lRow + "\n";
    }

    void Append(long long, const std::string& pNumber, double pSeconds, const double* pValues, std::string& pText) const override
    {
        pText += pNumber + "," + SecondsText(pSeconds);
        for (size_t i = 0; i < mTable.mItems.size(); ++i)
        {
            pText += ",";
            AppendNumbers(i, pValues, pText);
        }
        pText += "\n";
    }
};

} // namespace

int DecimalsOf(double pPerCentimetre)
{
    const int lMore = pPerCentimetre < 1 ? static_cast<int>(std::ceil(-std::log10(pPerCentimetre))) : 0;
    return std::min(kDecimals + lMore, kMaxDecimals);
}

std::string FrameNumberText(const KQexFigureTake& pTake, KTime pTime)
{
    constexpr double kSame = 5e-4;
    const double     lFrames = pTake.GetFraction(pTime);
    return std::fabs(lFrames - std::round(lFrames)) < kSame ? std::to_string(pTake.GetNumber(pTime))
                                                            : FixedText(static_cast<double>(pTake.mOriginNumber) + lFrames, 3);
}

KQexTableText::~KQexTableText() = default;

void KQexTableText::AppendNumbers(size_t pItem, const double* pValues, std::string& pText) const
{
    const size_t lCount = mTable.mComponents.size();
    for (size_t i = 0; i < lCount; ++i)
    {
        pText += (i > 0 ? "," : "") + FixedText(pValues[pItem * lCount + i], mTable.mItems[pItem].mDecimals);
    }
}

std::string KQexTableText::SecondsText(double pSeconds)
{
    return FixedText(pSeconds, kSecondDigits);
}

std::unique_ptr<KQexTableText> MakeCsvText(const KQexTable& pTable, bool pIsWide)
{
    if (pIsWide)
    {
        return std::make_unique<KWideCsv>(pTable);
    }
    return std::make_unique<KLongCsv>(pTable);
}

} // namespace qexsdk
