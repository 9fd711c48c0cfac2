#include "kelbra/Proc/PixFmtInfo.h"

#include <climits>

extern "C" {
#include <libavutil/common.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "kelbra/Core/CoreException.h"

namespace Kelbra::Proc {

namespace {

// Bytes of a palette: 256 entries of 32 bits.
constexpr std::size_t kPaletteBytes = 256 * 4;

const AVPixFmtDescriptor* MemoryDescriptor(PixFmt format) {
  const AVPixFmtDescriptor* descriptor =
      av_pix_fmt_desc_get(static_cast<AVPixelFormat>(static_cast<int>(format)));
  if (descriptor == nullptr) return nullptr;
  if (descriptor->flags & (AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM)) return nullptr;
  return descriptor;
}

std::string Describe(PixFmt format, const Conf::FrameInfo& info) {
  return GetPixFmtName(format) + " picture of " + std::to_string(info.width) + 'x' +
         std::to_string(info.height);
}

}  // namespace

bool IsMemoryPixFmt(PixFmt format) { return MemoryDescriptor(format) != nullptr; }

const std::vector<PixFmt>& GetMemoryPixFmts() {
  static const std::vector<PixFmt> formats = [] {
    std::vector<PixFmt> result;
    for (const AVPixFmtDescriptor* d = av_pix_fmt_desc_next(nullptr); d != nullptr;
         d = av_pix_fmt_desc_next(d)) {
      const auto format = static_cast<PixFmt>(static_cast<int>(av_pix_fmt_desc_get_id(d)));
      if (IsMemoryPixFmt(format)) result.push_back(format);
    }
    return result;
  }();
  return formats;
}

std::string GetPixFmtName(PixFmt format) {
  const AVPixFmtDescriptor* descriptor =
      av_pix_fmt_desc_get(static_cast<AVPixelFormat>(static_cast<int>(format)));
  if (descriptor == nullptr) return "unknown(" + std::to_string(static_cast<int>(format)) + ')';
  return descriptor->name;
}

std::vector<PlaneLayout> GetPlaneLayouts(PixFmt format, const Conf::FrameInfo& info) {
  const AVPixFmtDescriptor* descriptor = MemoryDescriptor(format);
  if (descriptor == nullptr) {
    throw Core::CoreException("Pixel format " + GetPixFmtName(format) + " has no planes in memory");
  }
  if (info.width < 0 || info.height < 0) {
    throw Core::CoreException("Negative size of " + Describe(format, info));
  }
  const bool empty = info.width == 0 || info.height == 0;
  // libavutil's own limit (av_image_check_size), checked here without its error log line.
  if ((std::uint64_t{static_cast<std::uint32_t>(info.width)} + 128) *
          (std::uint64_t{static_cast<std::uint32_t>(info.height)} + 128) >=
      static_cast<std::uint64_t>(INT_MAX / 8)) {
    throw Core::CoreException("Size too large for a " + Describe(format, info));
  }

  const auto avFormat = static_cast<AVPixelFormat>(static_cast<int>(format));
  const int planes = av_pix_fmt_count_planes(avFormat);
  std::vector<PlaneLayout> layouts;
  layouts.reserve(static_cast<std::size_t>(planes) + 1);
  for (int plane = 0; plane < planes; ++plane) {
    const int rowLength = av_image_get_linesize(avFormat, info.width, plane);
    if (rowLength < 0)
      throw Core::CoreException("Cannot lay out the rows of a " + Describe(format, info));
    // Rows of the chroma planes are subsampled; luma and alpha planes have every row.
    const int shift = (plane == 1 || plane == 2) ? descriptor->log2_chroma_h : 0;
    layouts.push_back({static_cast<std::size_t>(rowLength),
                       static_cast<std::size_t>(AV_CEIL_RSHIFT(info.height, shift))});
  }
  if (descriptor->flags & AV_PIX_FMT_FLAG_PAL) {
    layouts.push_back({empty ? 0 : kPaletteBytes, empty ? 0u : 1u});
  }
  return layouts;
}

}  // namespace Kelbra::Proc
