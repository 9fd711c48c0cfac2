// The document driven as a host drives it: pictures, mask strokes and shapes as steps, undo and
// redo across them, and the events each delivers to a registered observer. Then the document
// saved to its text form and loaded into a fresh document on the same swap directory (the
// randomized session compares loaded documents step by step): the keys of the text form, saves
// without a step list, what needs the host's creators.
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/Undo/IUndoManager.h"
#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/ToolsId.h"
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
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr unsigned kCurrent = ICanvaroUndo::kCurrentItem;

// A painter that also says which tool painted with it, as a host's brush does.
class ToolPainter : public TestPainter, public ToolsId {
 public:
  explicit ToolPainter(IToolsId::Value tool) : TestPainter(4), ToolsId(tool) {}
  void Serialize(const Drevin::ISerializerPtr& s) const override { TestPainter::Serialize(s); }
  void Deserialize(const Drevin::ISerializerConstPtr& s) override { TestPainter::Deserialize(s); }
};

ShapeInfo Line(double x = 0.25) {
  auto line = LineInfo::Create(IToolsId::SHAPE_LINE);
  line->GetPosition().SetX(x);
  return ShapeInfo(*line);
}

ShapeInfo Rectangle() { return ShapeInfo(*RectangleInfo::Create(IToolsId::SHAPE_FRAME)); }

// The first stroke: brush 90 over [1, 4) x [1, 3); the second adds brush 7 over [5, 7) x [2, 5).
Proc::IDataVideoPtr FirstStroke() { return MaskPicture(1, 4, 1, 3, 90); }
Proc::IDataVideoPtr BothStrokes() { return Painted(FirstStroke(), 5, 7, 2, 5, 7); }

class CanvaroUndoTest : public DocumentTest {
 protected:
  // The source picture and a second step, as every session starts.
  void TwoSteps() {
    doc->Add(Settings("Source"), Picture(1), nullptr, NoMask());
    doc->Add(Settings("Brush"), Picture(2), nullptr, NoMask());
    observer.log.clear();
  }

