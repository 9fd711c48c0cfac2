/// \file
/// Proc::Color: a colour of four 8-bit components, stored in records as one packed 32-bit
/// integer (red in the highest byte, alpha in the lowest).
///
///   Proc::Color red(255, 0, 0, 255);
///   red.rgba() == 0xFF0000FFu;   Proc::Color::FromRGBA(0xFF0000FFu) == red
#pragma once

#include <cstdint>
#include <ostream>

namespace Kelbra::Proc {

class Color {
 public:
  constexpr Color() = default;
  constexpr Color(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t alpha)
      : r(red), g(green), b(blue), a(alpha) {}

  /// The packed form: red << 24 | green << 16 | blue << 8 | alpha.
  constexpr std::uint32_t rgba() const {
    return std::uint32_t(r) << 24 | std::uint32_t(g) << 16 | std::uint32_t(b) << 8 | a;
  }
  static constexpr Color FromRGBA(std::uint32_t packed) {
    return Color(std::uint8_t(packed >> 24), std::uint8_t(packed >> 16), std::uint8_t(packed >> 8),
                 std::uint8_t(packed));
  }
  /// Opaque black (0, 0, 0, 255).
  static constexpr Color Black() { return Color(0, 0, 0, 255); }

  friend constexpr bool operator==(const Color&, const Color&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Color& c) {
    return out << "rgba(" << int(c.r) << ", " << int(c.g) << ", " << int(c.b) << ", " << int(c.a)
               << ')';
  }

  std::uint8_t r = 0;
  std::uint8_t g = 0;
  std::uint8_t b = 0;
  std::uint8_t a = 0;
};

}  // namespace Kelbra::Proc
