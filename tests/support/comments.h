#ifndef TESTS_SUPPORT_COMMENTS_H
#define TESTS_SUPPORT_COMMENTS_H

#include <cstddef>
#include <string>

namespace qextest
{

/// The text with a comment at the end of every line that has a line end. To a reader that cuts comments off it is the same text, but no
/// line is one that can be read the quick way.
inline std::string Commented(const std::string& pText)
{
    std::string lResult;
    for (std::size_t i = 0; i < pText.size(); ++i)
    {
        const bool lFeed = pText[i] == '\n' && (i == 0 || pText[i - 1] != '\r');
        if (lFeed || pText[i] == '\r')
        {
            lResult += '#';
        }
        lResult += pText[i];
    }
    return lResult;
}

} // namespace qextest

#endif
