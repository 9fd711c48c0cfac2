#include "canvaro/settings/EffectsSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/PropertyKeys.h"
#include "support/TestEffect.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::KeysOf;
using canvaro_test::TestEffect;
using ::testing::ElementsAre;

EffectsSettingsPackage FilledPackage() {
  EffectsSettingsPackage package;
  package.SetName("Portrait");
  package.SetPackageIndex(3);
  package.SetPresetName("Soft");
  package.SetDrawingTool("brush");
  package.SetEffectIndex(1);
  package.SetBlendSource(2);
  package.SetCurrentTool(IToolsId::SHAPE_MARKER);
  return package;
}

void ExpectSamePackage(const EffectsSettingsPackage& actual,
                       const EffectsSettingsPackage& expected) {
  EXPECT_EQ(actual.GetName(), expected.GetName());
  EXPECT_EQ(actual.GetPackageIndex(), expected.GetPackageIndex());
  EXPECT_EQ(actual.GetPresetName(), expected.GetPresetName());
  EXPECT_EQ(actual.GetDrawingTool(), expected.GetDrawingTool());
  EXPECT_EQ(actual.GetEffectIndex(), expected.GetEffectIndex());
  EXPECT_EQ(actual.GetBlendSource(), expected.GetBlendSource());
  EXPECT_EQ(actual.GetCurrentToolID(), expected.GetCurrentToolID());
}

bool Shares(const IEffectSettings::ConstList& a, const IEffectSettings::ConstList& b) {
  for (const auto& x : a) {
    for (const auto& y : b) {
      if (x == y) return true;
    }
  }
  return false;
}

TEST(EffectsSettingsPackageTest, WritesSixEntriesThenTheToolAndReadsThemBack) {
  Core::Property tree;
  FilledPackage().Serialize(Drevin::SerializerProperty::Create(tree));
  EXPECT_THAT(
      KeysOf(tree),
      ElementsAre("keyEffectSettingsPackageName", "keyEffectSettingsPackageIndex",
                  "keyEffectSettingsPackagePresetName", "keyEffectSettingsPackageDrawingTool",
                  "keyEffectSettingsEffectIndex", "keyEffectSettingsBlendSource", "ToolName"));
  EXPECT_EQ(tree.GetString("ToolName"), "SHAPE_MARKER");
  EXPECT_EQ(tree.GetInt("keyEffectSettingsPackageIndex"), 3);

  EffectsSettingsPackage read;
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  ExpectSamePackage(read, FilledPackage());
}

TEST(EffectsSettingsPackageTest, AbsentKeysKeepValuesButAbsentToolIsNone) {
  EffectsSettingsPackage package = FilledPackage();
  package.Deserialize(Drevin::SerializerProperty::Create(Core::Property()));
  EXPECT_EQ(package.GetName(), "Portrait");
  EXPECT_EQ(package.GetPackageIndex(), 3);
  EXPECT_EQ(package.GetBlendSource(), 2);
  EXPECT_EQ(package.GetCurrentToolID(), IToolsId::NONE);

  EffectsSettingsPackage fresh;
  fresh.SetCurrentTool(IToolsId::STUB);
  fresh.Deserialize(Drevin::SerializerProperty::Create(Core::Property()));
  EXPECT_EQ(fresh.GetName(), "");
  EXPECT_EQ(fresh.GetPackageIndex(), -1);
  EXPECT_EQ(fresh.GetEffectIndex(), -1);
  EXPECT_EQ(fresh.GetBlendSource(), 0);
  EXPECT_EQ(fresh.GetCurrentToolID(), IToolsId::NONE);
}

TEST(EffectsSettingsTest, ConstructionClonesTheEffectAndNullGivesNoEffect) {
  const auto blur = TestEffect::Make("Blur", 1);
  const EffectsSettings settings(blur);
  const IEffectSettings::ConstList effects = settings.EffectsConst();
  ASSERT_EQ(effects.size(), 1u);
  EXPECT_NE(effects[0], blur);
  EXPECT_TRUE(effects[0]->IsEqual(*blur));
  EXPECT_TRUE(settings.GetHostFlag());
  ExpectSamePackage(settings.GetPackage(), EffectsSettingsPackage());

  EXPECT_TRUE(EffectsSettings(nullptr).EffectsConst().empty());
}

TEST(EffectsSettingsTest, EffectsConstSharesAndSetEffectsConstClones) {
  EffectsSettings settings(TestEffect::Make("Blur"));
  EXPECT_EQ(settings.EffectsConst()[0], settings.EffectsConst()[0]);

  const IEffectSettings::ConstList given = {TestEffect::Make("A", 1), TestEffect::Make("B", 2)};
  settings.SetEffectsConst(given);
  const IEffectSettings::ConstList held = settings.EffectsConst();
  EXPECT_TRUE(IEffectSettings::Equal(held, given));
  EXPECT_FALSE(Shares(held, given));

  // Setting the record's own effects replaces them with fresh clones.
  settings.SetEffectsConst(held);
  EXPECT_TRUE(IEffectSettings::Equal(settings.EffectsConst(), given));
  EXPECT_FALSE(Shares(settings.EffectsConst(), held));
}

