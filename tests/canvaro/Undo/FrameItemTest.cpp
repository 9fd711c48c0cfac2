#include "canvaro/Undo/FrameItem.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using Canvaro::CanvaroException;
using Canvaro::FrameItem;
using canvaro_test::LogCapture;
using testing::ElementsAre;

class FrameItemTest : public testing::Test {
 protected:
  Proc::IDataVideoPtr Picture(unsigned seed = 1) {
    return canvaro_test::MakePatternPicture(Proc::PixFmt::RGBA, {5, 3, 1, 1}, seed);
  }
  bool OnDisk(const char* name) const { return (dir_ / name).exists(); }

  LogCapture log_{30};
  canvaro_test::TempDir dir_;
};

TEST_F(FrameItemTest, WalksThroughTheStatesOfASwap) {
  const auto picture = Picture();
  const std::string pixels = canvaro_test::PackedBytes(*picture);
  FrameItem item(dir_.path(), picture);
  EXPECT_EQ(item.GetInfo(), picture->GetFrameInfo());
  EXPECT_EQ(item.GetMemorySize(), picture->GetBufferSize());

  // In memory only -> queued for save.
  EXPECT_TRUE(item.CheckForSave("a.raw"));
  EXPECT_EQ(item.GetFileName(), ioPath("a.raw"));
  EXPECT_FALSE(OnDisk("a.raw"));
  // Queued: a second check declines with a warning.
  EXPECT_FALSE(item.CheckForSave("b.raw"));
  EXPECT_EQ(item.GetFileName(), ioPath("a.raw"));

  // Queued -> saved, swapped out.
  EXPECT_FALSE(item.Save());
  EXPECT_TRUE(OnDisk("a.raw"));
  EXPECT_EQ(item.GetMemorySize(), 0u);

  // Swapped out -> loaded back, keeping the file name.
  const auto loaded = item.Get();
  ASSERT_TRUE(loaded);
  EXPECT_EQ(canvaro_test::PackedBytes(*loaded), pixels);
  EXPECT_EQ(item.GetFileName(), ioPath("a.raw"));

  // Loaded back -> swapped out again without writing.
  EXPECT_FALSE(item.CheckForSave("c.raw"));
  EXPECT_EQ(item.GetMemorySize(), 0u);
  EXPECT_FALSE(OnDisk("c.raw"));

  EXPECT_THAT(log_.Messages(google::GLOG_WARNING),
              ElementsAre("Checking for saveb.raw: already queued for save as a.raw"));
}

TEST_F(FrameItemTest, ItemsWithoutPicturesHaveNothingToSaveOrLoad) {
  FrameItem empty(dir_.path(), nullptr);
  EXPECT_EQ(empty.GetInfo(), Conf::FrameInfo{});
  EXPECT_FALSE(empty.CheckForSave("x"));
  EXPECT_FALSE(empty.Save());
  empty.LoadFrame();
  EXPECT_FALSE(empty.Get());
  EXPECT_THAT(log_.Messages(google::GLOG_ERROR), ElementsAre("Frame is dead, nothing to save"));
}

TEST_F(FrameItemTest, ResetAfterQueueingWritesNothing) {
  FrameItem item(dir_.path(), Picture());
  ASSERT_TRUE(item.CheckForSave("q.raw"));
  const auto fresh = Picture(2);
  item.Reset(fresh);
  EXPECT_FALSE(item.Save());
  EXPECT_FALSE(OnDisk("q.raw"));
  EXPECT_EQ(item.Get(), fresh);
}

TEST_F(FrameItemTest, RecordHoldsNameAndGeometryAndBindsToTheSwapDirectory) {
  FrameItem item(dir_.path(),
                 canvaro_test::MakePatternPicture(Proc::PixFmt::RGBA, {5, 3, 4, 3}, 1));
  ASSERT_TRUE(item.CheckForSave("s.raw"));
  ASSERT_FALSE(item.Save());
  Core::Property tree;
  item.Serialize(Drevin::SerializerProperty::Create(tree));
  const auto reader = Drevin::SerializerProperty::Create(std::as_const(tree));

  // A full path in the record is reduced to its last component.
  auto writer = Drevin::SerializerProperty::Create(tree);
  writer->WriteString("FileName", "/elsewhere/deep/s.raw");
  FrameItem copy(dir_.path(), nullptr);
  copy.Deserialize(reader);
  EXPECT_EQ(copy.GetFileName(), ioPath("s.raw"));
  EXPECT_EQ(copy.GetInfo(), (Conf::FrameInfo{5, 3, 4, 3}));
  EXPECT_EQ(copy.GetMemorySize(), 0u);
  EXPECT_EQ(canvaro_test::PackedBytes(*copy.Get()).size(), 60u);

  writer->WriteString("FileName", "gone.raw");
  FrameItem missing(dir_.path(), nullptr);
  EXPECT_THROW(missing.Deserialize(reader), CanvaroException);
}

}  // namespace
