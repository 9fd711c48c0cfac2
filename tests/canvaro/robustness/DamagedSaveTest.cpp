// Saved documents damaged in one place each: a step list naming a part that does not exist,
// indices past the end of what was saved, values of the wrong type. Each must end in a clear
// exception (or, where the damage is harmless, in a document that works), never in undefined
// behaviour; the sanitizer builds check the latter. The inputs with which the fuzzers once broke
// the library (fuzz/regressions/<target>/) are fed to their loaders again, to the same end.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include <gtest/gtest.h>

#include "canvaro/CoreUtil/RawFrame.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "kelbra/Core/DataString.h"
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
Property& Root(Property& doc) { return doc; }
Property& Manager(Property& doc) { return Child(doc, "UndoManager"); }
Property& FirstItemOfStep1(Property& doc) { return At(Step(doc, 1), "ItemList", 0); }
Property& FirstItemOfStep2(Property& doc) { return At(Step(doc, 2), "ItemList", 0); }
Property& FirstSettings(Property& doc) { return SettingsItem(doc, 0); }
Property& LastSettings(Property& doc) { return SettingsItem(doc, 2); }
Property& MaskOfSecondSettings(Property& doc) { return Child(SettingsItem(doc, 1), "Mask"); }
Property& ShapeData(Property& doc) { return Child(At(Child(doc, "Shape"), "Items", 0), "Data"); }
Property& SecondShapeState(Property& doc) { return ShapeState(doc, 0, 1); }
Property& SecondShapeInfo(Property& doc) { return Child(ShapeState(doc, 0, 1), "Info"); }
Property& FirstFrame(Property& doc) {
  return Child(At(Child(doc, "Frames"), "StorageItems", 0), "StorageItem");
}

using Damaging = std::function<void(Property&)>;
using Where = Property& (*)(Property&);

// The damage that sets `key` of the node that `where` finds to `value`.
Damaging Set(Where where, std::string key, std::int32_t value) {
  return [=](Property& doc) { where(doc).SetInt(key, value); };
}
Damaging Set(Where where, std::string key, double value) {
  return [=](Property& doc) { where(doc).SetDouble(key, value); };
}
Damaging Set(Where where, std::string key, std::string value) {
  return [=](Property& doc) { where(doc).SetString(key, value); };
}

struct Damage {
  const char* name;
  Damaging apply;
  Outcome load;  // how loading ends
};

void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.name; }

std::string NameOf(const testing::TestParamInfo<Damage>& info) { return info.param.name; }

class DamagedSaveTest : public testing::TestWithParam<Damage> {
 protected:
  DamagedSaveTest() {
    for (const auto& saved : WriteSampleDocuments(dir_.path())) {
      if (saved.name == "session") session_ = Core::PropertySerializer::FromString(saved.text);
    }
  }

  TempDir dir_;
  Property session_;
};

// A document whose load failed holds what was read so far and is discarded; one that loaded
// must work.
TEST_P(DamagedSaveTest, LoadingEndsInAClearOutcome) {
  GetParam().apply(session_);
  auto doc = ICanvaroUndo::Create(dir_.path(),
                                  [n = 0]() mutable { return "loaded_" + std::to_string(n++); });
  EXPECT_EQ(OutcomeOf([&] {
              doc->Deserialize(Drevin::SerializerProperty::Create(std::as_const(session_)));
            }),
            GetParam().load);
  if (GetParam().load == Outcome::Done) {
    EXPECT_EQ(OutcomeOf([&] { ExerciseDocument(*doc); }), Outcome::Done);
  }
}

