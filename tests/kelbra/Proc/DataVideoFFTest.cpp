#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "kelbra/Core/CoreException.h"
#include "kelbra/Proc/BufferPool.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/Proc/PixFmtInfo.h"
#include "support/Pictures.h"

namespace {

using namespace Kelbra;
using canvaro_test::MakePatternPicture;
using canvaro_test::PackedBytes;
using Proc::PixFmt;

// ---- every memory format ----

class EveryFormat : public testing::TestWithParam<PixFmt> {};

TEST_P(EveryFormat, PlanesCoverExactlyWhatLibavutilSaysThePictureNeeds) {
  const PixFmt format = GetParam();
  for (const Conf::FrameInfo info : {Conf::FrameInfo{13, 7, 1, 1}, Conf::FrameInfo{64, 2, 4, 3}}) {
    const auto picture = Proc::DataVideoFF::Create(format, info);
    EXPECT_EQ(picture->GetFrameInfo(), info);
    std::uint64_t packed = 0;
    for (unsigned p = 0; p < picture->GetPlanesCount(); ++p) {
      const auto plane = std::as_const(*picture).GetPlane(p);
      EXPECT_GE(static_cast<std::size_t>(plane.GetStride()), plane.GetRowLength());
      EXPECT_EQ(plane.GetStride() % 64, 0);
      packed += plane.GetRowLength() * plane.GetRowCount();
    }
    const int expected =
        av_image_get_buffer_size(static_cast<AVPixelFormat>(format), info.width, info.height, 1);
    EXPECT_EQ(packed, static_cast<std::uint64_t>(expected)) << Proc::GetPixFmtName(format);
    EXPECT_GE(picture->GetBufferSize(), packed);
  }
}

TEST_P(EveryFormat, FillWritesOnlyPixelBytesTheSameEachTimeAndCopiesAreEqualAndIndependent) {
  const PixFmt format = GetParam();
  const Conf::FrameInfo info{13, 7, 1, 1};
  const auto first = MakePatternPicture(format, info, 1);
  const auto second = MakePatternPicture(format, info, 2);
  const Proc::Color color(200, 100, 50, 25);
  first->Fill(color);
  second->Fill(color);
  EXPECT_EQ(PackedBytes(*first), PackedBytes(*second)) << Proc::GetPixFmtName(format);
  const unsigned pixelPlanes = format == PixFmt::PAL8 ? 1 : first->GetPlanesCount();
  for (unsigned p = 0; p < pixelPlanes; ++p) {
    const auto plane = first->GetPlane(p);
    for (std::size_t row = 0; row < plane.GetRowCount(); ++row) {
      for (auto x = plane.GetRowLength(); x < static_cast<std::size_t>(plane.GetStride()); ++x) {
        ASSERT_EQ(*plane.GetOffsetPtr(x, row), 0xEE) << "padding written, plane " << p;
      }
    }
  }
  // A copy of a patterned picture is equal and independent.
  const auto picture = MakePatternPicture(format, {11, 9, 1, 1}, 5);
  picture->SetPosition(123);
  picture->SetDuration(456);
  const auto copy = Proc::CopyDataVideo(*picture);
  EXPECT_EQ(copy->GetPixFmt(), format);
  EXPECT_EQ(copy->GetPosition(), 123);
  EXPECT_EQ(copy->GetDuration(), 456);
  EXPECT_EQ(PackedBytes(*copy), PackedBytes(*picture));
  *copy->GetPlane(0).GetOffsetPtr(0, 0) ^= 0xFF;
  EXPECT_NE(PackedBytes(*copy), PackedBytes(*picture));
}

INSTANTIATE_TEST_SUITE_P(Pictures, EveryFormat, testing::ValuesIn(Proc::GetMemoryPixFmts()),
                         [](const testing::TestParamInfo<PixFmt>& info) {
                           return std::to_string(static_cast<int>(info.param));
                         });

TEST(PixFmtInfo, MemoryFormatsExcludeHardwareAndBitPackedFormats) {
  const auto& formats = Proc::GetMemoryPixFmts();
  EXPECT_GT(formats.size(), 150u);
  EXPECT_THAT(formats, testing::IsSupersetOf({PixFmt::Gray8, PixFmt::RGBA, PixFmt::YUV420P,
                                              PixFmt::PAL8, PixFmt::NV12, PixFmt::GrayF32LE}));
  for (const int excluded :
       std::initializer_list<int>{AV_PIX_FMT_MONOWHITE, AV_PIX_FMT_RGB4, AV_PIX_FMT_VAAPI,
                                  AV_PIX_FMT_CUDA, AV_PIX_FMT_NB + 5}) {
    EXPECT_FALSE(Proc::IsMemoryPixFmt(static_cast<PixFmt>(excluded))) << excluded;
    EXPECT_THROW(Proc::DataVideoFF::Create(static_cast<PixFmt>(excluded), {4, 4, 1, 1}),
                 Core::CoreException);
  }
  EXPECT_EQ(Proc::GetPixFmtName(PixFmt::Gray8), "gray");
  EXPECT_EQ(Proc::GetPixFmtName(static_cast<PixFmt>(-7)), "unknown(-7)");
}

// ---- creation ----

TEST(DataVideoFF, RefusesNegativeAndHugeSizesButAcceptsEmptyOnes) {
  for (const Conf::FrameInfo bad : {Conf::FrameInfo{-1, 4, 1, 1}, Conf::FrameInfo{4, -1, 1, 1},
                                    Conf::FrameInfo{1 << 20, 1 << 20, 1, 1}}) {
    EXPECT_THROW(Proc::DataVideoFF::Create(PixFmt::RGBA, bad), Core::CoreException);
  }
  for (const Conf::FrameInfo info : {Conf::FrameInfo{0, 5, 1, 1}, Conf::FrameInfo{5, 0, 1, 1}}) {
    const auto empty = Proc::DataVideoFF::Create(PixFmt::YUV420P, info);
    EXPECT_EQ(empty->GetBufferSize(), 0u);
    EXPECT_EQ(PackedBytes(*empty), "");
    empty->Fill(Proc::Color::Black());
  }
  EXPECT_EQ(Proc::GetPlanesCount(nullptr), 0);
}

TEST(DataVideoFF, ExternalBufferHoldsPackedPlanesBackToBack) {
  std::vector<std::uint8_t> buffer(7 * 5 + 2 * 4 * 3);
  for (std::size_t i = 0; i < buffer.size(); ++i) buffer[i] = static_cast<std::uint8_t>(i);
  const auto picture = Proc::DataVideoFF::Create(PixFmt::YUV420P, {7, 5, 1, 1}, buffer.data());
  EXPECT_EQ(picture->GetPlane(0).GetStride(), 7);
  EXPECT_EQ(picture->GetPlane(1).GetOffsetPtr(0, 0), buffer.data() + 35);
  EXPECT_EQ(picture->GetPlane(2).GetOffsetPtr(0, 0), buffer.data() + 47);
  EXPECT_EQ(picture->GetBufferSize(), buffer.size());
  EXPECT_EQ(PackedBytes(*picture), std::string(buffer.begin(), buffer.end()));
}

// ---- fill ----

TEST(DataVideoFF, FillConvertsTheColourToTheFormat) {
  const Proc::Color color(10, 20, 30, 40);
  const Proc::Color white(255, 255, 255, 255);
  const auto bayer = static_cast<PixFmt>(AV_PIX_FMT_BAYER_BGGR8);
  // The first bytes of one row of one plane of a 5 x 3 picture after Fill.
  struct Case {
    PixFmt format;
    Proc::Color fill;
    unsigned plane;
    std::size_t row;
    std::vector<std::uint8_t> bytes;
  };
  const Case cases[] = {
      {PixFmt::RGBA, color, 0, 2, {10, 20, 30, 40, 10, 20, 30, 40}},
      {PixFmt::BGRA, color, 0, 0, {30, 20, 10, 40}},
      // Masks: black is all zero bytes, white (whatever its alpha) all 255.
      {PixFmt::Gray8, Proc::Color::Black(), 0, 2, {0, 0, 0, 0, 0}},
      {PixFmt::Gray8, Proc::Color(255, 255, 255, 0), 0, 2, {255, 255, 255, 255, 255}},
      {PixFmt::YUV420P, Proc::Color::Black(), 0, 2, {16, 16, 16, 16, 16}},
      {PixFmt::YUV420P, Proc::Color::Black(), 1, 1, {128, 128, 128}},
      {PixFmt::YUV420P, white, 0, 0, {235}},
      {PixFmt::Gray16LE, white, 0, 0, {0xFF, 0xFF, 0xFF, 0xFF}},
      {PixFmt::GrayF32LE, white, 0, 1, {0x00, 0x00, 0x80, 0x3F}},  // 1.0f
      {PixFmt::PAL8, color, 0, 2, {0, 0, 0, 0, 0}},                // every pixel is entry 0,
      {PixFmt::PAL8, color, 1, 0, {0x1E, 0x14, 0x0A, 0x28}},       // which holds the colour
      {bayer, color, 0, 0, {30, 20, 30, 20}},
      {bayer, color, 0, 1, {20, 10, 20, 10}},
      {bayer, color, 0, 2, {30, 20, 30, 20}},
  };
  for (const Case& c : cases) {
    auto picture = Proc::DataVideoFF::Create(c.format, {5, 3, 1, 1});
    picture->Fill(c.fill);
    const std::uint8_t* bytes = picture->GetPlane(c.plane).GetOffsetPtr(0, c.row);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + c.bytes.size()), c.bytes)
        << Proc::GetPixFmtName(c.format) << " plane " << c.plane << " row " << c.row;
  }
}

