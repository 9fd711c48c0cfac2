// Saved documents damaged in one place each: a step list naming a part that does not exist,
// indices past the end of what was saved, values of the wrong type. Each must end in a clear
// exception (or, where the damage is harmless, in a document that works), never in undefined
// behaviour; the sanitizer builds check the latter.
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include <gtest/gtest.h>

#include "canvaro/Undo/ICanvaroUndo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/ExerciseDocument.h"
#include "support/Outcome.h"
#include "support/SampleDocuments.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using namespace canvaro_test;
using Core::Property;

// The item `index` of the collection `key` of `node`.
Property& At(Property& node, std::string_view key, std::size_t index) {
  Property::Entry* entry = node.Find(key);
  if (entry == nullptr) throw std::runtime_error("no collection " + std::string(key));
  return std::get<Property::Collection>(entry->value).at(index);
}

Property& Child(Property& node, std::string_view key) { return node.GetChild(key); }

// Where the sample session keeps what the cases damage.
Property& ShapeState(Property& doc, std::size_t shape, std::size_t state) {
  return At(Child(At(Child(doc, "Shape"), "Items", shape), "Data"), "Items", state);
}
Property& Step(Property& doc, std::size_t step) {
  return At(Child(doc, "UndoManager"), "Storage", step);
}
Property& SettingsItem(Property& doc, std::size_t item) { return At(doc, "Items", item); }
Property& FrameRecord(Property& doc, std::size_t frame) {
  return Child(At(Child(doc, "Frames"), "StorageItems", frame), "StorageItem");
}

struct Damage {
  const char* name;
  std::function<void(Property&)> apply;
  Outcome load;  // how loading ends
};

void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.name; }

class DamagedSaveTest : public testing::TestWithParam<Damage> {
 protected:
  DamagedSaveTest() {
    for (const auto& saved : WriteSampleDocuments(dir_.path())) {
      if (saved.name == "session") session_ = Core::PropertySerializer::FromString(saved.text);
    }
  }

  ICanvaroUndoPtr NewDocument() {
    return ICanvaroUndo::Create(dir_.path(),
                                [n = 0]() mutable { return "loaded_" + std::to_string(n++); });
  }

  TempDir dir_;
  Property session_;
};

TEST_F(DamagedSaveTest, TheUndamagedSessionLoadsAndWorks) {
  auto doc = NewDocument();
  doc->Deserialize(Drevin::SerializerProperty::Create(std::as_const(session_)));
  EXPECT_EQ(doc->GetVideoCount(), 3u);
  EXPECT_EQ(OutcomeOf([&] { ExerciseDocument(*doc); }), Outcome::Done);
}

// A document whose load failed holds what was read so far and is discarded; one that loaded
// must work.
TEST_P(DamagedSaveTest, LoadingEndsInAClearOutcome) {
  GetParam().apply(session_);
  auto doc = NewDocument();
  EXPECT_EQ(OutcomeOf([&] {
              doc->Deserialize(Drevin::SerializerProperty::Create(std::as_const(session_)));
            }),
            GetParam().load);
  if (GetParam().load == Outcome::Done) {
    EXPECT_EQ(OutcomeOf([&] { ExerciseDocument(*doc); }), Outcome::Done);
  }
}

