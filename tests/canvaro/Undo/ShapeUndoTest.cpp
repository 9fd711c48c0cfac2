// The shape set over a real frame storage and a real undo manager, observed as the host would
// observe it (through the manager).
#include "canvaro/Undo/ShapeUndo.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/UndoManager.h"
#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/shapes/ArrowInfo.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/TextInfo.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/RecordingObserver.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::RecordingObserver;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double kFirstZ = 1073741723.5;
constexpr unsigned kCurrent = ICanvaroShape::kCurrentState;

ShapeInfo New(ShapeInfoBasePtr record, IToolsId::Value tool = IToolsId::SHAPE_LINE) {
  record->SetCurrentTool(tool);
  return ShapeInfo(*record);
}
ShapeInfo NewLine() { return New(LineInfo::Create(IToolsId::SHAPE_LINE)); }
ShapeInfo NewArrow() {
  return New(ArrowInfo::Create(IToolsId::SHAPE_ARROW), IToolsId::SHAPE_ARROW);
}
ShapeInfo NewText() { return New(TextInfo::Create(IToolsId::TEXT), IToolsId::TEXT); }

// A clone of `shape` moved to `x`, as the host edits a shape.
ShapeInfo MovedTo(const ShapeInfo& shape, double x) {
  auto clone = shape->Clone();
  clone->GetPosition().SetX(x);
  return ShapeInfo(*clone);
}

Proc::IDataVideoPtr Picture(unsigned seed) {
  return canvaro_test::MakePatternPicture(Proc::PixFmt::RGBA, {6, 4, 1, 1}, seed);
}

class ShapeUndoTest : public ::testing::Test {
 protected:
  ShapeUndoTest()
      : storage_(dir_.path(), [n = 0]() mutable { return "shape" + std::to_string(n++); }),
        manager_(UndoManager::Create(storage_)),
        shapes_(&storage_, manager_) {
    shapes_.RegisterEventHandler(manager_.get());
    manager_->GetTransactionManager().RegisterHandler(&observer_);
  }

  // The shape in force of item `item`.
  const ShapeInfo& Current(unsigned item) const { return shapes_.GetShapeItemInfo(item, kCurrent); }

  canvaro_test::TempDir dir_;
  FrameStorage storage_;
  IUndoManagerPtr manager_;
  ShapeUndo shapes_;
  RecordingObserver observer_;
};

// A new shape gets the next index and a z-value above the visible shapes inside the range; the
// middle of the range when there are none; the top of the range again, with an error, when it
// is used up.
TEST_F(ShapeUndoTest, ANewShapeGetsTheNextIndexAndAZValueAboveTheVisibleOnes) {
  canvaro_test::LogCapture log;
  const ShapeInfo line = NewLine();
  shapes_.SetShape(line, nullptr);
  shapes_.SetShape(NewArrow(), nullptr);
  EXPECT_EQ(Current(0)->GetIndex(), 0);
  EXPECT_EQ(Current(0)->GetZValue(), kFirstZ);
  EXPECT_EQ(Current(1)->GetIndex(), 1);
  EXPECT_EQ(Current(1)->GetZValue(), kFirstZ + 1);
  EXPECT_EQ(shapes_.GetItem(1).GetMultiName(), "Item_00000001");
  EXPECT_EQ(line->GetIndex(), -1) << "the caller's record is not touched";
  EXPECT_FALSE(Current(0)->IsSaved());

  shapes_.RemoveShapeAll(ShapeType::Arrow);  // the top shape goes
  shapes_.SetShape(NewText(), nullptr);
  EXPECT_EQ(Current(2)->GetZValue(), kFirstZ + 1) << "the removed arrow's value is reused";
  shapes_.RemoveShapeAll(ShapeType::All);
  EXPECT_EQ(shapes_.GenerateNewZValue(), kFirstZ) << "nothing visible: the middle again";

  // Visible shapes below the range do not count either.
  shapes_.SetShape(NewLine(), nullptr);
  auto lowered = Current(3)->Clone();
  lowered->SetZValue(50);
  shapes_.OverwriteShape(ShapeInfo(*lowered));
  EXPECT_EQ(shapes_.GenerateNewZValue(), kFirstZ);

  auto top = Current(3)->Clone();
  top->SetZValue(InfoTypeBase::ZValueMax - 1);
  shapes_.OverwriteShape(ShapeInfo(*top));
  shapes_.SetShape(NewLine(), nullptr);  // exactly the maximum is still fine
  EXPECT_EQ(Current(4)->GetZValue(), 2147483547.0);
  EXPECT_THAT(log.Messages(google::GLOG_ERROR), IsEmpty());
  shapes_.SetShape(NewLine(), nullptr);
  EXPECT_EQ(Current(5)->GetZValue(), 2147483547.0);
  EXPECT_THAT(log.Messages(google::GLOG_ERROR),
              ElementsAre("ZValue for new ShapeInfo item is greater than maximum allowed! Shape "
                          "items count is 5."));
}

