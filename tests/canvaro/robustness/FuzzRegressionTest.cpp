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

#include "canvaro/CoreUtil/RawFrame.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "kelbra/Core/DataString.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/ExerciseDocument.h"
#include "support/Outcome.h"
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

}  // namespace
