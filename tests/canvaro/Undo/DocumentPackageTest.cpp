// Document packages with real files and real faults: saved and opened equal, stable over save and
// open cycles, never touched by an opened document or its failures, damage detected and refused,
// and a disk that fills during a save leaves the previous package whole.
#include "canvaro/Undo/DocumentPackage.h"

#include <poll.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/shapes/LineInfo.h"
#include "support/DocumentTest.h"
#include "support/Errors.h"
#include "support/Outcome.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using namespace canvaro_test;
namespace fs = std::filesystem;

// Everything a host sees of a document, walking its whole history and coming back.
std::string Summary(ICanvaroUndo& doc) {
  std::string text = "current " + std::to_string(doc.GetCurrentIndex()) + " steps " +
                     std::to_string(doc.GetUndoManager().GetStepCount()) + "\n";
  for (unsigned i = 0; i < doc.GetVideoCount(); ++i) {
    text += doc.GetSettings(i).GetEffectsSettings().GetPackage().GetName() + " " +
            Pixels(doc.GetVideo(i)) + " " + Pixels(doc.GetMask(i)) + "\n";
  }
  for (const ShapeInfo& shape : doc.GetShapeItems(ShapeType::All)) {
    text += "shape " + std::to_string(shape->GetPosition().GetX()) + "\n";
  }
  if (doc.GetShapeItemCount(ShapeType::All) > 0)
    text += Pixels(doc.GetShapeItemVideo(0, ICanvaroUndo::kCurrentItem));
  text += " painted " + std::to_string(doc.GetMaskPixelCount({}));
  return text;
}

// Every file of a folder with its bytes.
std::map<std::string, std::string> Files(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    files[fs::relative(entry.path(), folder).string()] =
        std::string(std::istreambuf_iterator<char>(in), {});
  }
  return files;
}

// A 256 kB tmpfs mounted at `point` for the life of the object; `mounted` is false without root.
struct SmallDisk {
  explicit SmallDisk(fs::path where) : point(std::move(where)) {
    fs::create_directories(point);
    mounted = ::mount("tmpfs", point.c_str(), "tmpfs", 0, "size=256k") == 0;
  }
  ~SmallDisk() {
    if (mounted) ::umount2(point.c_str(), MNT_DETACH);
  }
  fs::path point;
  bool mounted = false;
};

class DocumentPackageTest : public DocumentTest {
 protected:
  // Three items, strokes, a shape with a picture; `size` scales the pictures.
  void Edit(ICanvaroUndo& document, std::int32_t size = 8) {
    const std::int32_t height = size * 3 / 4;
    document.Add(Settings("Source"), Picture(1, size, height), nullptr, NoMask());
    document.Add(Settings("Brush"), Picture(2, size, height), nullptr, NoMask());
    const auto stroke = MaskPicture(0, 2, 0, 2, 90, size, height);
    document.AddMask(stroke, Mask(0, 2, 0, 2));
    document.AddMask(Painted(stroke, 2, 4, 1, 3, 7), Mask(2, 4, 1, 3));
    auto line = LineInfo::Create(IToolsId::SHAPE_LINE);
    line->GetPosition().SetX(0.25);
    document.SetShape(ShapeInfo(*line), Picture(9, 2, 2));
    document.Add(Settings("Sharpen"), Picture(3, size, height), nullptr, NoMask());
    document.Undo();  // the save holds a redo step
  }

  // Opens `package` on a fresh swap directory "open-<prefix>", whose files `prefix` names.
  ICanvaroUndoPtr Open(const std::string& prefix, const ioPath& package) {
    const fs::path swap = dir.path().native() / fs::path("open-" + prefix);
    fs::create_directories(swap);
    return OpenDocument(
        package, swap, [prefix, n = 0]() mutable { return prefix + std::to_string(n++) + ".raw"; });
  }
  ICanvaroUndoPtr Open(const std::string& prefix) { return Open(prefix, Package()); }

  // Pictures of 128 x 96 RGBA (48 kB each) that outgrow a SmallDisk.
  void AddBigPictures(ICanvaroUndo& document) {
    for (std::uint8_t seed = 10; seed < 18; ++seed) {
      document.Add(Settings("Big"), Picture(seed, 128, 96), nullptr, NoMask());
    }
  }

