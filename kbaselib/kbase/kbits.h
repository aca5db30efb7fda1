#ifndef KBASELIB_KBASE_KBITS_H
#define KBASELIB_KBASE_KBITS_H

#include <cstring>

namespace qexsdk
{

/// The sizeof(TBits) characters from \p pText on as one number, in one load; \p pText may be any address. Which of them comes first
/// in the number depends on the machine: it is for comparing and for mixing, not for telling what the characters are.
template <typename TBits>
inline TBits KBitsAt(const char* pText)
{
    TBits lBits;
    std::memcpy(&lBits, pText, sizeof lBits);
    return lBits;
}

} // namespace qexsdk

#endif
