#include <apps/asf/report/tabletext.h>

#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/numbertext.h>
#include <qexfigure/kqexnpy.h>

#include <algorithm>
#include <cmath>

namespace asfapp
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

/// The numbers of an item, with commas between.
void AppendNumbers(const KTable& pTable, size_t pItem, const double* pValues, std::string& pText)
{
    const size_t lCount = pTable.mComponents.size();
    for (size_t i = 0; i < lCount; ++i)
    {
        pText += (i > 0 ? "," : "") + FixedText(pValues[pItem * lCount + i], pTable.mItems[pItem].mDecimals);
    }
}

class KLongCsv : public KTableText
{
public:
    explicit KLongCsv(const KTable& pTable) : KTableText(pTable)
    {
        for (const KTableItem& lItem : pTable.mItems)
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
        const std::string lStart = pNumber + "," + FixedText(pSeconds, kSecondDigits) + ",";
        for (size_t i = 0; i < mTable.mItems.size(); ++i)
        {
            const KTableItem& lItem = mTable.mItems[i];
            pText += lStart + mStarts[i];
            AppendNumbers(mTable, i, pValues, pText);
            pText +=
                mEnds[i] + (mTable.mHasDofs ? FixedText(lItem.mDof.GetExcess(pValues[i], lItem.mPerUnit), lItem.mDecimals) : "") + "\n";
        }
    }

private:
    static std::string LimitsOf(const KTableItem& pItem)
    {
        return (pItem.mDof.mHasMin ? FixedText(pItem.mDof.mMin, pItem.mDecimals) : "-inf") + "," +
               (pItem.mDof.mHasMax ? FixedText(pItem.mDof.mMax, pItem.mDecimals) : "inf");
    }

    std::vector<std::string> mStarts; ///< Of each item's rows, after the time.
    std::vector<std::string> mEnds;   ///< Of these, after the numbers.
};

class KWideCsv : public KTableText
{
public:
    using KTableText::KTableText;

    std::string Head() const override
    {
        std::string lRow = "frame,time";
        for (const KTableItem& lItem : mTable.mItems)
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
        pText += pNumber + "," + FixedText(pSeconds, kSecondDigits);
        for (size_t i = 0; i < mTable.mItems.size(); ++i)
        {
            pText += ",";
            AppendNumbers(mTable, i, pValues, pText);
        }
        pText += "\n";
    }
};

class KJsonTable : public KTableText
{
public:
    using KTableText::KTableText;

    std::string Head() const override
    {
        KJson lHead;
        lHead["schema"] = kJsonSchema;
        lHead["kind"] = mTable.mKind;
        lHead["skeleton"] = mTable.mSkeleton;
        lHead["motion"] = mTable.mMotion;
        for (const auto& [lKey, lWord] : mTable.mWords)
        {
            lHead[lKey] = lWord;
        }
        lHead["framesPerSecond"] = mTable.mRate;
        if (mTable.mHasDofs)
        {
            lHead["dofs"] = Dofs();
        }
        else
        {
            lHead["joints"] = mTable.GetNames();
        }
        std::string lText = lHead.dump(-1, ' ', false, KJson::error_handler_t::replace);
        lText.pop_back();
        return lText + ",\"frames\":[";
    }

    void Append(long long pFrame, const std::string& pNumber, double pSeconds, const double* pValues, std::string& pText) const override
    {
        pText += (pFrame == 0 ? "\n" : ",\n") + ("{\"frame\":" + pNumber) + ",\"time\":" + FixedText(pSeconds, kSecondDigits) + ",\"" +
                 mTable.mKind + "\":[";
        for (size_t i = 0; i < mTable.mItems.size(); ++i)
        {
            pText += i > 0 ? "," : "";
            pText += mTable.mHasDofs ? "" : "[";
            AppendNumbers(mTable, i, pValues, pText);
            pText += mTable.mHasDofs ? "" : "]";
        }
        pText += "]" + (mTable.mHasDofs ? Outside(pValues) : "") + "}";
    }

    std::string Tail() const override { return "\n]}\n"; }

private:
    KJson Dofs() const
    {
        KJson lDofs = KJson::array();
        for (const KTableItem& lItem : mTable.mItems)
        {
            KJson lDof;
            lDof["name"] = lItem.mName;
            lDof["bone"] = lItem.mBone;
            lDof["dof"] = lItem.mDof.mWord;
            lDof["unit"] = lItem.mUnit;
            lDof["min"] = lItem.mDof.mHasMin ? KJson(lItem.mDof.mMin) : KJson();
            lDof["max"] = lItem.mDof.mHasMax ? KJson(lItem.mDof.mMax) : KJson();
            lDofs.push_back(lDof);
        }
        return lDofs;
    }

    /// The indices of the numbers that are outside their limits.
    std::string Outside(const double* pValues) const
    {
        std::string lList;
        for (size_t i = 0; i < mTable.mItems.size(); ++i)
        {
            if (mTable.mItems[i].mDof.GetExcess(pValues[i], mTable.mItems[i].mPerUnit) != 0.0)
            {
                lList += (lList.empty() ? "" : ",") + std::to_string(i);
            }
        }
        return ",\"outside\":[" + lList + "]";
    }
};

class KNpyTable : public KTableText
{
public:
    using KTableText::KTableText;

    std::string Head() const override
    {
        qexsdk::KQexArrayHead lHead;
        lHead.mShape = {mTable.mFrameCount, mTable.mItems.size()};
        lHead.mShape.insert(lHead.mShape.end(), mTable.mShape.begin(), mTable.mShape.end());
        return qexsdk::KQexNpyStart(lHead);
    }

    void Append(long long, const std::string&, double, const double* pValues, std::string& pText) const override
    {
        qexsdk::KQexAppendItems(qexsdk::KQexArrayType::eFLOAT32, pValues, mTable.GetNumberCount(), pText);
    }
};

} // namespace

int DecimalsOf(double pPerCentimetre)
{
    const int lMore = pPerCentimetre < 1 ? static_cast<int>(std::ceil(-std::log10(pPerCentimetre))) : 0;
    return std::min(kDecimals + lMore, kMaxDecimals);
}

std::unique_ptr<KTableText> MakeTableText(ETableFormat pFormat, const KTable& pTable)
{
    switch (pFormat)
    {
    case eTABLE_CSV_WIDE:
        return std::make_unique<KWideCsv>(pTable);
    case eTABLE_JSON:
        return std::make_unique<KJsonTable>(pTable);
    case eTABLE_NPY:
        return std::make_unique<KNpyTable>(pTable);
    default:
        return std::make_unique<KLongCsv>(pTable);
    }
}

} // namespace asfapp
