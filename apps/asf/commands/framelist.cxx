#include <apps/asf/commands/framelist.h>

#include <algorithm>
#include <charconv>

namespace asfapp
{

namespace
{

/// Tokenizer for one entry of the list.
class KEntryReader
{
public:
    KEntryReader(const std::string& pText, const std::vector<long long>& pNumbers) : mText(pText), mNumbers(pNumbers) {}

    bool Number(long long& pValue)
    {
        if (Word("first") || Word("last"))
        {
            pValue = mText.compare(mPosition - 4, 4, "last") == 0 ? mNumbers.back() : mNumbers.front();
            return true;
        }
        const auto lResult = std::from_chars(mText.data() + mPosition, mText.data() + mText.size(), pValue);
        mPosition = static_cast<size_t>(lResult.ptr - mText.data());
        return lResult.ec == std::errc();
    }

    bool Word(const std::string& pWord)
    {
        const bool lMatches = mText.compare(mPosition, pWord.size(), pWord) == 0;
        mPosition += lMatches ? pWord.size() : 0;
        return lMatches;
    }

    bool AtEnd() const { return mPosition == mText.size(); }

private:
    const std::string&            mText;
    const std::vector<long long>& mNumbers;
    size_t                        mPosition = 0;
};

std::string PickEntry(const std::string& pEntry, const std::vector<long long>& pNumbers, std::vector<size_t>& pIndices)
{
    KEntryReader lReader(pEntry, pNumbers);
    long long    lFirst = 0;
    long long    lLast = 0;
    long long    lStep = 1;
    bool         lOk = lReader.Number(lFirst);
    lLast = lFirst;
    const bool lRange = lOk && lReader.Word("-");
    lOk = lOk && (!lRange || lReader.Number(lLast)) && (!lRange || !lReader.Word(":") || lReader.Number(lStep));
    if (!lOk || !lReader.AtEnd() || lStep < 1)
    {
        return "expected a frame number or range, such as 1, 100-200, 1-last:10 or last, not \"" + pEntry + "\"";
    }
    const std::string lAvailable = ": the motion has frames " + std::to_string(pNumbers.front()) + " to " + std::to_string(pNumbers.back());
    if (lFirst > lLast)
    {
        return "the range " + pEntry + " ends before it begins";
    }
    if (lFirst < pNumbers.front() || lLast > pNumbers.back())
    {
        return "there is no frame " + std::to_string(lFirst < pNumbers.front() ? lFirst : lLast) + lAvailable;
    }
    const size_t lBefore = pIndices.size();
    const auto   lBegin = std::lower_bound(pNumbers.begin(), pNumbers.end(), lFirst);
    for (auto lNumber = lBegin; lNumber != pNumbers.end() && *lNumber <= lLast; ++lNumber)
    {
        // The signed difference could overflow.
        const unsigned long long lDistance = static_cast<unsigned long long>(*lNumber) - static_cast<unsigned long long>(lFirst);
        if (lDistance % static_cast<unsigned long long>(lStep) == 0)
        {
            pIndices.push_back(static_cast<size_t>(lNumber - pNumbers.begin()));
        }
    }
    return pIndices.size() > lBefore ? std::string() : "the motion has no frame " + pEntry;
}

} // namespace

std::string PickFrames(const std::string& pText, const std::vector<long long>& pNumbers, std::vector<size_t>& pIndices)
{
    pIndices.clear();
    std::string lError = pNumbers.empty() ? "the motion has no frame" : "";
    for (size_t lPosition = 0; lError.empty() && lPosition <= pText.size();)
    {
        const size_t lComma = std::min(pText.find(',', lPosition), pText.size());
        lError = PickEntry(pText.substr(lPosition, lComma - lPosition), pNumbers, pIndices);
        lPosition = lComma + 1;
    }
    if (!lError.empty())
    {
        pIndices.clear();
    }
    return lError;
}

bool CheckOneRange(const std::vector<size_t>& pIndices, KConsole& pConsole, const char* pOption)
{
    for (size_t lIndex = 1; lIndex < pIndices.size(); ++lIndex)
    {
        if (pIndices[lIndex] != pIndices[lIndex - 1] + 1)
        {
            pConsole.Fail(eEXIT_USAGE, std::string("--frames: expected one range without a step, such as 100-200, because of ") + pOption);
            return false;
        }
    }
    return true;
}

} // namespace asfapp
