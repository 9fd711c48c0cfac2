// The contract every settings record keeps, checked over each of them: its exact text form (keys,
// order, values), a round trip through that text into a record holding other values, and that
// a node without keys leaves a record as it was. Then what is particular to each: defaults,
// what equality looks at, how copies share effects, and the 8-bit fields of older writers.
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/settings/Blender.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Errors.h"
#include "support/TestEffect.h"
#include "support/TestPainter.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using Blender::IBlender;
using canvaro_test::TestEffect;
using Initializer = IBlender::Initializer;

const auto kMaskType = static_cast<Initializer::MaskType>(2);

Initializer Blend(Initializer::MaskType type, Proc::Color color, std::uint8_t opacity,
                  std::uint8_t rangeMin, std::uint8_t rangeMax) {
  return Initializer(type, color).SetOpacity(opacity).SetRangeMin(rangeMin).SetRangeMax(rangeMax);
}

Initializer SomeBlender() { return Blend(kMaskType, Proc::Color(0x12, 0x34, 0x56, 0x78), 7, 8, 9); }

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

template <class Record>
std::string Text(const Record& record) {
  Core::Property tree;
  record.Serialize(Drevin::SerializerProperty::Create(tree));
  return Core::PropertySerializer::ToString(tree, false);
}

// ---- one traits struct per record: a filled record, its text, and a record of other values ----

constexpr const char* kBlenderText = R"({"key":"keyBlenderSettingsMaskType","int":2},)"
                                     R"({"key":"keyBlenderSettingsMaskColor","int":305419896},)"
                                     R"({"key":"keyBlenderSettingsMaskOpacity","int":7},)"
                                     R"({"key":"keyBlenderSettingsMaskRangeMin","int":8},)"
                                     R"({"key":"keyBlenderSettingsMaskRangeMax","int":9})";

constexpr const char* kPackageText =
    R"({"key":"keyEffectSettingsPackageName","string":"Portrait"},)"
    R"({"key":"keyEffectSettingsPackageIndex","int":3},)"
    R"({"key":"keyEffectSettingsPackagePresetName","string":"Soft"},)"
    R"({"key":"keyEffectSettingsPackageDrawingTool","string":"brush"},)"
    R"({"key":"keyEffectSettingsEffectIndex","int":1},)"
    R"({"key":"keyEffectSettingsBlendSource","int":2},)"
    R"({"key":"ToolName","string":"SHAPE_MARKER"})";

struct BlenderRecord {
  static Initializer Filled() { return SomeBlender(); }
  static Initializer Other() { return Initializer(Initializer::DEFAULT, Proc::Color::Black()); }
  static std::string Expected() { return std::string(R"({"entries":[)") + kBlenderText + "]}"; }
};

struct MaskRecord {
  static MaskInfo Filled() { return MaskInfo(10, 50, 20, 60, MaskInfo::MaskInfoEx(SomeBlender())); }
  static MaskInfo Other() { return MaskInfo(); }
  static std::string Expected() {
    return std::string(R"({"entries":[{"key":"Left","int":10},{"key":"Right","int":50},)"
                       R"({"key":"Top","int":20},{"key":"Bottom","int":60},)"
                       R"({"key":"InfoEx","node":{"class":"MaskInfoEx","entries":[)"
                       R"({"key":"Blender","node":{"class":"Initializer","entries":[)") +
           kBlenderText + "]}}]}}]}";
  }
};

struct PackageRecord {
  static constexpr bool kAbsentToolIsNone = true;
  static EffectsSettingsPackage Filled() { return FilledPackage(); }
  static EffectsSettingsPackage Other() { return EffectsSettingsPackage(); }
  static std::string Expected() { return std::string(R"({"entries":[)") + kPackageText + "]}"; }
};

// A step's settings: the package, then the effect list, whose empty places are kept.
struct CoreRecord {
  static SettingsCore Filled() {
    SettingsCore core{IEffectSettings::Ptr()};  // one place without an effect
    core.GetEffectsSettings().GetPackage() = FilledPackage();
    return core;
  }
  static SettingsCore Other() { return SettingsCore(TestEffect::Make("Held")); }
  static std::string Expected() {
    return std::string(
               R"({"entries":[{"key":"tagEffectSettings","node":{"class":"EffectsSettings",)"
               R"("entries":[{"key":"tagEffectSettingsPackage","node":{"class":)"
               R"("EffectsSettingsPackage","entries":[)") +
           kPackageText +
           R"(]}},{"key":"keyEffectsCollection","collection":[{"entries":[]}]}]}}]})";
  }
};

template <class T>
class SettingsRecordTest : public ::testing::Test {};
using Records = ::testing::Types<BlenderRecord, MaskRecord, PackageRecord, CoreRecord>;
TYPED_TEST_SUITE(SettingsRecordTest, Records);

TYPED_TEST(SettingsRecordTest, WritesItsKeysInOrderWithTheirValues) {
  EXPECT_EQ(Text(TypeParam::Filled()), TypeParam::Expected());
}

