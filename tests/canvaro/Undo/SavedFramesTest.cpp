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

TEST_F(SavedFramesTest, ResetAndTruncateKeepFilesThatASavedRecordNames) {
  FrameStorage storage(dir_.path(), Names());
  for (std::uint32_t i = 0; i < 4; ++i) storage.AddFrame(Picture(i));
  storage.Truncate(3);  // (files that no record names are deleted: FrameStorageTest)
  Core::Property record;
  storage.Serialize(Drevin::SerializerProperty::Create(record));
  storage.WaitForPendingSaves();
  const ioPath file0 = dir_ / storage.GetFileName(0);
  const ioPath file2 = dir_ / storage.GetFileName(2);
  storage.Reset(0, Picture(10));
  storage.Truncate(2);
  EXPECT_TRUE(file0.exists());
  EXPECT_TRUE(file2.exists());
  EXPECT_TRUE(storage.GetFileName(0).empty()) << "the item forgets the file it no longer shows";

  // The saved record still loads in full, into a fresh storage.
  FrameStorage reloaded(dir_.path(), Names());
  reloaded.Deserialize(Drevin::SerializerProperty::Create(std::as_const(record)));
  ASSERT_EQ(reloaded.GetCount(), 3u);
  EXPECT_EQ(canvaro_test::PackedBytes(*reloaded.GetFrame(2)),
            canvaro_test::PackedBytes(*Picture(2)));
}

TEST_F(SavedFramesTest, ResetOfAFrameLoadedFromARecordKeepsItsFile) {
  Core::Property record;
  {
    FrameStorage storage(dir_.path(), Names());
    storage.AddFrame(Picture(1));
    storage.Serialize(Drevin::SerializerProperty::Create(record));
  }  // the destructor writes the queued file
  FrameStorage loaded(dir_.path(), Names());
  loaded.Deserialize(Drevin::SerializerProperty::Create(std::as_const(record)));
  const ioPath file = dir_ / loaded.GetFileName(0);
  loaded.Reset(0, Picture(2));
  EXPECT_TRUE(file.exists());
}

TEST_F(SavedFramesTest, ResetBeforeTheWorkerWroteAPublishedFileWritesItFirst) {
  FrameStorage storage(dir_.path(), Names());
  storage.AddFrame(Picture(5));
  Core::Property record;
  storage.Serialize(Drevin::SerializerProperty::Create(record));
  // Whether or not the worker got to it yet, the named file must end up holding frame 5.
  const ioPath file = dir_ / storage.GetFileName(0);
  storage.Reset(0, Picture(6));
  storage.WaitForPendingSaves();
  ASSERT_TRUE(file.exists());
  FrameStorage reloaded(dir_.path(), Names());
  reloaded.Deserialize(Drevin::SerializerProperty::Create(std::as_const(record)));
  EXPECT_EQ(canvaro_test::PackedBytes(*reloaded.GetFrame(0)),
            canvaro_test::PackedBytes(*Picture(5)));
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
  EXPECT_EQ(canvaro_test::PackedBytes(*shapes.GetShapeItemVideo(1, 0xFFFFFFFF)),
            canvaro_test::PackedBytes(*Picture(7)));
}

}  // namespace
