/// \file
/// The one comparison of stored doubles in shape records: equal within 1e-5.
///
///   NearlyEqual(1.0, 1.00001) == true;   NearlyEqual(1.0, 1.0001) == false
#pragma once

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace Kelbra::Canvaro {

inline constexpr double kShapeTolerance = 1e-5;

/// |a - b| <= 1e-5. The bound is widened by a few units in the last place of the operands, so
/// that values written as exactly 1e-5 apart (1.0 and 1.00001, whose binary forms are a hair
/// further apart) count as equal.
inline bool NearlyEqual(double a, double b) {
  const double scale = std::max({1.0, std::fabs(a), std::fabs(b)});
  return std::fabs(a - b) <= kShapeTolerance + 8 * DBL_EPSILON * scale;
}

}  // namespace Kelbra::Canvaro