TYPED_TEST(SettingsRecordTest, ReadsItsTextBackAndANodeWithoutKeysChangesNothing) {
  auto read = TypeParam::Other();
  ASSERT_NE(Text(read), TypeParam::Expected());
  const Core::Property tree = Core::PropertySerializer::FromString(TypeParam::Expected());
  read.Deserialize(Drevin::SerializerProperty::Create(tree));
  EXPECT_EQ(Text(read), TypeParam::Expected());
  if constexpr (requires { read == read; }) {
    EXPECT_TRUE(read == TypeParam::Filled());
  }

  read.Deserialize(Drevin::SerializerProperty::Create(Core::Property()));
  std::string expected = TypeParam::Expected();
  // The one exception: a package without a tool name has no tool.
  if constexpr (requires { TypeParam::kAbsentToolIsNone; }) {
    const std::string tool = R"("ToolName","string":"SHAPE_MARKER")";
    expected.replace(expected.find(tool), tool.size(), R"("ToolName","string":"NONE")");
  }
  EXPECT_EQ(Text(read), expected);
}

// ---- defaults and equality ----

TEST(SettingsDefaultsTest, NewRecordsHoldTheDocumentedDefaults) {
  EXPECT_EQ(Initializer(kMaskType, Proc::Color::Black()),
            Blend(kMaskType, Proc::Color::Black(), 255, 0, 255));

  const MaskInfo mask;
  EXPECT_EQ(mask.GetLeft() | mask.GetRight() | mask.GetTop() | mask.GetBottom(), 0);
  EXPECT_EQ(mask.GetInfoEx().GetPainter(), nullptr);
  EXPECT_EQ(mask.GetInfoEx().GetBlender(), Initializer(Initializer::DEFAULT, Proc::Color::Black()));

  const EffectsSettingsPackage package;
  EXPECT_EQ(package.GetName(), "");
  EXPECT_EQ(package.GetPackageIndex(), -1);
  EXPECT_EQ(package.GetEffectIndex(), -1);
  EXPECT_EQ(package.GetBlendSource(), 0);
  EXPECT_EQ(package.GetCurrentToolID(), IToolsId::NONE);

  const EffectsSettings settings(TestEffect::Make("Blur"));
  EXPECT_TRUE(settings.GetHostFlag());
  EXPECT_TRUE(EffectsSettings(nullptr).EffectsConst().empty());
  EXPECT_FALSE(TestEffect::Make("Blur")->IsAdditive());
}

TEST(SettingsEqualityTest, EveryBlenderFieldCounts) {
  const Initializer base = SomeBlender();
  Initializer chained = base;
  EXPECT_EQ(&chained.SetOpacity(1).SetRangeMin(2), &chained);
  const Proc::Color color = base.GetColor();
  const std::vector<Initializer> others = {
      Blend(kMaskType, color, 6, 8, 9), Blend(kMaskType, color, 7, 9, 9),
      Blend(kMaskType, color, 7, 8, 10), Blend(Initializer::DEFAULT, color, 7, 8, 9),
      Blend(kMaskType, Proc::Color::Black(), 7, 8, 9)};
  EXPECT_TRUE(Initializer(base) == base);
  for (std::size_t i = 0; i < others.size(); ++i) EXPECT_TRUE(others[i] != base) << i;
}

// Step settings are equal when package name, preset, package index and effects (in order) are;
// the drawing tool, effect index, blend source, tool and host flag do not count.
TEST(SettingsEqualityTest, StepSettingsCompareNamesIndexAndEffectsInOrder) {
  EffectsSettings base(TestEffect::Make("Blur", 1));
  base.GetPackage() = FilledPackage();
  using Change = std::function<void(EffectsSettings&)>;
  const IEffectSettings::ConstList inOrder = {TestEffect::Make("Blur", 1), TestEffect::Make("A")};
  const IEffectSettings::ConstList reversed = {inOrder[1], inOrder[0]};
  const std::vector<Change> ignored = {
      [](auto& s) { s.GetPackage().SetDrawingTool("pencil"); },
      [](auto& s) { s.GetPackage().SetEffectIndex(7); },
      [](auto& s) { s.GetPackage().SetBlendSource(5); },
      [](auto& s) { s.GetPackage().SetCurrentTool(IToolsId::TEXT); },
      [](auto& s) { s.SetHostFlag(false); }};
  const std::vector<Change> counted = {
      [](auto& s) { s.GetPackage().SetName("Landscape"); },
      [](auto& s) { s.GetPackage().SetPresetName("Hard"); },
      [](auto& s) { s.GetPackage().SetPackageIndex(4); },
      [](auto& s) { s.SetEffectsConst({TestEffect::Make("Blur", 2)}); },
      [](auto& s) { s.SetEffectsConst({}); },
      [&](auto& s) { s.SetEffectsConst(inOrder); },
      [&](auto& s) { s.SetEffectsConst(reversed); }};
  for (const auto& [changes, equal] : {std::pair(ignored, true), std::pair(counted, false)}) {
    for (std::size_t i = 0; i < changes.size(); ++i) {
      EffectsSettings other(base);
      changes[i](other);
      EXPECT_EQ(other == base, equal) << (equal ? "ignored " : "counted ") << i;
    }
  }
}

