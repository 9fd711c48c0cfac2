// The inputs with which the fuzzers once broke the library (fuzz/regressions/<target>/), each
// fed to its loader again: it must end in a loaded result or in a documented exception, clean
// under the sanitizers. The cases that explain each finding live in DamagedSaveTest.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Outcome.h"
#include "canvaro/CoreUtil/RawFrame.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/shapes/LineInfo.h"
#include "kelbra/Core/DataString.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/ExerciseDocument.h"
#include "support/SampleDocuments.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using namespace canvaro_test;
namespace fs = std::filesystem;

// The kept inputs of one fuzz target, in name order.
std::vector<fs::path> Regressions(const std::string& target) {
  const fs::path dir = fs::path(CANVARO_SOURCE_DIR) / "fuzz" / "regressions" / target;
  std::vector<fs::path> files;
  if (!fs::exists(dir)) return files;
  for (const auto& entry : fs::directory_iterator(dir)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

std::string Read(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(FuzzRegressionTest, SavedDocumentsLoadOrFailClearly) {
  const auto files = Regressions("document");
  ASSERT_FALSE(files.empty());
  for (const fs::path& file : files) {
    SCOPED_TRACE(file.filename().string());
    // The swap files that the fuzzer's inputs name, fresh for each (loading may delete some).
    TempDir dir;
    WriteSampleDocuments(dir.path());
    auto doc = ICanvaroUndo::Create(dir.path(), [n = 0]() mutable { return std::to_string(n++); });
    // Any outcome but a crash or an undocumented exception (which would escape) will do.
    OutcomeOf([&] {
      doc->Deserialize(
          Drevin::SerializerProperty::Create(Core::PropertySerializer::FromString(Read(file))));
      ExerciseDocument(*doc);
    });
  }
}

TEST(FuzzRegressionTest, RawFramesLoadOrFailWithAFileError) {
  for (const fs::path& file : Regressions("raw_frame")) {
    SCOPED_TRACE(file.filename().string());
    Proc::IDataVideoPtr frame;
    const Outcome outcome = OutcomeOf(
        [&] { CoreUtil::LoadRawFrame(frame, Core::DataInputString::Create(Read(file))); });
    EXPECT_TRUE(outcome == Outcome::Done || outcome == Outcome::FileError) << outcome;
  }
}

// The first finding of this kind came from a loaded step list that did not name a shape item;
// the same happens through the interface: a shape placed with a picture, its step undone, then
// another edit. The hidden first state of the shape still shows the picture.
TEST(FuzzRegressionTest, PictureOfAShapeWhoseStepWasDroppedStaysReadable) {
  TempDir dir;
  auto doc = ICanvaroUndo::Create(dir.path(), [n = 0]() mutable { return std::to_string(n++); });
  auto picture = [](std::uint8_t value) {
    auto made = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {4, 2, 1, 1});
    made->Fill(Proc::Color(value, value, value, 255));
    return made;
  };
  doc->Add(SettingsCore(), picture(1), nullptr, MaskInfo());
  doc->SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_LINE)), picture(2));
  const Index frame = doc->GetShapeItemVideoIndex(0, ICanvaroUndo::kCurrentItem);
  doc->Undo();
  // A new step drops the undone one; then pictures of later steps take the next indices.
  doc->SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_LINE)), nullptr);
  doc->Add(SettingsCore(), picture(3), nullptr, MaskInfo());
  ASSERT_EQ(doc->GetShapeItemVideoIndex(0, ICanvaroUndo::kCurrentItem), frame);
  const auto shown = doc->GetShapeItemVideo(0, ICanvaroUndo::kCurrentItem);
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(std::as_const(*shown).GetPlane(0).GetOffsetPtr(0, 0)[0], 2);
}

}  // namespace
