// PNG files through libpng's simplified API: reading any PNG as an RGBA picture, and writing
// 8-bit RGBA rows.
//
//   Proc::IDataVideoPtr picture = ReadPng("photo.png");          // PixFmt::RGBA
//   WritePng("out.png", {width, height, rgbaBytes});
//
// Errors: ToolError with libpng's message and the file name (unreadable, not a PNG, too large,
// a disk that is full). No state is kept between calls; any thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "kelbra/Proc/IDataVideo.h"

namespace canvaro_tool {

// An 8-bit RGBA image, rows top to bottom without padding.
struct RgbaImage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;  // width * height * 4 bytes
};

// The largest width or height the tool reads.
inline constexpr std::uint32_t kMaxPngSide = 20000;

// Any PNG (grey, palette, 16-bit, with or without alpha) as an RGBA picture.
Kelbra::Proc::IDataVideoPtr ReadPng(const std::filesystem::path& file);
// Reads a PNG into RGBA rows.
RgbaImage ReadPngRgba(const std::filesystem::path& file);
// Writes `image` as an RGBA PNG, replacing `file`.
void WritePng(const std::filesystem::path& file, const RgbaImage& image);

}  // namespace canvaro_tool
