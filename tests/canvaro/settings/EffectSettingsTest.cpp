#include "canvaro/settings/EffectSettings.h"

#include <stdexcept>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Errors.h"
#include "support/Outcome.h"
#include "support/TestEffect.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::ExpectNotImplemented;
using canvaro_test::Outcome;
using canvaro_test::OutcomeOf;
using canvaro_test::TestEffect;

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
  ASSERT_EQ(destination.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_NE(destination[i], source[i]);
    EXPECT_TRUE(destination[i]->IsEqual(*source[i]));
  }
  dynamic_cast<TestEffect&>(*source[0]).SetAmount(9);
  EXPECT_EQ(dynamic_cast<TestEffect&>(*destination[0]).GetAmount(), 1);

  // Cloning a list onto itself gives clones of its former elements.
  IEffectSettings::List self = source;
  EffectSettings::CloneList(self, self);
  ASSERT_EQ(self.size(), 2u);
  EXPECT_NE(self[0], source[0]);
  EXPECT_TRUE(self[1]->IsEqual(*source[1]));

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
  EXPECT_FALSE(IEffectSettings::Equals(a, new TestEffect("A", 0, "fast")));
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
