// The settings records: the contract every record keeps, checked for each of them (its exact text
// form, a round trip through that text into a record holding other values, and that a node
// without keys leaves a record as it was); then what is particular to each: defaults, what
// equality looks at, how copies share effects, and the 8-bit fields of older writers. Last, the
// effects themselves: the host's factory, and cloning, finding, comparing and writing lists.
#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/settings/Blender.h"
#include "canvaro/settings/EffectSettings.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Errors.h"
#include "support/Outcome.h"
#include "support/TestEffect.h"
#include "support/TestPainter.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using Blender::IBlender;
using canvaro_test::ExpectNotImplemented;
using canvaro_test::Outcome;
using canvaro_test::OutcomeOf;
using canvaro_test::TestEffect;
using canvaro_test::TestPainter;
using ::testing::HasSubstr;
using Initializer = IBlender::Initializer;

const auto kMaskType = static_cast<Initializer::MaskType>(2);

Initializer Blend(Initializer::MaskType type, Proc::Color color, std::uint8_t opacity,
                  std::uint8_t rangeMin, std::uint8_t rangeMax) {
  return Initializer(type, color).SetOpacity(opacity).SetRangeMin(rangeMin).SetRangeMax(rangeMax);
}

// The colour's top bit is set and the opacity's too, so that both must read back whole.
Initializer SomeBlender() {
  return Blend(kMaskType, Proc::Color(0xF2, 0x34, 0x56, 0x78), 200, 8, 9);
}

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

const std::string kBlenderText = R"({"key":"keyBlenderSettingsMaskType","int":2},)"
                                 R"({"key":"keyBlenderSettingsMaskColor","int":-231451016},)"
                                 R"({"key":"keyBlenderSettingsMaskOpacity","int":200},)"
                                 R"({"key":"keyBlenderSettingsMaskRangeMin","int":8},)"
                                 R"({"key":"keyBlenderSettingsMaskRangeMax","int":9})";

const std::string kPackageText =
    R"({"key":"keyEffectSettingsPackageName","string":"Portrait"},)"
    R"({"key":"keyEffectSettingsPackageIndex","int":3},)"
    R"({"key":"keyEffectSettingsPackagePresetName","string":"Soft"},)"
    R"({"key":"keyEffectSettingsPackageDrawingTool","string":"brush"},)"
    R"({"key":"keyEffectSettingsEffectIndex","int":1},)"
    R"({"key":"keyEffectSettingsBlendSource","int":2},)"
    R"({"key":"ToolName","string":"SHAPE_MARKER"})";

// `filled` writes exactly `entries`; reading them into `read` (other values) gives the same text,
// and a node without keys then changes nothing, except that a package without a tool name has no
// tool.
template <class Record>
void ExpectTextRoundTrip(const Record& filled, Record read, const std::string& entries) {
  const std::string expected = R"({"entries":[)" + entries + "]}";
  EXPECT_EQ(Text(filled), expected);
  ASSERT_NE(Text(read), expected);
  read.Deserialize(
      Drevin::SerializerProperty::Create(Core::PropertySerializer::FromString(expected)));
  EXPECT_EQ(Text(read), expected);

  read.Deserialize(Drevin::SerializerProperty::Create(Core::Property()));
  std::string kept = expected;
  if constexpr (std::is_same_v<Record, EffectsSettingsPackage>) {
    const std::string tool = R"("ToolName","string":"SHAPE_MARKER")";
    kept.replace(kept.find(tool), tool.size(), R"("ToolName","string":"NONE")");
  }
  EXPECT_EQ(Text(read), kept);
}

TEST(SettingsRecordTest, EachRecordWritesItsKeysInOrderAndReadsThemBack) {
  ExpectTextRoundTrip(SomeBlender(), Initializer(Initializer::DEFAULT, Proc::Color::Black()),
                      kBlenderText);
  ExpectTextRoundTrip(MaskInfo(10, 50, 20, 60, MaskInfo::MaskInfoEx(SomeBlender())), MaskInfo(),
                      R"({"key":"Left","int":10},{"key":"Right","int":50},)"
                      R"({"key":"Top","int":20},{"key":"Bottom","int":60},)"
                      R"({"key":"InfoEx","node":{"class":"MaskInfoEx","entries":[)"
                      R"({"key":"Blender","node":{"class":"Initializer","entries":[)" +
                          kBlenderText + "]}}]}}");
  ExpectTextRoundTrip(FilledPackage(), EffectsSettingsPackage(), kPackageText);
  // A step's settings: the package, then the effect list, whose empty places are kept.
  SettingsCore core{IEffectSettings::Ptr()};
  core.GetEffectsSettings().GetPackage() = FilledPackage();
  ExpectTextRoundTrip(core, SettingsCore(TestEffect::Make("Held")),
                      R"({"key":"tagEffectSettings","node":{"class":"EffectsSettings","entries":[)"
                      R"({"key":"tagEffectSettingsPackage","node":{"class":)"
                      R"("EffectsSettingsPackage","entries":[)" +
                          kPackageText +
                          R"(]}},{"key":"keyEffectsCollection","collection":[{"entries":[]}]}]}})");
}

