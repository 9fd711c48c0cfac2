/// \file
/// Proc::SettingsEffectTranspose: the settings of the rotate effect, a quarter-turn count.
#pragma once

#include <cstdint>

namespace Kelbra::Proc {

class SettingsEffectTranspose {
 public:
  enum TransposeKind : std::int32_t {
    None = 0,
    Rotate90 = 1,  // a quarter turn clockwise
    Rotate180 = 2,
    Rotate270 = 3,  // a quarter turn counter-clockwise
  };

  constexpr SettingsEffectTranspose() = default;
  constexpr explicit SettingsEffectTranspose(TransposeKind kind) : kind_(kind) {}

  constexpr TransposeKind GetTransposeKind() const { return kind_; }
  constexpr void SetTransposeKind(TransposeKind kind) { kind_ = kind; }

 private:
  TransposeKind kind_ = None;
};

}  // namespace Kelbra::Proc
