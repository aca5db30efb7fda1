#include <tests/support/vectors.h>

#include <cmath>
#include <fstream>
#include <limits>

namespace qextest
{

std::vector<KJson> ReadJsonLines(const std::filesystem::path& pPath)
{
    std::vector<KJson> lLines;
    std::ifstream      lFile(pPath);
    EXPECT_TRUE(lFile.is_open()) << "cannot read " << pPath;
    for (std::string lText; std::getline(lFile, lText);)
    {
        KJson lLine = KJson::parse(lText, nullptr, false);
        if (lLine.is_discarded())
        {
            ADD_FAILURE() << pPath << ":" << lLines.size() + 1 << ": invalid JSON";
            break;
        }
        lLines.push_back(std::move(lLine));
    }
    return lLines;
}

bool IsNear(double pActual, double pExpected, double pTolerance)
{
    if (std::isnan(pExpected) || std::isinf(pExpected))
    {
        return pActual == pExpected || (std::isnan(pActual) && std::isnan(pExpected));
    }
    return std::fabs(pActual - pExpected) <= pTolerance * std::fmax(1.0, std::fabs(pExpected));
}

namespace
{

void AppendLeaves(const KJson& pValue, std::vector<const KJson*>& pLeaves)
{
    if (!pValue.is_array())
    {
        pLeaves.push_back(&pValue);
        return;
    }
    for (const KJson& lItem : pValue)
    {
        AppendLeaves(lItem, pLeaves);
    }
}

std::vector<const KJson*> Leaves(const KJson& pArray)
{
    std::vector<const KJson*> lLeaves;
    AppendLeaves(pArray, lLeaves);
    return lLeaves;
}

double Number(const KJson& pValue)
{
    if (pValue == "inf" || pValue == "-inf")
    {
        return pValue == "inf" ? std::numeric_limits<double>::infinity() : -std::numeric_limits<double>::infinity();
    }
    return pValue.is_number() ? pValue.get<double>() : std::numeric_limits<double>::quiet_NaN();
}

} // namespace

testing::AssertionResult AreNear(const double* pActual, size_t pCount, const KJson& pExpected, double pTolerance)
{
    const std::vector<const KJson*> lExpected = Leaves(pExpected);
    if (lExpected.size() != pCount)
    {
        return testing::AssertionFailure() << pCount << " numbers instead of " << lExpected.size() << ": " << pExpected;
    }
    for (size_t lIndex = 0; lIndex < pCount; ++lIndex)
    {
        if (!lExpected[lIndex]->is_null() && !IsNear(pActual[lIndex], Number(*lExpected[lIndex]), pTolerance))
        {
            return testing::AssertionFailure() << "number " << lIndex << " is " << testing::PrintToString(pActual[lIndex]) << " instead of "
                                               << *lExpected[lIndex] << " in " << pExpected;
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult AreNear(const std::vector<double>& pActual, const KJson& pExpected, double pTolerance)
{
    return AreNear(pActual.data(), pActual.size(), pExpected, pTolerance);
}

std::vector<double> Numbers(const KJson& pArray)
{
    std::vector<double> lNumbers;
    for (const KJson* lLeaf : Leaves(pArray))
    {
        lNumbers.push_back(Number(*lLeaf));
    }
    return lNumbers;
}

std::string Bytes(const std::string& pText)
{
    std::string lBytes;
    for (size_t lAt = 0; lAt < pText.size(); ++lAt)
    {
        const unsigned char lLead = static_cast<unsigned char>(pText[lAt]);
        // U+0080 to U+00FF are two bytes of UTF-8, the first of them C2 or C3.
        if ((lLead == 0xC2 || lLead == 0xC3) && lAt + 1 < pText.size())
        {
            lBytes += static_cast<char>(((lLead & 0x03) << 6) | (static_cast<unsigned char>(pText[++lAt]) & 0x3F));
            continue;
        }
        lBytes += pText[lAt];
    }
    return lBytes;
}

std::string Bytes(const KJson& pText)
{
    return Bytes(pText.get_ref<const std::string&>());
}

} // namespace qextest
