#ifndef TESTS_SUPPORT_NONFINITE_H
#define TESTS_SUPPORT_NONFINITE_H

#include <limits>

/// \file
/// Non-finite values. Arithmetic must propagate them; in files only limits may have them.

namespace qextest
{

inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
inline constexpr float  kInfF = std::numeric_limits<float>::infinity();
inline constexpr float  kNanF = std::numeric_limits<float>::quiet_NaN();

} // namespace qextest

#endif