TEST_F(ShapeUndoTest, EachEditIsAStepWithItsEvents) {
  shapes_.SetShape(NewLine(), nullptr);
  EXPECT_EQ(manager_->GetStepCount(), 1u);
  EXPECT_THAT(observer_.log, ElementsAre("undo", "shape 3", "save"));
  ASSERT_EQ(observer_.shapes.size(), 1u);
  EXPECT_TRUE(observer_.shapes[0] == Current(0));

  // Unchanged and without a picture: nothing at all.
  observer_.log.clear();
  shapes_.SetShape(Current(0), nullptr);
  EXPECT_EQ(manager_->GetStepCount(), 1u);
  EXPECT_EQ(shapes_.GetItem(0).GetItemCount(), 2u);
  EXPECT_THAT(observer_.log, IsEmpty());

  // A change: a new state of the same item.
  shapes_.SetShape(MovedTo(Current(0), 0.2), nullptr);
  EXPECT_EQ(manager_->GetStepCount(), 2u);
  EXPECT_EQ(shapes_.GetItemCount(), 1u);
  EXPECT_EQ(shapes_.GetItem(0).GetItemCount(), 3u);
  EXPECT_EQ(Current(0)->GetPosition().GetX(), 0.2);
  EXPECT_THAT(observer_.log, ElementsAre("undo", "shape 3", "save"));

  // Unchanged but with a picture: always a step.
  observer_.log.clear();
  shapes_.SetShape(Current(0), Picture(1));
  EXPECT_EQ(manager_->GetStepCount(), 3u);
  EXPECT_EQ(shapes_.GetItem(0).GetItemCount(), 4u);
  EXPECT_THAT(observer_.log, ElementsAre("undo", "shape 3", "save"));
}

TEST_F(ShapeUndoTest, PicturesBelongToTheirStateAndAreInheritedByLaterOnes) {
  const auto first = Picture(1);
  shapes_.SetShape(NewText(), first);
  EXPECT_EQ(shapes_.GetShapeItemVideoIndex(0, kCurrent), 0u);
  EXPECT_EQ(shapes_.GetShapeItemVideoIndex(0, 0), 0u) << "the baseline has it too";
  EXPECT_EQ(shapes_.GetShapeItemVideo(0, kCurrent), first);
  EXPECT_EQ(shapes_.GetVideoInfo(0), (Conf::FrameInfo{6, 4, 1, 1}));

  shapes_.SetShape(MovedTo(Current(0), 0.3), nullptr);
  EXPECT_EQ(shapes_.GetShapeItemVideoIndex(0, kCurrent), 0u) << "inherited";

  const auto second = Picture(2);
  shapes_.SetShape(Current(0), second);
  EXPECT_EQ(shapes_.GetShapeItemVideoIndex(0, kCurrent), 1u);
  EXPECT_EQ(shapes_.GetShapeItemVideo(0, 2), first);
  EXPECT_EQ(shapes_.GetShapeItemVideo(0, kCurrent), second);

  // A shape without any picture.
  shapes_.SetShape(NewLine(), nullptr);
  EXPECT_EQ(shapes_.GetShapeItemVideoIndex(1, kCurrent), kNoIndex);
  EXPECT_EQ(shapes_.GetShapeItemVideo(1, kCurrent), nullptr);
  EXPECT_EQ(shapes_.GetVideoInfo(1), Conf::FrameInfo{});
}

TEST_F(ShapeUndoTest, SetShapesIsOneStep) {
  shapes_.SetShape(NewLine(), nullptr);
  observer_.log.clear();

  shapes_.SetShapes({MovedTo(Current(0), 0.1), NewArrow(), NewText()});

  EXPECT_EQ(manager_->GetStepCount(), 2u);
  EXPECT_EQ(shapes_.GetItemCount(), 3u);
  EXPECT_EQ(Current(2)->GetIndex(), 2);
  EXPECT_EQ(Current(2)->GetZValue(), kFirstZ + 2);
  EXPECT_THAT(observer_.log, ElementsAre("undo", "save", "shape 3", "shape 3", "shape 3"));

  // What the undo shows is the randomized session's to check; here, its events.
  observer_.log.clear();
  manager_->Undo();
  EXPECT_THAT(observer_.log,
              ElementsAre("undo", "save", "tool 0", "shape 1", "shape 1", "shape 1"));
}

