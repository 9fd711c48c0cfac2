// Pictures on libavutil: the pixel formats, their plane geometry and their component layout come
// from libavutil's pixel-format descriptors; the pixel buffer is ours.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/common.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
#include <libavutil/pixfmt.h>
}

#include "kelbra/Core/CoreException.h"
#include "kelbra/Proc/BufferPool.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/Proc/PixFmtInfo.h"

namespace Kelbra::Proc {

// PixFmt is FFmpeg's numbering: the named values must be libavutil's.
static_assert(static_cast<int>(PixFmt::None) == AV_PIX_FMT_NONE);
static_assert(static_cast<int>(PixFmt::YUV420P) == AV_PIX_FMT_YUV420P);
static_assert(static_cast<int>(PixFmt::YUYV422) == AV_PIX_FMT_YUYV422);
static_assert(static_cast<int>(PixFmt::RGB24) == AV_PIX_FMT_RGB24);
static_assert(static_cast<int>(PixFmt::BGR24) == AV_PIX_FMT_BGR24);
static_assert(static_cast<int>(PixFmt::YUV422P) == AV_PIX_FMT_YUV422P);
static_assert(static_cast<int>(PixFmt::YUV444P) == AV_PIX_FMT_YUV444P);
static_assert(static_cast<int>(PixFmt::Gray8) == AV_PIX_FMT_GRAY8);
static_assert(static_cast<int>(PixFmt::PAL8) == AV_PIX_FMT_PAL8);
static_assert(static_cast<int>(PixFmt::NV12) == AV_PIX_FMT_NV12);
static_assert(static_cast<int>(PixFmt::ARGB) == AV_PIX_FMT_ARGB);
static_assert(static_cast<int>(PixFmt::RGBA) == AV_PIX_FMT_RGBA);
static_assert(static_cast<int>(PixFmt::ABGR) == AV_PIX_FMT_ABGR);
static_assert(static_cast<int>(PixFmt::BGRA) == AV_PIX_FMT_BGRA);
static_assert(static_cast<int>(PixFmt::Gray16LE) == AV_PIX_FMT_GRAY16LE);
static_assert(static_cast<int>(PixFmt::YUVA420P) == AV_PIX_FMT_YUVA420P);
static_assert(static_cast<int>(PixFmt::GBRP) == AV_PIX_FMT_GBRP);
static_assert(static_cast<int>(PixFmt::P010LE) == AV_PIX_FMT_P010LE);
static_assert(static_cast<int>(PixFmt::GrayF32LE) == AV_PIX_FMT_GRAYF32LE);

namespace {

// Row strides of allocated pictures are multiples of this, and so are plane starts.
constexpr std::size_t kStrideAlignment = 64;

AVPixelFormat ToAv(PixFmt format) { return static_cast<AVPixelFormat>(static_cast<int>(format)); }

struct BufferRelease {
  std::size_t bytes = 0;
  void operator()(std::uint8_t* buffer) const { Details::ReleasePictureBuffer(buffer, bytes); }
};
using Buffer = std::unique_ptr<std::uint8_t, BufferRelease>;

class FFPicture final : public RefCounted<IDataVideo> {
 public:
  struct Plane {
    std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 0;
    PlaneLayout layout;
  };

  FFPicture(PixFmt format, const Conf::FrameInfo& info, std::vector<Plane> planes,
            std::size_t bufferSize)
      : format_(format), info_(info), planes_(std::move(planes)), bufferSize_(bufferSize) {}

  void Own(Buffer buffer) { buffer_ = std::move(buffer); }
  void KeepAlive(IDataVideoConstPtr parent) { parent_ = std::move(parent); }

  PixFmt GetPixFmt() const override { return format_; }
  const Conf::FrameInfo& GetFrameInfo() const override { return info_; }
  unsigned GetPlanesCount() const override { return static_cast<unsigned>(planes_.size()); }
  Details::PlaneTemplate<true> GetPlane(unsigned plane) const override {
    const Plane& p = planes_[plane];
    return {p.data, p.stride, p.layout.rowLength, p.layout.rowCount};
  }
  Details::PlaneTemplate<false> GetPlane(unsigned plane) override {
    const Plane& p = planes_[plane];
    return {p.data, p.stride, p.layout.rowLength, p.layout.rowCount};
  }
  std::size_t GetBufferSize() const override { return bufferSize_; }

