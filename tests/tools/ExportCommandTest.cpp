// canvaro export: the PNG holds exactly the pixels of the step's swap file; masks show painted
// pixels in brush colours; bad requests fail with one line.
#include <filesystem>
#include <utility>

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

class ExportCommandTest : public DemoOutputTest {};

// Every item's picture and mask; the source item has no mask, so its mask is a black picture.
// Without --item the current item is taken.
TEST_F(ExportCommandTest,
       PicturesAreTheirSwapFilesMasksShowBrushColoursAndTheCurrentItemIsTheDefault) {
  const Json doc = InspectJson(Demo());
  for (int item = 0; item <= kSteps; ++item) {
    const std::string at = std::to_string(item);
    const Json& entry = doc["items"]["list"][item];
    const fs::path png = Scratch("item" + at + ".png");
    const fs::path maskPng = Scratch("mask" + at + ".png");
    RunToolOk({"export", Demo().string(), "--item", at, "--out", png.string()});
    const ToolRun masked =
        RunToolOk({"export", Demo().string(), "--item", at, "--mask", "--out", maskPng.string()});
    if (item == doc["items"]["current"]) {
      EXPECT_THAT(RunToolOk({"export", Demo().string(), "--out", Scratch("now.png").string()}).out,
                  HasSubstr("item " + at));
    }

    Kelbra::Proc::IDataVideoPtr raw;
    Kelbra::Canvaro::CoreUtil::LoadRawFrame(
        raw, Kelbra::Core::DataInputFile::Create(Demo() / "pictures" /
                                                 entry["frame"]["file"].get<std::string>()));
    const canvaro_tool::RgbaImage image = canvaro_tool::ReadPngRgba(png);
    ASSERT_EQ(image.width, 48u);
    ASSERT_EQ(image.height, 36u);
    const auto plane = std::as_const(*raw).GetPlane(0);
    for (std::size_t y = 0; y < 36; ++y) {
      ASSERT_EQ(0, std::memcmp(plane.GetOffsetPtr(0, y), image.pixels.data() + y * 48 * 4, 48 * 4))
          << "item " << item << " row " << y;
    }

    const canvaro_tool::RgbaImage maskImage = canvaro_tool::ReadPngRgba(maskPng);
    EXPECT_EQ(maskImage.width, 48u);
    std::int64_t painted = 0;
    for (std::size_t i = 0; i < maskImage.pixels.size(); i += 4) {
      painted += (maskImage.pixels[i] | maskImage.pixels[i + 1] | maskImage.pixels[i + 2]) != 0;
    }
    EXPECT_EQ(painted, entry["mask"]["pixels"].get<std::int64_t>()) << "item " << item;
    for (const Json& brush : entry["mask"]["brushes"]) {
      EXPECT_THAT(masked.out,
                  HasSubstr("brush " + std::to_string(brush["brush"].get<int>()) + ": " +
                            std::to_string(brush["pixels"].get<std::int64_t>())));
    }
    if (item == 0) {
      EXPECT_THAT(masked.out, HasSubstr("nothing painted"));
    }
  }
}

TEST_F(ExportCommandTest, BadRequestsFailWithOneLine) {
  const fs::path dir = FreshCopy();
  fs::remove(dir / "pictures" / PictureFile(dir, 2));
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
