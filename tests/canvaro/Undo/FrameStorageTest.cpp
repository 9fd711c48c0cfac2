#include "canvaro/Undo/FrameItem.h"
#include "canvaro/Undo/FrameStorage.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/Undo/ShapeUndo.h"
#include "canvaro/Undo/UndoManager.h"
#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/shapes/LineInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/LogCapture.h"
#include "support/Outcome.h"
#include "support/Pictures.h"
#include "support/TempDir.h"

// glog stamps every line with the local time through the C library's time zone code, which
// serializes itself with a lock ThreadSanitizer cannot see; two threads that log (the test and
// the worker) then look like a race inside tzset. Nothing of ours is involved.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
extern "C" const char* __tsan_default_suppressions() { return "race:tzset_internal\n"; }
#endif
#endif

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using namespace canvaro_test;
namespace fs = std::filesystem;
using testing::ElementsAre;

// Names "f0", "f1", ... in call order; counts the calls.
struct Names {
  int calls = 0;
  std::function<std::string()> Generator() {
    return [this] { return "f" + std::to_string(calls++); };
  }
};

Proc::IDataVideoPtr Picture(unsigned seed, Conf::FrameInfo info = {7, 5, 1, 1}) {
  return MakePatternPicture(Proc::PixFmt::RGB24, info, seed);
}

// The pixels of frame `i` of `storage`, read back from its file if need be.
std::string Pixels(FrameStorage& storage, Index i) { return PackedBytes(*storage.GetFrame(i)); }

class FrameStorageTest : public testing::Test {
 protected:
  // Before the storage: the capture raises verbosity before the worker starts.
  LogCapture log_{30};
  TempDir dir_;
  Names names_;
};

// ---- adding, measuring, swapping, loading ----

TEST_F(FrameStorageTest, SwapWritesFilesInTheBackgroundAndGetFrameLoadsThemBack) {
  FrameStorage storage(dir_.path(), names_.Generator());
  std::vector<Proc::IDataVideoPtr> pictures;
  for (unsigned i = 0; i < 4; ++i) {
    pictures.push_back(Picture(i, {7, 5, 4, 3}));
    EXPECT_EQ(storage.AddFrame(pictures[i]), i);
  }
  EXPECT_EQ(storage.AddFrame(nullptr), 4u);
  EXPECT_EQ(storage.GetCount(), 5u);
  EXPECT_EQ(storage.GetFrameInfo(3), (Conf::FrameInfo{7, 5, 4, 3}));
  EXPECT_EQ(storage.GetFrameInfo(4), Conf::FrameInfo{});
  EXPECT_FALSE(storage.GetFrame(4));
  EXPECT_EQ(storage.GetFrame(2), pictures[2]);
  const std::uint64_t kept = pictures[2]->GetBufferSize();
  EXPECT_EQ(storage.GetSize(), 4 * kept);
  EXPECT_EQ(names_.calls, 0);
  storage.SwapExcept({0, 1, 2, 3, 4});  // an empty batch
  storage.WaitForPendingSaves();
  EXPECT_THAT(log_.Messages(), ElementsAre("Swap started", "Swap done"));

  // One name per frame not kept, the empty one included.
  log_.Clear();
  storage.SwapExcept({2, 2, 99});
  storage.WaitForPendingSaves();
  EXPECT_THAT(
      log_.Messages(),
      ElementsAre("Checking for savef0: need save", "Checking for savef1: need save",
                  "Checking for savef2: need save", "Checking for savef3: no frame", "Swap started",
                  "Trying to save f0", "Saving f0 done", "Trying to save f1", "Saving f1 done",
                  "Trying to save f2", "Saving f2 done", "Swap done"));
  EXPECT_EQ(storage.GetSize(), kept);
  const char* const names[] = {"f0", "f1", "", "f2", ""};
  for (Index i = 0; i < 5; ++i) EXPECT_EQ(storage.GetFileName(i).utf8(), names[i]) << i;
  EXPECT_EQ(fs::file_size((dir_ / "f1").native()), 20u + 7 * 3 * 5);

  log_.Clear();
  for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(Pixels(storage, i), PackedBytes(*pictures[i])) << i;
  EXPECT_THAT(log_.Messages(),
              ElementsAre("Trying to load f0", "Loading f0 done", "Trying to load f1",
                          "Loading f1 done", "Trying to load f2", "Loading f2 done"));
  EXPECT_EQ(storage.GetFileName(0), ioPath("f0"));  // kept after loading

  // Frames loaded back are only released by the next swap: nothing is written again.
  log_.Clear();
  storage.Swap({0, 1, 1, 3});
  storage.WaitForPendingSaves();
  EXPECT_EQ(storage.GetSize(), kept);
  EXPECT_THAT(log_.Messages(),
              ElementsAre("Checking for savef4: already saved as f0",
                          "Checking for savef5: already saved as f1",
                          "Checking for savef6: already saved as f2", "Swap started", "Swap done"));
}

