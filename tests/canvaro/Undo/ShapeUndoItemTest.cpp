#include "canvaro/Undo/ShapeUndoItem.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/shapes/ArrowInfo.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/TextInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/RecordingObserver.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::RecordingObserver;
using ::testing::ElementsAre;

ShapeInfo Line(std::int32_t index, double x = 0.5, IToolsId::Value tool = IToolsId::SHAPE_LINE) {
  auto line = LineInfo::Create(IToolsId::SHAPE_LINE);
  line->SetIndex(index);
  line->GetPosition().SetX(x);
  line->SetCurrentTool(tool);
  return ShapeInfo(*line);
}

// A new state of `shape` with a change applied, as the shape set makes them.
template <class Edit>
ShapeInfo With(const ShapeInfo& shape, Edit edit) {
  auto clone = shape->Clone();
  edit(*clone);
  return ShapeInfo(*clone);
}
ShapeInfo Hidden(const ShapeInfo& shape) {
  return With(shape, [](ShapeInfoBase& s) { s.Remove(false); });
}
ShapeInfo Saved(const ShapeInfo& shape) {
  return With(shape, [](ShapeInfoBase& s) { s.SetSaved(true); });
}
ShapeInfo MovedTo(const ShapeInfo& shape, double x) {
  return With(shape, [x](ShapeInfoBase& s) { s.GetPosition().SetX(x); });
}

TEST(ShapeUndoItemTest, ANewItemHoldsAHiddenSavedBaselineAndTheShape) {
  const ShapeInfo line = Line(12);
  ShapeUndoItem item(nullptr, line);

  EXPECT_EQ(item.GetMultiName(), "Item_00000012");
  EXPECT_EQ(ShapeUndoItem::MakeName(3), "Item_00000003");
  ASSERT_EQ(item.GetItemCount(), 2u);
  EXPECT_EQ(item.GetCurrentIndexImpl(), 1u);
  EXPECT_TRUE(item.GetCurrentShape() == line);
  EXPECT_TRUE(item.IsVisible());
  EXPECT_FALSE(item.IsSaved());

  const ShapeInfo& baseline = item.Get(0).GetInfo();
  EXPECT_FALSE(baseline->IsVisible());
  EXPECT_TRUE(baseline->IsSaved());
  EXPECT_EQ(baseline->GetIndex(), 12);
  EXPECT_NE(baseline.GetImpl(), line.GetImpl());
  EXPECT_TRUE(line->IsVisible()) << "the caller's record is not touched";
  EXPECT_EQ(item.Get(0).GetFrameIndex(), kNoIndex);
}

TEST(ShapeUndoItemTest, RemovingAShapeThatWasNeverSavedLeavesNothingUnsaved) {
  const ShapeInfo line = Line(0);
  ShapeUndoItem item(nullptr, line);
  item.Push(MovedTo(line, 0.1));
  EXPECT_FALSE(item.WasSaved());

  item.Push(Hidden(item.GetCurrentShape()));

  EXPECT_FALSE(item.IsVisible());
  EXPECT_TRUE(item.IsSaved());
  EXPECT_FALSE(item.Get(1).GetInfo()->IsSaved()) << "only the removed state is marked";
}

TEST(ShapeUndoItemTest, RemovingAShapeWithASavedStateSinceItAppearedStaysUnsaved) {
  // [hidden-saved, A, B (saved), C] and then a hidden D: B counts, so D stays unsaved.
  const ShapeInfo a = Line(0);
  ShapeUndoItem item(nullptr, a);
  item.Push(Saved(MovedTo(a, 0.2)));
  item.Push(MovedTo(a, 0.3));
  EXPECT_TRUE(item.WasSaved());

  item.Push(Hidden(item.GetCurrentShape()));

  EXPECT_TRUE(item.WasSaved());
  EXPECT_FALSE(item.IsSaved());
}

TEST(ShapeUndoItemTest, OnlySavesSinceTheShapeLastAppearedCount) {
  // [hidden-saved, A (saved), hidden, B]: A was saved, but before the shape was removed and
  // shown again, so removing B leaves nothing unsaved.
  const ShapeInfo a = Line(0);
  ShapeUndoItem item(nullptr, Saved(a));
  item.Push(Hidden(a));
  EXPECT_FALSE(item.IsSaved()) << "A was saved visible: removing it is a change to save";
  item.Push(MovedTo(a, 0.7));
  EXPECT_FALSE(item.WasSaved());

  item.Push(Hidden(item.GetCurrentShape()));

  EXPECT_TRUE(item.IsSaved());
}

TEST(ShapeUndoItemTest, AStateRightAfterARemovalHasNoSavesBeforeIt) {
  ShapeUndoItem item(nullptr, Line(0));
  item.Push(Hidden(Line(0)));
  item.Push(Hidden(MovedTo(Line(0), 0.1)));  // the last appearance is the newest state itself
  EXPECT_FALSE(item.WasSaved());
  EXPECT_TRUE(item.IsSaved());
}

