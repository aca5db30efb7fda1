#include <qexfigure/kqexdidyoumean.h>

#include <algorithm>

namespace qexsdk
{

namespace
{

/// Longer words are not compared: no command, option or joint is as long, and the time grows with the square.
constexpr size_t kMaxWord = 40;

/// Number of letters to insert, remove, replace or swap with their neighbour, to make one word from the other.
size_t EditDistance(const std::string& pOne, const std::string& pOther)
{
    // The last three rows of the table: a swap looks back two.
    std::vector<size_t> lRows[3];
    for (std::vector<size_t>& lRow : lRows)
    {
        lRow.resize(pOther.size() + 1);
    }
    for (size_t lIndex = 0; lIndex <= pOne.size(); ++lIndex)
    {
        std::vector<size_t>&       lRow = lRows[lIndex % 3];
        const std::vector<size_t>& lAbove = lRows[(lIndex + 2) % 3];
        const std::vector<size_t>& lBefore = lRows[(lIndex + 1) % 3];
        for (size_t lAt = 0; lAt <= pOther.size(); ++lAt)
        {
            if (lIndex == 0 || lAt == 0)
            {
                lRow[lAt] = lIndex + lAt;
                continue;
            }
            const size_t lReplace = pOne[lIndex - 1] == pOther[lAt - 1] ? 0 : 1;
            lRow[lAt] = std::min({lAbove[lAt] + 1, lRow[lAt - 1] + 1, lAbove[lAt - 1] + lReplace});
            if (lIndex > 1 && lAt > 1 && pOne[lIndex - 1] == pOther[lAt - 2] && pOne[lIndex - 2] == pOther[lAt - 1])
            {
                lRow[lAt] = std::min(lRow[lAt], lBefore[lAt - 2] + 1);
            }
        }
    }
    return lRows[pOne.size() % 3].back();
}

/// The word of \p pWords that \p pWord is probably a misspelling of; "" if none is close.
std::string ClosestWord(const std::string& pWord, const std::vector<std::string>& pWords)
{
    std::string lClosest;
    size_t      lLeast = 1 + std::max<size_t>(1, pWord.size() / 3);
    for (const std::string& lWord : pWords)
    {
        const size_t lDistance = pWord.size() <= kMaxWord && lWord.size() <= kMaxWord ? EditDistance(pWord, lWord) : lLeast;
        if (lDistance < lLeast)
        {
            lLeast = lDistance;
            lClosest = lWord;
        }
    }
    return lClosest;
}

} // namespace

std::string DidYouMean(const std::string& pWord, const std::vector<std::string>& pWords)
{
    const std::string lClosest = ClosestWord(pWord, pWords);
    return lClosest.empty() ? std::string() : ", did you mean " + lClosest + "?";
}

} // namespace qexsdk
