#include "canvaro/settings/EffectSettings.h"

#include <stdexcept>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "kelbra/Proc/ImplNames.h"
#include "support/PropertyKeys.h"
#include "support/TestEffect.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::KeysOf;
using canvaro_test::TestEffect;
using ::testing::ElementsAre;

// Checks that `call` throws the factories' failure: "Not implemented", no code, no stack.
template <class Call>
void ExpectNotImplemented(Call&& call) {
  try {
    std::forward<Call>(call)();
    ADD_FAILURE() << "no exception";
  } catch (const CanvaroException& e) {
    const std::string* text = boost::get_error_info<TagDescription>(e);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(*text, "Not implemented");
    EXPECT_EQ(boost::get_error_info<TagCanvaroErrorCode>(e), nullptr);
    EXPECT_EQ(boost::get_error_info<TagCallStack>(e), nullptr);
  }
}

// An effect whose clones fail after a number of successful ones.
class BrittleEffect : public TestEffect {
 public:
  BrittleEffect(std::string kind, int* clonesLeft)
      : TestEffect(std::move(kind), 0), left_(clonesLeft) {}
  Ptr Clone() const override {
    if ((*left_)-- <= 0) throw std::runtime_error("clone failed");
    return TestEffect::Clone();
  }

 private:
  int* left_;
};

TEST(EffectSettingsTest, NewEffectHasTheDefaultImplementationAndIsNotAdditive) {
  const auto effect = TestEffect::Make("Blur");
  EXPECT_EQ(effect->GetImplName(), Proc::ImplNames::DEFAULT);
  EXPECT_EQ(effect->GetImplName(), "default");
  EXPECT_FALSE(effect->IsAdditive());
}

TEST(EffectSettingsTest, WritesAndReadsTheImplementationName) {
  Core::Property tree;
  TestEffect("Blur", 4, "fast").Serialize(Drevin::SerializerProperty::Create(tree));
  EXPECT_THAT(KeysOf(tree), ElementsAre("implName", "kind", "amount"));
  EXPECT_EQ(tree.GetString("implName"), "fast");

  TestEffect read("Blur", 0);
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read.GetImplName(), "fast");

  TestEffect keeps("Blur", 0, "reference");
  keeps.Deserialize(Drevin::SerializerProperty::Create(Core::Property()));
  EXPECT_EQ(keeps.GetImplName(), "reference");
}

TEST(EffectSettingsTest, FactoryMakesOnlyWhatAHostRegistered) {
  ExpectNotImplemented([] { IEffectSettings::CreateEffectSettings("TestEffect"); });
  ExpectNotImplemented([] { IEffectSettings::CreateEffectSettings(""); });

  const auto code = [](auto call) {
    try {
      call();
    } catch (const CanvaroException& e) {
      const CanvaroError* found = boost::get_error_info<TagCanvaroErrorCode>(e);
      return found != nullptr ? static_cast<int>(*found) : -1;
    }
    return 0;
  };
  const auto make = [] { return IEffectSettings::Ptr(TestEffect::Make("Made", 7)); };
  EXPECT_EQ(code([&] { IEffectSettings::RegisterEffectCreator("", make); }),
            static_cast<int>(CanvaroError::InvalidArgument));
  EXPECT_EQ(code([] { IEffectSettings::RegisterEffectCreator("TestEffect", nullptr); }),
            static_cast<int>(CanvaroError::InvalidArgument));
  ExpectNotImplemented([] { IEffectSettings::CreateEffectSettings("TestEffect"); });

  IEffectSettings::RegisterEffectCreator("TestEffect", [] { return IEffectSettings::Ptr(); });
  EXPECT_EQ(code([] { IEffectSettings::CreateEffectSettings("TestEffect"); }),
            static_cast<int>(CanvaroError::InvalidState));
  IEffectSettings::RegisterEffectCreator("TestEffect", make);  // replaces
  EXPECT_EQ(IEffectSettings::CreateEffectSettings("TestEffect")->GetSettings().GetTypeName(),
            "Made");
  EXPECT_TRUE(IEffectSettings::UnregisterEffectCreator("TestEffect"));
  EXPECT_FALSE(IEffectSettings::UnregisterEffectCreator("TestEffect"));
  ExpectNotImplemented([] { IEffectSettings::CreateEffectSettings("TestEffect"); });
}

TEST(EffectSettingsListTest, CopyListSharesAndAppends) {
  const IEffectSettings::List source = {TestEffect::Make("A"), TestEffect::Make("B")};
  const IEffectSettings::ConstPtr existing = TestEffect::Make("Z");
  IEffectSettings::ConstList destination = {existing};
  EffectSettings::CopyList(source, destination);
  ASSERT_EQ(destination.size(), 3u);
  EXPECT_EQ(destination[0], existing);
  EXPECT_EQ(destination[1], source[0]);
  EXPECT_EQ(destination[2], source[1]);
  EXPECT_EQ(source[0]->GetRefCount(), 2);

  const IEffectSettings::ConstList shared = IEffectSettings::ToConstList(source);
  ASSERT_EQ(shared.size(), 2u);
  EXPECT_EQ(shared[0], source[0]);
  EXPECT_EQ(shared[1], source[1]);
}

