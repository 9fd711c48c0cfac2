// A whole document saved to its text form and loaded into a fresh document on the same swap
// directory, compared step by step; saves without a step list; what cannot be loaded.
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CanvaroUndoFixture.h"
#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/RectangleInfo.h"
#include "kelbra/Core/FileSystem.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/TestEffect.h"
#include "support/TestPainter.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using namespace canvaro_test;

constexpr unsigned kCurrent = ICanvaroUndo::kCurrentItem;

ShapeInfo Line(double x) {
  auto line = LineInfo::Create(IToolsId::SHAPE_LINE);
  line->GetPosition().SetX(x);
  return ShapeInfo(*line);
}

// Everything a host can see of the step in force.
struct Snapshot {
  unsigned item = 0;
  unsigned maskIndex = 0;
  std::int32_t step = 0;
  std::string picture;
  Conf::FrameInfo info;
  std::string package;
  std::string mask;
  std::int32_t maskLeft = 0;
  std::uint64_t painted = 0;
  std::vector<ShapeInfo> shapes;
  std::string shapePicture;

  bool operator==(const Snapshot&) const = default;
};

void PrintTo(const Snapshot& s, std::ostream* out) {
  *out << "item " << s.item << ", mask " << s.maskIndex << ", step " << s.step << ", package "
       << s.package << ", painted " << s.painted << ", shapes " << s.shapes.size();
}

Snapshot Take(ICanvaroUndo& document) {
  Snapshot s;
  s.item = document.GetCurrentIndex();
  s.maskIndex = document.GetCurrentMaskIndex();
  s.step = document.GetUndoManager().GetCurrentStep();
  s.picture = Pixels(document.GetVideo(kCurrent));
  s.info = document.GetVideoInfo(kCurrent);
  s.package = document.GetSettings(kCurrent).GetEffectsSettings().GetPackage().GetName();
  s.mask = Pixels(document.GetMask(kCurrent));
  s.maskLeft = document.GetMaskInfo(kCurrent).GetLeft();
  s.painted = document.GetMaskPixelCount({});
  s.shapes = document.GetShapeActiveItems(ShapeType::All);
  if (document.GetShapeItemCount(ShapeType::All) > 0) {
    s.shapePicture = Pixels(document.GetShapeItemVideo(0, kCurrent));
  }
  return s;
}

// The state after every step, from the first, walking back and forth; leaves the document
// where it was.
std::vector<Snapshot> Walk(ICanvaroUndo& document) {
  std::size_t back = 0;
  while (document.IsUndoEnabled()) {
    document.Undo();
    ++back;
  }
  std::vector<Snapshot> states{Take(document)};
  while (document.IsRedoEnabled()) {
    document.Redo();
    states.push_back(Take(document));
  }
  const std::size_t forward = states.size() - 1 - back;
  for (std::size_t i = 0; i < forward; ++i) document.Undo();
  return states;
}

class CanvaroUndoSerializeTest : public DocumentTest {
 protected:
  // Three items, two strokes on the second, a shape with a picture, a second shape and a
  // removal; every step has settings without effects and strokes without painters.
  void Edit() {
    doc->Add(Settings("Source", 0), Picture(1), nullptr, NoMask());
    doc->Add(Settings("Brush", 1), Picture(2, 6, 4), MaskPicture(0, 2, 0, 2, 90, 6, 4),
             Mask(0, 2, 0, 2));
    const auto firstStroke = MaskPicture(0, 4, 0, 3, 90, 6, 4);
    doc->AddMask(firstStroke, Mask(0, 4, 0, 3));
    doc->SetShape(Line(0.2), Picture(9, 2, 2));
    doc->AddMask(Painted(firstStroke, 2, 6, 1, 4, 7), Mask(2, 6, 1, 4));
    doc->SetShape(ShapeInfo(*RectangleInfo::Create(IToolsId::SHAPE_FRAME)), nullptr);
    doc->RemoveShapeAll(ShapeType::Rectangle);
    doc->Add(Settings("Sharpen", 2), Picture(3), nullptr, NoMask());
  }

  // The document in its text form, with every swap file written.
  std::string Save(ICanvaroUndo& document) {
    Core::Property tree;
    document.Serialize(Drevin::SerializerProperty::Create(tree));
    document.WaitForPendingSaves();
    return Core::PropertySerializer::ToString(tree);
  }

  ICanvaroUndoPtr Load(const Core::Property& tree) {
    ICanvaroUndoPtr loaded = MakeDocument("loaded_");
    loaded->Deserialize(Drevin::SerializerProperty::Create(tree));
    return loaded;
  }
};

