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
using Canvaro::CanvaroError;
using Canvaro::CanvaroException;
using Canvaro::FrameItem;
using Canvaro::TagCanvaroErrorCode;
using canvaro_test::LogCapture;
using testing::ElementsAre;
using testing::HasSubstr;

CanvaroError CodeOf(const boost::exception_ptr& error) {
  try {
    boost::rethrow_exception(error);
  } catch (const CanvaroException& e) {
    const CanvaroError* code = boost::get_error_info<TagCanvaroErrorCode>(e);
    return code ? *code : CanvaroError{};
  } catch (...) {
  }
  return CanvaroError{};
}

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

  EXPECT_THAT(log_.Messages(),
              ElementsAre("Checking for savea.raw: need save",
                          "Checking for saveb.raw: already queued for save as a.raw",
                          "Trying to save a.raw", "Saving a.raw done", "Trying to load a.raw",
                          "Loading a.raw done", "Checking for savec.raw: already saved as a.raw"));
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
  EXPECT_THAT(log_.Messages(),
              ElementsAre("Checking for savex: no frame", "Trying to save ",
                          "Frame is dead, nothing to save", "Trying to load nameless file"));
  EXPECT_THAT(log_.Messages(google::GLOG_ERROR), ElementsAre("Frame is dead, nothing to save"));
}

TEST_F(FrameItemTest, ResetAndDropDeleteTheFile) {
  FrameItem item(dir_.path(), Picture());
  ASSERT_TRUE(item.CheckForSave("r.raw"));
  ASSERT_FALSE(item.Save());
  const auto other = canvaro_test::MakePatternPicture(Proc::PixFmt::Gray8, {2, 9, 1, 1}, 3);
  EXPECT_EQ(item.Reset(other), other);
  EXPECT_FALSE(OnDisk("r.raw"));
  EXPECT_TRUE(item.GetFileName().empty());
  EXPECT_EQ(item.GetInfo(), other->GetFrameInfo());
  EXPECT_EQ(item.Get(), other);
  // An empty picture keeps the geometry.
  item.Reset(nullptr);
  EXPECT_EQ(item.GetInfo(), other->GetFrameInfo());

  FrameItem dropped(dir_.path(), Picture());
  ASSERT_TRUE(dropped.CheckForSave("d.raw"));
  ASSERT_FALSE(dropped.Save());
  dropped.Drop();
  EXPECT_FALSE(OnDisk("d.raw"));
  EXPECT_FALSE(dropped.Get());
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

TEST_F(FrameItemTest, FailedSaveIsReturnedNotThrownAndReleasesThePicture) {
  const ioPath missing = dir_ / "missing";
  FrameItem item(missing, Picture());
  ASSERT_TRUE(item.CheckForSave("f.raw"));
  const boost::exception_ptr error = item.Save();
  ASSERT_TRUE(error);
  EXPECT_EQ(CodeOf(error), CanvaroError::SwapFileFailure);
  EXPECT_EQ(item.GetMemorySize(), 0u);
  const auto errors = log_.Messages(google::GLOG_ERROR);
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_THAT(errors[0], HasSubstr("Cannot create file"));
  EXPECT_THAT(errors[0], HasSubstr("f.raw"));
}

TEST_F(FrameItemTest, FailedLoadThrowsAndLeavesTheItemDead) {
  FrameItem item(dir_.path(), Picture());
  ASSERT_TRUE(item.CheckForSave("t.raw"));
  ASSERT_FALSE(item.Save());
  std::filesystem::resize_file((dir_ / "t.raw").native(), 30);
  try {
    item.Get();
    FAIL() << "a truncated file loaded";
  } catch (const CanvaroException& e) {
    ASSERT_NE(boost::get_error_info<TagCanvaroErrorCode>(e), nullptr);
    EXPECT_EQ(*boost::get_error_info<TagCanvaroErrorCode>(e), CanvaroError::SwapFileFailure);
    EXPECT_NE(boost::get_error_info<TagCallStack>(e), nullptr);
  }
  EXPECT_TRUE(item.GetFileName().empty());
  EXPECT_TRUE(OnDisk("t.raw"));  // left for inspection
  EXPECT_FALSE(item.Get());
  EXPECT_THAT(log_.Messages(google::GLOG_ERROR).at(0), HasSubstr("t.raw"));
}

TEST_F(FrameItemTest, RecordHoldsNameAndGeometryAndBindsToTheSwapDirectory) {
  FrameItem item(dir_.path(),
                 canvaro_test::MakePatternPicture(Proc::PixFmt::RGBA, {5, 3, 4, 3}, 1));
  ASSERT_TRUE(item.CheckForSave("s.raw"));
  ASSERT_FALSE(item.Save());
  Core::Property tree;
  item.Serialize(Drevin::SerializerProperty::Create(tree));
  const auto reader = Drevin::SerializerProperty::Create(std::as_const(tree));
  EXPECT_EQ(reader->ReadString("FileName", ""), "s.raw");
  EXPECT_EQ(reader->ReadInt("Width", 0), 5);
  EXPECT_EQ(reader->ReadInt("Height", 0), 3);
  EXPECT_EQ(reader->ReadInt("AspectX", 0), 4);
  EXPECT_EQ(reader->ReadInt("AspectY", 0), 3);

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