  ioPath Package() const { return dir / "saved.canvaro"; }
};

// A package opens as the document saved, over any number of save and open cycles; an opened
// document and its failures never touch it, and it saves its new work in it.
TEST_F(DocumentPackageTest, OpensEqualOverSaveOpenCyclesAndFailuresLeaveItAlone) {
  Edit(*doc);
  const std::string expected = Summary(*doc);
  SaveDocument(*doc, Package());
  EXPECT_THAT(CheckDocumentPackage(Package()), ::testing::IsEmpty());
  const auto firstSave = Files(Package().native());
  doc.reset();
  {
    ICanvaroUndoPtr broken = Open("broken");
    broken->Undo();
    broken->Add(Settings("More"), Picture(5), nullptr, NoMask());
    // Its swap files disappear: the storage fails on the next load and, when the document
    // goes, removes its whole swap directory.
    const fs::path swap = dir.path().native() / fs::path("open-broken");
    for (const auto& entry : fs::directory_iterator(swap)) fs::remove(entry.path());
    broken->CheckForSize();
    broken->GetFrameStorage().WaitForPendingSaves();
    EXPECT_EQ(OutcomeOf([&] { broken->GetVideo(0); }), Outcome::SwapFileFailure);
    // A picture is truly gone now: saving fails, naming it, and leaves the package alone.
    EXPECT_THAT(ErrorText<CanvaroException>([&] { SaveDocument(*broken, Package()); }),
                ::testing::HasSubstr("gone"));
  }
  EXPECT_EQ(Files(Package().native()), firstSave);

  ICanvaroUndoPtr opened = Open("a");
  EXPECT_EQ(Summary(*opened), expected);
  const Index frames = opened->GetFrameStorage().GetCount();
  for (int cycle = 0; cycle < 4; ++cycle) {
    SaveDocument(*opened, Package());
    opened = Open("c" + std::to_string(cycle));
    EXPECT_EQ(Summary(*opened), expected) << cycle;
    EXPECT_EQ(opened->GetFrameStorage().GetCount(), frames) << cycle;
    EXPECT_EQ(Files(Package().native()).size(), firstSave.size()) << cycle;
  }
  // An opened document goes on and saves its new work in the same package.
  opened->Add(Settings("After"), Picture(4), nullptr, NoMask());
  const std::string after = Summary(*opened);
  SaveDocument(*opened, Package());
  EXPECT_EQ(Summary(*Open("after")), after);
  EXPECT_THAT(CheckDocumentPackage(Package()), ::testing::IsEmpty());
}

TEST_F(DocumentPackageTest, ADamagedPictureIsReportedAndRefusedAndLeftAsItIs) {
  Edit(*doc);
  SaveDocument(*doc, Package());
  const fs::path victim = fs::directory_iterator(Package().native() / "pictures")->path();
  // Its last byte changes.
  std::fstream(victim, std::ios::in | std::ios::out | std::ios::binary)
      .seekp(-1, std::ios::end)
      .put('\x5a');
  const auto damaged = Files(Package().native());
  const auto problems = CheckDocumentPackage(Package());
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_THAT(problems[0], ::testing::HasSubstr(victim.filename().string()));
  EXPECT_THAT(ErrorText<CanvaroException>([&] { Open("a"); }), ::testing::HasSubstr("damaged"));
  EXPECT_EQ(OutcomeOf([&] { Open("a"); }), Outcome::InvalidDocument);
  EXPECT_TRUE(fs::is_empty(dir.path().native() / fs::path("open-a")));
  EXPECT_EQ(Files(Package().native()), damaged);

  fs::remove(victim);
  EXPECT_THAT(CheckDocumentPackage(Package())[0], ::testing::HasSubstr("missing"));
  EXPECT_EQ(OutcomeOf([&] { Open("b"); }), Outcome::InvalidDocument);
}