// A shape with an index outside the set is refused.
TEST_F(ShapeUndoTest, OverwriteReplacesTheStateInForceWithoutAStep) {
  auto stranger = LineInfo::Create(IToolsId::SHAPE_LINE);
  stranger->SetIndex(1);
  EXPECT_THROW(shapes_.SetShape(ShapeInfo(*stranger), nullptr), CanvaroException);
  shapes_.SetShape(NewLine(), Picture(1));
  EXPECT_THROW(shapes_.OverwriteShape(ShapeInfo(*stranger)), CanvaroException);
  auto saved = Current(0)->Clone();
  saved->SetSaved(true);
  shapes_.OverwriteShape(ShapeInfo(*saved));
  EXPECT_FALSE(Current(0)->IsSaved()) << "an overwritten state is unsaved";
  observer_.log.clear();

  shapes_.OverwriteShape(MovedTo(Current(0), 0.4));

  EXPECT_EQ(manager_->GetStepCount(), 1u);
  EXPECT_EQ(shapes_.GetItem(0).GetItemCount(), 2u);
  EXPECT_EQ(Current(0)->GetPosition().GetX(), 0.4);
  EXPECT_EQ(shapes_.GetShapeItemVideoIndex(0, kCurrent), 0u);
  EXPECT_THAT(observer_.log, ElementsAre("shape 3", "save"));

  observer_.log.clear();
  shapes_.OverwriteShape(Current(0));
  EXPECT_THAT(observer_.log, IsEmpty()) << "unchanged: nothing";
}

TEST_F(ShapeUndoTest, RemoveShapeAllHidesTheVisibleShapesOfTheKindsInOneStep) {
  shapes_.SetShapes({NewLine(), NewArrow(), NewLine(), NewText()});
  shapes_.RemoveShapeAll(ShapeType::Text);
  ASSERT_EQ(manager_->GetStepCount(), 2u);
  observer_.log.clear();

  shapes_.RemoveShapeAll(ShapeType::Line);

  EXPECT_EQ(manager_->GetStepCount(), 3u);
  EXPECT_EQ(shapes_.GetItem(3).GetItemCount(), 3u) << "the hidden text got no further state";
  EXPECT_EQ(Current(0)->GetCurrentToolID(), IToolsId::SHAPE_LINE) << "the tool is kept";
  EXPECT_THAT(observer_.log, ElementsAre("undo", "save", "shape 3", "shape 3"));

  observer_.log.clear();
  shapes_.RemoveShapeAll(ShapeType::Line);
  EXPECT_EQ(manager_->GetStepCount(), 3u) << "no visible line is left";
  EXPECT_THAT(observer_.log, IsEmpty());

  // Counting by kind: hidden shapes are items, but not active ones (which shapes show is the
  // randomized session's to check).
  EXPECT_EQ(shapes_.GetShapeActiveItemCount(ShapeType::All), 1u);
  EXPECT_EQ(shapes_.GetShapeItemCount(ShapeType::Line), 2u);
  EXPECT_EQ(shapes_.GetShapeItemCount(ShapeType::Line | ShapeType::Text), 3u);
  EXPECT_EQ(shapes_.GetShapeActiveItemCount(ShapeType::Line | ShapeType::Arrow), 1u);
  EXPECT_EQ(shapes_.GetShapeItemCount(ShapeType::Ellipse), 0u);
  const auto lines = shapes_.GetShapeItems(ShapeType::Line);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1].GetImpl(), Current(2).GetImpl()) << "shared, not cloned";

  // Undo brings the lines back together.
  manager_->Undo();
  EXPECT_EQ(shapes_.GetShapeActiveItemCount(ShapeType::Line), 2u);

  // The document's own removal can clear the tool too.
  {
    RAII::UndoTransactionGuard transaction(manager_->GetTransactionManager());
    shapes_.RemoveShapeAllImpl(ShapeType::Arrow, true);
  }
  EXPECT_FALSE(Current(1)->IsVisible());
  EXPECT_EQ(Current(1)->GetCurrentToolID(), IToolsId::NONE);
  EXPECT_EQ(manager_->GetStepCount(), 3u);
}

// Saving and unsaving go one item at a time (a removal's effect on the saved state: the items'
// table in ShapeUndoItemTest).
TEST_F(ShapeUndoTest, SetSavedChangesOneItemAtATime) {
  EXPECT_TRUE(shapes_.IsSaved()) << "an empty set";
  shapes_.SetShape(NewLine(), nullptr);
  shapes_.SetShape(NewArrow(), nullptr);
  shapes_.SetSaved(true);
  EXPECT_TRUE(Current(0)->IsSaved());
  EXPECT_FALSE(Current(1)->IsSaved());
  EXPECT_FALSE(shapes_.IsSaved());
  shapes_.SetSaved(true);
  EXPECT_TRUE(shapes_.IsSaved());
  shapes_.SetSaved(false);
  EXPECT_FALSE(Current(0)->IsSaved());
  EXPECT_TRUE(Current(1)->IsSaved());
}

}  // namespace
