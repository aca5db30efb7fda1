#ifndef KBASELIB_KMATH_KDOFCODES_H
#define KBASELIB_KMATH_KDOFCODES_H

#include <string_view>

namespace qexsdk
{

/// Codes of a bone's degrees of freedom (DOFs), as in its DOF lists. Rotations are ordered z, y, x, the reverse of the translations.
enum KDofCode
{
    eDOF_TX,
    eDOF_TY,
    eDOF_TZ,
    eDOF_RZ,
    eDOF_RY,
    eDOF_RX,
    eDOF_COUNT
};

/// The keyword of each code.
inline constexpr const char* kDofWords[eDOF_COUNT] = {"tx", "ty", "tz", "rz", "ry", "rx"};

/// Whether the code is tx, ty or tz; it is then also the axis.
inline constexpr bool KIsTranslationDof(int pCode)
{
    return pCode >= eDOF_TX && pCode <= eDOF_TZ;
}

/// Whether the code is rz, ry or rx; the axis is then 5 - code.
inline constexpr bool KIsRotationDof(int pCode)
{
    return pCode >= eDOF_RZ && pCode <= eDOF_RX;
}

/// The code of a keyword (case-sensitive); -1 for any other word.
inline int KDofCodeOf(std::string_view pWord)
{
    for (int lCode = 0; lCode < eDOF_COUNT; ++lCode)
    {
        if (pWord == kDofWords[lCode])
        {
            return lCode;
        }
    }
    return -1;
}

} // namespace qexsdk

#endif