TEST(EffectsSettingsTest, CopyAndAssignmentCloneEverythingAndKeepTheFlag) {
  EffectsSettings source(TestEffect::Make("Blur", 1));
  source.GetPackage() = FilledPackage();
  source.SetEffectsConst({TestEffect::Make("A"), TestEffect::Make("B")});
  source.SetHostFlag(false);

  const EffectsSettings copy(source);
  ExpectSamePackage(copy.GetPackage(), source.GetPackage());
  EXPECT_FALSE(copy.GetHostFlag());
  EXPECT_TRUE(IEffectSettings::Equal(copy.EffectsConst(), source.EffectsConst()));
  EXPECT_FALSE(Shares(copy.EffectsConst(), source.EffectsConst()));

  EffectsSettings assigned(TestEffect::Make("Other"));
  assigned = source;
  ExpectSamePackage(assigned.GetPackage(), source.GetPackage());
  EXPECT_FALSE(assigned.GetHostFlag());
  EXPECT_TRUE(IEffectSettings::Equal(assigned.EffectsConst(), source.EffectsConst()));
  EXPECT_FALSE(Shares(assigned.EffectsConst(), source.EffectsConst()));

  const IEffectSettings::ConstList before = source.EffectsConst();
  auto& self = source;
  source = self;
  EXPECT_EQ(source.EffectsConst(), before);  // self-assignment keeps the very same objects
}

TEST(EffectsSettingsTest, EqualityComparesNamesIndexAndEffectsOnly) {
  EffectsSettings left(TestEffect::Make("Blur", 1));
  left.GetPackage() = FilledPackage();
  EffectsSettings right(left);
  right.GetPackage().SetDrawingTool("pencil");
  right.GetPackage().SetEffectIndex(7);
  right.GetPackage().SetBlendSource(5);
  right.GetPackage().SetCurrentTool(IToolsId::TEXT);
  right.SetHostFlag(false);
  EXPECT_TRUE(left == right);
  EXPECT_FALSE(left != right);

  EffectsSettings differs(left);
  differs.GetPackage().SetName("Landscape");
  EXPECT_NE(left, differs);
  differs = left;
  differs.GetPackage().SetPresetName("Hard");
  EXPECT_NE(left, differs);
  differs = left;
  differs.GetPackage().SetPackageIndex(4);
  EXPECT_NE(left, differs);
  differs = left;
  differs.SetEffectsConst({TestEffect::Make("Blur", 2)});
  EXPECT_NE(left, differs);
  differs.SetEffectsConst({});
  EXPECT_NE(left, differs);
}

TEST(EffectsSettingsTest, EffectOrderCounts) {
  EffectsSettings ab(nullptr);
  ab.SetEffectsConst({TestEffect::Make("A"), TestEffect::Make("B")});
  EffectsSettings ba(nullptr);
  ba.SetEffectsConst({TestEffect::Make("B"), TestEffect::Make("A")});
  EXPECT_NE(ab, ba);
  EffectsSettings again(nullptr);
  again.SetEffectsConst({TestEffect::Make("A"), TestEffect::Make("B")});
  EXPECT_EQ(ab, again);
}

TEST(EffectsSettingsTest, WritesPackageNodeThenEffectCollection) {
  EffectsSettings settings(TestEffect::Make("Blur", 3));
  settings.GetPackage() = FilledPackage();
  Core::Property tree;
  settings.Serialize(Drevin::SerializerProperty::Create(tree));

  EXPECT_THAT(KeysOf(tree), ElementsAre("tagEffectSettingsPackage", "keyEffectsCollection"));
  EXPECT_EQ(tree.GetChild("tagEffectSettingsPackage").GetString("keyEffectSettingsPackageName"),
            "Portrait");
  const auto& items = tree.GetCollection("keyEffectsCollection");
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].GetChild("keyEffectItem").GetInt("amount"), 3);
  EXPECT_FALSE(tree.Has("tagTileSettings"));
}

TEST(EffectsSettingsTest, ReadsBackWhenThereAreNoEffects) {
  EffectsSettings written(nullptr);
  written.GetPackage() = FilledPackage();
  Core::Property tree;
  written.Serialize(Drevin::SerializerProperty::Create(tree));

  EffectsSettings read(TestEffect::Make("Blur"));
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  ExpectSamePackage(read.GetPackage(), FilledPackage());
  EXPECT_TRUE(read.EffectsConst().empty());
  EXPECT_EQ(read, written);

  // A node without any key leaves a fresh record as it is.
  EffectsSettings fresh(nullptr);
  fresh.Deserialize(Drevin::SerializerProperty::Create(Core::Property()));
  ExpectSamePackage(fresh.GetPackage(), EffectsSettingsPackage());
  EXPECT_TRUE(fresh.EffectsConst().empty());
}

TEST(EffectsSettingsTest, ReadingStoredEffectsFailsAfterClearingTheList) {
  Core::Property tree;
  EffectsSettings(TestEffect::Make("Blur")).Serialize(Drevin::SerializerProperty::Create(tree));
  EffectsSettings read(TestEffect::Make("Held"));
  try {
    read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
    FAIL() << "no exception";
  } catch (const CanvaroException& e) {
    ASSERT_NE(boost::get_error_info<TagDescription>(e), nullptr);
    EXPECT_EQ(*boost::get_error_info<TagDescription>(e), "Not implemented");
    EXPECT_EQ(boost::get_error_info<TagCanvaroErrorCode>(e), nullptr);
  }
  EXPECT_TRUE(read.EffectsConst().empty());
}

}  // namespace