// The caller goes on while the worker writes: pictures read, replaced and dropped during writes
// come out right, and every swap file but those of the remaining frames is deleted, stale ones
// included; with a write backlog, swapping returns only
// once no more than the backlog is unwritten.
TEST_F(FrameStorageTest, EditsDuringWritesLeaveNoStaleFilesAndTheBacklogBoundsMemory) {
  const Conf::FrameInfo big{512, 512, 1, 1};
  // Replacements (seeds from 1000) are smaller: the geometry follows the picture.
  const auto picture = [&](unsigned seed) {
    return Picture(seed, seed < 1000 ? big : Conf::FrameInfo{256, 128, 1, 1});
  };
  FrameStorage storage(dir_.path(), names_.Generator());
  const std::uint64_t one = picture(0)->GetBufferSize();
  storage.SetWriteBacklog(one);
  std::vector<unsigned> seeds;
  std::mt19937 random(20261123);
  for (unsigned round = 0; round < 60; ++round) {
    seeds.push_back(round);
    storage.AddFrame(picture(round));
    storage.SwapExcept({});
    EXPECT_LE(storage.GetSize(), one) << "more than the backlog is unwritten";
    const Index victim = random() % storage.GetCount();
    switch (random() % 3) {
      case 0:
        seeds[victim] = 1000 + round;
        EXPECT_EQ(PackedBytes(*storage.Reset(victim, picture(seeds[victim]))),
                  PackedBytes(*picture(seeds[victim])));
        EXPECT_EQ(storage.GetFrameInfo(victim).height, 128);
        break;
      case 1:
        storage.Truncate(victim + 1);
        storage.Truncate(victim + 5);  // beyond the end: nothing to drop
        seeds.resize(victim + 1);
        EXPECT_EQ(storage.GetCount(), seeds.size());
        break;
      default:
        EXPECT_EQ(Pixels(storage, victim), PackedBytes(*picture(seeds[victim])));
    }
  }
  storage.WaitForPendingSaves();
  std::set<std::string> held;
  for (Index i = 0; i < storage.GetCount(); ++i) {
    if (!storage.GetFileName(i).empty()) held.insert(storage.GetFileName(i).utf8());
    EXPECT_EQ(Pixels(storage, i), PackedBytes(*picture(seeds[i]))) << i;
  }
  std::set<std::string> files;
  for (const auto& entry : fs::directory_iterator(dir_.path().native()))
    files.insert(entry.path().filename().string());
  EXPECT_EQ(files, held);
}

// ---- the record ----

