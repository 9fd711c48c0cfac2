/// \file
/// What the pictures know about pixel formats: which formats they support, and how many rows of
/// how many bytes each plane of a picture of a given format and size holds.
///
/// The supported formats are those libavutil describes whose planes are plain memory: hardware
/// surfaces and bit-packed formats (1 or 4 bits per pixel) are not. The layout is computed without
/// allocating anything, so a reader can check a stored header before it trusts it:
///
///   if (!Proc::IsMemoryPixFmt(format)) refuse();
///   std::uint64_t bytes = 0;
///   for (const auto& plane : Proc::GetPlaneLayouts(format, info)) bytes += plane.GetByteCount();
///
/// All functions may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Proc/IDataVideo.h"

namespace Kelbra::Proc {

/// The packed size of one plane: `rowCount` rows of `rowLength` bytes.
struct PlaneLayout {
  std::size_t rowLength = 0;
  std::size_t rowCount = 0;

  std::uint64_t GetByteCount() const { return std::uint64_t{rowLength} * rowCount; }
  friend bool operator==(const PlaneLayout&, const PlaneLayout&) = default;
};

/// True for a format that pictures can hold (see above).
bool IsMemoryPixFmt(PixFmt format);

/// Every format for which IsMemoryPixFmt holds, in increasing numeric order.
const std::vector<PixFmt>& GetMemoryPixFmts();

/// libavutil's name of the format ("rgba", "yuv420p"), or "unknown(<number>)".
std::string GetPixFmtName(PixFmt format);

/// The planes of a picture of `format` and `info` in plane order, the palette of a paletted
/// format included. Rows of a plane hold av_image_get_linesize bytes; chroma planes have the
/// format's subsampled row count. A picture of zero width or height has planes with no bytes.
/// Throws Core::CoreException for a format that is not a memory format, a negative size, or a
/// size too large to allocate.
std::vector<PlaneLayout> GetPlaneLayouts(PixFmt format, const Conf::FrameInfo& info);

}  // namespace Kelbra::Proc
