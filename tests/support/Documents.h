// The records a host hands to a document with each step, for the tests and the sample sessions
// (needs no test framework):
//
//   doc->Add(canvaro_test::Settings("Blur"), picture, mask, canvaro_test::Mask(1, 4, 1, 3));
#pragma once

#include <cstdint>
#include <string>

#include "canvaro/settings/Blender.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"

namespace canvaro_test {

// Mask settings over [left, right) x [top, bottom), blended in black, with an optional painter.
inline Kelbra::Canvaro::MaskInfo Mask(
    std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom,
    const Kelbra::Canvaro::ISettingsPainter::ConstPtr& painter = nullptr) {
  using Kelbra::Canvaro::Blender::IBlender;
  return Kelbra::Canvaro::MaskInfo(
      left, right, top, bottom,
      Kelbra::Canvaro::MaskInfo::MaskInfoEx(
          painter,
          IBlender::Initializer(IBlender::Initializer::MaskType(0), Kelbra::Proc::Color::Black())));
}

// The mask settings of a step without a mask: an empty rectangle.
inline Kelbra::Canvaro::MaskInfo NoMask() { return Mask(0, 0, 0, 0); }

// Settings of a step with no effect, named by its package (what a host's preset would be).
inline Kelbra::Canvaro::SettingsCore Settings(const std::string& package, std::int32_t index = -1) {
  Kelbra::Canvaro::SettingsCore settings;
  settings.GetEffectsSettings().GetPackage().SetName(package);
  settings.GetEffectsSettings().GetPackage().SetPackageIndex(index);
  return settings;
}

}  // namespace canvaro_test
