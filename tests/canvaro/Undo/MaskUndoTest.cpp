#include "canvaro/Undo/MaskUndo.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/settings/ICanvaroBrush.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Documents.h"
#include "support/Pictures.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::Mask;

// Odd sizes, so that rows end in the middle of a word.
constexpr std::int32_t kWidth = 61;
constexpr std::int32_t kHeight = 37;

// The mask as the test expects it, kept independently of the history: one byte per pixel, row
// after row, as PackedBytes gives a mask picture's.
struct Model {
  std::int32_t width = kWidth;
  std::int32_t height = kHeight;
  std::string bytes = std::string(width * height, '\0');

  char& at(std::int32_t x, std::int32_t y) { return bytes[y * width + x]; }
  // Paints `value` into the rectangle: every pixel, or a pattern that leaves some alone.
  Model Painted(const MaskInfo& rect, std::uint8_t value, bool solid = false) const {
    Model next = *this;
    for (std::int32_t y = std::max(rect.GetTop(), 0); y < std::min(rect.GetBottom(), height); ++y)
      for (std::int32_t x = std::max(rect.GetLeft(), 0); x < std::min(rect.GetRight(), width); ++x)
        if (solid || (x * 7 + y * 3) % 5 != 0) next.at(x, y) = static_cast<char>(value);
    return next;
  }
  std::uint64_t Count(std::uint8_t value) const {
    return static_cast<std::uint64_t>(
        std::count(bytes.begin(), bytes.end(), static_cast<char>(value)));
  }
  Proc::CropInfo Box() const {
    Proc::CropInfo box;
    for (std::int32_t y = 0; y < height; ++y)
      for (std::int32_t x = 0; x < width; ++x)
        if (bytes[y * width + x] != 0) box.Apart(x, y);
    return box;
  }
  Proc::IDataVideoPtr Picture() const {
    auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, {width, height, 1, 1});
    auto plane = picture->GetPlane(0);
    for (std::int32_t y = 0; y < height; ++y)
      std::memcpy(plane.GetOffsetPtr(0, y), &bytes[y * width], width);
    return picture;
  }
};

class MaskUndoTest : public ::testing::Test {
 protected:
  // Both threads log. With TZ unset, glibc rereads the time zone on every log line and swaps its
  // cached name under a lock ThreadSanitizer cannot see; a fixed TZ keeps that quiet.
  static void SetUpTestSuite() { ::setenv("TZ", "UTC", 0); }

  std::function<std::string()> Names() {
    return [this] { return "mask" + std::to_string(names_++); };
  }
  Proc::IDataVideoPtr Working(const MaskUndo& mask) const {
    return storage_->GetFrame(mask.Get(0).GetFrameIndex());
  }
  // The working mask, its counts and its box against a recount of `model`.
  void ExpectMask(const MaskUndo& mask, const Model& model, const std::string& where) {
    SCOPED_TRACE(where);
    const Proc::IDataVideoPtr working = Working(mask);
    if (model.Count(0) == model.bytes.size()) {
      EXPECT_EQ(working, nullptr) << "an unpainted mask stays in the storage";
    } else {
      ASSERT_NE(working, nullptr);
      EXPECT_TRUE(canvaro_test::PackedBytes(*working) == model.bytes) << "pixels differ";
    }
    EXPECT_EQ(mask.GetPixelCount({}), model.bytes.size() - model.Count(0));
    for (std::uint8_t value : {7, 90, 200})
      EXPECT_EQ(mask.GetPixelCount({value}), model.Count(value)) << "value " << int(value);
    EXPECT_EQ(mask.GetCropInfo(), model.Box());
  }

  canvaro_test::TempDir dir_;
  int names_ = 0;
  std::unique_ptr<FrameStorage> storage_ = std::make_unique<FrameStorage>(dir_.path(), Names());
};

// A history of four strokes over a painted start, with its expected masks.
struct Strokes {
  std::unique_ptr<MaskUndo> mask;
  std::vector<Model> states;
  std::vector<MaskInfo> infos;
};

// `scale` multiplies the mask's size and every rectangle.
Strokes PaintStrokes(FrameStorage& storage, std::int32_t scale = 1) {
  const auto Scaled = [scale](std::int32_t left, std::int32_t right, std::int32_t top,
                              std::int32_t bottom) {
    return Mask(left * scale, right * scale, top * scale, bottom * scale);
  };
  Strokes s;
  const Model blank{kWidth * scale, kHeight * scale};
  s.states.push_back(blank.Painted(Scaled(10, 30, 5, 20), ICanvaroBrush::INDEX_DEFAULT));
  s.infos.push_back(Scaled(0, kWidth, 0, kHeight));
  s.mask = std::make_unique<MaskUndo>(&storage, blank.width, blank.height, s.states[0].Picture(),
                                      s.infos[0]);
  struct Stroke {
    MaskInfo info;
    std::uint8_t value;
    bool solid;
  };
  const Stroke strokes[] = {
      {Scaled(20, 45, 10, 30), 7, true},   // overlaps the start
      {Scaled(50, 80, -5, 9), 200, true},  // reaches past the right and top edges
      {Scaled(0, 40, 0, 37), 0, false},    // an eraser: the box shrinks
      {Scaled(3, 11, 30, 37), 90, false},  // the bottom-left corner
  };
  for (const auto& [info, value, solid] : strokes) {
    s.states.push_back(s.states.back().Painted(info, value, solid));
    s.infos.push_back(info);
    EXPECT_TRUE(s.mask->PushMask(info, s.states.back().Picture()));
  }
  return s;
}