INSTANTIATE_TEST_SUITE_P(
    UnknownParts, DamagedSaveTest,
    testing::Values(
        Damage{"StepNamesAPartThatDoesNotExist",
               [](Property& doc) { At(Step(doc, 1), "ItemList", 0).SetString("Item", "Nobody"); },
               Outcome::InvalidDocument},
        Damage{"StepNamesAShapeItemThatWasNotSaved",
               [](Property& doc) {
                 At(Step(doc, 2), "ItemList", 0).SetString("Item", "Item_00000099");
               },
               Outcome::InvalidDocument},
        Damage{"ShapeOfAnUnknownKind",
               [](Property& doc) { Child(ShapeState(doc, 0, 1), "Info").SetClassId("Hexagon"); },
               Outcome::InvalidDocument},
        Damage{"ShapeStateWithoutKind",
               [](Property& doc) { Child(ShapeState(doc, 0, 1), "Info").SetClassId(""); },
               Outcome::InvalidDocument},
        Damage{"ShapeWithoutStates",
               [](Property& doc) {
                 Property& data = Child(At(Child(doc, "Shape"), "Items", 0), "Data");
                 data.SetInt("Index", -1);
                 data.AddCollection("Items");
               },
               Outcome::InvalidDocument},
        Damage{"ShapeWithoutData",
               [](Property& doc) { At(Child(doc, "Shape"), "Items", 0).Remove("Data"); },
               Outcome::PropertyError}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    IndicesPastTheEnd, DamagedSaveTest,
    testing::Values(
        Damage{"StepIndex", [](Property& doc) { Child(doc, "UndoManager").SetInt("Index", 99); },
               Outcome::InvalidDocument},
        Damage{"SettingsIndex", [](Property& doc) { doc.SetInt("Index", 3); },
               Outcome::InvalidDocument},
        Damage{"SettingsIndexBelowMinusOne", [](Property& doc) { doc.SetInt("Index", -2); },
               Outcome::InvalidDocument},
        Damage{"MaskIndex",
               [](Property& doc) { Child(SettingsItem(doc, 1), "Mask").SetInt("Index", 7); },
               Outcome::InvalidDocument},
        Damage{"ShapeStateIndex",
               [](Property& doc) {
                 Child(At(Child(doc, "Shape"), "Items", 0), "Data").SetInt("Index", 2);
               },
               Outcome::InvalidDocument},
        Damage{"FrameOfASettingsStep",
               [](Property& doc) { SettingsItem(doc, 2).SetInt("FrameIndex", 40); },
               Outcome::InvalidDocument},
        Damage{"FrameOfAShapeState",
               [](Property& doc) { ShapeState(doc, 0, 1).SetInt("FrameIndex", 40); },
               Outcome::InvalidDocument},
        Damage{"FrameOfAShapeStateAtTheLargestIndex",
               [](Property& doc) { ShapeState(doc, 0, 1).SetInt("FrameIndex", -2); },
               Outcome::InvalidDocument},
        // More steps of a shape than it has states: the extra ones find nothing to step.
        Damage{"StepsOfAShapeBeyondItsStates",
               [](Property& doc) {
                 for (std::size_t step = 2; step <= 4; ++step) {
                   At(Step(doc, step), "ItemList", 0).SetString("Item", "Item_00000000");
                 }
               },
               Outcome::Done}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    WrongTypes, DamagedSaveTest,
    testing::Values(
        Damage{"StepIndexAsString",
               [](Property& doc) { Child(doc, "UndoManager").SetString("Index", "1"); },
               Outcome::WrongType},
        Damage{"StepListAsInteger",
               [](Property& doc) { Child(doc, "UndoManager").SetInt("Storage", 1); },
               Outcome::WrongType},
        Damage{"SettingsItemsAsNode", [](Property& doc) { doc.AddChild("Items"); },
               Outcome::WrongType},
        Damage{"FrameIndexAsDouble",
               [](Property& doc) { SettingsItem(doc, 0).SetDouble("FrameIndex", 0.0); },
               Outcome::WrongType},
        Damage{"FrameWidthAsString",
               [](Property& doc) { FrameRecord(doc, 0).SetString("Width", "8"); },
               Outcome::WrongType},
        Damage{"SwapFileNameIsDotDot",
               [](Property& doc) { FrameRecord(doc, 0).SetString("FileName", ".."); },
               Outcome::InvalidDocument},
        Damage{"SwapFileNameIsAFolder",
               [](Property& doc) { FrameRecord(doc, 0).SetString("FileName", "sub/"); },
               Outcome::InvalidDocument},
        Damage{"SwapFileNameAsInteger",
               [](Property& doc) { FrameRecord(doc, 0).SetInt("FileName", 0); },
               Outcome::WrongType},
        Damage{"ShapeVisibleAsInteger",
               [](Property& doc) { Child(ShapeState(doc, 0, 1), "Info").SetInt("Visible", 1); },
               Outcome::WrongType},
        Damage{
            "MaskCounterAsString",
            [](Property& doc) { Child(SettingsItem(doc, 1), "Mask").SetString("MaskCounter", ""); },
            Outcome::WrongType},
        // Counts stored through the 32-bit integer of the serializer contract read as well.
        Damage{"MaskCountsAs32BitIntegers",
               [](Property& doc) {
                 Property& counter = Child(Child(SettingsItem(doc, 1), "Mask"), "MaskCounter");
                 counter.SetInt("PixelCount",
                                static_cast<std::int32_t>(counter.GetInt64("PixelCount")));
               },
               Outcome::Done},
        // A z value stored as an integer by older writers is read as one.
        Damage{"ShapeZValueAsInteger",
               [](Property& doc) { Child(ShapeState(doc, 0, 1), "Info").SetInt("ZValue", 500); },
               Outcome::Done}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
