#ifndef KBASELIB_KBASE_KSTRING_H
#define KBASELIB_KBASE_KSTRING_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <utility>

namespace qexsdk
{

/// An owned, NUL-terminated string. Most names are short enough to need no allocation.
class QEX_API KString
{
public:
    /// The empty string.
    KString() = default;

    /// A copy of \p pText; null gives the empty string.
    KString(const char* pText) : mText(pText == nullptr ? "" : pText) {}

    /// A copy of the first \p pLength characters at \p pText.
    KString(const char* pText, size_t pLength) : mText(pText, pLength) {}

    /// The characters; valid until the string is changed or destroyed. Never null.
    operator const char*() const { return mText.c_str(); }

    /// As the conversion to const char*.
    const char* Buffer() const { return mText.c_str(); }

    /// Number of characters before the final NUL.
    size_t GetLength() const { return mText.size(); }

    /// Whether the string is empty.
    bool IsEmpty() const { return mText.empty(); }

    /// Appends \p pText; null appends nothing.
    KString& operator+=(const char* pText)
    {
        mText += pText == nullptr ? "" : pText;
        return *this;
    }

private:
    std::string mText;
};

/// \p pFirst followed by \p pSecond (null counts as empty).
inline KString operator+(const KString& pFirst, const char* pSecond)
{
    KString lSum(pFirst);
    lSum += pSecond;
    return lSum;
}

/// \name Comparison of characters, not of pointers
///@{
inline bool operator==(const KString& pFirst, const KString& pSecond)
{
    return std::strcmp(pFirst.Buffer(), pSecond.Buffer()) == 0;
}
inline bool operator==(const KString& pFirst, const char* pSecond)
{
    return pFirst == KString(pSecond);
}
inline bool operator==(const char* pFirst, const KString& pSecond)
{
    return pSecond == KString(pFirst);
}
inline bool operator!=(const KString& pFirst, const KString& pSecond)
{
    return !(pFirst == pSecond);
}
inline bool operator!=(const KString& pFirst, const char* pSecond)
{
    return !(pFirst == pSecond);
}
inline bool operator!=(const char* pFirst, const KString& pSecond)
{
    return !(pFirst == pSecond);
}
///@}

} // namespace qexsdk

#endif