TEST_F(CanvaroUndoSerializeTest, ALoadedDocumentMatchesStepByStep) {
  // Without steps there is nothing to undo, before the first edit and after loading that state:
  // a host's `while (IsUndoEnabled()) Undo();` ends.
  EXPECT_FALSE(doc->IsUndoEnabled());
  EXPECT_FALSE(Load(Core::PropertySerializer::FromString(Save(*doc)))->IsUndoEnabled());
  Edit();
  doc->GetUndoManager().SetCurrentTool(IToolsId::SHAPE_MARKER);
  doc->Undo();
  doc->Undo();  // two steps back, so that the save holds redo steps
  const std::vector<Snapshot> expected = Walk(*doc);
  const Snapshot inForce = Take(*doc);
  const std::size_t steps = Steps();
  const std::string text = Save(*doc);
  doc.reset();  // the host closes the document; its swap files stay

  ICanvaroUndoPtr loaded = Load(Core::PropertySerializer::FromString(text));
  EXPECT_EQ(loaded->GetVideoCount(), 3u);
  EXPECT_EQ(loaded->GetUndoManager().GetStepCount(), steps);
  EXPECT_EQ(Take(*loaded), inForce);
  EXPECT_EQ(loaded->GetUndoManager().GetCurrentToolID(), IToolsId::SHAPE_MARKER);
  for (unsigned i = 0; i < 3; ++i) {
    EXPECT_EQ(loaded->GetSettings(i).GetEffectsSettings().GetPackage().GetPackageIndex(),
              static_cast<std::int32_t>(i));
  }
  EXPECT_EQ(Walk(*loaded), expected);

  // Saving and loading again neither grows the frame list nor changes a step.
  const Index frames = loaded->GetFrameStorage().GetCount();
  for (int cycle = 0; cycle < 3; ++cycle) {
    loaded = Load(Core::PropertySerializer::FromString(Save(*loaded)));
    EXPECT_EQ(loaded->GetFrameStorage().GetCount(), frames) << cycle;
    EXPECT_EQ(Walk(*loaded), expected) << cycle;
  }

  // The loaded document goes on like the original: a new step drops the redo steps.
  loaded->Add(Settings("After"), Picture(4), nullptr, NoMask());
  EXPECT_FALSE(loaded->IsRedoEnabled());
  EXPECT_EQ(Pixels(loaded->GetVideo(kCurrent)), Pixels(Picture(4)));
}

// Every part of the document writes its own keys; a wrong key text would still round trip, so
// the keys of a save that uses every part are listed here: per node path and class, the longest
// list of keys found there, in order.
void CollectKeys(const Core::Property& node, const std::string& path,
                 std::map<std::string, std::string>& keys) {
  // Records with suites of their own (the settings and every shape kind) are checked there.
  for (const char* own : {"SettingsCore", "MaskInfo", "LineInfo", "RectangleInfo"}) {
    if (node.GetClassId() == own) return;
  }
  std::string names;
  for (const auto& entry : node.Entries()) names += entry.key + " ";
  std::string& longest = keys[path + "(" + node.GetClassId() + ")"];
  if (names.size() > longest.size()) longest = names;
  for (const auto& entry : node.Entries()) {
    if (const auto* child = std::get_if<std::unique_ptr<Core::Property>>(&entry.value)) {
      CollectKeys(**child, path + "/" + entry.key, keys);
    } else if (const auto* list = std::get_if<Core::Property::Collection>(&entry.value)) {
      for (std::size_t i = 0; i < list->size(); ++i) {
        CollectKeys((*list)[i], path + "/" + entry.key + "[]", keys);
      }
    }
  }
}

TEST_F(CanvaroUndoSerializeTest, TheTextFormHoldsEveryPartUnderItsKeys) {
  Edit();
  doc->GetUndoManager().SetCurrentTool(IToolsId::SHAPE_MARKER);
  std::map<std::string, std::string> keys;
  CollectKeys(Core::PropertySerializer::FromString(Save(*doc)), "", keys);
  std::string all;
  for (const auto& [path, names] : keys) all += path + ": " + names + "\n";
  EXPECT_EQ(
      all,
      "(): Shape UndoManager Frames Index Items \n"
      "/Frames(FrameStorage): StorageItems \n"
      "/Frames/StorageItems[](): StorageItem \n"
      "/Frames/StorageItems[]/StorageItem(FrameItem): FileName Width Height AspectX AspectY \n"
      "/Items[](): Info FrameIndex Mask \n"
      "/Items[]/Mask(MaskUndo): Index Items IsSaved MaskCounter MaskInfo \n"
      "/Items[]/Mask/Items[](): Info FrameIndex FileName Width Height AspectX AspectY \n"
      "/Items[]/Mask/MaskCounter(MaskCounter): PixelCount PixelCountDetail \n"
      "/Items[]/Mask/MaskCounter/PixelCountDetail[](): PixelCountDetailId PixelCountDetailVal \n"
      "/Shape(ShapeUndo): Items \n"
      "/Shape/Items[](): Name Data \n"
      "/Shape/Items[]/Data(ShapeUndoItem): Index Items \n"
      "/Shape/Items[]/Data/Items[](): Info FrameIndex \n"
      "/UndoManager(UndoManager): ToolName Index Storage \n"
      "/UndoManager/Storage[](): ItemList \n"
      "/UndoManager/Storage[]/ItemList[](): Item \n");
}

