/// \file
/// Pictures: reference-counted pixel buffers with their geometry and pixel format.
///
/// A picture (Proc::IDataVideo) has a pixel format (PixFmt, FFmpeg's numbering), a geometry
/// (Conf::FrameInfo), one or more planes of pixel rows, and a time position and duration. Planes
/// are reached through plane descriptions (Details::PlaneTemplate): a writable one from a
/// non-const picture, a read-only one from a const picture.
///
///   auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {640, 480, 1, 1});
///   picture->Fill(Proc::Color::Black());
///   auto plane = picture->GetPlane(0);
///   std::uint8_t* row = plane.GetOffsetPtr(0, 10);   // row 10, byte 0
///   auto part = picture->GetView({10, 10, 100, 50});  // shares the pixels of a rectangle
///   auto copy = Proc::CopyDataVideo(*part);           // an owning, packed-as-allocated copy
///
/// Reference counting is thread-safe; the pixels are not guarded: one writer at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <boost/intrusive_ptr.hpp>

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Proc/Color.h"
#include "kelbra/ROI.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Proc {

/// Pixel formats, numbered as FFmpeg's AVPixelFormat. Every value that libavutil describes and
/// whose planes are in memory may be used; the names below are the ones this library and its
/// tests use most.
enum class PixFmt : std::int32_t {
  None = -1,
  YUV420P = 0,
  YUYV422 = 1,
  RGB24 = 2,
  BGR24 = 3,
  YUV422P = 4,
  YUV444P = 5,
  Gray8 = 8,  // one byte per pixel: masks
  PAL8 = 11,  // 8-bit indices; the 256-entry palette is an extra plane (see GetPlanesCount)
  NV12 = 23,
  ARGB = 25,
  RGBA = 26,
  ABGR = 27,
  BGRA = 28,
  Gray16LE = 30,
  YUVA420P = 33,
  GBRP = 71,
  P010LE = 159,
  GrayF32LE = 184,
};

namespace Details {

/// The description of one plane: where each row starts, how many bytes a row holds (its length,
/// without padding) and how many rows there are. Rows are `stride` bytes apart; the stride may be
/// larger than the row length.
template <bool IsConst>
class PlaneTemplate {
 public:
  using Byte = std::conditional_t<IsConst, const std::uint8_t, std::uint8_t>;

  PlaneTemplate() = default;
  PlaneTemplate(Byte* data, std::ptrdiff_t stride, std::size_t rowLength, std::size_t rowCount)
      : data_(data), stride_(stride), rowLength_(rowLength), rowCount_(rowCount) {}
  /// A writable description converts to a read-only one.
  template <bool OtherConst, class = std::enable_if_t<IsConst && !OtherConst>>
  PlaneTemplate(const PlaneTemplate<OtherConst>& other)
      : PlaneTemplate(other.GetOffsetPtr(0, 0), other.GetStride(), other.GetRowLength(),
                      other.GetRowCount()) {}

  /// The address of byte `x` of row `y` (x counts bytes, not pixels). No range check.
  Byte* GetOffsetPtr(std::size_t x, std::size_t y) const {
    return data_ + static_cast<std::ptrdiff_t>(y) * stride_ + static_cast<std::ptrdiff_t>(x);
  }
  std::ptrdiff_t GetStride() const { return stride_; }
  /// Bytes of pixel data in one row.
  std::size_t GetRowLength() const { return rowLength_; }
  std::size_t GetRowCount() const { return rowCount_; }
  /// Bytes the plane spans in its buffer: stride times rows.
  std::size_t GetSize() const {
    return static_cast<std::size_t>(stride_ < 0 ? -stride_ : stride_) * rowCount_;
  }

 private:
  Byte* data_ = nullptr;
  std::ptrdiff_t stride_ = 0;
  std::size_t rowLength_ = 0;
  std::size_t rowCount_ = 0;
};

}  // namespace Details

class IDataVideo;
using IDataVideoPtr = boost::intrusive_ptr<IDataVideo>;
using IDataVideoConstPtr = boost::intrusive_ptr<const IDataVideo>;

class IDataVideo : public virtual IRefCountable {
 public:
  virtual PixFmt GetPixFmt() const = 0;
  virtual const Conf::FrameInfo& GetFrameInfo() const = 0;

  /// Number of planes of the pixel format (1 for packed formats, 3 for YUV 4:2:0, ...). A
  /// paletted format has one more: its palette (256 native-endian 32-bit ARGB entries, one row
  /// of 1024 bytes), so that planes describe every byte a picture needs.
  virtual unsigned GetPlanesCount() const = 0;
  /// Plane `plane` (from 0, below GetPlanesCount()). No range check.
  virtual Details::PlaneTemplate<true> GetPlane(unsigned plane) const = 0;
  virtual Details::PlaneTemplate<false> GetPlane(unsigned plane) = 0;
  /// Total bytes of the pixel buffer that this picture keeps in memory (for a view: the bytes of
  /// the rectangle it spans).
  virtual std::size_t GetBufferSize() const = 0;

  /// Time attributes, in the host's time units.
  virtual std::int64_t GetPosition() const = 0;
  virtual void SetPosition(std::int64_t position) = 0;
  virtual std::int64_t GetDuration() const = 0;
  virtual void SetDuration(std::int64_t duration) = 0;

  /// Sets every pixel to `color`, converted to the picture's format.
  virtual void Fill(const Color& color) = 0;

  /// A picture that shares this one's pixels inside `rect` (clipped to the picture; it keeps this
  /// picture alive). Throws Core::CoreException when the format cannot address the rectangle
  /// (for example an odd offset in a subsampled plane).
  virtual IDataVideoPtr GetView(const ROI& rect) = 0;
  virtual IDataVideoConstPtr GetView(const ROI& rect) const = 0;
};

/// The plane count of a picture's format; 0 for an empty pointer.
std::uint8_t GetPlanesCount(const IDataVideoConstPtr& picture);

/// An owning copy of `picture` (or of a view) in a newly allocated buffer.
IDataVideoPtr CopyDataVideo(const IDataVideo& picture);

/// Writes the rows of `source` into `target` with their top-left corner at (x, y) in `target`.
/// Both must have the same pixel format; the part outside `target` is cut off.
void CopyPixels(const IDataVideo& source, IDataVideo& target, std::int32_t x, std::int32_t y);

class DataVideoFF {
 public:
  /// A new picture of `format` and `info`. Without `externalBuffer` it allocates an aligned
  /// buffer with its own row stride; with one, it wraps that memory (planes packed one after the
  /// other, rows without padding), which must stay alive as long as the picture. Throws
  /// Core::CoreException for a format libavutil does not describe, a hardware or bitstream
  /// format, or a geometry that cannot be allocated. A picture of zero width or height has no
  /// pixels but is a valid picture. The pixels of a new picture are unspecified: large buffers
  /// are reused from the pool of freed ones (BufferPool.h).
  static IDataVideoPtr Create(PixFmt format, const Conf::FrameInfo& info,
                              std::uint8_t* externalBuffer = nullptr);
};

}  // namespace Kelbra::Proc
