// A whole document saved to its text form and loaded into a fresh document on the same swap
// directory (the randomized session compares loaded documents step by step); the keys of the
// text form, saves without a step list, what needs the host's creators.
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/RectangleInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/DocumentTest.h"
#include "support/Errors.h"
#include "support/TestEffect.h"
#include "support/TestPainter.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using namespace canvaro_test;

constexpr unsigned kCurrent = ICanvaroUndo::kCurrentItem;

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
    doc->SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_LINE)), Picture(9, 2, 2));
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
  // Without steps there is nothing to undo, before the first edit and after loading that state:
  // a host's `while (IsUndoEnabled()) Undo();` ends.
  EXPECT_FALSE(doc->IsUndoEnabled());
  EXPECT_FALSE(Load(Core::PropertySerializer::FromString(Save(*doc)))->IsUndoEnabled());
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
  Core::Property tree = Core::PropertySerializer::FromString(Save(*doc));
  ASSERT_TRUE(tree.Remove("UndoManager"));
  doc.reset();

  ICanvaroUndoPtr loaded = Load(tree);
  // Three items and two strokes; the shapes' steps are not rebuilt.
  EXPECT_EQ(loaded->GetUndoManager().GetStepCount(), 5u);
  EXPECT_EQ(loaded->GetUndoManager().GetCurrentStep(), 4);
  EXPECT_EQ(loaded->GetCurrentIndex(), 2u);

  // Undo walks the rebuilt steps: the last item, then the strokes, then the item under them.
  for (const unsigned stroke : {2u, 1u, 0u}) {
    loaded->Undo();
    EXPECT_EQ(loaded->GetCurrentIndex(), 1u);
    EXPECT_EQ(loaded->GetCurrentMaskIndex(), stroke);
  }
  EXPECT_EQ(Pixels(loaded->GetMask(kCurrent)), Pixels(MaskPicture(0, 2, 0, 2, 90, 6, 4)));
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
  doc->GetUndoManager().SetCurrentTool(IToolsId::SHAPE_MARKER);
  const Core::Property tree = Core::PropertySerializer::FromString(Save(*doc));

  ExpectNotImplemented([&] { Load(tree); });

  IEffectSettings::RegisterEffectCreator("TestEffect", [] { return TestEffect::Make(""); });
  ISettingsPainter::RegisterPainterCreator("TestPainter", [] { return TestPainter::Make(0); });
  const ICanvaroUndoPtr loaded = Load(tree);
  EXPECT_EQ(loaded->GetSettings(1), doc->GetSettings(1));
  EXPECT_EQ(Pixels(loaded->GetMask(kCurrent)), Pixels(doc->GetMask(kCurrent)));
  EXPECT_EQ(loaded->GetUndoManager().GetCurrentToolID(), IToolsId::SHAPE_MARKER);
  const auto* painter =
      dynamic_cast<const TestPainter*>(loaded->GetMaskInfo(1).GetInfoEx().GetPainter().get());
  ASSERT_NE(painter, nullptr);
  EXPECT_EQ(painter->GetBrushSize(), 12);

  EXPECT_TRUE(IEffectSettings::UnregisterEffectCreator("TestEffect"));
  EXPECT_TRUE(ISettingsPainter::UnregisterPainterCreator("TestPainter"));
}

}  // namespace
