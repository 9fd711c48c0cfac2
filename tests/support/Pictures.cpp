#include "support/Pictures.h"

#include <cstring>

namespace canvaro_test {

Kelbra::Proc::IDataVideoPtr MakePatternPicture(Kelbra::Proc::PixFmt format,
                                               const Kelbra::Conf::FrameInfo& info, unsigned seed) {
  auto picture = Kelbra::Proc::DataVideoFF::Create(format, info);
  for (unsigned p = 0; p < picture->GetPlanesCount(); ++p) {
    const auto plane = picture->GetPlane(p);
    const auto stride = static_cast<std::size_t>(plane.GetStride());
    for (std::size_t row = 0; row < plane.GetRowCount(); ++row) {
      std::uint8_t* bytes = plane.GetOffsetPtr(0, row);
      for (std::size_t x = 0; x < plane.GetRowLength(); ++x) {
        bytes[x] = static_cast<std::uint8_t>(seed * 131 + p * 61 + row * 7 + x * 3);
      }
      if (stride > plane.GetRowLength()) {
        std::memset(bytes + plane.GetRowLength(), 0xEE, stride - plane.GetRowLength());
      }
    }
  }
  return picture;
}

std::string PackedBytes(const Kelbra::Proc::IDataVideo& picture) {
  std::string bytes;
  for (unsigned p = 0; p < picture.GetPlanesCount(); ++p) {
    const auto plane = picture.GetPlane(p);
    for (std::size_t row = 0; row < plane.GetRowCount(); ++row) {
      bytes.append(reinterpret_cast<const char*>(plane.GetOffsetPtr(0, row)), plane.GetRowLength());
    }
  }
  return bytes;
}

Kelbra::Proc::IDataVideoPtr Painted(const Kelbra::Proc::IDataVideoPtr& mask, std::int32_t left,
                                    std::int32_t right, std::int32_t top, std::int32_t bottom,
                                    std::uint8_t value, std::int32_t width, std::int32_t height) {
  using namespace Kelbra::Proc;
  IDataVideoPtr copy =
      mask ? CopyDataVideo(*mask) : DataVideoFF::Create(PixFmt::Gray8, {width, height, 1, 1});
  if (!mask) copy->Fill(Color::Black());
  const auto plane = copy->GetPlane(0);
  for (std::int32_t y = top; y < bottom; ++y) {
    for (std::int32_t x = left; x < right; ++x) {
      *plane.GetOffsetPtr(static_cast<std::size_t>(x), static_cast<std::size_t>(y)) = value;
    }
  }
  return copy;
}

}  // namespace canvaro_test
