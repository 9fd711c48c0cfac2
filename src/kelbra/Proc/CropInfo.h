/// \file
/// Proc::CropInfo: a bounding box in pixels that grows point by point.
///
/// left and top are inclusive, right and bottom exclusive. The empty box has
/// left = top = 0xFFFFFFFF and right = bottom = 0, so that the first Apart sets it to one pixel:
///
///   Proc::CropInfo box;            // empty
///   box.Apart(3, 4);               // left 3, right 4, top 4, bottom 5
///   box.Align(other);              // the union with `other`
#pragma once

#include <algorithm>
#include <cstdint>
#include <ostream>

namespace Kelbra::Proc {

struct CropInfo {
  std::uint32_t left = 0xFFFFFFFFu;
  std::uint32_t right = 0;
  std::uint32_t top = 0xFFFFFFFFu;
  std::uint32_t bottom = 0;

  static constexpr CropInfo Empty() { return CropInfo(); }
  constexpr bool IsEmpty() const { return left >= right || top >= bottom; }
  constexpr std::uint32_t Width() const { return IsEmpty() ? 0 : right - left; }
  constexpr std::uint32_t Height() const { return IsEmpty() ? 0 : bottom - top; }

  /// Extends the box to include the pixel (x, y).
  constexpr void Apart(std::uint32_t x, std::uint32_t y) {
    left = std::min(left, x);
    right = std::max(right, x + 1);
    top = std::min(top, y);
    bottom = std::max(bottom, y + 1);
  }
  /// Extends the box to include `other` (an empty `other` changes nothing).
  constexpr void Align(const CropInfo& other) {
    if (other.IsEmpty()) return;
    left = std::min(left, other.left);
    right = std::max(right, other.right);
    top = std::min(top, other.top);
    bottom = std::max(bottom, other.bottom);
  }

  friend constexpr bool operator==(const CropInfo&, const CropInfo&) = default;
  friend std::ostream& operator<<(std::ostream& out, const CropInfo& box) {
    if (box.IsEmpty()) return out << "empty";
    return out << box.Width() << 'x' << box.Height() << " at (" << box.left << ", " << box.top
               << ')';
  }
};

}  // namespace Kelbra::Proc