  std::int64_t GetPosition() const override { return position_; }
  void SetPosition(std::int64_t position) override { position_ = position; }
  std::int64_t GetDuration() const override { return duration_; }
  void SetDuration(std::int64_t duration) override { duration_ = duration; }

  void Fill(const Color& color) override;

  IDataVideoPtr GetView(const ROI& rect) override { return MakeView(rect); }
  IDataVideoConstPtr GetView(const ROI& rect) const override { return MakeView(rect); }

 private:
  IDataVideoPtr MakeView(const ROI& rect) const;
  void FillPaletted(const Color& color);
  void FillBayer(const AVPixFmtDescriptor& descriptor, const Color& color);
  void FillComponents(const AVPixFmtDescriptor& descriptor, const Color& color);
  void ReplicateRow(unsigned plane, unsigned period);

  PixFmt format_;
  Conf::FrameInfo info_;
  std::vector<Plane> planes_;
  std::size_t bufferSize_;
  std::int64_t position_ = 0;
  std::int64_t duration_ = 0;
  Buffer buffer_;
  IDataVideoConstPtr parent_;
};

// ---- views ----

IDataVideoPtr FFPicture::MakeView(const ROI& rect) const {
  const auto clamp = [](std::int64_t value, std::int64_t limit) {
    return std::clamp<std::int64_t>(value, 0, limit);
  };
  const std::int64_t left = clamp(rect.left, info_.width);
  const std::int64_t top = clamp(rect.top, info_.height);
  const std::int64_t right =
      std::max(left, clamp(std::int64_t{rect.left} + rect.width, info_.width));
  const std::int64_t bottom =
      std::max(top, clamp(std::int64_t{rect.top} + rect.height, info_.height));

  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(ToAv(format_));
  const int alignX = 1 << descriptor->log2_chroma_w;
  const int alignY = 1 << descriptor->log2_chroma_h;
  if (left % alignX != 0 || top % alignY != 0) {
    throw Core::CoreException("Cannot view " + GetPixFmtName(format_) + " pixels at (" +
                              std::to_string(left) + ", " + std::to_string(top) +
                              "): the corner must lie on a multiple of " + std::to_string(alignX) +
                              'x' + std::to_string(alignY));
  }

  const Conf::FrameInfo info{static_cast<std::int32_t>(right - left),
                             static_cast<std::int32_t>(bottom - top), info_.aspectX, info_.aspectY};
  const std::vector<PlaneLayout> layouts = GetPlaneLayouts(format_, info);
  const int pixelPlanes = av_pix_fmt_count_planes(ToAv(format_));
  std::vector<Plane> planes(planes_.size());
  std::size_t bytes = 0;
  for (std::size_t p = 0; p < planes_.size(); ++p) {
    std::ptrdiff_t offset = 0;
    if (static_cast<int>(p) < pixelPlanes) {
      const int x =
          av_image_get_linesize(ToAv(format_), static_cast<int>(left), static_cast<int>(p));
      const std::int64_t y = (p == 1 || p == 2) ? top >> descriptor->log2_chroma_h : top;
      offset = static_cast<std::ptrdiff_t>(y) * planes_[p].stride + x;
    }
    planes[p] = {planes_[p].data + offset, planes_[p].stride, layouts[p]};
    bytes += static_cast<std::size_t>(layouts[p].GetByteCount());
  }
  boost::intrusive_ptr<FFPicture> view(new FFPicture(format_, info, std::move(planes), bytes));
  view->position_ = position_;
  view->duration_ = duration_;
  view->KeepAlive(IDataVideoConstPtr(this));
  return view;
}

// ---- filling ----

// One 8-bit colour channel scaled to a component of `depth` bits, 0 and 255 mapping to the
// ends of the range.
std::uint32_t ScaleFull(std::uint8_t value, int depth) {
  const double max = std::ldexp(1.0, depth) - 1.0;
  return static_cast<std::uint32_t>(std::lround(value * max / 255.0));
}

// Luma and chroma of BT.601: full range (gray, JPEG YUV) or studio range (other YUV).
struct Yuv {
  double y, u, v;
};
Yuv ToYuv(const Color& c, bool fullRange) {
  const double r = c.r, g = c.g, b = c.b;
  if (fullRange) {
    return {0.299 * r + 0.587 * g + 0.114 * b, 128 - 0.168736 * r - 0.331264 * g + 0.5 * b,
            128 + 0.5 * r - 0.418688 * g - 0.081312 * b};
  }
  return {16 + (65.481 * r + 128.553 * g + 24.966 * b) / 255.0,
          128 + (-37.797 * r - 74.203 * g + 112.0 * b) / 255.0,
          128 + (112.0 * r - 93.786 * g - 18.214 * b) / 255.0};
}

std::uint8_t Clamp8(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

bool StartsWith(const char* text, const char* prefix) {
  return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

// The value of component `c` of `descriptor` for `color`, as av_write_image_line2 takes it.
std::uint32_t ComponentValue(const AVPixFmtDescriptor& descriptor, int c, const Color& color) {
  const bool rgb = (descriptor.flags & AV_PIX_FMT_FLAG_RGB) || StartsWith(descriptor.name, "xyz");
  const bool hasAlpha = descriptor.flags & AV_PIX_FMT_FLAG_ALPHA;
  const int colorComponents = descriptor.nb_components - (hasAlpha ? 1 : 0);
  const int depth = descriptor.comp[c].depth;
  const bool studioRange = !rgb && colorComponents >= 3 && !StartsWith(descriptor.name, "yuvj");

  std::uint8_t value8 = 0;
  if (c >= colorComponents) {
    value8 = color.a;
  } else if (rgb) {
    value8 = c == 0 ? color.r : c == 1 ? color.g : color.b;
  } else {
    const Yuv yuv = ToYuv(color, !studioRange);
    value8 = Clamp8(c == 0 ? yuv.y : c == 1 ? yuv.u : yuv.v);
  }

  if (descriptor.flags & AV_PIX_FMT_FLAG_FLOAT) {
    const float value = value8 / 255.0f;
    std::uint32_t bits = 0;
    static_assert(sizeof bits == sizeof value);
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
  }
  if (studioRange && c < colorComponents) {
    return depth >= 8 ? std::uint32_t{value8} << (depth - 8) : value8 >> (8 - depth);
  }
  return ScaleFull(value8, depth);
}

void FFPicture::Fill(const Color& color) {
  if (info_.width == 0 || info_.height == 0) return;
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(ToAv(format_));
  if (descriptor->flags & AV_PIX_FMT_FLAG_PAL) {
    FillPaletted(color);
  } else if (descriptor->flags & AV_PIX_FMT_FLAG_BAYER) {
    FillBayer(*descriptor, color);
  } else {
    FillComponents(*descriptor, color);
  }
}

// Copies the first `period` rows of a plane over the rest of it.
void FFPicture::ReplicateRow(unsigned plane, unsigned period) {
  const Plane& p = planes_[plane];
  for (std::size_t row = period; row < p.layout.rowCount; ++row) {
    std::memcpy(p.data + static_cast<std::ptrdiff_t>(row) * p.stride,
                p.data + static_cast<std::ptrdiff_t>(row % period) * p.stride, p.layout.rowLength);
  }
}

void FFPicture::FillComponents(const AVPixFmtDescriptor& descriptor, const Color& color) {
  const int pixelPlanes = av_pix_fmt_count_planes(ToAv(format_));
  // The first row of each plane is built in scratch rows: some descriptors (uyyvyy411) place
  // components with a uniform step that reaches past the row's real length.
  const std::size_t scratchLength =
      planes_[0].layout.rowLength + 16 * static_cast<std::size_t>(info_.width) + 64;
  std::vector<std::uint8_t> scratch(scratchLength * static_cast<std::size_t>(pixelPlanes), 0);
  std::uint8_t* data[4] = {};
  int strides[4] = {};
  for (int p = 0; p < pixelPlanes; ++p) {
    data[p] = scratch.data() + scratchLength * static_cast<std::size_t>(p);
    strides[p] = static_cast<int>(scratchLength);
  }
  std::vector<std::uint32_t> row(static_cast<std::size_t>(info_.width));
  for (int c = 0; c < descriptor.nb_components; ++c) {
    const bool chroma = (c == 1 || c == 2) && descriptor.nb_components >= 3;
    const int width = chroma ? AV_CEIL_RSHIFT(info_.width, descriptor.log2_chroma_w) : info_.width;
    std::fill_n(row.begin(), width, ComponentValue(descriptor, c, color));
    // Components are or-ed into their bits, which start at zero.
    av_write_image_line2(row.data(), data, strides, &descriptor, 0, 0, c, width, sizeof(row[0]));
  }
  if (std::strcmp(descriptor.name, "uyyvyy411") == 0) {
    // U Y Y V Y Y per four pixels: the descriptor's uniform luma step does not say that.
    std::uint8_t* bytes = data[0];
    const std::uint8_t macropixel[6] = {bytes[0], bytes[1], bytes[1], bytes[3], bytes[1], bytes[1]};
    for (std::size_t i = 0; i < planes_[0].layout.rowLength; ++i) bytes[i] = macropixel[i % 6];
  }
  for (int p = 0; p < pixelPlanes; ++p) {
    std::memcpy(planes_[p].data, data[p], planes_[p].layout.rowLength);
    ReplicateRow(static_cast<unsigned>(p), 1);
  }
}

void FFPicture::FillPaletted(const Color& color) {
  // Every pixel takes palette entry 0, which becomes the colour; the other entries are cleared.
  const std::uint32_t argb = std::uint32_t{color.a} << 24 | std::uint32_t{color.r} << 16 |
                             std::uint32_t{color.g} << 8 | color.b;
  std::memset(planes_[1].data, 0, planes_[1].layout.rowLength);
  std::memcpy(planes_[1].data, &argb, sizeof argb);
  std::memset(planes_[0].data, 0, planes_[0].layout.rowLength);
  ReplicateRow(0, 1);
}

void FFPicture::FillBayer(const AVPixFmtDescriptor& descriptor, const Color& color) {
  // "bayer_bggr16le": the 2x2 pattern, row by row, after the prefix.
  const char* pattern = descriptor.name + std::strlen("bayer_");
  const bool wide = std::strstr(pattern, "16") != nullptr;
  const Plane& p = planes_[0];
  const unsigned rows = static_cast<unsigned>(std::min<std::size_t>(2, p.layout.rowCount));
  for (unsigned y = 0; y < rows; ++y) {
    std::uint8_t* out = p.data + static_cast<std::ptrdiff_t>(y) * p.stride;
    for (std::int32_t x = 0; x < info_.width; ++x) {
      const char channel = pattern[2 * y + static_cast<unsigned>(x % 2)];
      const std::uint8_t value = channel == 'r' ? color.r : channel == 'g' ? color.g : color.b;
      if (!wide) {
        out[x] = value;
      } else {
        // value * 257 spreads the byte over 16 bits: both bytes are equal in either byte order.
        out[2 * x] = value;
        out[2 * x + 1] = value;
      }
    }
  }
  ReplicateRow(0, rows);
}

// ---- creation ----

std::vector<FFPicture::Plane> PackedPlanes(std::uint8_t* buffer,
                                           const std::vector<PlaneLayout>& layouts) {
  std::vector<FFPicture::Plane> planes;
  for (const PlaneLayout& layout : layouts) {
    planes.push_back({buffer, static_cast<std::ptrdiff_t>(layout.rowLength), layout});
    buffer += layout.GetByteCount();
  }
  return planes;
}

}  // namespace

IDataVideoPtr DataVideoFF::Create(PixFmt format, const Conf::FrameInfo& info,
                                  std::uint8_t* externalBuffer) {
  const std::vector<PlaneLayout> layouts = GetPlaneLayouts(format, info);
  if (externalBuffer != nullptr) {
    std::size_t bytes = 0;
    for (const PlaneLayout& layout : layouts)
      bytes += static_cast<std::size_t>(layout.GetByteCount());
    return IDataVideoPtr(new FFPicture(format, info, PackedPlanes(externalBuffer, layouts), bytes));
  }

  std::vector<FFPicture::Plane> planes;
  std::size_t bytes = 0;
  for (const PlaneLayout& layout : layouts) {
    const std::size_t stride = FFALIGN(layout.rowLength, kStrideAlignment);
    planes.push_back({nullptr, static_cast<std::ptrdiff_t>(stride), layout});
    bytes += stride * layout.rowCount;
  }
  Buffer buffer(nullptr, BufferRelease{bytes});
  if (bytes > 0) {
    buffer.reset(Details::AcquirePictureBuffer(bytes));
    if (!buffer) {
      throw Core::CoreException("Cannot allocate " + std::to_string(bytes) + " bytes for a " +
                                GetPixFmtName(format) + " picture");
    }
    std::uint8_t* start = buffer.get();
    for (auto& plane : planes) {
      plane.data = start;
      start += static_cast<std::size_t>(plane.stride) * plane.layout.rowCount;
    }
    // A fresh palette is black rather than whatever the allocator left.
    if (layouts.size() > static_cast<std::size_t>(av_pix_fmt_count_planes(ToAv(format)))) {
      std::memset(planes.back().data, 0, planes.back().layout.rowLength);
    }
  }
  boost::intrusive_ptr<FFPicture> picture(new FFPicture(format, info, std::move(planes), bytes));
  picture->Own(std::move(buffer));
  return picture;
}

std::uint8_t GetPlanesCount(const IDataVideoConstPtr& picture) {
  return picture ? static_cast<std::uint8_t>(picture->GetPlanesCount()) : 0;
}

namespace {

void CopyPlaneRows(const Details::PlaneTemplate<true>& from,
                   const Details::PlaneTemplate<false>& to) {
  const std::size_t length = std::min(from.GetRowLength(), to.GetRowLength());
  const std::size_t rows = std::min(from.GetRowCount(), to.GetRowCount());
  for (std::size_t row = 0; row < rows; ++row) {
    std::memcpy(to.GetOffsetPtr(0, row), from.GetOffsetPtr(0, row), length);
  }
}

}  // namespace

IDataVideoPtr CopyDataVideo(const IDataVideo& picture) {
  IDataVideoPtr copy = DataVideoFF::Create(picture.GetPixFmt(), picture.GetFrameInfo());
  copy->SetPosition(picture.GetPosition());
  copy->SetDuration(picture.GetDuration());
  for (unsigned plane = 0; plane < picture.GetPlanesCount(); ++plane) {
    CopyPlaneRows(picture.GetPlane(plane), copy->GetPlane(plane));
  }
  return copy;
}

void CopyPixels(const IDataVideo& source, IDataVideo& target, std::int32_t x, std::int32_t y) {
  if (source.GetPixFmt() != target.GetPixFmt()) {
    throw Core::CoreException("Cannot copy pixels of a " + GetPixFmtName(source.GetPixFmt()) +
                              " picture into a " + GetPixFmtName(target.GetPixFmt()) + " picture");
  }
  const Conf::FrameInfo& from = source.GetFrameInfo();
  const Conf::FrameInfo& to = target.GetFrameInfo();
  const std::int64_t left = std::max<std::int64_t>(x, 0);
  const std::int64_t top = std::max<std::int64_t>(y, 0);
  const std::int64_t right = std::min<std::int64_t>(std::int64_t{x} + from.width, to.width);
  const std::int64_t bottom = std::min<std::int64_t>(std::int64_t{y} + from.height, to.height);
  if (right <= left || bottom <= top) return;
  const auto width = static_cast<std::int32_t>(right - left);
  const auto height = static_cast<std::int32_t>(bottom - top);
  const IDataVideoConstPtr part = source.GetView(
      {static_cast<std::int32_t>(left - x), static_cast<std::int32_t>(top - y), width, height});
  const IDataVideoPtr place = target.GetView(
      {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top), width, height});
  // Pixel planes only: a paletted target keeps its own palette.
  const int pixelPlanes = av_pix_fmt_count_planes(ToAv(source.GetPixFmt()));
  for (int plane = 0; plane < pixelPlanes; ++plane) {
    CopyPlaneRows(part->GetPlane(static_cast<unsigned>(plane)),
                  place->GetPlane(static_cast<unsigned>(plane)));
  }
}

}  // namespace Kelbra::Proc