// ---- views and pixel copies ----

TEST(DataVideoFF, ViewSharesTheRectangleAndOutlivesItsParent) {
  auto picture = MakePatternPicture(PixFmt::YUV420P, {9, 7, 1, 1}, 0);
  const std::string before = PackedBytes(*picture);
  auto view = picture->GetView({2, 2, 4, 20});  // clipped to 4x5
  EXPECT_EQ(view->GetFrameInfo(), (Conf::FrameInfo{4, 5, 1, 1}));
  EXPECT_EQ(view->GetPlane(0).GetOffsetPtr(0, 0), picture->GetPlane(0).GetOffsetPtr(2, 2));
  EXPECT_EQ(view->GetPlane(1).GetOffsetPtr(0, 0), picture->GetPlane(1).GetOffsetPtr(1, 1));
  EXPECT_EQ(view->GetPlane(1).GetRowCount(), 3u);
  EXPECT_EQ(view->GetBufferSize(), 4u * 5 + 2 * 2 * 3);

  view->Fill(Proc::Color::Black());
  EXPECT_EQ(*picture->GetPlane(0).GetOffsetPtr(2, 2), 16);
  EXPECT_EQ(*picture->GetPlane(0).GetOffsetPtr(1, 2), static_cast<std::uint8_t>(before[9 * 2 + 1]));
  EXPECT_THROW(picture->GetView({1, 2, 4, 4}), Core::CoreException);
  EXPECT_THROW(picture->GetView({2, 3, 4, 4}), Core::CoreException);

  const auto copy = Proc::CopyDataVideo(*view);
  picture.reset();
  EXPECT_EQ(PackedBytes(*view), PackedBytes(*copy));
}

