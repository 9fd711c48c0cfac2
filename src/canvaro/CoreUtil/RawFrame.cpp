#include "canvaro/CoreUtil/RawFrame.h"

#include <cstdint>
#include <string>
#include <vector>

#include "kelbra/Core/CoreException.h"
#include "kelbra/Proc/PixFmtInfo.h"

namespace Kelbra::Canvaro::CoreUtil {

namespace {

// Position and duration that every loaded picture gets (host time units).
constexpr std::int64_t kLoadedPosition = 0;
constexpr std::int64_t kLoadedDuration = 40000;

static_assert(sizeof(std::int32_t) + sizeof(Conf::FrameInfo) == kRawFrameHeaderSize);

[[noreturn]] void Refuse(const Core::IDataInputPtr& in, const std::string& reason) {
  throw Core::FileException("Cannot load a raw frame from '" + in->GetName() + "': " + reason);
}

// The packed pixel bytes that a header promises; refuses headers no picture can have.
std::uint64_t PromisedPixelBytes(const Core::IDataInputPtr& in, Proc::PixFmt format,
                                 const Conf::FrameInfo& info) {
  if (!Proc::IsMemoryPixFmt(format)) {
    Refuse(in, "unknown pixel format " + std::to_string(static_cast<std::int32_t>(format)));
  }
  std::vector<Proc::PlaneLayout> layouts;
  try {
    layouts = Proc::GetPlaneLayouts(format, info);
  } catch (const Core::CoreException& e) {
    const std::string* text = boost::get_error_info<TagDescription>(e);
    Refuse(in, text ? *text : std::string("unusable geometry"));
  }
  std::uint64_t bytes = 0;
  for (const Proc::PlaneLayout& layout : layouts) bytes += layout.GetByteCount();
  return bytes;
}

// Calls `piece(data, size)` for every run of `picture`'s pixel bytes in file order, so that the
// bytes go straight between the picture's buffer and the stream. A plane without padding is one
// run, and planes that follow each other in memory merge into one; padded rows are one run each.
template <class Picture, class Piece>
void ForEachRun(Picture& picture, Piece&& piece) {
  using Byte = typename decltype(picture.GetPlane(0))::Byte;
  Byte* start = nullptr;
  std::size_t size = 0;
  const auto extend = [&](Byte* data, std::size_t bytes) {
    if (bytes == 0) return;
    if (size > 0 && start + size == data) {
      size += bytes;
      return;
    }
    if (size > 0) piece(start, size);
    start = data;
    size = bytes;
  };
  const unsigned planes = picture.GetPlanesCount();
  for (unsigned p = 0; p < planes; ++p) {
    const auto plane = picture.GetPlane(p);
    const std::size_t length = plane.GetRowLength();
    if (plane.GetStride() == static_cast<std::ptrdiff_t>(length)) {
      extend(plane.GetOffsetPtr(0, 0), length * plane.GetRowCount());
      continue;
    }
    for (std::size_t row = 0; row < plane.GetRowCount(); ++row) {
      extend(plane.GetOffsetPtr(0, row), length);
    }
  }
  if (size > 0) piece(start, size);
}

}  // namespace

void SaveRawFrame(const boost::intrusive_ptr<const Proc::IDataVideo>& frame,
                  const Core::IDataOutputPtr& out) {
  const auto format = static_cast<std::int32_t>(frame ? frame->GetPixFmt() : Proc::PixFmt::None);
  const Conf::FrameInfo info = frame ? frame->GetFrameInfo() : Conf::FrameInfo{};
  out->Write(&format, sizeof format);
  out->Write(&info, sizeof info);
  if (!frame) return;

  ForEachRun(*frame, [&](const std::uint8_t* data, std::size_t size) { out->Write(data, size); });
}

void LoadRawFrame(Proc::IDataVideoPtr& frame, const Core::IDataInputPtr& in) {
  std::int32_t formatValue = 0;
  Conf::FrameInfo info;
  in->Read(&formatValue, sizeof formatValue);
  in->Read(&info, sizeof info);
  const auto format = static_cast<Proc::PixFmt>(formatValue);

  // What SaveRawFrame writes for an empty picture.
  if (format == Proc::PixFmt::None && info == Conf::FrameInfo{}) {
    frame.reset();
    return;
  }
  const std::uint64_t promised = PromisedPixelBytes(in, format, info);
  const std::uint64_t remaining = in->GetRemaining();
  if (promised > remaining) {
    Refuse(in, "the header promises " + std::to_string(promised) + " bytes of pixels for a " +
                   Proc::GetPixFmtName(format) + " picture of " + std::to_string(info.width) + 'x' +
                   std::to_string(info.height) + ", only " + std::to_string(remaining) + " follow");
  }

  // Filled aside, so that a read failure leaves `frame` as it was.
  Proc::IDataVideoPtr loaded = Proc::DataVideoFF::Create(format, info);
  loaded->SetPosition(kLoadedPosition);
  loaded->SetDuration(kLoadedDuration);
  ForEachRun(*loaded, [&](std::uint8_t* data, std::size_t size) { in->Read(data, size); });
  frame = std::move(loaded);
}

}  // namespace Kelbra::Canvaro::CoreUtil
