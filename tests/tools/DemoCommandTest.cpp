// canvaro demo: the session saves a document that reloads to the same steps, a PNG can be the
// source, and the output directory is only ever one of the demo's own.
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DemoOutput.h"
#include "tools/canvaro/Png.h"

namespace {

using namespace canvaro_test;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

class DemoCommandTest : public DemoOutputTest {};

TEST_F(DemoCommandTest, TheSessionIsSavedAndReloadsStepByStep) {
  const std::string& out = DemoRun().out;
  EXPECT_THAT(out, HasSubstr("Writing to " + Demo().string()));
  EXPECT_THAT(out, HasSubstr("reload:           matched"));
  EXPECT_THAT(out, HasSubstr("peak memory:"));
  EXPECT_THAT(out, HasSubstr("mask stroke"));
  EXPECT_TRUE(fs::is_regular_file(Demo() / "document.json"));
  EXPECT_FALSE(fs::is_empty(Demo() / "pictures"));
  EXPECT_FALSE(fs::exists(Demo() / "reload-check"));  // the scratch copy is gone
}

TEST_F(DemoCommandTest, APngPictureBecomesTheSourceItem) {
  canvaro_tool::RgbaImage source{40, 30, {}};
  for (std::uint32_t i = 0; i < 40 * 30; ++i) {
    source.pixels.insert(source.pixels.end(),
                         {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i / 7),
                          static_cast<std::uint8_t>(255 - i % 256), 255});
  }
  canvaro_tool::WritePng(Scratch("in.png"), source);
  const ToolRun run = RunToolOk({"demo", "--picture", Scratch("in.png").string(), "--steps", "2",
                                 "--out", Scratch("demo").string()});
  EXPECT_THAT(run.out, HasSubstr("in.png (40x30 RGBA"));
  RunToolOk(
      {"export", Scratch("demo").string(), "--item", "0", "--out", Scratch("back.png").string()});
  EXPECT_EQ(canvaro_tool::ReadPngRgba(Scratch("back.png")).pixels, source.pixels);
}

TEST_F(DemoCommandTest, ReusesItsOwnOutputButNoOtherDirectory) {
  const std::vector<std::string> args = {
      "demo", "--size", "16x12", "--steps", "1", "--out", Scratch("reuse").string()};
  ASSERT_EQ(RunTool(args).status, 0);
  EXPECT_EQ(RunTool(args).status, 0);

  fs::create_directories(Scratch("mine"));
  std::ofstream(Scratch("mine") / "notes.txt") << "keep me";
  EXPECT_TRUE(FailedWith(
      RunTool({"demo", "--size", "16x12", "--steps", "1", "--out", Scratch("mine").string()}), 1,
      "notes.txt"));
  EXPECT_TRUE(fs::exists(Scratch("mine") / "notes.txt"));

  EXPECT_TRUE(
      FailedWith(RunTool({"demo", "--picture", Scratch("none.png").string()}), 1, "no such file"));
  std::ofstream(Scratch("fake.png")) << "not a png";
  EXPECT_TRUE(FailedWith(RunTool({"demo", "--picture", Scratch("fake.png").string(), "--out",
                                  Scratch("fake-out").string()}),
                         1, "cannot read picture"));
}

}  // namespace