const std::vector<Damage> kDamages = {
    {"Undamaged", [](Property&) {}, Outcome::Done},
    // Parts that do not exist.
    {"StepNamesAPartThatDoesNotExist", Set(FirstItemOfStep1, "Item", "Nobody"),
     Outcome::InvalidDocument},
    {"StepNamesAShapeItemThatWasNotSaved", Set(FirstItemOfStep2, "Item", "Item_00000099"),
     Outcome::InvalidDocument},
    {"ShapeOfAnUnknownKind", [](Property& doc) { SecondShapeInfo(doc).SetClassId("Hexagon"); },
     Outcome::InvalidDocument},
    {"ShapeStateWithoutKind", [](Property& doc) { SecondShapeInfo(doc).SetClassId(""); },
     Outcome::InvalidDocument},
    {"ShapeWithoutStates",
     [](Property& doc) {
       ShapeData(doc).SetInt("Index", -1);
       ShapeData(doc).AddCollection("Items");
     },
     Outcome::InvalidDocument},
    {"ShapeWithoutData", [](Property& doc) { At(Child(doc, "Shape"), "Items", 0).Remove("Data"); },
     Outcome::PropertyError},
    // Indices past the end of what was saved.
    {"StepIndex", Set(Manager, "Index", 99), Outcome::InvalidDocument},
    {"SettingsIndex", Set(Root, "Index", 3), Outcome::InvalidDocument},
    {"SettingsIndexBelowMinusOne", Set(Root, "Index", -2), Outcome::InvalidDocument},
    {"MaskIndex", Set(MaskOfSecondSettings, "Index", 7), Outcome::InvalidDocument},
    {"ShapeStateIndex", Set(ShapeData, "Index", 2), Outcome::InvalidDocument},
    {"FrameOfASettingsStep", Set(LastSettings, "FrameIndex", 40), Outcome::InvalidDocument},
    {"FrameOfAShapeState", Set(SecondShapeState, "FrameIndex", 40), Outcome::InvalidDocument},
    {"FrameOfAShapeStateAtTheLargestIndex", Set(SecondShapeState, "FrameIndex", -2),
     Outcome::InvalidDocument},
    // More steps of a shape than it has states: the extra ones find nothing to step.
    {"StepsOfAShapeBeyondItsStates",
     [](Property& doc) {
       for (std::size_t step = 2; step <= 4; ++step) {
         At(Step(doc, step), "ItemList", 0).SetString("Item", "Item_00000000");
       }
     },
     Outcome::Done},
    // Values of the wrong type.
    {"StepIndexAsString", Set(Manager, "Index", "1"), Outcome::WrongType},
    {"StepListAsInteger", Set(Manager, "Storage", 1), Outcome::WrongType},
    {"SettingsItemsAsNode", [](Property& doc) { doc.AddChild("Items"); }, Outcome::WrongType},
    {"FrameIndexAsDouble", Set(FirstSettings, "FrameIndex", 0.0), Outcome::WrongType},
    {"FrameWidthAsString", Set(FirstFrame, "Width", "8"), Outcome::WrongType},
    {"SwapFileNameIsDotDot", Set(FirstFrame, "FileName", ".."), Outcome::InvalidDocument},
    {"SwapFileNameIsAFolder", Set(FirstFrame, "FileName", "sub/"), Outcome::InvalidDocument},
    {"SwapFileNameAsInteger", Set(FirstFrame, "FileName", 0), Outcome::WrongType},
    {"ShapeVisibleAsInteger", Set(SecondShapeInfo, "Visible", 1), Outcome::WrongType},
    {"MaskCounterAsString", Set(MaskOfSecondSettings, "MaskCounter", ""), Outcome::WrongType},
    // Counts stored through the 32-bit integer of the serializer contract read as well.
    {"MaskCountsAs32BitIntegers",
     [](Property& doc) {
       Property& counter = Child(MaskOfSecondSettings(doc), "MaskCounter");
       counter.SetInt("PixelCount", static_cast<std::int32_t>(counter.GetInt64("PixelCount")));
     },
     Outcome::Done},
    // A z value stored as an integer by older writers is read as one.
    {"ShapeZValueAsInteger", Set(SecondShapeInfo, "ZValue", 500), Outcome::Done},
};

INSTANTIATE_TEST_SUITE_P(Damaged, DamagedSaveTest, testing::ValuesIn(kDamages), NameOf);

// ---- the fuzzers' findings ----

// The kept inputs of one fuzz target, in name order.
std::vector<std::filesystem::path> Regressions(const std::string& target) {
  const auto dir = std::filesystem::path(CANVARO_SOURCE_DIR) / "fuzz" / "regressions" / target;
  std::vector<std::filesystem::path> files;
  if (!std::filesystem::exists(dir)) return files;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

TEST(FuzzRegressionTest, SavedDocumentsLoadOrFailClearly) {
  const auto files = Regressions("document");
  ASSERT_FALSE(files.empty());
  for (const auto& file : files) {
    SCOPED_TRACE(file.filename().string());
    // The swap files that the fuzzer's inputs name, fresh for each (loading may delete some).
    TempDir dir;
    WriteSampleDocuments(dir.path());
    auto doc = ICanvaroUndo::Create(dir.path(), [n = 0]() mutable { return std::to_string(n++); });
    // Any outcome but a crash or an undocumented exception (which would escape) will do.
    OutcomeOf([&] {
      doc->Deserialize(
          Drevin::SerializerProperty::Create(Core::PropertySerializer::FromString(ReadFile(file))));
      ExerciseDocument(*doc);
    });
  }
}

TEST(FuzzRegressionTest, RawFramesLoadOrFailWithAFileError) {
  for (const auto& file : Regressions("raw_frame")) {
    SCOPED_TRACE(file.filename().string());
    Proc::IDataVideoPtr frame;
    const Outcome outcome = OutcomeOf(
        [&] { CoreUtil::LoadRawFrame(frame, Core::DataInputString::Create(ReadFile(file))); });
    EXPECT_TRUE(outcome == Outcome::Done || outcome == Outcome::FileError) << outcome;
  }
}

}  // namespace