// A small file system fills up. Under a package, the second save runs out of space part-way: the
// first package stays whole and opens as it was; nothing partial sits under a final name. Under
// the swap directory of a session, the storage fails and hands out nothing, yet every picture of
// the session (in memory after its failed write, or in its file) saves as a package on another
// file system, and opens as the same document.
TEST_F(DocumentPackageTest, AFullDiskFailsTheSaveOrTheSwapAndLosesNothing) {
  const SmallDisk disk(dir.path().native() / "small");
  if (!disk.mounted) GTEST_SKIP() << "cannot mount a small tmpfs here (needs root)";
  const ioPath package = ioPath(disk.point) / "saved.canvaro";
  Edit(*doc);
  SaveDocument(*doc, package);
  const std::string first = Summary(*doc);
  const auto saved = Files(package.native());
  AddBigPictures(*doc);
  EXPECT_THAT(ErrorText<CanvaroException>([&] { SaveDocument(*doc, package); }),
              ::testing::HasSubstr("No space left on device"));
  EXPECT_EQ(Files(package.native()), saved);
  EXPECT_THAT(CheckDocumentPackage(package), ::testing::IsEmpty());
  EXPECT_EQ(Summary(*Open("again", package)), first);

  ICanvaroUndoPtr session = ICanvaroUndo::Create(
      ioPath(disk.point), [n = 0]() mutable { return "s" + std::to_string(n++) + ".raw"; });
  Edit(*session);
  AddBigPictures(*session);
  for (ICanvaroUndo* document : {session.get(), doc.get()}) document->Undo();
  session->GetFrameStorage().SwapExcept({});
  session->WaitForPendingSaves();
  ASSERT_TRUE(session->GetFrameStorage().IsFailed());  // and hands out nothing (SwapFaultTest)
  SaveDocument(*session, Package());
  EXPECT_EQ(Summary(*Open("rescued")), Summary(*doc));
}

// A process saving two versions of a document in turn into one package is killed with SIGKILL at
// random moments. Each time, the package holds one version or the other, whole, or (killed before
// the first save took effect) no document at all. The child reports its first finished save through
// a pipe, so that most kills land among saves whatever the speed of the disk.
TEST_F(DocumentPackageTest, AKilledSaveLeavesAWholePackage) {
  doc.reset();  // forks from a process without worker threads, as ThreadSanitizer requires
  // The version `second` of the document, its swap files named with `prefix`.
  const auto version = [this](bool second, const std::string& prefix) {
    ICanvaroUndoPtr document = MakeDocument(prefix);
    Edit(*document, second ? 16 : 8);
    if (second) document->Add(Settings("Second"), Picture(6, 16, 12), nullptr, NoMask());
    return document;
  };
  const std::string versions[2] = {Summary(*version(false, "v0_")), Summary(*version(true, "v1_"))};
  std::mt19937 random(20261123);
  int opened = 0;
  for (int kill = 0; kill < 16; ++kill) {
    int saved[2];
    ASSERT_EQ(::pipe(saved), 0);
    const pid_t child = ::fork();
    if (child == 0) {
      ::close(saved[0]);
      std::signal(SIGPIPE, SIG_IGN);  // the parent may no longer listen
      try {
        const std::string prefix = "c" + std::to_string(kill);
        const ICanvaroUndoPtr documents[2] = {version(false, prefix + "a_"),
                                              version(true, prefix + "b_")};
        for (int round = 0;; ++round) {
          SaveDocument(*documents[round % 2], Package());
          if (round == 0) [[maybe_unused]]
            const auto told = ::write(saved[1], "s", 1);
        }
      } catch (...) {
        ::_exit(3);
      }
    }
    ::close(saved[1]);
    // One kill in four lands anywhere, the first save included; the others after it.
    if (kill % 4 != 0) {
      pollfd told{saved[0], POLLIN, 0};
      char byte = 0;
      ASSERT_TRUE(::poll(&told, 1, 60000) == 1 && ::read(saved[0], &byte, 1) == 1)
          << "the saving process made no first save";
    }
    ::close(saved[0]);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 300000));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the saving process stopped by itself: " << status;
    if (!(Package() / "document.json").exists()) continue;
    ICanvaroUndoPtr document = Open("k" + std::to_string(kill));
    const std::string summary = Summary(*document);
    EXPECT_TRUE(summary == versions[0] || summary == versions[1]) << "kill " << kill;
    ++opened;
  }
  EXPECT_GE(opened, 12);
}

}  // namespace