// The record names every frame's file and queues its write; a storage destroyed while batches are
// still queued (pictures of 180 kB) writes them all first. Reset and Truncate, even before the
// worker wrote the files, leave whole the files that a saved record names, in the storage that
// saved it and in one that loaded it.
TEST_F(FrameStorageTest, SerializeQueuesEveryFrameAndRecordsNamesAndGeometry) {
  Core::Property tree;
  std::vector<std::string> pixels;
  {
    FrameStorage storage(dir_.path(), names_.Generator());
    for (unsigned i = 0; i < 3; ++i) {
      const auto picture = Picture(i, {300 + static_cast<std::int32_t>(i), 200, 1, 1});
      pixels.push_back(PackedBytes(*picture));
      storage.AddFrame(picture);
    }
    storage.Swap({0});  // a first batch, then one of the rest (f1 is drawn and not used)
    storage.Serialize(Drevin::SerializerProperty::Create(tree));
    EXPECT_EQ(storage.GetFileName(2), ioPath("f3"));
    storage.Reset(1, Picture(10));
    EXPECT_TRUE(storage.GetFileName(1).empty()) << "the item forgets the file it no longer shows";
    storage.Truncate(1);
  }
  EXPECT_TRUE(dir_.path().exists()) << "a storage that never failed leaves its directory";
  const auto reader = Drevin::SerializerProperty::Create(std::as_const(tree));
  const auto list = reader->GetCollection("StorageItems");
  ASSERT_TRUE(list);
  ASSERT_EQ(list->GetCount(), 3u);
  const auto record = list->GetItem(1)->GetChild("StorageItem");
  EXPECT_EQ(record->ReadString("FileName", ""), "f2");
  EXPECT_EQ(record->ReadInt("Width", 0), 301);
  EXPECT_FALSE(reader->Has("Frame"));

  FrameStorage again(dir_.path(), names_.Generator());
  again.AddFrame(Picture(7));
  again.Deserialize(reader);
  ASSERT_EQ(again.GetCount(), 4u);
  EXPECT_EQ(again.GetFrameInfo(3), (Conf::FrameInfo{302, 200, 1, 1}));
  EXPECT_EQ(again.GetSize(), again.GetFrame(0)->GetBufferSize());
  for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(Pixels(again, i + 1), pixels[i]);
  again.Reset(3, Picture(11));
  EXPECT_TRUE((dir_ / "f3").exists());

  // A record naming a file that a loaded frame holds is that frame, not a second owner.
  EXPECT_EQ(again.DeserializeItem(record), 2u);
  EXPECT_EQ(again.GetCount(), 4u);
  EXPECT_EQ(Pixels(again, 2), pixels[1]);

  // Loading stops at the first record whose file is missing, without failing the storage.
  fs::remove((dir_ / "f2").native());
  FrameStorage third(dir_.path(), names_.Generator());
  EXPECT_EQ(OutcomeOf([&] { third.Deserialize(reader); }), Outcome::SwapFileFailure);
  EXPECT_EQ(third.GetCount(), 1u);
  EXPECT_FALSE(third.IsFailed());
}

// ---- failures ----

TEST_F(FrameStorageTest, GeneratedNamesNeverReplaceFilesAndAreAllDrawnFirst) {
  std::ofstream((dir_ / "f1").native()) << "someone else's";  // an earlier save's file, say
  FrameStorage storage(dir_.path(), names_.Generator());
  for (unsigned i = 0; i < 3; ++i) storage.AddFrame(Picture(i));
  storage.SwapExcept({});
  storage.WaitForPendingSaves();
  EXPECT_FALSE(storage.IsFailed());
  EXPECT_EQ(fs::file_size((dir_ / "f1").native()), 14u);
  EXPECT_EQ(storage.GetFileName(1).utf8(), "f2");
  EXPECT_EQ(log_.Messages(google::GLOG_WARNING).size(), 1u);
  for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(Pixels(storage, i), PackedBytes(*Picture(i)));

  // A generator that throws part way leaves no frame with a name.
  FrameStorage other(dir_.path(), [n = 0]() mutable -> std::string {
    if (++n == 2) throw std::runtime_error("out of names");
    return "g" + std::to_string(n);
  });
  for (unsigned i = 1; i < 3; ++i) other.AddFrame(Picture(i));
  EXPECT_THROW(other.SwapExcept({}), std::runtime_error);
  for (Index i = 0; i < 2; ++i) EXPECT_TRUE(other.GetFileName(i).empty()) << i;

  // Out-of-range frames are refused with a code, not read from freed memory.
  EXPECT_EQ(OutcomeOf([&] { storage.GetFrame(3); }), Outcome::InvalidArgument);
}