  // Three items, two strokes on the second, a shape with a picture, a second shape and a
  // removal; every step has settings without effects and strokes without painters.
  void Edit() {
    doc->Add(Settings("Source", 0), Picture(1), nullptr, NoMask());
    doc->Add(Settings("Brush", 1), Picture(2, 6, 4), MaskPicture(0, 2, 0, 2, 90, 6, 4),
             Mask(0, 2, 0, 2));
    const auto firstStroke = MaskPicture(0, 4, 0, 3, 90, 6, 4);
    doc->AddMask(firstStroke, Mask(0, 4, 0, 3));
    doc->SetShape(Line(), Picture(9, 2, 2));
    doc->AddMask(Painted(firstStroke, 2, 6, 1, 4, 7), Mask(2, 6, 1, 4));
    doc->SetShape(Rectangle(), nullptr);
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

TEST_F(CanvaroUndoTest, FirstAddTellsOnlyOfTheStepAndTheSecondPublishesInOrder) {
  doc->Add(Settings("Source"), Picture(1), nullptr, NoMask());
  // The manager announces its new step; the document itself says nothing of the source.
  EXPECT_THAT(observer.log, ElementsAre("undo"));

  doc->SetShape(Line(), nullptr);
  doc->SetShape(Rectangle(), nullptr);
  observer.log.clear();
  observer.shapes.clear();

  doc->Add(Settings("Blur"), Picture(2), nullptr, NoMask());
  EXPECT_THAT(observer.log, ElementsAre("undo", "frame 3", "shape 3", "shape 3", "save"));
  ASSERT_EQ(observer.shapes.size(), 2u);
  EXPECT_EQ(observer.shapes[0]->GetShapeType(), ShapeType::Line);
  EXPECT_EQ(observer.shapes[1]->GetShapeType(), ShapeType::Rectangle);
  EXPECT_EQ(Pixels(doc->GetSourceVideo()), Pixels(Picture(1)));

  // Set replaces the step in force without a step of its own.
  observer.log.clear();
  doc->Set(Settings("Cropped"), Picture(5, 4, 4), nullptr, NoMask());
  EXPECT_EQ(doc->GetVideoInfo(kCurrent), (Conf::FrameInfo{4, 4, 1, 1}));
  EXPECT_THAT(observer.log, ElementsAre("frame 3", "shape 3", "shape 3", "save"));
}

TEST_F(CanvaroUndoTest, CallsThatNeedAStepFailClearlyOnAnEmptyDocument) {
  EXPECT_EQ(doc->GetCurrentIndex(), kCurrent);
  EXPECT_EQ(doc->GetVideoCount(), 0u);
  EXPECT_THAT(doc->GetUsedFrameIndexList(), IsEmpty());
  EXPECT_EQ(doc->GetPackageIndex(""), kCurrent);
  EXPECT_THROW(doc->Set(Settings("x"), Picture(1), nullptr, NoMask()), CanvaroException);
  EXPECT_THROW(doc->AddMask(FirstStroke(), Mask(1, 4, 1, 3)), CanvaroException);
  EXPECT_THROW(doc->GetSourceVideo(), CanvaroException);
  EXPECT_EQ(Steps(), 0u);
  EXPECT_THAT(observer.log, IsEmpty());
}

TEST_F(CanvaroUndoTest, MaskStrokesAreStepsUndoneBeforeTheItemUnderThem) {
  TwoSteps();
  const ISettingsPainter::ConstPtr marker(new ToolPainter(IToolsId::SHAPE_MARKER));
  const ISettingsPainter::ConstPtr text(new ToolPainter(IToolsId::TEXT));

  doc->AddMask(FirstStroke(), Mask(1, 4, 1, 3, marker));
  EXPECT_THAT(observer.log, ElementsAre("undo", "frame 3", "save"));
  doc->AddMask(BothStrokes(), Mask(5, 7, 2, 5, text));
  EXPECT_EQ(doc->GetMaskInfo(kCurrent).GetLeft(), 5);

  // A stroke over an empty rectangle is refused: no event.
  observer.log.clear();
  doc->AddMask(BothStrokes(), Mask(3, 3, 0, 6));
  EXPECT_THAT(observer.log, IsEmpty());

  // Undo takes the strokes back first, naming the tool of the stroke undone.
  doc->Undo();
  EXPECT_THAT(observer.log, ElementsAre("undo", "save", "tool 0", "frame 1"));
  doc->Undo();

  // Then the item itself.
  observer.log.clear();
  doc->Undo();
  EXPECT_THAT(observer.log, ElementsAre("undo", "save", "tool -1", "frame 1"));

  // Redo replays item, then strokes, naming the tool of the stroke redone.
  doc->Redo();
  doc->Redo();
  observer.log.clear();
  doc->Redo();
  EXPECT_THAT(observer.log, ElementsAre("undo", "save", "tool 0", "frame 2"));
  EXPECT_EQ(doc->GetCurrentMaskIndex(), 2u);
}

TEST_F(CanvaroUndoTest, ShapesAndEffectsInOneTransactionAreOneStep) {
  doc->Add(Settings("Source"), Picture(1), nullptr, NoMask());
  observer.log.clear();
  {
    RAII::UndoTransactionGuard guard(doc->GetTransactionManager());
    doc->Add(SettingsCore(TestEffect::Make("Blur", 3)), Picture(2), nullptr, NoMask());
    doc->SetShape(Line(), nullptr);
    EXPECT_THAT(observer.log, IsEmpty());
  }
  EXPECT_THAT(observer.log, ElementsAre("undo", "save", "frame 3", "shape 3"));

  doc->Undo();
  EXPECT_TRUE(doc->GetSettings(kCurrent).GetEffectsSettings().EffectsConst().empty());

  doc->Redo();
  const auto effects = doc->GetSettings(kCurrent).GetEffectsSettings().EffectsConst();
  ASSERT_EQ(effects.size(), 1u);
  EXPECT_TRUE(effects[0]->IsEqual(*TestEffect::Make("Blur", 3)));
}

TEST_F(CanvaroUndoTest, AddAfterUndoDropsEveryRedoTailAndItsFrames) {
  doc->Add(Settings("Source"), Picture(1), nullptr, NoMask());
  const Index framesOfOneStep = doc->GetFrameStorage().GetCount();
  doc->Add(Settings("Brush"), Picture(2), nullptr, NoMask());
  doc->SetShape(Line(), Picture(9, 2, 2));
  const Index shapeFrame = doc->GetShapeItemVideoIndex(0, kCurrent);
  doc->AddMask(FirstStroke(), Mask(1, 4, 1, 3));
  ASSERT_GT(doc->GetFrameStorage().GetCount(), shapeFrame + 1);

  doc->Undo();
  doc->Undo();
  doc->Undo();
  doc->Add(Settings("Other"), Picture(3), nullptr, NoMask());

  // What the document shows after it is the randomized session's to check. The frames after the
  // shape's picture (the stroke's) are gone. The picture stays: the shape's hidden first state
  // still shows it (a fuzzer once found it dropped), and the storage drops only a tail.
  EXPECT_EQ(doc->GetFrameStorage().GetCount(), shapeFrame + 1 + framesOfOneStep);
  EXPECT_EQ(Pixels(doc->GetShapeItemVideo(0, kCurrent)), Pixels(Picture(9, 2, 2)));
}

TEST_F(CanvaroUndoTest, QueriesAnswerForTheItemInForceOrTheOneNamed) {
  doc->Add(Settings("Portrait", 4), Picture(1), nullptr, NoMask());
  doc->Add(Settings("Sketch"), Picture(2, 4, 2), nullptr, NoMask());
  doc->Add(Settings("Portrait", 4), Picture(3), nullptr, NoMask());

  const SettingsCore portrait = Settings("Portrait", 4);
  EXPECT_EQ(doc->GetSameSettingsIndex(portrait.GetEffectsSettings()), 2u);
  EXPECT_EQ(doc->GetSameSettingsIndex(Settings("Unknown").GetEffectsSettings()), kCurrent);
  EXPECT_EQ(doc->GetPackageIndex("Portrait"), 4u);
  EXPECT_EQ(doc->GetPackageIndex("portrait"), kCurrent);
  EXPECT_EQ(doc->GetVideoInfo(1), (Conf::FrameInfo{4, 2, 1, 1}));
  EXPECT_EQ(Pixels(doc->GetVideo(1)), Pixels(Picture(2, 4, 2)));

  doc->Undo();
  // The search starts at the item in force, not at the last one.
  EXPECT_EQ(doc->GetSameSettingsIndex(portrait.GetEffectsSettings()), 0u);
  EXPECT_EQ(doc->GetPackageIndex("Sketch"), kCurrent);  // its package index is -1
  EXPECT_EQ(doc->GetPackageIndex("Portrait"), kCurrent);

  const auto used = doc->GetUsedFrameIndexList();
  ASSERT_EQ(used.size(), 1u);
  EXPECT_EQ(Pixels(doc->GetFrameStorage().GetFrame(used[0])), Pixels(Picture(2, 4, 2)));
}

TEST_F(CanvaroUndoTest, SetSavedAlwaysTellsTheHostAndUnregisteredObserversHearNothing) {
  TwoSteps();
  doc->AddMask(FirstStroke(), Mask(1, 4, 1, 3));
  doc->SetShape(Line(), nullptr);
  observer.log.clear();

  doc->SetSaved(true);
  EXPECT_TRUE(doc->IsSaved());
  doc->SetSaved(true);
  EXPECT_THAT(observer.log, ElementsAre("save", "save"));

  // A changed shape leaves the document unsaved (that the shapes are marked one at a time is
  // ShapeUndoTest's to check).
  doc->SetShape(Line(0.3), nullptr);
  EXPECT_FALSE(doc->IsSaved());

  // The document hands its observers to the steps' event list: unregistering must reach it too.
  doc->UnregisterEventHandler(&observer);
  observer.log.clear();
  doc->Undo();
  EXPECT_THAT(observer.log, IsEmpty());
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

TEST_F(CanvaroUndoTest, TheTextFormHoldsEveryPartUnderItsKeys) {
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

TEST_F(CanvaroUndoTest, ASaveWithoutStepListGetsAStepPerItemAndStroke) {
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
TEST_F(CanvaroUndoTest, StepsWithEffectsAndPaintersLoadWithTheHostsCreators) {
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