// ---- defaults and equality ----

TEST(SettingsDefaultsTest, NewRecordsHoldTheDocumentedDefaults) {
  EXPECT_EQ(Initializer(kMaskType, Proc::Color::Black()),
            Blend(kMaskType, Proc::Color::Black(), 255, 0, 255));

  const Initializer defaultBlender(Initializer::DEFAULT, Proc::Color::Black());
  EXPECT_EQ(Text(MaskInfo()), Text(MaskInfo(0, 0, 0, 0, MaskInfo::MaskInfoEx(defaultBlender))));

  const EffectsSettingsPackage package;
  EXPECT_EQ(package.GetName(), "");
  EXPECT_EQ(package.GetPackageIndex(), -1);
  EXPECT_EQ(package.GetEffectIndex(), -1);
  EXPECT_EQ(package.GetBlendSource(), 0);
  EXPECT_EQ(package.GetCurrentToolID(), IToolsId::NONE);

  EXPECT_TRUE(EffectsSettings(TestEffect::Make("Blur")).GetHostFlag());
  EXPECT_TRUE(EffectsSettings(nullptr).EffectsConst().empty());
  EXPECT_FALSE(TestEffect::Make("Blur")->IsAdditive());
}

TEST(SettingsEqualityTest, EveryBlenderFieldCounts) {
  const Initializer base = SomeBlender();
  const Proc::Color color = base.GetColor();
  for (const Initializer& other :
       {Blend(kMaskType, color, 199, 8, 9), Blend(kMaskType, color, 200, 9, 9),
        Blend(kMaskType, color, 200, 8, 10), Blend(Initializer::DEFAULT, color, 200, 8, 9),
        Blend(kMaskType, Proc::Color::Black(), 200, 8, 9)}) {
    EXPECT_TRUE(other != base);
  }
}

// Step settings are equal when package name, preset, package index and effects (in order) are;
// the drawing tool, effect index, blend source, tool and host flag do not count.
TEST(SettingsEqualityTest, StepSettingsCompareNamesIndexAndEffectsInOrder) {
  EffectsSettings base(TestEffect::Make("Blur", 1));
  base.GetPackage() = FilledPackage();
  const IEffectSettings::ConstList inOrder = {TestEffect::Make("Blur", 1), TestEffect::Make("A")};
  const IEffectSettings::ConstList reversed = {inOrder[1], inOrder[0]};
  const std::pair<std::function<void(EffectsSettings&)>, bool> changes[] = {
      {[](auto& s) { s.GetPackage().SetDrawingTool("pencil"); }, true},
      {[](auto& s) { s.GetPackage().SetEffectIndex(7); }, true},
      {[](auto& s) { s.GetPackage().SetBlendSource(5); }, true},
      {[](auto& s) { s.GetPackage().SetCurrentTool(IToolsId::TEXT); }, true},
      {[](auto& s) { s.SetHostFlag(false); }, true},
      {[](auto& s) { s.GetPackage().SetName("Landscape"); }, false},
      {[](auto& s) { s.GetPackage().SetPresetName("Hard"); }, false},
      {[](auto& s) { s.GetPackage().SetPackageIndex(4); }, false},
      {[](auto& s) { s.SetEffectsConst({TestEffect::Make("Blur", 2)}); }, false},
      {[](auto& s) { s.SetEffectsConst({}); }, false},
      {[&](auto& s) { s.SetEffectsConst(inOrder); }, false},
      {[&](auto& s) { s.SetEffectsConst(reversed); }, false}};
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    EffectsSettings other(base);
    changes[i].first(other);
    EXPECT_EQ(other == base, changes[i].second) << i;
  }
}

// ---- sharing, the fields of older writers, and what cannot be read ----

bool Shares(const IEffectSettings::ConstList& a, const IEffectSettings::ConstList& b) {
  return std::find_first_of(a.begin(), a.end(), b.begin(), b.end()) != a.end();
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
}

// An 8-bit field takes the low byte of what an older or foreign writer stored.
TEST(SettingsRecordFieldsTest, EightBitFieldsTakeTheLowByteOfAnyStoredInteger) {
  Core::Property tree = Core::PropertySerializer::FromString(Text(SomeBlender()));
  Initializer read = SomeBlender();
  tree.SetInt("keyBlenderSettingsMaskOpacity", 256);
  tree.SetInt("keyBlenderSettingsMaskRangeMin", 0x1FF);
  tree.SetInt("keyBlenderSettingsMaskRangeMax", -2);
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read.GetOpacity(), 0);
  EXPECT_EQ(read.GetRangeMin(), 255);
  EXPECT_EQ(read.GetRangeMax(), 254);
}

