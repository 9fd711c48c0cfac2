/// \file
/// Conf::FrameInfo: the geometry of a picture (size in pixels and pixel aspect ratio).
#pragma once

#include <cstdint>
#include <ostream>

namespace Kelbra::Conf {

struct FrameInfo {
  std::int32_t width = 0;
  std::int32_t height = 0;
  /// Pixel aspect ratio aspectX:aspectY; 0:0 when unknown.
  std::int32_t aspectX = 0;
  std::int32_t aspectY = 0;

  friend bool operator==(const FrameInfo&, const FrameInfo&) = default;
  friend std::ostream& operator<<(std::ostream& out, const FrameInfo& info) {
    return out << info.width << 'x' << info.height << " (aspect " << info.aspectX << ':'
               << info.aspectY << ')';
  }
};
static_assert(sizeof(FrameInfo) == 16, "FrameInfo is four 32-bit fields");

}  // namespace Kelbra::Conf
