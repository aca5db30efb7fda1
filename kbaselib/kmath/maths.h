#ifndef KBASELIB_KMATH_MATHS_H
#define KBASELIB_KMATH_MATHS_H

#include <cmath>
#include <limits>
#include <type_traits>

/// \file
/// Scalar helpers of the math layer. They are templates over the floating-point type: double, unless it is given explicitly or by an
/// output argument; integers may be passed. Names that end in d work in degrees, the others in radians. The order of every sum is part
/// of the result: callers rely on the last bit.

namespace qexsdk
{

/// Degrees per radian.
inline constexpr double kDegreesPerRadian = 57.29577951308232;
/// Radians per degree.
inline constexpr double kRadiansPerDegree = 0.017453292519943295;

namespace kmathdetail
{
/// \p T in a non-deduced context.
template <typename T>
struct KNonDeduced
{
    using Type = T; ///< The type itself.
};
/// \p T as a parameter type that is not deduced, so that integers may be passed.
template <typename T>
using KScalar = typename KNonDeduced<T>::Type;
} // namespace kmathdetail

/// The square root; NaN below zero.
template <typename T = double>
inline T kSqrt(kmathdetail::KScalar<T> pX)
{
    return std::sqrt(pX);
}

/// The square root of a value that the caller knows not to be negative; the same as kSqrt.
template <typename T = double>
inline T kSqrtnz(kmathdetail::KScalar<T> pX)
{
    return kSqrt<T>(pX);
}

/// The squared length of (x, y, z).
template <typename T = double>
inline T kSumOfSquares(kmathdetail::KScalar<T> pX, kmathdetail::KScalar<T> pY, kmathdetail::KScalar<T> pZ)
{
    return pZ * pZ + (pX * pX + pY * pY);
}

/// Whether a sum of squares underflowed or overflowed: it is zero, subnormal or infinite, even though the components may not be.
template <typename T = double>
inline bool kIsOutOfRange(kmathdetail::KScalar<T> pSumOfSquares)
{
    return pSumOfSquares < std::numeric_limits<T>::min() || pSumOfSquares > std::numeric_limits<T>::max();
}

/// The largest absolute value of the three; infinite when one is.
template <typename T = double>
inline T kLargest(kmathdetail::KScalar<T> pX, kmathdetail::KScalar<T> pY, kmathdetail::KScalar<T> pZ)
{
    return std::fmax(std::fmax(std::fabs(pX), std::fabs(pY)), std::fabs(pZ));
}

/// The length of (x, y, z). Where the sum of squares underflows or overflows, the components are divided by the largest of them first,
/// so that only an exact zero has length zero.
template <typename T = double>
inline T kNorm(kmathdetail::KScalar<T> pX, kmathdetail::KScalar<T> pY, kmathdetail::KScalar<T> pZ)
{
    const T lSum = kSumOfSquares<T>(pX, pY, pZ);
    if (!kIsOutOfRange<T>(lSum))
    {
        return kSqrt<T>(lSum);
    }
    const T lLargest = kLargest<T>(pX, pY, pZ);
    if (lLargest == T(0) || std::isinf(lLargest))
    {
        return lLargest;
    }
    return lLargest * kSqrt<T>(kSumOfSquares<T>(pX / lLargest, pY / lLargest, pZ / lLargest));
}

/// The length of (x, y), not guarded against underflow and overflow.
template <typename T = double>
inline T kHypot(kmathdetail::KScalar<T> pX, kmathdetail::KScalar<T> pY)
{
    return kSqrtnz<T>(pY * pY + pX * pX);
}

/// The sine of an angle in radians.
template <typename T = double>
inline T kSin(kmathdetail::KScalar<T> pAngle)
{
    return std::sin(pAngle);
}

/// The cosine of an angle in radians.
template <typename T = double>
inline T kCos(kmathdetail::KScalar<T> pAngle)
{
    return std::cos(pAngle);
}

/// The angle in radians, -π/2 to π/2, whose sine is \p pX; NaN beyond ±1.
template <typename T = double>
inline T kAsin(kmathdetail::KScalar<T> pX)
{
    return std::asin(pX);
}

/// The angle in radians, -π to π, of the direction (x, y). Note that y comes first.
template <typename T = double>
inline T kAtan(kmathdetail::KScalar<T> pY, kmathdetail::KScalar<T> pX)
{
    return std::atan2(pY, pX);
}

/// kAtan in degrees.
template <typename T = double>
inline T kAtand(kmathdetail::KScalar<T> pY, kmathdetail::KScalar<T> pX)
{
    return T(kDegreesPerRadian) * kAtan<T>(pY, pX);
}

/// kAsin in degrees.
template <typename T = double>
inline T kAsind(kmathdetail::KScalar<T> pX)
{
    return T(kDegreesPerRadian) * kAsin<T>(pX);
}

/// The sine of an angle in radians; its cosine goes to \p pCos. The two calls are adjacent so that the compiler can merge them; the
/// values are those of the standard functions to the last bit.
template <typename T>
inline T kSinCos(kmathdetail::KScalar<T> pAngle, T* pCos)
{
    *pCos = kCos<T>(pAngle);
    return kSin<T>(pAngle);
}

/// kSinCos of an angle in degrees.
template <typename T>
inline T kSinCosd(kmathdetail::KScalar<T> pAngle, T* pCos)
{
    return kSinCos<T>(T(kRadiansPerDegree) * pAngle, pCos);
}

/// \name Overloads with a reference for the cosine
///@{

/// The sine of \p pAngle in radians; its cosine goes into \p pCos.
template <typename T, typename = std::enable_if_t<std::is_floating_point_v<T>>>
inline T kSinCos(kmathdetail::KScalar<T> pAngle, T& pCos)
{
    return kSinCos<T>(pAngle, &pCos);
}
/// The sine of \p pAngle in degrees; its cosine goes into \p pCos.
template <typename T, typename = std::enable_if_t<std::is_floating_point_v<T>>>
inline T kSinCosd(kmathdetail::KScalar<T> pAngle, T& pCos)
{
    return kSinCosd<T>(pAngle, &pCos);
}
///@}

} // namespace qexsdk

#endif