TEST(DataVideoFF, CopyPixelsCutsOffWhatFallsOutsideTheTarget) {
  const auto source = MakePatternPicture(PixFmt::RGB24, {4, 3, 1, 1}, 3);
  auto target = Proc::DataVideoFF::Create(PixFmt::RGB24, {5, 5, 1, 1});
  target->Fill(Proc::Color(1, 1, 1, 1));
  Proc::CopyPixels(*source, *target, -1, 3);  // source rows 0..1, columns 1..3
  for (std::size_t row : {0u, 1u}) {
    const std::uint8_t* copied = target->GetPlane(0).GetOffsetPtr(0, 3 + row);
    const std::uint8_t* from = source->GetPlane(0).GetOffsetPtr(3, row);
    EXPECT_EQ(std::vector(copied, copied + 9), std::vector(from, from + 9)) << "row " << row;
  }
  EXPECT_EQ(*target->GetPlane(0).GetOffsetPtr(9, 3), 1);
  EXPECT_EQ(*target->GetPlane(0).GetOffsetPtr(0, 2), 1);
  Proc::CopyPixels(*source, *target, 9, 9);  // entirely outside: nothing happens
  EXPECT_THROW(
      Proc::CopyPixels(*source, *Proc::DataVideoFF::Create(PixFmt::RGBA, {5, 5, 1, 1}), 0, 0),
      Core::CoreException);
}

// ---- the pool of freed large picture buffers ----

// A buffer comes back for the next picture of its size only, small pictures never enter the
// pool, and it keeps at most two buffers.
TEST(BufferPoolTest, FreedLargeBuffersComeBackForTheSameSizeOnly) {
  const auto make = [](std::int32_t height) {
    return Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {1024, height, 1, 1});
  };
  constexpr std::uint64_t k4MiB = 4 << 20;  // 1024 x 1024 RGBA
  Proc::TrimBufferPool();
  Proc::IDataVideoPtr first = make(1024);
  const std::uint8_t* freed = first->GetPlane(0).GetOffsetPtr(0, 0);
  first.reset();
  EXPECT_EQ(Proc::GetPooledBufferBytes(), k4MiB);
  const auto other = make(1536);  // 6 MiB: a buffer of its own
  EXPECT_NE(other->GetPlane(0).GetOffsetPtr(0, 0), freed);
  EXPECT_EQ(Proc::GetPooledBufferBytes(), k4MiB);
  EXPECT_EQ(make(1024)->GetPlane(0).GetOffsetPtr(0, 0), freed);  // and back into the pool at once
  { const Proc::IDataVideoPtr pictures[] = {make(1024), make(1024), make(1024), make(16)}; }
  EXPECT_EQ(Proc::GetPooledBufferBytes(), 2 * k4MiB);
  Proc::TrimBufferPool();
  EXPECT_EQ(Proc::GetPooledBufferBytes(), 0u);
}

}  // namespace