// Scale 7 makes rows of several 64-byte blocks, and more rows than the counts batch per column.
class MaskUndoScales : public MaskUndoTest, public ::testing::WithParamInterface<std::int32_t> {};

TEST_P(MaskUndoScales, StrokesUndoAndRedoInAnyOrder) {
  const Strokes s = PaintStrokes(*storage_, GetParam());
  MaskUndo& mask = *s.mask;
  ASSERT_EQ(mask.GetItemCount(), 5u);
  ExpectMask(mask, s.states[4], "after the strokes");

  std::mt19937 random(42);
  for (int step = 0; step < 120; ++step) {
    const bool undo = random() % 2 == 0;
    const Index before = mask.GetCurrentIndexImpl();
    undo ? mask.UndoImpl() : mask.RedoImpl();
    const Index now = mask.GetCurrentIndexImpl();
    EXPECT_EQ(now, undo ? std::max<Index>(before, 1) - 1 : std::min<Index>(before + 1, 4));
    ExpectMask(mask, s.states[now], "step " + std::to_string(step));
    EXPECT_EQ(mask.GetInfo().GetLeft(), s.infos[now].GetLeft());
    EXPECT_EQ(mask.GetInfo().GetBottom(), s.infos[now].GetBottom());
    // Now and then every picture goes to disk, the working mask included, and comes back;
    // sometimes the next step runs while the worker is still writing.
    if (step % 9 == 0) {
      storage_->SwapExcept({});
      storage_->WaitForPendingSaves();
    } else if (step % 7 == 3) {
      storage_->SwapExcept({});
    }
  }

  // A stroke made two steps back from the end drops the redo tail and its pictures. It erases
  // everything: an unpainted mask is not stored at all.
  while (mask.IsRedoEnabledImpl()) mask.RedoImpl();
  mask.UndoImpl();
  mask.UndoImpl();
  const Index tail3 = mask.Get(3).GetFrameIndex();
  const Index tail4 = mask.Get(4).GetFrameIndex();
  const Model blank{s.states[0].width, s.states[0].height};
  ASSERT_TRUE(mask.PushMask(Mask(0, blank.width, 0, blank.height), blank.Picture()));
  EXPECT_EQ(mask.GetItemCount(), 4u);
  EXPECT_FALSE(mask.IsRedoEnabledImpl());
  EXPECT_EQ(storage_->GetFrame(tail3), nullptr);
  EXPECT_EQ(storage_->GetFrame(tail4), nullptr);
  ExpectMask(mask, blank, "erased");
  mask.UndoImpl();
  ExpectMask(mask, s.states[2], "erase undone");
  mask.RedoImpl();

  // A bar at the left edge, painted on the dropped mask: its right side ends inside a block of
  // 64 bytes, and at scale 7 each of its columns holds 256 painted pixels, more than a batch of
  // counts.
  const Model bar = blank.Painted(Mask(0, 40, 1, 257), 90, true);
  ASSERT_TRUE(mask.PushMask(Mask(0, blank.width, 0, blank.height), bar.Picture()));
  ExpectMask(mask, bar, "bar");

  // A recount on demand finds the same, whatever rectangle it is given.
  mask.CheckInfo(Mask(0, 1, 0, 1));
  EXPECT_EQ(mask.GetInfo().GetRight(), 1);
  ExpectMask(mask, bar, "recounted");
}

INSTANTIATE_TEST_SUITE_P(Sizes, MaskUndoScales, ::testing::Values(1, 7));

