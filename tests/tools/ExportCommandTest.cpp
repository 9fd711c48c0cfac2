// canvaro export: the PNG holds exactly the pixels of the step's swap file; masks show painted
// pixels in brush colours; bad requests fail with one line.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "DemoOutput.h"
#include "canvaro/CoreUtil/RawFrame.h"
#include "kelbra/Core/DataFile.h"
#include "tools/canvaro/Png.h"

namespace {

using namespace canvaro_test;
using ::testing::HasSubstr;
namespace fs = std::filesystem;
using Json = nlohmann::json;

class ExportCommandTest : public DemoOutputTest {
 protected:
  static Json Inspect() { return Json::parse(RunTool({"inspect", Demo().string(), "--json"}).out); }
};

// Every item's picture and mask; the source item has no mask, so its mask is a black picture.
TEST_F(ExportCommandTest, ThePictureIsItsSwapFileAndTheMaskShowsPaintedPixelsInBrushColours) {
  const Json doc = Inspect();
  for (int item = 0; item <= kSteps; ++item) {
    const std::string at = std::to_string(item);
    const fs::path png = Scratch("item" + at + ".png");
    const fs::path maskPng = Scratch("mask" + at + ".png");
    const ToolRun run = RunTool({"export", Demo().string(), "--item", at, "--out", png.string()});
    ASSERT_EQ(run.status, 0) << run.err;
    const ToolRun masked =
        RunTool({"export", Demo().string(), "--item", at, "--mask", "--out", maskPng.string()});
    ASSERT_EQ(masked.status, 0) << masked.err;

    Kelbra::Proc::IDataVideoPtr raw;
    const std::string file = doc["items"]["list"][item]["frame"]["file"];
    Kelbra::Canvaro::CoreUtil::LoadRawFrame(
        raw, Kelbra::Core::DataInputFile::Create(Demo() / "pictures" / file));
    const canvaro_tool::RgbaImage image = canvaro_tool::ReadPngRgba(png);
    ASSERT_EQ(image.width, 48u);
    ASSERT_EQ(image.height, 36u);
    const Kelbra::Proc::IDataVideo& picture = *raw;
    const auto plane = picture.GetPlane(0);
    for (std::size_t y = 0; y < 36; ++y) {
      ASSERT_EQ(0, std::memcmp(plane.GetOffsetPtr(0, y), image.pixels.data() + y * 48 * 4, 48 * 4))
          << "item " << item << " row " << y;
    }

    const Json& mask = doc["items"]["list"][item]["mask"];
    const canvaro_tool::RgbaImage maskImage = canvaro_tool::ReadPngRgba(maskPng);
    EXPECT_EQ(maskImage.width, 48u);
    std::int64_t painted = 0;
    for (std::size_t i = 0; i < maskImage.pixels.size(); i += 4) {
      const std::uint8_t* pixel = &maskImage.pixels[i];
      if (pixel[0] != 0 || pixel[1] != 0 || pixel[2] != 0) ++painted;
    }
    EXPECT_EQ(painted, mask["pixels"].get<std::int64_t>()) << "item " << item;
    for (const Json& brush : mask["brushes"]) {
      EXPECT_THAT(masked.out,
                  HasSubstr("brush " + std::to_string(brush["brush"].get<int>()) + ": " +
                            std::to_string(brush["pixels"].get<std::int64_t>())));
    }
    if (item == 0) {
      EXPECT_THAT(masked.out, HasSubstr("nothing painted"));
    }
  }
}

TEST_F(ExportCommandTest, WithoutAStepTheCurrentItemIsTaken) {
  const Json doc = Inspect();
  const ToolRun run =
      RunTool({"export", Demo().string(), "--out", Scratch("current.png").string()});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("item " + std::to_string(doc["items"]["current"].get<int>())));
}

TEST_F(ExportCommandTest, BadRequestsFailWithOneLine) {
  const fs::path dir = FreshCopy();
  const std::string file = Inspect()["items"]["list"][2]["frame"]["file"];
  fs::remove(dir / "pictures" / file);
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"export", Demo().string(), "--item", "99", "--out", Scratch("a.png").string()},
       "no item 99"},
      {{"export", dir.string(), "--item", "2", "--out", Scratch("b.png").string()},
       "missing swap file"},
      {{"export", Demo().string(), "--out", (Scratch("no-such-dir") / "c.png").string()},
       "Cannot create file"},
  };
  for (const auto& [args, expected] : cases) EXPECT_TRUE(FailedWith(RunTool(args), 1, expected));
}

}  // namespace