// ---- sharing, the fields of older writers, and what cannot be read ----

bool Shares(const IEffectSettings::ConstList& a, const IEffectSettings::ConstList& b) {
  for (const auto& x : a) {
    if (std::find(b.begin(), b.end(), x) != b.end()) return true;
  }
  return false;
}

IEffectSettings::ConstList Effects(const SettingsCore& core) {
  return core.GetEffectsSettings().EffectsConst();
}

TEST(SettingsSharingTest, MutableEffectsAreSharedEverythingElseIsCloned) {
  const auto effect = TestEffect::Make("Blur", 1);
  EXPECT_EQ(Effects(SettingsCore(effect)).at(0), effect);
  EXPECT_NE(Effects(SettingsCore(IEffectSettings::ConstPtr(effect))).at(0), effect);
  EXPECT_NE(Effects(SettingsCore(boost::intrusive_ptr<const TestEffect>(effect))).at(0), effect);
  EXPECT_NE(EffectsSettings(effect).EffectsConst().at(0), effect);

  // Copies and assignments clone the effects and keep the host flag; self-assignment keeps them.
  SettingsCore source(effect);
  source.GetEffectsSettings().GetPackage().SetName("Portrait");
  source.GetEffectsSettings().SetHostFlag(false);
  const SettingsCore copy(source);
  SettingsCore assigned{IEffectSettings::ConstPtr(TestEffect::Make("Other"))};
  assigned = source;
  for (const SettingsCore* c : {&copy, static_cast<const SettingsCore*>(&assigned)}) {
    EXPECT_EQ(*c, source);
    EXPECT_FALSE(c->GetEffectsSettings().GetHostFlag());
    EXPECT_FALSE(Shares(Effects(*c), Effects(source)));
  }
  auto& self = source;
  source = self;
  EXPECT_EQ(Effects(source).at(0), effect);

  // Setting a list clones it, also when it is the record's own.
  EffectsSettings settings(nullptr);
  const IEffectSettings::ConstList given = {TestEffect::Make("A", 1), TestEffect::Make("B", 2)};
  settings.SetEffectsConst(given);
  const IEffectSettings::ConstList held = settings.EffectsConst();
  EXPECT_TRUE(IEffectSettings::Equal(held, given));
  EXPECT_FALSE(Shares(held, given));
  settings.SetEffectsConst(held);
  EXPECT_TRUE(IEffectSettings::Equal(settings.EffectsConst(), given));
  EXPECT_FALSE(Shares(settings.EffectsConst(), held));

  // A mask record shares its painter.
  const auto painter = canvaro_test::TestPainter::Make(12);
  const MaskInfo mask(1, 2, 3, 4, MaskInfo::MaskInfoEx(painter, SomeBlender()));
  EXPECT_EQ(mask.GetInfoEx().GetPainter(), painter);
  EXPECT_EQ(painter->GetRefCount(), 2);
}

TEST(SettingsRecordFieldsTest, ColoursAndEightBitFieldsOfAnyStoredIntegerReadBack) {
  // A colour with the high bit set is a negative entry.
  const Initializer white(kMaskType, Proc::Color(255, 255, 255, 255));
  Core::Property tree = Core::PropertySerializer::FromString(Text(white));
  EXPECT_EQ(tree.GetInt("keyBlenderSettingsMaskColor"), -1);
  Initializer read(Initializer::DEFAULT, Proc::Color::Black());
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read, white);

  // An 8-bit field takes the low byte of what an older or foreign writer stored.
  tree.SetInt("keyBlenderSettingsMaskOpacity", 256);
  tree.SetInt("keyBlenderSettingsMaskRangeMin", 0x1FF);
  tree.SetInt("keyBlenderSettingsMaskRangeMax", -2);
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read.GetOpacity(), 0);
  EXPECT_EQ(read.GetRangeMin(), 255);
  EXPECT_EQ(read.GetRangeMax(), 254);
}

// A stored painter names a host class this library cannot make: reading it fails with "Not
// implemented", and what was read before the failure stays. (Effect lists: EffectSettingsTest.)
TEST(SettingsRecordFieldsTest, AStoredPainterCannotBeReadBack) {
  const MaskInfo withPainter(
      10, 50, 20, 60, MaskInfo::MaskInfoEx(canvaro_test::TestPainter::Make(12), SomeBlender()));
  EXPECT_THAT(Text(withPainter),
              ::testing::HasSubstr(R"({"key":"Painter","node":{"class":"TestPainter",)"));
  const Core::Property maskTree = Core::PropertySerializer::FromString(Text(withPainter));
  MaskInfo mask;
  canvaro_test::ExpectNotImplemented(
      [&] { mask.Deserialize(Drevin::SerializerProperty::Create(maskTree)); });
  EXPECT_EQ(mask.GetLeft(), 10);
  EXPECT_EQ(mask.GetInfoEx().GetBlender(), MaskInfo().GetInfoEx().GetBlender());
  canvaro_test::ExpectNotImplemented(
      [] { ISettingsPainter::CreatePainterSettings("TestPainter"); });
}

}  // namespace