TEST(ShapeUndoItemTest, SetSavedMarksTheStateInForceOnly) {
  const ShapeInfo a = Line(0);
  ShapeUndoItem item(nullptr, a);
  item.Push(MovedTo(a, 0.9));
  const ShapeInfo before = item.GetCurrentShape();

  item.SetSaved(true);

  EXPECT_TRUE(item.IsSaved());
  EXPECT_FALSE(before->IsSaved()) << "stored records are replaced, not changed";
  EXPECT_EQ(item.GetItemCount(), 3u);
  item.UndoImpl();
  EXPECT_FALSE(item.IsSaved()) << "the earlier state keeps its own flag";
  item.RedoImpl();
  EXPECT_TRUE(item.IsSaved());
  item.SetSaved(false);
  EXPECT_FALSE(item.IsSaved());
}

TEST(ShapeUndoItemTest, UndoReportsTheToolLeftAndRedoTheToolReached) {
  const ShapeInfo a = Line(0, 0.5, IToolsId::SHAPE_LINE);
  ShapeUndoItem item(nullptr, a);
  const ShapeInfo b =
      With(MovedTo(a, 0.8), [](ShapeInfoBase& s) { s.SetCurrentTool(IToolsId::SHAPE_ARROW); });
  item.Push(b);
  RecordingObserver observer;
  item.RegisterEventHandler(&observer);

  item.UndoImpl();  // from B (arrow tool) to A (line tool)
  EXPECT_THAT(observer.log, ElementsAre("shape 1", "save", "tool 1"));
  ASSERT_EQ(observer.shapes.size(), 1u);
  EXPECT_TRUE(observer.shapes[0] == a);

  observer.log.clear();
  item.UndoImpl();  // to the baseline: the line tool is left
  EXPECT_THAT(observer.log, ElementsAre("shape 1", "save", "tool 2"));
  EXPECT_FALSE(observer.shapes.back()->IsVisible());

  observer.log.clear();
  item.RedoImpl();  // to A: the line tool is reached
  item.RedoImpl();  // to B: the arrow tool is reached
  EXPECT_THAT(observer.log, ElementsAre("shape 2", "save", "tool 2", "shape 2", "save", "tool 1"));
  EXPECT_TRUE(observer.shapes.back() == b);

  // The participant operations of the step list do the same.
  observer.log.clear();
  item.MultiUndo();
  item.MultiRedo();
  EXPECT_THAT(observer.log, ElementsAre("shape 1", "save", "tool 1", "shape 2", "save", "tool 1"));
}

TEST(ShapeUndoItemTest, AShapeWithoutToolReportsNone) {
  ShapeUndoItem item(nullptr, Line(0, 0.5, IToolsId::NONE));
  RecordingObserver observer;
  item.RegisterEventHandler(&observer);
  item.UndoImpl();
  EXPECT_THAT(observer.log, ElementsAre("shape 1", "save", "tool -1"));
}

TEST(ShapeUndoItemTest, SavesAndLoadsItsStatesWithTheirKindsAndFrames) {
  auto text = TextInfo::Create(IToolsId::TEXT);
  text->SetIndex(4);
  ShapeUndoItem item(nullptr, ShapeInfo(*text));
  item.Get(1).SetFrameIndex(7);
  auto arrowRecord = ArrowInfo::Create(IToolsId::SHAPE_ARROW);  // an item keeps whatever kind
  arrowRecord->SetIndex(4);
  item.Push(Saved(ShapeInfo(*arrowRecord)));
  item.UndoImpl();

  struct Holder : Drevin::ISerializableBase {
    explicit Holder(const ShapeUndoItem& i) : item(i) {}
    void Serialize(const Drevin::ISerializerPtr& s) const override { s->WriteObject("Data", item); }
    const ShapeUndoItem& item;
  } holder(item);
  Core::Property tree;
  holder.Serialize(Drevin::SerializerProperty::Create(tree));
  const Core::Property read =
      Core::PropertySerializer::FromString(Core::PropertySerializer::ToString(tree));

  ShapeUndoItem loaded(nullptr, std::string("Item_00000004"));
  EXPECT_TRUE(loaded.IsSaved()) << "an empty item has nothing unsaved";
  EXPECT_FALSE(loaded.IsVisible());
  Drevin::SerializerProperty::Create(read)->ReadObject("Data", loaded);

  EXPECT_EQ(loaded.GetMultiName(), "Item_00000004");
  ASSERT_EQ(loaded.GetItemCount(), 3u);
  EXPECT_EQ(loaded.GetCurrentIndexImpl(), 1u);
  for (Index i = 0; i < 3; ++i) {
    EXPECT_TRUE(loaded.Get(i).GetInfo() == item.Get(i).GetInfo()) << i;
    EXPECT_EQ(loaded.Get(i).GetFrameIndex(), item.Get(i).GetFrameIndex()) << i;
  }
  EXPECT_EQ(loaded.Get(2).GetInfo().GetClassId(), "ArrowInfo");
  EXPECT_TRUE(loaded.Get(2).GetInfo()->IsSaved());
  EXPECT_EQ(loaded.GetLastActiveFrameIndex(), 7u);
}

}  // namespace
