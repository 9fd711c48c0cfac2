// Picture builders for tests: pictures whose every pixel byte is known, and their packed bytes.
//
//   auto picture = canvaro_test::MakePatternPicture(Proc::PixFmt::RGBA, {7, 5, 1, 1}, 3);
//   EXPECT_EQ(canvaro_test::PackedBytes(*picture), canvaro_test::PackedBytes(*loaded));
#pragma once

#include <cstdint>
#include <string>

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Proc/IDataVideo.h"

namespace canvaro_test {

// A picture of `format` and `info` whose pixel bytes (every plane, palette included) follow a
// pattern that depends on `seed`, the plane, the row and the byte, so that a swapped row or plane
// shows. Padding bytes are set to 0xEE, which never belongs to the pattern's check.
Kelbra::Proc::IDataVideoPtr MakePatternPicture(Kelbra::Proc::PixFmt format,
                                               const Kelbra::Conf::FrameInfo& info, unsigned seed);

// Every row of every plane, in plane order, without padding: what a raw frame file holds after
// its header.
std::string PackedBytes(const Kelbra::Proc::IDataVideo& picture);

// A copy of the mask picture `mask` (of a blank `width` x `height` mask when null) with
// [left, right) x [top, bottom) painted `value`: a stroke as a host paints it into a copy of the
// mask in force.
Kelbra::Proc::IDataVideoPtr Painted(const Kelbra::Proc::IDataVideoPtr& mask, std::int32_t left,
                                    std::int32_t right, std::int32_t top, std::int32_t bottom,
                                    std::uint8_t value, std::int32_t width = 8,
                                    std::int32_t height = 6);

}  // namespace canvaro_test
