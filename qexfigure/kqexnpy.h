#ifndef QEXFIGURE_KQEXNPY_H
#define QEXFIGURE_KQEXNPY_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// \file
/// Arrays as bytes, in the NPY format, version 1.0. Little-endian on any machine. May throw std::bad_alloc.

namespace qexsdk
{

/// Type of an array's items.
enum class KQexArrayType
{
    eFLOAT32,
    eFLOAT64,
    eINT32,
    eBOOL,
    eTEXT ///< Code points, padded with zeros to the length of the longest text.
};

/// Type and shape of an array.
struct QEX_API KQexArrayHead
{
    KQexArrayType         mType = KQexArrayType::eFLOAT32; ///< Of the items.
    std::vector<uint64_t> mShape;                          ///< Items along each axis, the last one contiguous; empty: a single item.
    size_t                mTextLength = 1;                 ///< Code points of an item, for eTEXT; at least 1.

    /// Bytes of an item.
    size_t GetItemSize() const;

    /// Bytes of all items. False, with \p pSize unchanged, if 64 bits do not hold it.
    bool GetSize(uint64_t& pSize) const;
};

/// The start of an .npy file for such an array; its items follow.
QEX_API std::string KQexNpyStart(const KQexArrayHead& pHead);

/// Appends \p pCount items of \p pType, not eTEXT, that hold the numbers \p pNumbers. Whole numbers must fit the type; for eBOOL 0 is
/// false.
QEX_API void KQexAppendItems(KQexArrayType pType, const double* pNumbers, size_t pCount, std::string& pBytes);

/// Appends the texts \p pTexts (UTF-8; any byte that is not becomes U+FFFD) as items of \p pHead, whose shape and length it sets.
QEX_API void KQexAppendTexts(const std::vector<std::string>& pTexts, KQexArrayHead& pHead, std::string& pBytes);

} // namespace qexsdk

#endif
