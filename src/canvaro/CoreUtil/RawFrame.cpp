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

}  // namespace

void SaveRawFrame(const boost::intrusive_ptr<const Proc::IDataVideo>& frame,
                  const Core::IDataOutputPtr& out) {
  const auto format = static_cast<std::int32_t>(frame ? frame->GetPixFmt() : Proc::PixFmt::None);
  const Conf::FrameInfo info = frame ? frame->GetFrameInfo() : Conf::FrameInfo{};
  out->Write(&format, sizeof format);
  out->Write(&info, sizeof info);
  if (!frame) return;

  const unsigned planes = Proc::GetPlanesCount(frame);
  for (unsigned p = 0; p < planes; ++p) {
    const Proc::Details::PlaneTemplate<true> plane = frame->GetPlane(p);
    for (std::size_t row = 0; row < plane.GetRowCount(); ++row) {
      out->Write(plane.GetOffsetPtr(0, row), plane.GetRowLength());
    }
  }
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
  const unsigned planes = Proc::GetPlanesCount(loaded);
  for (unsigned p = 0; p < planes; ++p) {
    const Proc::Details::PlaneTemplate<false> plane = loaded->GetPlane(p);
    for (std::size_t row = 0; row < plane.GetRowCount(); ++row) {
      in->Read(plane.GetOffsetPtr(0, row), plane.GetRowLength());
    }
  }
  frame = std::move(loaded);
}

}  // namespace Kelbra::Canvaro::CoreUtil
