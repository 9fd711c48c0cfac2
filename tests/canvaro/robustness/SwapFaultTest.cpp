// Real faults of the swap files under a document: the swap directory gone or unusable during a
// session, swap files deleted or truncated between saving and loading (how the storage itself
// fails, under a file size limit too, is FrameStorageTest's). The document keeps answering
// everything that does not need a lost picture; what does need one fails with CanvaroException,
// code SwapFileFailure, and leaves the document where it was.

#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/Undo/IUndoManager.h"
#include "canvaro/shapes/LineInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/DocumentTest.h"
#include "support/Errors.h"
#include "support/ExerciseDocument.h"
#include "support/Outcome.h"
#include "support/SampleDocuments.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using namespace canvaro_test;
namespace fs = std::filesystem;

constexpr unsigned kCurrent = ICanvaroUndo::kCurrentItem;

ICanvaroUndoPtr MakeDocument(const ioPath& swap) {
  return ICanvaroUndo::Create(swap, [n = 0]() mutable { return "f" + std::to_string(n++); });
}

// Three steps ("Source", "Big" with a 64x64 picture, "Last") and a line.
void Edit(ICanvaroUndo& doc) {
  doc.Add(Settings("Source"), Picture(1), nullptr, NoMask());
  doc.Add(Settings("Big"), Picture(2, 64, 64), nullptr, NoMask());
  doc.SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_LINE)), nullptr);
  doc.Add(Settings("Last"), Picture(3), nullptr, NoMask());
}

void Save(ICanvaroUndo& doc) {
  Core::Property tree;
  doc.Serialize(Drevin::SerializerProperty::Create(tree));
  doc.WaitForPendingSaves();
}

// Checks a document of Edit whose swap files have failed.
void ExpectFailedDocument(ICanvaroUndo& doc) {
  // Pictures fail, not even the one in force is handed out, and the error says which file
  // failed and why, not just the exception's type.
  EXPECT_EQ(OutcomeOf([&] { doc.GetVideo(kCurrent); }), Outcome::SwapFileFailure);
  EXPECT_THAT(ErrorText<CanvaroException>([&] { doc.GetVideo(0); }),
              testing::HasSubstr(doc.GetFrameStorage().GetSwapDirectory().utf8()));
  EXPECT_TRUE(doc.GetFrameStorage().IsFailed());
  // Everything that needs no picture still answers (the number of items and the current one,
  // below).
  EXPECT_EQ(doc.GetSettings(1).GetEffectsSettings().GetPackage().GetName(), "Big");
  EXPECT_EQ(doc.GetVideoInfo(1), (Conf::FrameInfo{64, 64, 1, 1}));
  EXPECT_EQ(doc.GetShapeActiveItemCount(ShapeType::All), 1u);
  // An undo that needs a picture fails as a whole: the step stays in force everywhere.
  const std::int32_t step = doc.GetUndoManager().GetCurrentStep();
  EXPECT_EQ(OutcomeOf([&] { doc.Undo(); }), Outcome::SwapFileFailure);
  // A new step needs its mask counted from the storage, which hands out nothing any more: the
  // edit fails before it changes what the document shows.
  EXPECT_EQ(OutcomeOf([&] { doc.Add(Settings("After"), Picture(4), nullptr, NoMask()); }),
            Outcome::SwapFileFailure);
  EXPECT_EQ(doc.GetVideoCount(), 3u);
  EXPECT_EQ(doc.GetCurrentIndex(), 2u);
  EXPECT_EQ(doc.GetUndoManager().GetCurrentStep(), step);
}

// A document of Edit on the swap directory Swap().
class SwapFaultTest : public testing::Test {
 protected:
  SwapFaultTest() {
    fs::create_directory(Swap().native());
    doc_ = MakeDocument(Swap());
    Edit(*doc_);
  }
  ioPath Swap() const { return dir_ / "swap"; }

  TempDir dir_;
  ICanvaroUndoPtr doc_;
};

TEST_F(SwapFaultTest, SwapDirectoryReplacedByAFileDuringASession) {
  // Directory permissions do not bind root, so the directory is made unusable for everyone by
  // putting a file in its place.
  fs::rename(Swap().native(), (dir_ / "moved").native());
  std::ofstream(Swap().native()) << "not a directory";
  Save(*doc_);
  ExpectFailedDocument(*doc_);
  doc_.reset();
  EXPECT_FALSE(Swap().exists());
}