TEST(EffectSettingsListTest, CloneListReplacesWithIndependentCopies) {
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
}

TEST(EffectSettingsListTest, FailedCloneKeepsTheClonesMadeBeforeIt) {
  int clonesLeft = 1;
  const IEffectSettings::List source = {new BrittleEffect("A", &clonesLeft),
                                        new BrittleEffect("B", &clonesLeft)};
  IEffectSettings::List destination = {TestEffect::Make("Old")};
  EXPECT_THROW(EffectSettings::CloneList(source, destination), std::runtime_error);
  ASSERT_EQ(destination.size(), 1u);
  EXPECT_EQ(destination[0]->GetSettings().GetTypeName(), "A");
}

TEST(EffectSettingsListTest, FindMatchesTheParameterTypeNameFromTheFront) {
  const auto first = TestEffect::Make("Blur", 1);
  const auto second = TestEffect::Make("Blur", 2);
  const IEffectSettings::List list = {TestEffect::Make("Sharpen"), first, second};
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

TEST(EffectSettingsListTest, EqualsHandlesNullAndIdentity) {
  const IEffectSettings::ConstPtr a = TestEffect::Make("Blur", 1);
  const IEffectSettings::ConstPtr same = TestEffect::Make("Blur", 1);
  const IEffectSettings::ConstPtr other = TestEffect::Make("Blur", 2);
  const IEffectSettings::ConstPtr none;
  EXPECT_TRUE(IEffectSettings::Equals(none, none));
  EXPECT_TRUE(IEffectSettings::Equals(a, a));
  EXPECT_FALSE(IEffectSettings::Equals(a, none));
  EXPECT_FALSE(IEffectSettings::Equals(none, a));
  EXPECT_TRUE(IEffectSettings::Equals(a, same));
  EXPECT_FALSE(IEffectSettings::Equals(a, other));
}

TEST(EffectSettingsListTest, EqualComparesInOrder) {
  const IEffectSettings::ConstPtr a = TestEffect::Make("A");
  const IEffectSettings::ConstPtr b = TestEffect::Make("B");
  EXPECT_TRUE(IEffectSettings::Equal({}, {}));
  EXPECT_TRUE(IEffectSettings::Equal({a, b}, {TestEffect::Make("A"), TestEffect::Make("B")}));
  EXPECT_FALSE(IEffectSettings::Equal({a, b}, {b, a}));
  EXPECT_FALSE(IEffectSettings::Equal({a}, {a, b}));
  EXPECT_FALSE(IEffectSettings::Equal({a, nullptr}, {a, b}));
  EXPECT_TRUE(IEffectSettings::Equal({a, nullptr}, {a, nullptr}));
}

TEST(EffectSettingsListTest, WritesOneItemPerEffectInOrder) {
  Core::Property tree;
  const IEffectSettings::List list = {TestEffect::Make("A", 1), TestEffect::Make("B", 2), nullptr};
  EffectSettings::Serialize(Drevin::SerializerProperty::Create(tree), "keyEffectsCollection", list);

  ASSERT_THAT(KeysOf(tree), ElementsAre("keyEffectsCollection"));
  const Core::Property::Collection& items = tree.GetCollection("keyEffectsCollection");
  ASSERT_EQ(items.size(), 3u);
  EXPECT_TRUE(KeysOf(items[2]).empty()) << "a null effect keeps its place as an empty item";
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_THAT(KeysOf(items[i]), ElementsAre("keyEffectItem"));
    const Core::Property& effect = items[i].GetChild("keyEffectItem");
    EXPECT_EQ(effect.GetClassId(), "TestEffect");
    EXPECT_EQ(effect.GetInt("amount"), static_cast<int>(i) + 1);
  }
  EXPECT_EQ(items[1].GetChild("keyEffectItem").GetString("kind"), "B");
}

TEST(EffectSettingsListTest, ReadingEmptiesTheListAndLoadsOnlyEmptyCollections) {
  Core::Property tree;
  EffectSettings::Serialize(Drevin::SerializerProperty::Create(tree), "empty", {});
  const auto reader = Drevin::SerializerProperty::Create(std::as_const(tree));

  const auto held = TestEffect::Make("Held");
  IEffectSettings::List list = {held};
  EffectSettings::Deserialize(reader, "empty", list);
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(held->GetRefCount(), 1);

  list = {held};
  EffectSettings::Deserialize(reader, "absent", list);
  EXPECT_TRUE(list.empty());

  Core::Property holes;
  EffectSettings::Serialize(Drevin::SerializerProperty::Create(holes), "list", {nullptr, nullptr});
  EffectSettings::Deserialize(Drevin::SerializerProperty::Create(std::as_const(holes)), "list",
                              list);
  EXPECT_THAT(list, ElementsAre(nullptr, nullptr));
}

TEST(EffectSettingsListTest, ReadingStoredEffectsIsNotImplemented) {
  Core::Property tree;
  EffectSettings::Serialize(Drevin::SerializerProperty::Create(tree), "list",
                            {TestEffect::Make("A")});
  IEffectSettings::List list = {TestEffect::Make("Held")};
  ExpectNotImplemented([&] {
    EffectSettings::Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)), "list",
                                list);
  });
  EXPECT_TRUE(list.empty());
}

}  // namespace
