#ifndef KBASELIB_KBASE_KSTRING_H
#define KBASELIB_KBASE_KSTRING_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <cstring>
#include <exception>
#include <string>

namespace qexsdk
{

/// An owned, NUL-terminated string. Most names are short enough to need no allocation. Nothing throws: a text for which memory runs
/// out leaves the string empty, and HasFailed() is true.
class QEX_API KString
{
public:
    /// The empty string.
    KString() noexcept = default;

    /// A copy of \p pText; null gives the empty string.
    KString(const char* pText) noexcept { *this += pText; }

    /// A copy of the first \p pLength characters at \p pText.
    KString(const char* pText, size_t pLength) noexcept { Append(pText, pLength); }

    /// A copy of \p pOther, its failure included.
    KString(const KString& pOther) noexcept { *this += pOther; }

    /// Takes over \p pOther, which is valid but unspecified afterwards.
    KString(KString&& pOther) noexcept = default;

    /// Copies \p pOther, its failure included.
    KString& operator=(const KString& pOther) noexcept { return *this = KString(pOther); }

    /// Takes over \p pOther, which is valid but unspecified afterwards.
    KString& operator=(KString&& pOther) noexcept = default;

    ~KString() = default;

    /// The characters; valid until the string is changed or destroyed. Never null.
    operator const char*() const noexcept { return mText.c_str(); }

    /// As the conversion to const char*.
    const char* Buffer() const noexcept { return mText.c_str(); }

    /// Number of characters before the final NUL.
    size_t GetLength() const noexcept { return mText.size(); }

    /// Whether the string is empty.
    bool IsEmpty() const noexcept { return mText.empty(); }

    /// Whether memory ran out for the text or a part of it. The string is then empty, and stays so.
    bool HasFailed() const noexcept { return mFailed; }

    /// Appends \p pText; null appends nothing.
    KString& operator+=(const char* pText) noexcept
    {
        Append(pText, pText == nullptr ? 0 : std::strlen(pText));
        return *this;
    }

    /// Appends \p pText, its failure included.
    KString& operator+=(const KString& pText) noexcept
    {
        mFailed = mFailed || pText.mFailed;
        Append(pText.Buffer(), pText.GetLength());
        return *this;
    }

private:
    void Append(const char* pText, size_t pLength) noexcept
    {
        try
        {
            if (!mFailed && pLength > 0)
            {
                mText.append(pText, pLength);
            }
        }
        catch (const std::exception&)
        {
            mFailed = true;
        }
        if (mFailed)
        {
            mText.clear();
        }
    }

    std::string mText;
    bool        mFailed = false;
};

/// \p pFirst followed by \p pSecond (null counts as empty).
inline KString operator+(const KString& pFirst, const char* pSecond) noexcept
{
    KString lSum(pFirst);
    lSum += pSecond;
    return lSum;
}

/// \name Comparison of characters, not of pointers; null equals the empty string
///@{
inline bool operator==(const KString& pFirst, const char* pSecond) noexcept
{
    return std::strcmp(pFirst.Buffer(), pSecond == nullptr ? "" : pSecond) == 0;
}
inline bool operator==(const KString& pFirst, const KString& pSecond) noexcept
{
    return pFirst == pSecond.Buffer();
}
inline bool operator==(const char* pFirst, const KString& pSecond) noexcept
{
    return pSecond == pFirst;
}
inline bool operator!=(const KString& pFirst, const KString& pSecond) noexcept
{
    return !(pFirst == pSecond);
}
inline bool operator!=(const KString& pFirst, const char* pSecond) noexcept
{
    return !(pFirst == pSecond);
}
inline bool operator!=(const char* pFirst, const KString& pSecond) noexcept
{
    return !(pFirst == pSecond);
}
///@}

} // namespace qexsdk

#endif
