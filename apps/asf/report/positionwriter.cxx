#include <apps/asf/report/positionwriter.h>

#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/numbertext.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace asfapp
{

namespace
{

constexpr int kDecimals = 5; // Of centimetres: the limit of single precision.
constexpr int kMaxDecimals = 15;
constexpr int kSecondDigits = 6;

class KTextWriter : public KPositionWriter
{
public:
    explicit KTextWriter(qexsdk::KOutputFile& pOut) : mOut(pOut) {}

protected:
    void Write(const std::string& pText) { mOut.Write(pText.data(), pText.size()); }

    std::string Coordinates(const KPoint& pPoint, const char* pSeparator) const
    {
        const int lDigits = mTable.mDecimals;
        return Fixed(pPoint.mX, lDigits) + pSeparator + Fixed(pPoint.mY, lDigits) + pSeparator + Fixed(pPoint.mZ, lDigits);
    }

    KPositionTable mTable;

private:
    qexsdk::KOutputFile& mOut;
};

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

class KLongCsvWriter : public KTextWriter
{
public:
    using KTextWriter::KTextWriter;

    void Begin(const KPositionTable& pTable) override
    {
        mTable = pTable;
        for (std::string& lName : mTable.mJoints)
        {
            lName = CsvField(lName);
        }
        Write("frame,time,bone,x,y,z\n");
    }

    void Frame(const std::string& pNumber, double pSeconds, const std::vector<KPoint>& pPositions) override
    {
        const std::string lHead = pNumber + "," + Fixed(pSeconds, kSecondDigits) + ",";
        std::string       lRows;
        for (size_t lJoint = 0; lJoint < pPositions.size(); ++lJoint)
        {
            lRows += lHead + mTable.mJoints[lJoint] + "," + Coordinates(pPositions[lJoint], ",") + "\n";
        }
        Write(lRows);
    }

    void End() override {}
};

class KWideCsvWriter : public KTextWriter
{
public:
    using KTextWriter::KTextWriter;

    void Begin(const KPositionTable& pTable) override
    {
        mTable = pTable;
        std::string lRow = "frame,time";
        for (const std::string& lName : pTable.mJoints)
        {
            for (const char* lAxis : {".x", ".y", ".z"})
            {
                lRow += "," + CsvField(lName + lAxis);
            }
        }
        Write(lRow + "\n");
    }

    void Frame(const std::string& pNumber, double pSeconds, const std::vector<KPoint>& pPositions) override
    {
        std::string lRow = pNumber + "," + Fixed(pSeconds, kSecondDigits);
        for (const KPoint& lPoint : pPositions)
        {
            lRow += "," + Coordinates(lPoint, ",");
        }
        Write(lRow + "\n");
    }

    void End() override {}
};

class KJsonWriter : public KTextWriter
{
public:
    using KTextWriter::KTextWriter;

    void Begin(const KPositionTable& pTable) override
    {
        mTable = pTable;
        KJson lHead;
        lHead["schema"] = kJsonSchema;
        lHead["kind"] = "positions";
        lHead["skeleton"] = pTable.mSkeleton;
        lHead["motion"] = pTable.mMotion;
        lHead["unit"] = pTable.mUnit;
        lHead["framesPerSecond"] = pTable.mRate;
        lHead["joints"] = pTable.mJoints;
        std::string lText = lHead.dump(-1, ' ', false, KJson::error_handler_t::replace);
        lText.pop_back();
        Write(lText + ",\"frames\":[");
    }

    void Frame(const std::string& pNumber, double pSeconds, const std::vector<KPoint>& pPositions) override
    {
        std::string lText =
            (mFirst ? "\n" : ",\n") + ("{\"frame\":" + pNumber) + ",\"time\":" + Fixed(pSeconds, kSecondDigits) + ",\"positions\":[";
        mFirst = false;
        for (size_t lJoint = 0; lJoint < pPositions.size(); ++lJoint)
        {
            lText += (lJoint > 0 ? ",[" : "[") + Coordinates(pPositions[lJoint], ",") + "]";
        }
        Write(lText + "]}");
    }

    void End() override { Write("\n]}\n"); }

private:
    bool mFirst = true;
};

class KNpyWriter : public KTextWriter
{
public:
    using KTextWriter::KTextWriter;

    // Magic, version 1.0, the header's length and a Python dictionary, padded so that all of it is a multiple of 64 bytes.
    void Begin(const KPositionTable& pTable) override
    {
        constexpr size_t kPreamble = 10;
        std::string      lHeader = "{'descr': '<f4', 'fortran_order': False, 'shape': (" + std::to_string(pTable.mFrameCount) + ", " +
                              std::to_string(pTable.mJoints.size()) + ", 3), }";
        lHeader.append(63 - (kPreamble + lHeader.size()) % 64, ' ');
        lHeader += '\n';
        std::string lText("\x93NUMPY\x01\x00", 8);
        lText += static_cast<char>(lHeader.size() & 0xff);
        lText += static_cast<char>(lHeader.size() >> 8);
        Write(lText + lHeader);
    }

    void Frame(const std::string&, double, const std::vector<KPoint>& pPositions) override
    {
        std::string lBytes;
        for (const KPoint& lPoint : pPositions)
        {
            for (const double lValue : {lPoint.mX, lPoint.mY, lPoint.mZ})
            {
                AppendFloat(lBytes, static_cast<float>(lValue));
            }
        }
        Write(lBytes);
    }

    void End() override {}

private:
    // Little-endian on any machine.
    static void AppendFloat(std::string& pBytes, float pValue)
    {
        uint32_t lBits = 0;
        std::memcpy(&lBits, &pValue, sizeof lBits);
        for (int lByte = 0; lByte < 4; ++lByte)
        {
            pBytes += static_cast<char>((lBits >> (8 * lByte)) & 0xff);
        }
    }
};

} // namespace

int DecimalsOf(double pPerCentimetre)
{
    const int lMore = pPerCentimetre < 1 ? static_cast<int>(std::ceil(-std::log10(pPerCentimetre))) : 0;
    return std::min(kDecimals + lMore, kMaxDecimals);
}

std::unique_ptr<KPositionWriter> MakePositionWriter(EPositionFormat pFormat, qexsdk::KOutputFile& pOut)
{
    switch (pFormat)
    {
    case eFORMAT_CSV_WIDE:
        return std::make_unique<KWideCsvWriter>(pOut);
    case eFORMAT_JSON:
        return std::make_unique<KJsonWriter>(pOut);
    case eFORMAT_NPY:
        return std::make_unique<KNpyWriter>(pOut);
    default:
        return std::make_unique<KLongCsvWriter>(pOut);
    }
}

} // namespace asfapp
