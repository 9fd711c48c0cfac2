// The demo's built-in picture, generated so that the tool needs no input file: a sky gradient,
// a sun, hills and a row of colour bars, recognisable after brightness, blur and invert.
//
//   auto picture = MakeBuiltInPicture(4000, 3000);   // PixFmt::RGBA, opaque
#pragma once

#include <cstdint>

#include "kelbra/Proc/IDataVideo.h"

namespace canvaro_tool {

// The default size: large enough that the document's 250 MiB memory budget swaps pictures to
// disk within the demo's default number of steps (each picture takes 45.8 MiB).
inline constexpr std::int32_t kBuiltInWidth = 4000;
inline constexpr std::int32_t kBuiltInHeight = 3000;

Kelbra::Proc::IDataVideoPtr MakeBuiltInPicture(std::int32_t width, std::int32_t height);

}  // namespace canvaro_tool
