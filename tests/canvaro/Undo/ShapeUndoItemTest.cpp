#include "canvaro/Undo/ShapeUndoItem.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/shapes/LineInfo.h"
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

// Removing a shape is a change to save only when the shape was saved since it last appeared (a
// new item starts from a hidden baseline marked saved, so a shape never saved leaves nothing).
// Each case starts from a line (saved or not) and pushes unsaved states: 'm' moved, 's' moved and
// saved, 'h' moved and hidden; `saved` and `wasSaved` are IsSaved and WasSaved after each push
// ('-': not looked at).
TEST(ShapeUndoItemTest, RemovingAShapeIsUnsavedOnlyIfSavedSinceItLastAppeared) {
  struct Case {
    bool savedStart;
    std::string pushes, saved, wasSaved;
  };
  const Case cases[] = {
      {false, "mh", "-1", "0-"},     // never saved: the removal leaves nothing unsaved
      {false, "smh", "--0", "-11"},  // saved since it appeared: the removal is a change
      {true, "hmh", "0-1", "-0-"},   // saved before it was removed and shown again: no matter
      {false, "hh", "-1", "-0"},  // right after a removal: the newest state is the last appearance
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.pushes);
    const ShapeInfo a = c.savedStart ? Saved(Line(0)) : Line(0);
    ShapeUndoItem item(nullptr, a);
    double x = 0.1;
    for (std::size_t i = 0; i < c.pushes.size(); ++i) {
      const ShapeInfo moved = With(MovedTo(item.GetCurrentShape(), x += 0.1),
                                   [](ShapeInfoBase& s) { s.SetSaved(false); });
      const char op = c.pushes[i];
      item.Push(op == 's' ? Saved(moved) : op == 'h' ? Hidden(moved) : moved);
      if (c.saved[i] != '-') {
        EXPECT_EQ(item.IsSaved(), c.saved[i] == '1') << "push " << i;
      }
      if (c.wasSaved[i] != '-') {
        EXPECT_EQ(item.WasSaved(), c.wasSaved[i] == '1') << "push " << i;
      }
    }
    if (c.pushes == "mh") {
      EXPECT_FALSE(item.Get(1).GetInfo()->IsSaved()) << "only the removed state is marked";
    }
  }
}

// Undo and redo report the tool of the state left (undo) or reached (redo); each state keeps its
// own saved flag.
TEST(ShapeUndoItemTest, UndoAndRedoReportTheToolAndEachStateKeepsItsSavedFlag) {
  const ShapeInfo a = Line(0, 0.5, IToolsId::SHAPE_LINE);
  ShapeUndoItem item(nullptr, a);
  const ShapeInfo b =
      With(MovedTo(a, 0.8), [](ShapeInfoBase& s) { s.SetCurrentTool(IToolsId::SHAPE_ARROW); });
  item.Push(b);
  RecordingObserver observer;
  item.RegisterEventHandler(&observer);

  item.UndoImpl();  // from B (arrow tool) to A (line tool)
  EXPECT_TRUE(observer.shapes.at(0) == a);
  item.UndoImpl();  // to the baseline: the line tool is left
  EXPECT_FALSE(observer.shapes.back()->IsVisible());
  item.RedoImpl();  // to A: the line tool is reached
  item.RedoImpl();  // to B: the arrow tool is reached
  EXPECT_TRUE(observer.shapes.back() == b);
  EXPECT_THAT(observer.log, ElementsAre("shape 1", "save", "tool 1",    // undone to A
                                        "shape 1", "save", "tool 2",    // to the baseline
                                        "shape 2", "save", "tool 2",    // redone to A
                                        "shape 2", "save", "tool 1"));  // to B

  // Marking the state in force replaces its stored record rather than changing it.
  const ShapeInfo before = item.GetCurrentShape();
  item.SetSaved(true);
  EXPECT_TRUE(item.IsSaved());
  EXPECT_FALSE(before->IsSaved());
  EXPECT_EQ(item.GetItemCount(), 3u);
  item.UndoImpl();
  EXPECT_FALSE(item.IsSaved()) << "the earlier state keeps its own flag";
  item.RedoImpl();
  EXPECT_TRUE(item.IsSaved());
}

}  // namespace