// A mask record shares its painter. A stored painter names a host class this library cannot make:
// reading it fails with "Not implemented", and what was read before the failure stays.
TEST(SettingsRecordFieldsTest, AMaskSharesItsPainterWhichCannotBeReadBack) {
  const auto painter = TestPainter::Make(12);
  const MaskInfo withPainter(10, 50, 20, 60, MaskInfo::MaskInfoEx(painter, SomeBlender()));
  EXPECT_EQ(withPainter.GetInfoEx().GetPainter(), painter);
  EXPECT_EQ(painter->GetRefCount(), 2);
  EXPECT_THAT(Text(withPainter), HasSubstr(R"({"key":"Painter","node":{"class":"TestPainter",)"));
  const Core::Property maskTree = Core::PropertySerializer::FromString(Text(withPainter));
  MaskInfo mask;
  ExpectNotImplemented([&] { mask.Deserialize(Drevin::SerializerProperty::Create(maskTree)); });
  EXPECT_EQ(mask.GetLeft(), 10);
  EXPECT_EQ(mask.GetInfoEx().GetBlender(), MaskInfo().GetInfoEx().GetBlender());
  ExpectNotImplemented([] { ISettingsPainter::CreatePainterSettings("TestPainter"); });
}

// ---- effects: the factory and lists ----

// An effect whose clones fail after a number of successful ones.
struct BrittleEffect : TestEffect {
  BrittleEffect(std::string kind, int* clonesLeft)
      : TestEffect(std::move(kind), 0), clonesLeft(clonesLeft) {}
  Ptr Clone() const override {
    if ((*clonesLeft)-- <= 0) throw std::runtime_error("clone failed");
    return TestEffect::Clone();
  }
  int* clonesLeft;
};

TEST(EffectSettingsTest, FactoryMakesOnlyWhatAHostRegistered) {
  ExpectNotImplemented([] { IEffectSettings::CreateEffectSettings("TestEffect"); });
  ExpectNotImplemented([] { IEffectSettings::CreateEffectSettings(""); });
  const auto make = [] { return IEffectSettings::Ptr(TestEffect::Make("Made", 7)); };
  EXPECT_EQ(OutcomeOf([&] { IEffectSettings::RegisterEffectCreator("", make); }),
            Outcome::InvalidArgument);
  EXPECT_EQ(OutcomeOf([] { IEffectSettings::RegisterEffectCreator("TestEffect", nullptr); }),
            Outcome::InvalidArgument);
  ExpectNotImplemented([] { IEffectSettings::CreateEffectSettings("TestEffect"); });

  IEffectSettings::RegisterEffectCreator("TestEffect", [] { return IEffectSettings::Ptr(); });
  EXPECT_EQ(OutcomeOf([] { IEffectSettings::CreateEffectSettings("TestEffect"); }),
            Outcome::InvalidState);
  IEffectSettings::RegisterEffectCreator("TestEffect", make);  // replaces
  EXPECT_EQ(IEffectSettings::CreateEffectSettings("TestEffect")->GetSettings().GetTypeName(),
            "Made");
  EXPECT_TRUE(IEffectSettings::UnregisterEffectCreator("TestEffect"));
  EXPECT_FALSE(IEffectSettings::UnregisterEffectCreator("TestEffect"));
  ExpectNotImplemented([] { IEffectSettings::CreateEffectSettings("TestEffect"); });
}

TEST(EffectSettingsListTest, CloneListReplacesWithIndependentCopiesAsFarAsTheyCanBeMade) {
  const IEffectSettings::List source = {TestEffect::Make("A", 1), TestEffect::Make("B", 2)};
  const auto replaced = TestEffect::Make("Old");
  IEffectSettings::List destination = {replaced};
  EffectSettings::CloneList(source, destination);
  EXPECT_EQ(replaced->GetRefCount(), 1);  // released by the list
  const IEffectSettings::ConstList given = IEffectSettings::ToConstList(source);
  EXPECT_TRUE(IEffectSettings::Equal(IEffectSettings::ToConstList(destination), given));
  EXPECT_FALSE(Shares(IEffectSettings::ToConstList(destination), given));

  // Cloning a list onto itself gives clones of its former elements.
  IEffectSettings::List self = source;
  EffectSettings::CloneList(self, self);
  EXPECT_TRUE(IEffectSettings::Equal(IEffectSettings::ToConstList(self), given));
  EXPECT_FALSE(Shares(IEffectSettings::ToConstList(self), given));

  // A failed clone keeps the clones made before it.
  int clonesLeft = 1;
  const IEffectSettings::List brittle = {new BrittleEffect("A", &clonesLeft),
                                         new BrittleEffect("B", &clonesLeft)};
  EXPECT_THROW(EffectSettings::CloneList(brittle, destination), std::runtime_error);
  ASSERT_EQ(destination.size(), 1u);
  EXPECT_EQ(destination[0]->GetSettings().GetTypeName(), "A");
}