TEST_F(CanvaroUndoSerializeTest, ASaveWithoutStepListGetsAStepPerItemAndStroke) {
  Edit();
  const std::vector<Snapshot> items = {Take(*doc)};
  Core::Property tree = Core::PropertySerializer::FromString(Save(*doc));
  ASSERT_TRUE(tree.Remove("UndoManager"));
  doc.reset();

  ICanvaroUndoPtr loaded = Load(tree);
  // Three items and two strokes; the shapes' steps are not rebuilt.
  EXPECT_EQ(loaded->GetUndoManager().GetStepCount(), 5u);
  EXPECT_EQ(loaded->GetUndoManager().GetCurrentStep(), 4);
  Snapshot last = Take(*loaded);
  last.step = items[0].step;
  EXPECT_EQ(last, items[0]);

  // Undo walks the rebuilt steps: the last item, then the strokes, then the item under them.
  loaded->Undo();
  EXPECT_EQ(loaded->GetCurrentIndex(), 1u);
  EXPECT_EQ(loaded->GetCurrentMaskIndex(), 2u);
  loaded->Undo();
  loaded->Undo();
  EXPECT_EQ(loaded->GetCurrentMaskIndex(), 0u);
  loaded->Undo();
  EXPECT_EQ(loaded->GetCurrentIndex(), 0u);
  EXPECT_EQ(Pixels(loaded->GetVideo(kCurrent)), Pixels(Picture(1)));
  EXPECT_FALSE(loaded->IsUndoEnabled());
}

// Effects and painters are the host's classes: a document holding them reloads equal with the
// host's creators registered, and is refused with "Not implemented" without them.
TEST_F(CanvaroUndoSerializeTest, StepsWithEffectsAndPaintersLoadWithTheHostsCreators) {
  doc->Add(Settings("Source", 0), Picture(1), nullptr, NoMask());
  SettingsCore blurred(TestEffect::Make("Blur", 2));
  blurred.GetEffectsSettings().SetEffectsConst(
      {TestEffect::Make("Blur", 2), TestEffect::Make("Invert", 5)});
  doc->Add(blurred, Picture(2), nullptr, NoMask());
  doc->AddMask(MaskPicture(0, 2, 0, 2, 90), Mask(0, 2, 0, 2, TestPainter::Make(12)));
  const Core::Property tree = Core::PropertySerializer::FromString(Save(*doc));

  const auto expectNotImplemented = [&] {
    try {
      Load(tree);
      ADD_FAILURE() << "loaded steps holding a host's effects and painters";
    } catch (const CanvaroException& e) {
      const std::string* description = boost::get_error_info<TagDescription>(e);
      ASSERT_NE(description, nullptr);
      EXPECT_EQ(*description, "Not implemented");
      EXPECT_EQ(boost::get_error_info<TagCanvaroErrorCode>(e), nullptr);
    }
  };
  expectNotImplemented();

  IEffectSettings::RegisterEffectCreator("TestEffect", [] { return TestEffect::Make(""); });
  expectNotImplemented();  // the painter still has no creator
  ISettingsPainter::RegisterPainterCreator("TestPainter", [] { return TestPainter::Make(0); });
  const ICanvaroUndoPtr loaded = Load(tree);
  EXPECT_EQ(Walk(*loaded), Walk(*doc));
  EXPECT_EQ(loaded->GetSettings(1), doc->GetSettings(1));
  const auto* painter =
      dynamic_cast<const TestPainter*>(loaded->GetMaskInfo(1).GetInfoEx().GetPainter().get());
  ASSERT_NE(painter, nullptr);
  EXPECT_EQ(painter->GetBrushSize(), 12);

  EXPECT_TRUE(IEffectSettings::UnregisterEffectCreator("TestEffect"));
  EXPECT_TRUE(ISettingsPainter::UnregisterPainterCreator("TestPainter"));
  expectNotImplemented();
}

}  // namespace
