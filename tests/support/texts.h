#ifndef TESTS_SUPPORT_TEXTS_H
#define TESTS_SUPPORT_TEXTS_H

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace qextest
{

/// \p pText with the first \p pFrom replaced by \p pTo; fails the test when there is none.
inline std::string Replaced(std::string pText, const std::string& pFrom, const std::string& pTo)
{
    const std::size_t lAt = pText.find(pFrom);
    EXPECT_NE(lAt, std::string::npos) << pFrom;
    return lAt == std::string::npos ? pText : pText.replace(lAt, pFrom.size(), pTo);
}

/// \p pText with every \p pFrom replaced by \p pTo; unchanged when there is none.
inline std::string ReplacedAll(std::string pText, const std::string& pFrom, const std::string& pTo)
{
    for (std::size_t lAt = 0; (lAt = pText.find(pFrom, lAt)) != std::string::npos; lAt += pTo.size())
    {
        pText.replace(lAt, pFrom.size(), pTo);
    }
    return pText;
}

/// Lines of numbers, longer than any buffer used to read or write files.
inline std::string LongText()
{
    std::string lText;
    for (int i = 0; lText.size() < 300000; ++i)
    {
        lText += std::to_string(i) + "\n";
    }
    return lText;
}

} // namespace qextest

#endif
