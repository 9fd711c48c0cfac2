// canvaro inspect on a demo document: the JSON model against what the demo did, and the JSON
// and text forms of a document that the library itself could not load.
#include <filesystem>
#include <fstream>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "DemoOutput.h"

namespace {

using namespace canvaro_test;
using ::testing::HasSubstr;
using Json = nlohmann::json;

class InspectCommandTest : public DemoOutputTest {};

TEST_F(InspectCommandTest, TheJsonModelHoldsEveryPartOfTheSession) {
  const Json doc = InspectJson(Demo());
  // The source and one item per step; the session ends one step back, so a redo step is saved.
  EXPECT_EQ(doc["items"]["count"], kSteps + 1);
  EXPECT_LT(doc["steps"]["current"].get<int>() + 1, doc["steps"]["count"].get<int>());

  std::set<std::string> kinds;
  for (const Json& shape : doc["shapes"]) kinds.insert(shape["kind"].get<std::string>());
  EXPECT_EQ(kinds, (std::set<std::string>{"ArrowInfo", "EllipseInfo", "LineInfo", "MarkerInfo",
                                          "RectangleInfo", "ShapedArrow", "TextInfo"}));

  std::set<std::string> presets;
  std::int64_t brushesSeen = 0;
  for (const Json& item : doc["items"]["list"]) {
    EXPECT_EQ(item["frame"]["state"], "present");
    EXPECT_EQ(item["frame"]["width"], 48);
    EXPECT_EQ(item["settings"]["package"], "canvaro tool effects");
    EXPECT_TRUE(item["settings"]["effects"].empty());
    presets.insert(item["settings"]["preset"].get<std::string>());
    std::int64_t sum = 0;
    for (const Json& brush : item["mask"]["brushes"]) sum += brush["pixels"].get<std::int64_t>();
    EXPECT_EQ(sum, item["mask"]["pixels"].get<std::int64_t>());
    brushesSeen += static_cast<std::int64_t>(item["mask"]["brushes"].size());
  }
  EXPECT_TRUE(presets.count("Invert") && presets.count("Blur 3 px")) << doc["items"].dump();
  EXPECT_GE(brushesSeen, 3);
  EXPECT_EQ(doc["frames"]["missing"], 0);
  EXPECT_GT(doc["frames"]["onDisk"], 0);
}

// Item 1's picture removed, item 0's named by a path out of the swap directory (a name counts by
// its last component only), and a host's effect in step 1: the library cannot load this
// document, inspect still reads it.
TEST_F(InspectCommandTest, ShowsMissingOrOutsideFilesAndAHostsEffects) {
  const auto dir = FreshCopy();
  const std::string outside = PictureFile(dir, 0);
  std::filesystem::remove(dir / "pictures" / PictureFile(dir, 1));
  std::ofstream(dir / "outside.raw") << "not in the swap directory";
  EditDocument(dir, [&](Kelbra::Core::Property& tree) {
    auto& records = Collection(tree.GetChild("Frames"), "StorageItems");
    for (std::size_t i = 0; i < records.size(); ++i) {
      auto& item = records[i].GetChild("StorageItem");
      if (item.GetString("FileName") == outside) item.SetString("FileName", "../outside.raw");
    }
    auto& effects = Collection(tree, "Items")[1].GetChild("Info").GetChild("tagEffectSettings");
    auto& effect =
        effects.AddCollection("keyEffectsCollection").emplace_back().AddChild("keyEffectItem");
    effect.SetClassId("HostSharpen");
    effect.SetString("implName", "default");
  });

  const Json after = InspectJson(dir);
  EXPECT_EQ(after["items"]["list"][0]["frame"]["state"], "missing");
  EXPECT_EQ(after["items"]["list"][1]["frame"]["state"], "missing");
  EXPECT_EQ(after["items"]["list"][1]["settings"]["effects"], Json::array({"HostSharpen"}));
  EXPECT_EQ(after["frames"]["missing"], 2);
  const ToolRun text = RunToolOk({"inspect", dir.string()});
  EXPECT_THAT(text.out, HasSubstr("Items: " + std::to_string(kSteps + 1) + ", current"));
  EXPECT_THAT(text.out, HasSubstr("preset \"Invert\""));
  EXPECT_THAT(text.out, HasSubstr("ShapedArrow"));
  EXPECT_THAT(text.out, HasSubstr("MISSING"));
  EXPECT_THAT(text.out, HasSubstr("1 effect(s) HostSharpen"));
}

}  // namespace
