#ifndef TESTS_SUPPORT_NONNUMBERS_H
#define TESTS_SUPPORT_NONNUMBERS_H

#include <limits>

/// \file
/// Non-finite values: arithmetic must propagate them, files must not hold them.

namespace qextest
{

inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
inline constexpr float  kInfF = std::numeric_limits<float>::infinity();
inline constexpr float  kNanF = std::numeric_limits<float>::quiet_NaN();

} // namespace qextest

#endif
