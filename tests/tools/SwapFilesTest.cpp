// Raw frame headers and the sizes they imply, against files that the library itself writes.
#include <filesystem>

#include <gtest/gtest.h>

#include "canvaro/CoreUtil/RawFrame.h"
#include "kelbra/Core/DataFile.h"
#include "support/TempDir.h"
#include "tools/canvaro/SwapFiles.h"

namespace {

using namespace canvaro_tool;
namespace Proc = Kelbra::Proc;

TEST(SwapFilesTest, TheExpectedSizeIsTheSizeTheLibraryWrites) {
  canvaro_test::TempDir dir;
  const std::pair<Proc::PixFmt, Kelbra::Conf::FrameInfo> cases[] = {
      {Proc::PixFmt::RGBA, {7, 5, 1, 1}},
      {Proc::PixFmt::Gray8, {13, 3, 1, 1}},
      {Proc::PixFmt::YUV420P, {9, 7, 1, 1}},
      {Proc::PixFmt::PAL8, {4, 4, 1, 1}},
  };
  for (const auto& [format, info] : cases) {
    const auto file = dir.path().native() / "frame.raw";
    auto out = Kelbra::Core::DataOutputFile::Create(file);
    Kelbra::Canvaro::CoreUtil::SaveRawFrame(Proc::DataVideoFF::Create(format, info), out);
    out->Close();
    const auto header = ReadRawHeader(file);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->info, info);
    EXPECT_EQ(ExpectedRawSize(*header), std::filesystem::file_size(file))
        << PixelFormatName(header->pixelFormat);
    EXPECT_TRUE(CheckSwapFile(dir.path().native(), {{"frame.raw", info}, "frame 0"}, true).empty());
  }
}

TEST(SwapFilesTest, ImpossibleHeadersHaveNoSize) {
  EXPECT_EQ(ExpectedRawSize({-1, {0, 0, 0, 0}}), 20u);  // an empty picture
  EXPECT_FALSE(ExpectedRawSize({-1, {5, 5, 1, 1}}));
  EXPECT_FALSE(ExpectedRawSize({12345, {5, 5, 1, 1}}));
  EXPECT_FALSE(ExpectedRawSize({26, {-5, 5, 1, 1}}));
}

}  // namespace
