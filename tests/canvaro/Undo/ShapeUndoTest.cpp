// The shape set over a real frame storage and a real undo manager, observed as the host would
// observe it (through the manager).
#include "canvaro/Undo/ShapeUndo.h"

#include <functional>
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
using ::testing::ElementsAreArray;
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
  EXPECT_EQ(Current(0)->GetZValue(), kFirstZ);
  EXPECT_EQ(Current(1)->GetZValue(), kFirstZ + 1);
  EXPECT_EQ(shapes_.GetItem(1).GetMultiName(), "Item_00000001");
  EXPECT_EQ(line->GetIndex(), -1) << "the caller's record is not touched";

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

// Each edit in turn: the steps of the document and the states of shape 0 it leaves, and the
// events the host gets (what the shapes then show is the randomized session's to check).
TEST_F(ShapeUndoTest, EachEditIsOneStepWithItsEvents) {
  shapes_.SetShape(NewLine(), nullptr);
  ASSERT_EQ(observer_.shapes.size(), 1u);
  EXPECT_TRUE(observer_.shapes[0] == Current(0));
  struct Edit {
    const char* what;
    std::function<void()> run;
    unsigned steps, states;
    std::vector<std::string> log;
  };
  const std::vector<std::string> step = {"undo", "shape 3", "save"};
  const Edit edits[] = {
      {"unchanged", [&] { shapes_.SetShape(Current(0), nullptr); }, 1, 2, {}},
      {"moved", [&] { shapes_.SetShape(MovedTo(Current(0), 0.2), nullptr); }, 2, 3, step},
      {"unchanged with a picture", [&] { shapes_.SetShape(Current(0), Picture(1)); }, 3, 4, step},
      {"overwritten",
       [&] { shapes_.OverwriteShape(MovedTo(Current(0), 0.4)); },
       3,
       4,
       {"shape 3", "save"}},
      {"overwritten unchanged", [&] { shapes_.OverwriteShape(Current(0)); }, 3, 4, {}},
      {"a batch",
       [&] {
         shapes_.SetShapes({MovedTo(Current(0), 0.1), NewArrow(), NewText()});
       },
       4,
       5,
       {"undo", "save", "shape 3", "shape 3", "shape 3"}},
      {"the batch undone",
       [&] { manager_->Undo(); },
       4,
       5,
       {"undo", "save", "tool 0", "shape 1", "shape 1", "shape 1"}},
      {"lines removed",
       [&] { shapes_.RemoveShapeAll(ShapeType::Line); },
       4,
       5,
       {"undo", "save", "shape 3"}},
      {"no line left", [&] { shapes_.RemoveShapeAll(ShapeType::Line); }, 4, 5, {}},
  };
  for (const Edit& edit : edits) {
    SCOPED_TRACE(edit.what);
    observer_.log.clear();
    edit.run();
    EXPECT_EQ(manager_->GetStepCount(), edit.steps);
    EXPECT_EQ(shapes_.GetItem(0).GetItemCount(), edit.states);
    EXPECT_THAT(observer_.log, ElementsAreArray(edit.log));
  }
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

  // Overwriting the state in force keeps its picture, and leaves it unsaved.
  auto saved = MovedTo(Current(0), 0.4)->Clone();
  saved->SetSaved(true);
  shapes_.OverwriteShape(ShapeInfo(*saved));
  EXPECT_EQ(Current(0)->GetPosition().GetX(), 0.4);
  EXPECT_FALSE(Current(0)->IsSaved());
  EXPECT_EQ(shapes_.GetShapeItemVideoIndex(0, kCurrent), 1u);

  // A shape without any picture.
  shapes_.SetShape(NewLine(), nullptr);
  EXPECT_EQ(shapes_.GetShapeItemVideoIndex(1, kCurrent), kNoIndex);
  EXPECT_EQ(shapes_.GetShapeItemVideo(1, kCurrent), nullptr);
  EXPECT_EQ(shapes_.GetVideoInfo(1), Conf::FrameInfo{});

  // A shape with an index outside the set is refused.
  auto stranger = LineInfo::Create(IToolsId::SHAPE_LINE);
  stranger->SetIndex(2);
  EXPECT_THROW(shapes_.SetShape(ShapeInfo(*stranger), nullptr), CanvaroException);
  EXPECT_THROW(shapes_.OverwriteShape(ShapeInfo(*stranger)), CanvaroException);
}

TEST_F(ShapeUndoTest, RemoveShapeAllHidesTheVisibleShapesOfTheKindsInOneStep) {
  shapes_.SetShapes({NewLine(), NewArrow(), NewLine(), NewText()});
  shapes_.RemoveShapeAll(ShapeType::Text);
  shapes_.RemoveShapeAll(ShapeType::Line);
  EXPECT_EQ(manager_->GetStepCount(), 3u);
  EXPECT_EQ(shapes_.GetItem(3).GetItemCount(), 3u) << "the hidden text got no further state";
  EXPECT_EQ(Current(0)->GetCurrentToolID(), IToolsId::SHAPE_LINE) << "the tool is kept";

  // Counting by kind: hidden shapes are items, but not active ones.
  EXPECT_EQ(shapes_.GetShapeActiveItemCount(ShapeType::All), 1u);
  EXPECT_EQ(shapes_.GetShapeItemCount(ShapeType::Line), 2u);
  EXPECT_EQ(shapes_.GetShapeItemCount(ShapeType::Line | ShapeType::Text), 3u);
  EXPECT_EQ(shapes_.GetShapeActiveItemCount(ShapeType::Line | ShapeType::Arrow), 1u);
  EXPECT_EQ(shapes_.GetShapeItemCount(ShapeType::Ellipse), 0u);
  const auto lines = shapes_.GetShapeItems(ShapeType::Line);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1].GetImpl(), Current(2).GetImpl()) << "shared, not cloned";

  // The document's own removal can clear the tool too.
  {
    RAII::UndoTransactionGuard transaction(manager_->GetTransactionManager());
    shapes_.RemoveShapeAllImpl(ShapeType::Arrow, true);
  }
  EXPECT_FALSE(Current(1)->IsVisible());
  EXPECT_EQ(Current(1)->GetCurrentToolID(), IToolsId::NONE);
  EXPECT_EQ(manager_->GetStepCount(), 4u);
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
