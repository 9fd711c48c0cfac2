/// \file
/// ICanvaroBrush: the brush indices that mask pictures hold.
///
/// Every byte of a mask picture is the index of the brush that painted that pixel, 0 where
/// nothing was painted. The host's brushes own the other indices; the library needs to name only
/// the default brush, to which masks saved before per-brush counts existed are attributed:
///
///   counter.Get({ICanvaroBrush::INDEX_DEFAULT});   // pixels painted with the default brush
#pragma once

#include <cstdint>

namespace Kelbra::Canvaro {

class ICanvaroBrush {
 public:
  /// The mask value of an unpainted pixel.
  static constexpr std::uint8_t INDEX_NONE = 0;
  /// The index of the default brush.
  static constexpr std::uint8_t INDEX_DEFAULT = 90;

  virtual ~ICanvaroBrush() = default;
};

}  // namespace Kelbra::Canvaro
