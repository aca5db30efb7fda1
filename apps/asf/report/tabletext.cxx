#include <apps/asf/report/tabletext.h>

#include <apps/asf/report/jsontext.h>
#include <qexfigure/kqexnpy.h>

namespace asfapp
{

namespace
{

class KJsonTable : public qexsdk::KQexTableText
{
public:
    using KQexTableText::KQexTableText;

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
        pText +=
            (pFrame == 0 ? "\n" : ",\n") + ("{\"frame\":" + pNumber) + ",\"time\":" + SecondsText(pSeconds) + ",\"" + mTable.mKind + "\":[";
        for (size_t i = 0; i < mTable.mItems.size(); ++i)
        {
            pText += i > 0 ? "," : "";
            pText += mTable.mHasDofs ? "" : "[";
            AppendNumbers(i, pValues, pText);
            pText += mTable.mHasDofs ? "" : "]";
        }
        pText += "]" + (mTable.mHasDofs ? Outside(pValues) : "") + "}";
    }

    std::string Tail() const override { return "\n]}\n"; }

private:
    KJson Dofs() const
    {
        KJson lDofs = KJson::array();
        for (const qexsdk::KQexTableItem& lItem : mTable.mItems)
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

class KNpyTable : public qexsdk::KQexTableText
{
public:
    using KQexTableText::KQexTableText;

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

std::unique_ptr<qexsdk::KQexTableText> MakeTableText(ETableFormat pFormat, const qexsdk::KQexTable& pTable)
{
    switch (pFormat)
    {
    case eTABLE_JSON:
        return std::make_unique<KJsonTable>(pTable);
    case eTABLE_NPY:
        return std::make_unique<KNpyTable>(pTable);
    default:
        return qexsdk::MakeCsvText(pTable, pFormat == eTABLE_CSV_WIDE);
    }
}

} // namespace asfapp
