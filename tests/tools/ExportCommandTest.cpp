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

TEST_F(ExportCommandTest, ThePictureIsThePixelsOfItsSwapFile) {
  const Json doc = Inspect();
  for (int item = 0; item <= kSteps; ++item) {
    const fs::path png = Scratch("item" + std::to_string(item) + ".png");
    const ToolRun run =
        RunTool({"export", Demo().string(), "--item", std::to_string(item), "--out", png.string()});
    ASSERT_EQ(run.status, 0) << run.err;
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
  }
}

TEST_F(ExportCommandTest, WithoutAStepTheCurrentItemIsTaken) {
  const Json doc = Inspect();
  const ToolRun run =
      RunTool({"export", Demo().string(), "--out", Scratch("current.png").string()});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("item " + std::to_string(doc["items"]["current"].get<int>())));
}

TEST_F(ExportCommandTest, TheMaskShowsEveryPaintedPixelInItsBrushColour) {
  const Json doc = Inspect();
  for (int item = 1; item <= kSteps; ++item) {
    const Json& mask = doc["items"]["list"][item]["mask"];
    const fs::path png = Scratch("mask" + std::to_string(item) + ".png");
    const ToolRun run = RunTool({"export", Demo().string(), "--item", std::to_string(item),
                                 "--mask", "--out", png.string()});
    ASSERT_EQ(run.status, 0) << run.err;
    const canvaro_tool::RgbaImage image = canvaro_tool::ReadPngRgba(png);
    std::int64_t painted = 0;
    for (std::size_t i = 0; i < image.pixels.size(); i += 4) {
      if (image.pixels[i] != 0 || image.pixels[i + 1] != 0 || image.pixels[i + 2] != 0) ++painted;
    }
    EXPECT_EQ(painted, mask["pixels"].get<std::int64_t>()) << "item " << item;
    for (const Json& brush : mask["brushes"]) {
      EXPECT_THAT(run.out, HasSubstr("brush " + std::to_string(brush["brush"].get<int>()) + ": " +
                                     std::to_string(brush["pixels"].get<std::int64_t>())));
    }
  }
  // The source item has no mask: a black picture of its size.
  const ToolRun blank = RunTool(
      {"export", Demo().string(), "--item", "0", "--mask", "--out", Scratch("blank.png").string()});
  ASSERT_EQ(blank.status, 0) << blank.err;
  EXPECT_THAT(blank.out, HasSubstr("nothing painted"));
  EXPECT_EQ(canvaro_tool::ReadPngRgba(Scratch("blank.png")).width, 48u);
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
