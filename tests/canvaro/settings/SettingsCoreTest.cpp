#include "canvaro/settings/SettingsCore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/PropertyKeys.h"
#include "support/TestEffect.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::KeysOf;
using canvaro_test::TestEffect;
using ::testing::ElementsAre;

const TestEffect& OnlyEffect(const SettingsCore& core) {
  const IEffectSettings::ConstList effects = core.GetEffectsSettings().EffectsConst();
  EXPECT_EQ(effects.size(), 1u);
  return dynamic_cast<const TestEffect&>(*effects.at(0));
}

TEST(SettingsCoreTest, MutableEffectIsSharedConstEffectIsCloned) {
  const auto effect = TestEffect::Make("Blur", 1);
  const SettingsCore shared(effect);
  EXPECT_EQ(&OnlyEffect(shared), effect.get());
  effect->SetAmount(7);
  EXPECT_EQ(OnlyEffect(shared).GetAmount(), 7);

  const SettingsCore owned{IEffectSettings::ConstPtr(effect)};
  EXPECT_NE(&OnlyEffect(owned), effect.get());
  effect->SetAmount(8);
  EXPECT_EQ(OnlyEffect(owned).GetAmount(), 7);

  // A pointer to a concrete class follows its constness.
  const boost::intrusive_ptr<const TestEffect> constEffect = effect;
  EXPECT_NE(&OnlyEffect(SettingsCore(constEffect)), effect.get());

  EXPECT_EQ(shared.GetEffectsSettings().GetPackage().GetPackageIndex(), -1);
  EXPECT_EQ(owned.GetEffectsSettings().GetPackage().GetName(), "");
}

TEST(SettingsCoreTest, NullMutableEffectGivesOneNullElement) {
  const SettingsCore core{IEffectSettings::Ptr()};
  const IEffectSettings::ConstList effects = core.GetEffectsSettings().EffectsConst();
  ASSERT_EQ(effects.size(), 1u);
  EXPECT_EQ(effects[0], nullptr);
  // Such a record can still be copied, compared and written.
  const SettingsCore copy(core);
  EXPECT_EQ(copy, core);
  EXPECT_NE(copy, SettingsCore(IEffectSettings::ConstPtr(TestEffect::Make("Blur"))));
  Core::Property tree;
  core.Serialize(Drevin::SerializerProperty::Create(tree));
  const auto& written = tree.GetChild("tagEffectSettings").GetCollection("keyEffectsCollection");
  ASSERT_EQ(written.size(), 1u);
  EXPECT_FALSE(written[0].Has("keyEffectItem"));
  SettingsCore read{TestEffect::Make("Other")};
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read, core);
}

TEST(SettingsCoreTest, CopiesNeverShareEffects) {
  const auto effect = TestEffect::Make("Blur", 1);
  SettingsCore source(effect);
  source.GetEffectsSettings().GetPackage().SetName("Portrait");

  const SettingsCore copy(source);
  EXPECT_NE(&OnlyEffect(copy), effect.get());
  EXPECT_EQ(copy, source);

  SettingsCore assigned{IEffectSettings::ConstPtr(TestEffect::Make("Other"))};
  assigned = source;
  EXPECT_NE(&OnlyEffect(assigned), effect.get());
  EXPECT_EQ(assigned, source);
  EXPECT_EQ(assigned.GetEffectsSettings().GetPackage().GetName(), "Portrait");

  auto& self = source;
  source = self;
  EXPECT_EQ(&OnlyEffect(source), effect.get());
}

TEST(SettingsCoreTest, EqualityIsThatOfTheEffectsSettings) {
  SettingsCore a(TestEffect::Make("Blur", 1));
  SettingsCore b(TestEffect::Make("Blur", 1));
  b.GetEffectsSettings().GetPackage().SetEffectIndex(3);
  EXPECT_EQ(a, b);
  b.GetEffectsSettings().GetPackage().SetPresetName("Soft");
  EXPECT_NE(a, b);
}

TEST(SettingsCoreTest, WritesOneChildNodeHoldingPackageAndCollection) {
  SettingsCore core(TestEffect::Make("Blur", 3));
  core.GetEffectsSettings().GetPackage().SetName("Portrait");
  core.GetEffectsSettings().GetPackage().SetCurrentTool(IToolsId::TEXT);
  Core::Property tree;
  core.Serialize(Drevin::SerializerProperty::Create(tree));

  EXPECT_EQ(Core::PropertySerializer::ToString(tree, false),
            R"({"entries":[{"key":"tagEffectSettings","node":{"class":"EffectsSettings",)"
            R"("entries":[{"key":"tagEffectSettingsPackage","node":{"class":)"
            R"("EffectsSettingsPackage","entries":[)"
            R"({"key":"keyEffectSettingsPackageName","string":"Portrait"},)"
            R"({"key":"keyEffectSettingsPackageIndex","int":-1},)"
            R"({"key":"keyEffectSettingsPackagePresetName","string":""},)"
            R"({"key":"keyEffectSettingsPackageDrawingTool","string":""},)"
            R"({"key":"keyEffectSettingsEffectIndex","int":-1},)"
            R"({"key":"keyEffectSettingsBlendSource","int":0},)"
            R"({"key":"ToolName","string":"TEXT"}]}},)"
            R"({"key":"keyEffectsCollection","collection":[{"entries":[{"key":"keyEffectItem",)"
            R"("node":{"class":"TestEffect","entries":[{"key":"implName","string":"default"},)"
            R"({"key":"kind","string":"Blur"},{"key":"amount","int":3}]}}]}]}]}}]})");
  EXPECT_FALSE(tree.Has("tagUndoFrameInfo"));
  EXPECT_EQ(SettingsCore::UNDO_FRAME_INFO, "tagUndoFrameInfo");
}

TEST(SettingsCoreTest, ReadsStepsWithoutEffectsAndRefusesStoredEffects) {
  SettingsCore written(IEffectSettings::Ptr(TestEffect::Make("Blur")));
  written.GetEffectsSettings().SetEffectsConst({});
  written.GetEffectsSettings().GetPackage().SetPackageIndex(5);
  Core::Property tree;
  written.Serialize(Drevin::SerializerProperty::Create(tree));
  // The text form carries the record unchanged.
  const Core::Property reloaded =
      Core::PropertySerializer::FromString(Core::PropertySerializer::ToString(tree));

  SettingsCore read(TestEffect::Make("Held"));
  read.Deserialize(Drevin::SerializerProperty::Create(reloaded));
  EXPECT_EQ(read, written);
  EXPECT_EQ(read.GetEffectsSettings().GetPackage().GetPackageIndex(), 5);

  Core::Property withEffect;
  SettingsCore(TestEffect::Make("Blur")).Serialize(Drevin::SerializerProperty::Create(withEffect));
  try {
    read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(withEffect)));
    FAIL() << "no exception";
  } catch (const CanvaroException& e) {
    EXPECT_EQ(*boost::get_error_info<TagDescription>(e), "Not implemented");
    EXPECT_EQ(boost::get_error_info<TagCanvaroErrorCode>(e), nullptr);
  }
}

}  // namespace
