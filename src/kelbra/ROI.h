/// \file
/// ROI: a crop rectangle in pixels (left, top, width, height).
#pragma once

#include <cstdint>
#include <ostream>

namespace Kelbra {

struct ROI {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;

  friend bool operator==(const ROI&, const ROI&) = default;
  friend std::ostream& operator<<(std::ostream& out, const ROI& roi) {
    return out << roi.width << 'x' << roi.height << " at (" << roi.left << ", " << roi.top << ')';
  }
};

}  // namespace Kelbra
