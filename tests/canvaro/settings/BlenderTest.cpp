#include "canvaro/settings/Blender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/PropertyKeys.h"

namespace {

using namespace Kelbra;
using canvaro_test::KeysOf;
using Kelbra::Canvaro::Blender::IBlender;
using ::testing::ElementsAre;
using Initializer = IBlender::Initializer;

const auto kMaskType = static_cast<Initializer::MaskType>(2);
const Proc::Color kColor(0x12, 0x34, 0x56, 0x78);

TEST(BlenderInitializerTest, StartsOpaqueWithTheFullRange) {
  const Initializer blender(kMaskType, kColor);
  EXPECT_EQ(blender.GetMaskType(), 2);
  EXPECT_EQ(blender.GetColor(), kColor);
  EXPECT_EQ(blender.GetOpacity(), 255);
  EXPECT_EQ(blender.GetRangeMin(), 0);
  EXPECT_EQ(blender.GetRangeMax(), 255);
}

TEST(BlenderInitializerTest, SettersChainAndEveryFieldCountsForEquality) {
  Initializer blender(kMaskType, kColor);
  Initializer& same = blender.SetOpacity(128).SetRangeMin(10).SetRangeMax(200);
  EXPECT_EQ(&same, &blender);
  EXPECT_EQ(blender.GetOpacity(), 128);
  EXPECT_EQ(blender.GetRangeMin(), 10);
  EXPECT_EQ(blender.GetRangeMax(), 200);

  const Initializer copy = blender;
  EXPECT_TRUE(copy == blender);
  EXPECT_FALSE(copy != blender);
  EXPECT_NE(Initializer(copy).SetRangeMax(199), blender);
  EXPECT_NE(Initializer(copy).SetRangeMin(11), blender);
  EXPECT_NE(Initializer(copy).SetOpacity(127), blender);
  EXPECT_NE(
      Initializer(Initializer::DEFAULT, kColor).SetOpacity(128).SetRangeMin(10).SetRangeMax(200),
      blender);
  EXPECT_NE(
      Initializer(kMaskType, Proc::Color::Black()).SetOpacity(128).SetRangeMin(10).SetRangeMax(200),
      blender);
}

TEST(BlenderInitializerTest, WritesFiveIntegersWithThePackedColour) {
  Core::Property tree;
  Initializer(kMaskType, kColor)
      .SetOpacity(7)
      .SetRangeMin(8)
      .SetRangeMax(9)
      .Serialize(Drevin::SerializerProperty::Create(tree));
  EXPECT_THAT(KeysOf(tree),
              ElementsAre("keyBlenderSettingsMaskType", "keyBlenderSettingsMaskColor",
                          "keyBlenderSettingsMaskOpacity", "keyBlenderSettingsMaskRangeMin",
                          "keyBlenderSettingsMaskRangeMax"));
  EXPECT_EQ(tree.GetInt("keyBlenderSettingsMaskType"), 2);
  EXPECT_EQ(tree.GetInt("keyBlenderSettingsMaskColor"), 0x12345678);
  EXPECT_EQ(tree.GetInt("keyBlenderSettingsMaskOpacity"), 7);
  EXPECT_EQ(tree.GetInt("keyBlenderSettingsMaskRangeMin"), 8);
  EXPECT_EQ(tree.GetInt("keyBlenderSettingsMaskRangeMax"), 9);
}

TEST(BlenderInitializerTest, ColourWithTheHighBitSetSurvivesTheSignedEntry) {
  const Proc::Color white(255, 255, 255, 255);
  Core::Property tree;
  Initializer(kMaskType, white).Serialize(Drevin::SerializerProperty::Create(tree));
  EXPECT_EQ(tree.GetInt("keyBlenderSettingsMaskColor"), -1);

  Initializer read(Initializer::DEFAULT, Proc::Color::Black());
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read, Initializer(kMaskType, white));
}

TEST(BlenderInitializerTest, EightBitFieldsTakeTheLowByteOfWhatIsStored) {
  Core::Property tree;
  tree.SetInt("keyBlenderSettingsMaskOpacity", 256);
  tree.SetInt("keyBlenderSettingsMaskRangeMin", 0x1FF);
  tree.SetInt("keyBlenderSettingsMaskRangeMax", -2);
  Initializer read(kMaskType, kColor);
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read.GetOpacity(), 0);
  EXPECT_EQ(read.GetRangeMin(), 255);
  EXPECT_EQ(read.GetRangeMax(), 254);
  // Absent keys keep the current values.
  EXPECT_EQ(read.GetMaskType(), 2);
  EXPECT_EQ(read.GetColor(), kColor);
}

}  // namespace