TEST_F(SwapFaultTest, RollbackThatNeedsALostPictureIsLoggedNotFatal) {
  Save(*doc_);
  LogCapture log;
  {
    RAII::UndoTransactionGuard transaction(doc_->GetTransactionManager(), /*commit=*/false);
    doc_->SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_LINE)), nullptr);
    doc_->Add(Settings("Rolled back"), Picture(5), nullptr, NoMask());
    fs::remove_all(Swap().native());
  }  // the rollback's undo needs "Last", whose file is gone
  EXPECT_TRUE(doc_->GetFrameStorage().IsFailed());
  EXPECT_FALSE(log.Messages(google::GLOG_ERROR).empty());
  // The other participant was rolled back all the same.
  EXPECT_EQ(doc_->GetShapeActiveItemCount(ShapeType::All), 1u);
  EXPECT_EQ(doc_->GetSettings(kCurrent).GetEffectsSettings().GetPackage().GetName(), "Rolled back");
}

TEST_F(SwapFaultTest, WithoutASwapDirectoryNothingIsWrittenAnywhere) {
  const fs::path before = fs::current_path();
  fs::current_path(Swap().native());
  doc_ = MakeDocument(ioPath());
  Edit(*doc_);
  EXPECT_EQ(OutcomeOf([&] { Save(*doc_); }), Outcome::InvalidState);
  doc_->WaitForPendingSaves();
  EXPECT_TRUE(fs::is_empty(Swap().native()));
  EXPECT_EQ(doc_->GetVideoCount(), 3u);
  EXPECT_NE(doc_->GetVideo(0), nullptr);
  fs::current_path(before);
}

TEST_F(SwapFaultTest, SetReleasesThePicturesItReplaces) {
  const std::uint64_t size = doc_->GetCoreSize();
  const auto mask = MaskPicture(0, 8, 0, 6, 9);
  for (int i = 0; i < 20; ++i) doc_->Set(Settings("Set"), Picture(7), mask, NoMask());
  EXPECT_LE(doc_->GetCoreSize(), size + mask->GetBufferSize());
  Save(*doc_);
  // One file per picture still named: the three steps' pictures, the one mask, none replaced.
  EXPECT_LE(std::distance(fs::directory_iterator(Swap().native()), fs::directory_iterator()), 4);
}

// ---- swap files damaged between saving and loading ----

// A missing swap file fails the load with the swap file code. A truncated one does not (the load
// reads names, not pictures): the damage shows when the picture is needed, and what needs no
// picture still answers. Each case damages a copy of one saved sample session.
TEST(DamagedSwapFileTest, AnyMissingOrTruncatedSwapFileFailsOnlyWhatNeedsIt) {
  TempDir saved;
  std::string text;
  for (const auto& document : WriteSampleDocuments(saved.path())) {
    if (document.name == "session") text = document.text;
  }
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(saved.path().native())) {
    const std::string name = entry.path().filename().string();
    // Only the files that this save names: no frame is ever renamed after its first save.
    if (text.find('"' + name + '"') != std::string::npos) files.push_back(name);
  }
  ASSERT_GE(files.size(), 5u);  // pictures, mask strokes, a shape's picture
  for (const std::string& damaged : files) {
    for (const bool truncate : {false, true}) {
      SCOPED_TRACE(damaged + (truncate ? " truncated" : " missing"));
      TempDir copy;
      fs::copy(saved.path().native(), copy.path().native());
      const auto load = [&] {
        auto doc = MakeDocument(copy.path());
        doc->Deserialize(
            Drevin::SerializerProperty::Create(Core::PropertySerializer::FromString(text)));
        return doc;
      };
      const fs::path file = (copy / damaged).native();
      if (!truncate) {
        fs::remove(file);
        EXPECT_EQ(OutcomeOf(load), Outcome::SwapFileFailure);
        continue;
      }
      fs::resize_file(file, fs::file_size(file) / 2);
      const ICanvaroUndoPtr doc = load();  // names only: loads whole
      const Outcome used = OutcomeOf([&] { ExerciseDocument(*doc); });
      EXPECT_TRUE(used == Outcome::Done || used == Outcome::SwapFileFailure) << used;
      EXPECT_GE(doc->GetVideoCount(), 3u);
      EXPECT_EQ(doc->GetVideoInfo(0).width, 8);
      EXPECT_EQ(doc->GetSettings(0).GetEffectsSettings().GetPackage().GetName(), "Source");
      EXPECT_GE(doc->GetShapeItemCount(ShapeType::All), 3u);
    }
  }
}

}  // namespace