TEST(EffectSettingsListTest, FindMatchesTheParameterTypeNameFromTheFront) {
  const auto first = TestEffect::Make("Blur", 1);
  const IEffectSettings::List list = {TestEffect::Make("Sharpen"), first, TestEffect::Make("Blur")};
  EXPECT_EQ(IEffectSettings::Find(list, "Blur"), first);
  EXPECT_EQ(IEffectSettings::Find(list, "blur"), nullptr);
  EXPECT_EQ(IEffectSettings::Find(list, "Blu"), nullptr);
  EXPECT_EQ(IEffectSettings::Find(IEffectSettings::List(), "Blur"), nullptr);
  // Found by parameter kind, not by implementation name.
  const IEffectSettings::List named = {new TestEffect("Noise", 0, "Blur")};
  EXPECT_EQ(IEffectSettings::Find(named, "Blur"), nullptr);

  const IEffectSettings::ConstList constList = IEffectSettings::ToConstList(list);
  const IEffectSettings::ConstPtr found = IEffectSettings::Find(constList, "Blur");
  EXPECT_EQ(found, first);
  EXPECT_EQ(found->GetRefCount(), 4);  // first, list, constList, found
}

TEST(EffectSettingsListTest, EqualityHandlesNullAndIdentityAndComparesListsInOrder) {
  const IEffectSettings::ConstPtr a = TestEffect::Make("A");
  const IEffectSettings::ConstPtr b = TestEffect::Make("B");
  const IEffectSettings::ConstPtr none;
  EXPECT_TRUE(IEffectSettings::Equals(none, none));
  EXPECT_TRUE(IEffectSettings::Equals(a, a));
  EXPECT_FALSE(IEffectSettings::Equals(a, none));
  EXPECT_FALSE(IEffectSettings::Equals(none, a));
  EXPECT_TRUE(IEffectSettings::Equals(a, TestEffect::Make("A")));
  EXPECT_FALSE(IEffectSettings::Equals(a, TestEffect::Make("A", 2)));
  EXPECT_TRUE(IEffectSettings::Equal({}, {}));
  EXPECT_TRUE(IEffectSettings::Equal({a, b}, {TestEffect::Make("A"), TestEffect::Make("B")}));
  EXPECT_FALSE(IEffectSettings::Equal({a, b}, {b, a}));
  EXPECT_FALSE(IEffectSettings::Equal({a}, {a, b}));
  EXPECT_FALSE(IEffectSettings::Equal({a, nullptr}, {a, b}));
  EXPECT_TRUE(IEffectSettings::Equal({a, nullptr}, {a, nullptr}));
}

// A list is written as one item per place, an empty item where there is no effect; reading
// empties the list first and fills it only when every item could be read. (That empty places
// read back is checked with the step settings that hold such a list.)
TEST(EffectSettingsListTest, WritesOneItemPerPlaceAndReadsOnlyEmptyPlacesBack) {
  Core::Property tree;
  const IEffectSettings::List list = {TestEffect::Make("A", 1), nullptr};
  EffectSettings::Serialize(Drevin::SerializerProperty::Create(tree), "list", list);
  EXPECT_EQ(Core::PropertySerializer::ToString(tree, false),
            R"({"entries":[{"key":"list","collection":[{"entries":[{"key":"keyEffectItem",)"
            R"("node":{"class":"TestEffect","entries":[{"key":"implName","string":"default"},)"
            R"({"key":"kind","string":"A"},{"key":"amount","int":1}]}}]},{"entries":[]}]}]})");
  const auto held = TestEffect::Make("Held");
  IEffectSettings::List read = {held};
  const auto in = Drevin::SerializerProperty::Create(std::as_const(tree));
  ExpectNotImplemented([&] { EffectSettings::Deserialize(in, "list", read); });
  EXPECT_TRUE(read.empty());
  EXPECT_EQ(held->GetRefCount(), 1);

  read = {held};
  EffectSettings::Deserialize(in, "absent", read);
  EXPECT_TRUE(read.empty());

  // An effect's own record: its implementation name, read back when present.
  TestEffect other("A", 1, "reference");
  other.Deserialize(Drevin::SerializerProperty::Create(Core::Property()));
  EXPECT_EQ(other.GetImplName(), "reference");
  other.Deserialize(Drevin::SerializerProperty::Create(
      std::as_const(tree).GetCollection("list")[0].GetChild("keyEffectItem")));
  EXPECT_EQ(other.GetImplName(), "default");
}

}  // namespace