// A swap directory that is missing (one that cannot be written to fails the same way), or a written
// swap file removed or cut short, fails the storage: the picture that needed the file and every
// other one fail with the swap file code.
TEST_F(FrameStorageTest, UnusableSwapDirectoriesAndDamagedFilesFailTheStorage) {
  const ioPath missing = dir_ / "missing", cut = dir_ / "cut", removed = dir_ / "removed";
  for (const ioPath& made : {cut, removed}) fs::create_directory(made.native());
  for (const ioPath& swap : {missing, cut, removed}) {
    FrameStorage storage(swap, names_.Generator());
    for (unsigned i = 1; i < 3; ++i) storage.AddFrame(Picture(i));
    storage.SwapExcept({1});
    storage.WaitForPendingSaves();
    const auto file = (swap / storage.GetFileName(0)).native();
    if (swap == cut) fs::resize_file(file, fs::file_size(file) - 1);
    if (swap == removed) fs::remove(file);
    EXPECT_EQ(OutcomeOf([&] { storage.GetFrame(0); }), Outcome::SwapFileFailure) << swap;
    EXPECT_TRUE(storage.IsFailed()) << swap;
    EXPECT_EQ(OutcomeOf([&] { storage.GetFrame(1); }), Outcome::SwapFileFailure) << swap;
  }
}

// In a child process with a file size limit of 64 kB (and SIGXFSZ ignored, so that a write past
// it fails instead of killing the process), the one picture too large for it fails the storage.
TEST_F(FrameStorageTest, FileSizeLimitFailsTheStorageWithoutCrashing) {
  const ioPath swap = dir_.path();
  const auto run = [&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit fileSize{64 * 1024, 64 * 1024};
    if (::setrlimit(RLIMIT_FSIZE, &fileSize) != 0) return 99;
    {
      FrameStorage storage(swap, names_.Generator());
      storage.AddFrame(Picture(1));
      storage.AddFrame(Picture(2, {200, 200, 1, 1}));  // 120 kB of pixels
      storage.AddFrame(Picture(3));
      storage.SwapExcept({});
      storage.WaitForPendingSaves();
      if (!storage.IsFailed()) return 1;
      if (!(swap / "f0").exists() || !(swap / "f2").exists()) return 2;
      if ((swap / "f1").exists()) return 3;  // never half written
      if (OutcomeOf([&] { storage.GetFrame(0); }) != Outcome::SwapFileFailure) return 4;
    }
    return swap.exists() ? 5 : 0;
  };
  EXPECT_EXIT(::_exit(run()), testing::ExitedWithCode(0), "");
}

// Reading pictures back keeps the others under the load budget by letting go of the least
// recently used ones that are on disk; kept frames and pictures without a file stay, and nothing
// is written.
TEST_F(FrameStorageTest, LoadsLetGoOfTheLeastRecentlyUsedWrittenPictures) {
  FrameStorage storage(dir_.path(), names_.Generator());
  for (unsigned i = 0; i < 6; ++i) storage.AddFrame(Picture(i));
  const std::uint64_t one = storage.GetFrame(0)->GetBufferSize();
  storage.SwapExcept({});
  storage.WaitForPendingSaves();
  ASSERT_EQ(storage.GetSize(), 0u);
  storage.SetLoadBudget(3 * one, [](Index frame) { return frame == 0; });
  for (Index i = 0; i < 4; ++i) storage.GetFrame(i);
  // 0 is kept; loading 3 found 0, 1, 2 at the budget and let go of 1, the least recently used.
  EXPECT_EQ(storage.GetSize(), 3 * one);
  storage.GetFrame(4);  // lets go of 2
  EXPECT_EQ(storage.GetSize(), 3 * one);
  const Index unsaved = storage.AddFrame(Picture(9));  // no file: never let go
  storage.GetFrame(5);  // 0, 3, 4 and the unsaved one: lets go of 3, then of 4
  EXPECT_EQ(storage.GetSize(), 3 * one);
  const std::size_t files =
      std::distance(fs::directory_iterator(dir_.path().native()), fs::directory_iterator());
  EXPECT_EQ(files, 6u) << "letting go wrote nothing";
  for (Index i : {Index{0}, Index{5}, unsaved}) {
    EXPECT_EQ(Pixels(storage, i), PackedBytes(*Picture(i == unsaved ? 9 : i)));
  }
  EXPECT_EQ(storage.GetSize(), 3 * one) << "0, 5 and the unsaved picture were still in memory";
  EXPECT_EQ(Pixels(storage, 1), PackedBytes(*Picture(1)));  // read back
}

