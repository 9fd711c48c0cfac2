// Frames that a saved document names, and frames that an open transaction still needs, survive
// the edits that follow.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/IUndoManager.h"
#include "canvaro/Undo/ShapeUndo.h"
#include "canvaro/Undo/UndoManager.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/ShapeInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Pictures.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::PackedBytes;

class SavedFramesTest : public ::testing::Test {
 protected:
  Proc::IDataVideoPtr Picture(std::uint32_t seed) {
    return canvaro_test::MakePatternPicture(Proc::PixFmt::RGBA, {8, 6, 1, 1}, seed);
  }
  std::function<std::string()> Names() {
    return [this] { return "frame" + std::to_string(next_++) + ".raw"; };
  }

  canvaro_test::TempDir dir_;
  int next_ = 0;
};

// Reset and Truncate, even before the worker wrote the files, leave whole the files that a saved
// record names, in the storage that saved it and in one that loaded it.
TEST_F(SavedFramesTest, ResetAndTruncateKeepFilesThatASavedRecordNames) {
  FrameStorage storage(dir_.path(), Names());
  for (std::uint32_t i = 0; i < 4; ++i) storage.AddFrame(Picture(i));
  storage.Truncate(3);  // (files that no record names are deleted: FrameStorageTest)
  Core::Property record;
  storage.Serialize(Drevin::SerializerProperty::Create(record));
  const ioPath file0 = dir_ / storage.GetFileName(0);
  storage.Reset(0, Picture(10));
  storage.Truncate(2);
  storage.WaitForPendingSaves();
  EXPECT_TRUE(storage.GetFileName(0).empty()) << "the item forgets the file it no longer shows";

  FrameStorage reloaded(dir_.path(), Names());
  reloaded.Deserialize(Drevin::SerializerProperty::Create(std::as_const(record)));
  ASSERT_EQ(reloaded.GetCount(), 3u);
  for (std::uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(PackedBytes(*reloaded.GetFrame(i)), PackedBytes(*Picture(i))) << i;
  }
  reloaded.Reset(0, Picture(11));
  EXPECT_TRUE(file0.exists());
}

TEST_F(SavedFramesTest, ShapePictureInAnOpenTransactionSurvivesTheNextEdit) {
  FrameStorage storage(dir_.path(), Names());
  IUndoManagerPtr manager = UndoManager::Create(storage);
  ShapeUndo shapes(&storage, manager);
  shapes.SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_LINE)), Picture(1));  // frame 0

  {
    RAII::UndoTransactionGuard transaction(manager->GetTransactionManager());
    shapes.SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_LINE)), Picture(7));
    // The next edit truncates the history; the picture above belongs to the open step.
    shapes.SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_ARROW)), nullptr);
  }
  ASSERT_EQ(storage.GetCount(), 2u);
  ASSERT_EQ(shapes.GetShapeItemVideoIndex(1, 0xFFFFFFFF), 1u);
  EXPECT_EQ(PackedBytes(*shapes.GetShapeItemVideo(1, 0xFFFFFFFF)), PackedBytes(*Picture(7)));
}

}  // namespace