// Strokes over empty rectangles are refused quietly, bad pictures with an exception; neither
// changes anything, and an empty history takes no strokes.
TEST_F(MaskUndoTest, RefusedStrokesChangeNothing) {
  const Strokes s = PaintStrokes(*storage_);
  MaskUndo& mask = *s.mask;
  const Model other = s.states[4].Painted(Mask(0, 10, 0, 10), 7);
  EXPECT_FALSE(mask.PushMask(Mask(5, 5, 0, 10), other.Picture()));    // no width
  EXPECT_FALSE(mask.PushMask(Mask(0, 10, 8, 3), other.Picture()));    // negative height
  EXPECT_FALSE(mask.PushMask(Mask(70, 90, 0, 10), other.Picture()));  // beside the mask
  EXPECT_FALSE(mask.PushMask(Mask(5, 5, 0, 10), nullptr));
  const auto rgba = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {kWidth, kHeight, 1, 1});
  EXPECT_THROW(mask.PushMask(Mask(0, 5, 0, 5), rgba), CanvaroException);
  const auto small = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, {kWidth - 1, kHeight, 1, 1});
  EXPECT_THROW(mask.PushMask(Mask(0, 5, 0, 5), small), CanvaroException);
  EXPECT_THROW(mask.PushMask(Mask(0, 5, 0, 5), Working(mask)), CanvaroException);
  EXPECT_THROW(MaskUndo(storage_.get(), kWidth, kHeight, rgba, Mask(0, 5, 0, 5)), CanvaroException);
  EXPECT_EQ(mask.GetItemCount(), 5u);
  ExpectMask(mask, s.states[4], "unchanged");

  MaskUndo empty(storage_.get());
  EXPECT_FALSE(empty.PushMask(Mask(0, 5, 0, 5), other.Picture()));
  empty.UndoImpl();
  empty.RedoImpl();
  EXPECT_EQ(empty.GetItemCount(), 0u);
  EXPECT_EQ(empty.GetPixelCount({}), 0u);
  // Nor is an unpainted mask stored when a history starts from one.
  MaskUndo blank(storage_.get(), kWidth, kHeight, Model().Picture(), Mask(0, kWidth, 0, kHeight));
  ExpectMask(blank, Model(), "blank start");
}

TEST_F(MaskUndoTest, CopyDuplicatesTheHistoryUpToItsCurrentItem) {
  const Strokes s = PaintStrokes(*storage_);
  MaskUndo& original = *s.mask;
  original.UndoImpl();
  original.SetSaved(true);

  MaskUndo copy(storage_.get(), kWidth, kHeight, Model().Painted(Mask(0, 3, 0, 3), 7).Picture(),
                Mask(0, 3, 0, 3));
  copy.CopyFrom(original);
  ASSERT_EQ(copy.GetItemCount(), 4u);
  EXPECT_EQ(copy.GetCurrentIndexImpl(), 3u);
  EXPECT_TRUE(copy.IsSaved());
  EXPECT_EQ(copy.GetInfo().GetRight(), s.infos[3].GetRight());
  for (Index i = 0; i < 4; ++i)
    EXPECT_NE(copy.Get(i).GetFrameIndex(), original.Get(i).GetFrameIndex());
  ExpectMask(copy, s.states[3], "copy");

  // The two histories no longer share pixels.
  copy.UndoImpl();
  copy.UndoImpl();
  ExpectMask(copy, s.states[1], "copy undone twice");
  ExpectMask(original, s.states[3], "original untouched");
  original.RedoImpl();
  ExpectMask(original, s.states[4], "original redone");

  // Copying itself drops the redo tail; an empty history copies as empty.
  copy.CopyFrom(copy);
  EXPECT_EQ(copy.GetItemCount(), 2u);
  ExpectMask(copy, s.states[1], "self copy");
  copy.UndoImpl();
  ExpectMask(copy, s.states[0], "self copy undone");
  copy.CopyFrom(MaskUndo(storage_.get()));
  EXPECT_EQ(copy.GetItemCount(), 0u);
}

TEST_F(MaskUndoTest, SavedHistoryLoadsIntoAFreshStorageAndStillUndoes) {
  Strokes s = PaintStrokes(*storage_);
  s.mask->UndoImpl();  // the redo tail is saved too
  s.mask->SetSaved(true);

  Core::Property tree;
  s.mask->Serialize(Drevin::SerializerProperty::Create(tree));
  storage_->WaitForPendingSaves();
  s.mask.reset();
  storage_ = std::make_unique<FrameStorage>(dir_.path(), Names());
  storage_->AddFrame(nullptr);  // indices in the new storage differ from the saved ones

  MaskUndo loaded(storage_.get());
  loaded.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  ASSERT_EQ(loaded.GetItemCount(), 5u);
  EXPECT_EQ(loaded.GetCurrentIndexImpl(), 3u);
  EXPECT_TRUE(loaded.IsSaved());
  EXPECT_EQ(loaded.GetInfo().GetTop(), s.infos[3].GetTop());
  EXPECT_EQ(loaded.GetPixelCount({7}), s.states[3].Count(7));
  EXPECT_EQ(canvaro_test::PackedBytes(*Working(loaded)), s.states[3].bytes);
  loaded.UndoImpl();
  ExpectMask(loaded, s.states[2], "loaded, undone");
  loaded.RedoImpl();
  loaded.RedoImpl();
  ExpectMask(loaded, s.states[4], "loaded, redone");
}

}  // namespace
