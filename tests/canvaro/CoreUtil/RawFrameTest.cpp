#include "canvaro/CoreUtil/RawFrame.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/DataString.h"
#include "kelbra/Proc/PixFmtInfo.h"
#include "support/Errors.h"
#include "support/Pictures.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using Canvaro::CoreUtil::LoadRawFrame;
using Canvaro::CoreUtil::SaveRawFrame;
using canvaro_test::MakePatternPicture;
using canvaro_test::PackedBytes;
using Proc::PixFmt;

std::string Header(std::int32_t format, const Conf::FrameInfo& info) {
  std::string header(20, '\0');
  std::memcpy(header.data(), &format, 4);
  std::memcpy(header.data() + 4, &info, 16);
  return header;
}

// ---- round trip of every memory format ----

class RawFrameFormats : public testing::TestWithParam<PixFmt> {};

// Planes follow one another whole, in plane order (PackedBytes); a file cut short anywhere fails
// to load with FileException.
TEST_P(RawFrameFormats, FileIsHeaderThenPackedRowsAndLoadsBackEqualOnlyWhenWhole) {
  canvaro_test::TempDir dir;
  // Odd sizes give padded strides, and 256 pixels unpadded planes read and written whole (past
  // the streams' buffers); aspect values travel untouched; a picture without rows is only the
  // header.
  for (const Conf::FrameInfo info :
       {Conf::FrameInfo{13, 7, 3, 2}, Conf::FrameInfo{1, 3, 0, 0}, Conf::FrameInfo{256, 300, 1, 1},
        Conf::FrameInfo{8, 0, 1, 1}}) {
    const auto picture = MakePatternPicture(GetParam(), info, 9);
    picture->SetPosition(777);
    picture->SetDuration(5);
    const ioPath path = dir / "frame.raw";
    auto out = Core::DataOutputFile::Create(path);
    SaveRawFrame(picture, out);
    out->Close();

    const std::string expected =
        Header(static_cast<std::int32_t>(GetParam()), info) + PackedBytes(*picture);
    std::ifstream written(path.native(), std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}), expected)
        << Proc::GetPixFmtName(GetParam());

    Proc::IDataVideoPtr loaded;
    LoadRawFrame(loaded, Core::DataInputFile::Create(path));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetPixFmt(), GetParam());
    EXPECT_EQ(loaded->GetFrameInfo(), info);
    EXPECT_EQ(PackedBytes(*loaded), PackedBytes(*picture));
    EXPECT_EQ(loaded->GetPosition(), 0);
    EXPECT_EQ(loaded->GetDuration(), 40000);

    for (const std::size_t size :
         {expected.size() - 1, std::size_t{20}, std::size_t{19}, std::size_t{3}, std::size_t{0}}) {
      if (size >= expected.size()) continue;
      std::filesystem::resize_file(path.native(), size);
      Proc::IDataVideoPtr frame;
      EXPECT_THROW(LoadRawFrame(frame, Core::DataInputFile::Create(path)), Core::FileException)
          << size;
      EXPECT_FALSE(frame);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EveryMemoryFormat, RawFrameFormats,
                         testing::ValuesIn(Proc::GetMemoryPixFmts()),
                         [](const testing::TestParamInfo<PixFmt>& info) {
                           return Proc::GetPixFmtName(info.param);
                         });

// ---- no picture ----

TEST(RawFrame, EmptyPictureRoundTripsAsEmpty) {
  std::string bytes;
  SaveRawFrame(nullptr, Core::DataOutputString::Create(bytes));
  EXPECT_EQ(bytes, Header(-1, {}));
  Proc::IDataVideoPtr frame = Proc::DataVideoFF::Create(PixFmt::Gray8, {1, 1, 1, 1});
  LoadRawFrame(frame, Core::DataInputString::Create(bytes));
  EXPECT_FALSE(frame);
}

// ---- refusals: before any allocation, as FileException naming the stream ----

TEST(RawFrame, RefusesHeadersNoPictureCanHave) {
  const std::string pixels(64, 'x');
  const std::int32_t gray = static_cast<std::int32_t>(PixFmt::Gray8);
  const struct {
    std::string bytes;
    const char* why;
  } cases[] = {
      {Header(9999, {2, 2, 1, 1}) + pixels, "unknown pixel format 9999"},
      {Header(-1, {2, 2, 1, 1}) + pixels, "unknown pixel format -1"},
      {Header(44 /* vaapi */, {2, 2, 1, 1}) + pixels, "unknown pixel format 44"},
      {Header(9 /* monowhite, bit-packed */, {8, 2, 1, 1}) + pixels, "unknown pixel format 9"},
      {Header(gray, {-2, 2, 1, 1}) + pixels, "Negative size"},
      {Header(gray, {2, -2, 1, 1}) + pixels, "Negative size"},
      {Header(gray, {0x7FFFFFFF, 0x7FFFFFFF, 1, 1}) + pixels, "too large"},
      // A plausible header over a short file: 20000 x 10000 gray would be 200 MB.
      {Header(gray, {20000, 10000, 1, 1}) + pixels, "only 64 follow"},
      {Header(gray, {8, 9, 1, 1}) + pixels, "promises 72 bytes"},
  };
  for (const auto& c : cases) {
    Proc::IDataVideoPtr frame = Proc::DataVideoFF::Create(PixFmt::Gray8, {1, 1, 1, 1});
    const auto before = frame;
    EXPECT_THAT(canvaro_test::ErrorText<Core::FileException>(
                    [&] { LoadRawFrame(frame, Core::DataInputString::Create(c.bytes)); }),
                testing::HasSubstr(c.why));
    EXPECT_EQ(frame, before) << c.why;
  }
}

}  // namespace