// ---- pictures that an open step still needs ----

TEST_F(FrameStorageTest, ShapePictureInAnOpenTransactionSurvivesTheNextEdit) {
  using namespace Canvaro;
  FrameStorage storage(dir_.path(), names_.Generator());
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

// ---- the items that hold the storage's frames ----

class FrameItemTest : public FrameStorageTest {};

TEST_F(FrameItemTest, WalksThroughTheStatesOfASwapAndAResetAndEmptyItemsDoNothing) {
  // Loading and swapping out a loaded picture again are the storage's cases.
  FrameItem item(dir_.path(), Picture(1));
  // In memory only -> queued for save.
  EXPECT_TRUE(item.CheckForSave("a.raw"));
  EXPECT_FALSE((dir_ / "a.raw").exists());
  // Queued: a second check declines with a warning.
  EXPECT_FALSE(item.CheckForSave("b.raw"));
  EXPECT_EQ(item.GetFileName(), ioPath("a.raw"));
  // Queued -> saved.
  EXPECT_FALSE(item.Save());
  EXPECT_TRUE((dir_ / "a.raw").exists());

  // A reset deletes the file that no saved record names; one after queueing writes nothing.
  item.Reset(Picture(2));
  EXPECT_FALSE((dir_ / "a.raw").exists());
  ASSERT_TRUE(item.CheckForSave("q.raw"));
  const auto fresh = Picture(3);
  item.Reset(fresh);
  EXPECT_FALSE(item.Save());
  EXPECT_FALSE((dir_ / "q.raw").exists());
  EXPECT_EQ(item.Get(), fresh);

  EXPECT_THAT(log_.Messages(google::GLOG_WARNING),
              ElementsAre("Checking for saveb.raw: already queued for save as a.raw"));

  // An item without a picture has nothing to save or load (its storage's empty frames have no
  // name and no picture).
  FrameItem empty(dir_.path(), nullptr);
  EXPECT_FALSE(empty.Save());
  empty.LoadFrame();
  EXPECT_THAT(log_.Messages(google::GLOG_ERROR), ElementsAre("Frame is dead, nothing to save"));
}

TEST_F(FrameItemTest, RecordHoldsNameAndGeometryAndBindsToTheSwapDirectory) {
  FrameItem item(dir_.path(), Picture(1, {5, 3, 4, 3}));
  ASSERT_TRUE(item.CheckForSave("s.raw"));
  ASSERT_FALSE(item.Save());
  Core::Property tree;
  item.Serialize(Drevin::SerializerProperty::Create(tree));
  // A full path in the record is reduced to its last component.
  Drevin::SerializerProperty::Create(tree)->WriteString("FileName", "/elsewhere/deep/s.raw");
  FrameItem copy(dir_.path(), nullptr);
  copy.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(copy.GetFileName(), ioPath("s.raw"));
  EXPECT_EQ(copy.GetInfo(), (Conf::FrameInfo{5, 3, 4, 3}));
  EXPECT_EQ(copy.GetMemorySize(), 0u);
  EXPECT_EQ(PackedBytes(*copy.Get()).size(), 45u);
}

}  // namespace
