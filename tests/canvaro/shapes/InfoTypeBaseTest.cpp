#include "canvaro/shapes/InfoTypeBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using ::testing::ElementsAre;

std::vector<std::string> KeysOf(const Core::Property& node) {
  std::vector<std::string> keys;
  for (const auto& entry : node.Entries()) keys.push_back(entry.key);
  return keys;
}

InfoTypeBase Filled() {
  InfoTypeBase info;
  info.SetIndex(7);
  info.SetVisible(false);
  info.SetTool(IToolsId::SHAPE_FRAME);
  info.SetPresetId("preset-α");
  info.SetZValue(150.25);
  info.SetChangeType(9);
  info.SetSaved(true);
  return info;
}

TEST(InfoTypeBaseTest, ResetRestoresDefaultsButKeepsTheChangeType) {
  InfoTypeBase info = Filled();
  info.Reset();
  EXPECT_EQ(info.GetIndex(), -1);
  EXPECT_TRUE(info.IsVisible());
  EXPECT_EQ(info.GetTool(), IToolsId::NONE);
  EXPECT_EQ(info.GetPresetId(), "");
  EXPECT_EQ(info.GetZValue(), 0.0);
  EXPECT_FALSE(info.GetSaved());
  EXPECT_EQ(info.GetChangeType(), 9);
  EXPECT_EQ(InfoTypeBase::ZValueMax, 2147483547.0);
  EXPECT_EQ(InfoTypeBase::ZValueMin, 100.0);
}

TEST(InfoTypeBaseTest, EqualityLooksAtVisibilityPresetAndZValueOnly) {
  InfoTypeBase a = Filled();
  InfoTypeBase b = Filled();
  b.SetIndex(1);
  b.SetTool(IToolsId::TEXT);
  b.SetChangeType(0);
  b.SetSaved(false);
  EXPECT_TRUE(a == b);

  a.SetZValue(1.0);
  b.SetZValue(1.00001);
  EXPECT_TRUE(a == b);
  b.SetZValue(1.0001);
  EXPECT_FALSE(a == b);
  b.SetZValue(1.0);
  b.SetPresetId("preset-a");
  EXPECT_FALSE(a == b);
  b.SetPresetId(a.GetPresetId());
  b.SetVisible(true);
  EXPECT_FALSE(a == b);
}

TEST(InfoTypeBaseTest, WritesItsKeysInOrderAndReadsThemBack) {
  Core::Property tree;
  Filled().Serialize(Drevin::SerializerProperty::Create(tree));
  EXPECT_THAT(KeysOf(tree), ElementsAre("Index", "Visible", "Saved", "InfoTypeBaseToolName",
                                        "PresetID", "ZValue", "ChangeType"));
  EXPECT_EQ(tree.GetString("InfoTypeBaseToolName"), "SHAPE_FRAME");
  EXPECT_EQ(tree.GetDouble("ZValue"), 150.25);

  InfoTypeBase read;
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read.GetIndex(), 7);
  EXPECT_FALSE(read.IsVisible());
  EXPECT_TRUE(read.GetSaved());
  EXPECT_EQ(read.GetTool(), IToolsId::SHAPE_FRAME);
  EXPECT_EQ(read.GetPresetId(), "preset-α");
  EXPECT_EQ(read.GetZValue(), 150.25);
  EXPECT_EQ(read.GetChangeType(), 9);
}

TEST(InfoTypeBaseTest, MissingKeysLeaveFieldsAsTheyAre) {
  const Core::Property empty;
  InfoTypeBase read = Filled();
  read.Deserialize(Drevin::SerializerProperty::Create(empty));
  EXPECT_EQ(read.GetIndex(), 7);
  EXPECT_EQ(read.GetTool(), IToolsId::SHAPE_FRAME);
  EXPECT_EQ(read.GetZValue(), 150.25);
  EXPECT_EQ(read.GetChangeType(), 9);
}

TEST(InfoTypeBaseTest, ReadsAnIntegerZValueOfOlderWriters) {
  Core::Property tree;
  tree.SetInt("ZValue", 120);
  InfoTypeBase read;
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read.GetZValue(), 120.0);
}

}  // namespace
