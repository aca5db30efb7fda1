#include <apps/asf/figure/framelist.h>

#include <algorithm>
#include <charconv>

namespace asfapp
{

namespace
{

/// Reads the pieces of one entry of the list from its beginning.
class KEntryReader
{
public:
    KEntryReader(const std::string& pText, const std::vector<long long>& pNumbers) : mText(pText), mNumbers(pNumbers) {}

    bool Number(long long& pValue)
    {
        if (Word("first") || Word("last"))
        {
            pValue = mText.compare(mPlace - 4, 4, "last") == 0 ? mNumbers.back() : mNumbers.front();
            return true;
        }
        const auto lResult = std::from_chars(mText.data() + mPlace, mText.data() + mText.size(), pValue);
        mPlace = static_cast<size_t>(lResult.ptr - mText.data());
        return lResult.ec == std::errc();
    }

    bool Word(const std::string& pWord)
    {
        const bool lIs = mText.compare(mPlace, pWord.size(), pWord) == 0;
        mPlace += lIs ? pWord.size() : 0;
        return lIs;
    }

    bool AtEnd() const { return mPlace == mText.size(); }

private:
    const std::string&            mText;
    const std::vector<long long>& mNumbers;
    size_t                        mPlace = 0;
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
        return "a frame number or a range is expected, such as 1, 100-200, 1-last:10 or last, not \"" + pEntry + "\"";
    }
    const std::string lHas = ": the motion has frames " + std::to_string(pNumbers.front()) + " to " + std::to_string(pNumbers.back());
    if (lFirst > lLast)
    {
        return "the range " + pEntry + " ends before it begins";
    }
    if (lFirst < pNumbers.front() || lLast > pNumbers.back())
    {
        return "there is no frame " + std::to_string(lFirst < pNumbers.front() ? lFirst : lLast) + lHas;
    }
    const size_t lBefore = pIndices.size();
    const auto   lBegin = std::lower_bound(pNumbers.begin(), pNumbers.end(), lFirst);
    for (auto lPlace = lBegin; lPlace != pNumbers.end() && *lPlace <= lLast; ++lPlace)
    {
        // The difference of two numbers of any sign may not fit; counted without one it does.
        const unsigned long long lAway = static_cast<unsigned long long>(*lPlace) - static_cast<unsigned long long>(lFirst);
        if (lAway % static_cast<unsigned long long>(lStep) == 0)
        {
            pIndices.push_back(static_cast<size_t>(lPlace - pNumbers.begin()));
        }
    }
    return pIndices.size() > lBefore ? std::string() : "the motion has no frame " + pEntry;
}

} // namespace

std::string PickFrames(const std::string& pText, const std::vector<long long>& pNumbers, std::vector<size_t>& pIndices)
{
    pIndices.clear();
    std::string lWrong = pNumbers.empty() ? "the motion has no frame" : "";
    for (size_t lPlace = 0; lWrong.empty() && lPlace <= pText.size();)
    {
        const size_t lComma = std::min(pText.find(',', lPlace), pText.size());
        lWrong = PickEntry(pText.substr(lPlace, lComma - lPlace), pNumbers, pIndices);
        lPlace = lComma + 1;
    }
    if (!lWrong.empty())
    {
        pIndices.clear();
    }
    return lWrong;
}

} // namespace asfapp
