/// \file
/// ShapeType: the kind of an annotation shape, one bit per kind, so that a set of kinds is a mask:
///
///   ShapeType mask = ShapeType::Line | ShapeType::Arrow;
///   if (HasAnyOf(mask, shape->GetShapeType())) ...
///   HasAnyOf(ShapeType::All, anything) == true
///
/// The values are stored in saved documents only through the kinds' class ids, but hosts pass
/// masks across the interface, so they never change.
#pragma once

#include <cstdint>

namespace Kelbra::Canvaro {

enum class ShapeType : std::int32_t {
  None = 0,
  Text = 1,
  Line = 2,
  Arrow = 4,
  Rectangle = 8,
  Ellipse = 16,
  Marker = 32,
  ShapedArrow = 64,
  /// Every kind, present and future (eleven bits).
  All = 2047,
};

constexpr ShapeType operator|(ShapeType a, ShapeType b) {
  return static_cast<ShapeType>(static_cast<std::int32_t>(a) | static_cast<std::int32_t>(b));
}
constexpr ShapeType operator&(ShapeType a, ShapeType b) {
  return static_cast<ShapeType>(static_cast<std::int32_t>(a) & static_cast<std::int32_t>(b));
}
/// True when the two masks share a bit.
constexpr bool HasAnyOf(ShapeType mask, ShapeType kinds) {
  return (mask & kinds) != ShapeType::None;
}

}  // namespace Kelbra::Canvaro
