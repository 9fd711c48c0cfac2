// Feeds arbitrary text to a fresh document as its saved form. The swap directory holds the real
// swap files of the sample sessions (written once at start-up), so that mutated saves find real
// pictures and masks under the names they mention.
//
// Every input must end in a loaded document or in one of the documented exceptions:
// CanvaroException, or Core::CoreException (Core::PropertyException and its
// Core::WrongTypeIsRequested included). A loaded document is then used as a host would
// (ExerciseDocument: every query, undo and redo while enabled, one edit of each kind); that may
// fail with the same exceptions only.
//
// The document may delete swap files (undo and redo of mask strokes replace them, a failed
// storage removes its directory); the directory is restored before each input.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include <glog/logging.h>

#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/ExerciseDocument.h"
#include "support/SampleDocuments.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
namespace fs = std::filesystem;

// The swap directory with the sample sessions' files, and their bytes for restoring them.
class SwapDirectory {
 public:
  SwapDirectory() {
    canvaro_test::WriteSampleDocuments(dir_.path());
    for (const auto& entry : fs::directory_iterator(dir_.path().native())) {
      std::ifstream in(entry.path(), std::ios::binary);
      files_[entry.path().filename().string()] =
          std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
  }

  const ioPath& path() const { return dir_.path(); }

  // Back to the files written at start-up, and nothing else.
  void Restore() const {
    const fs::path& root = dir_.path().native();
    std::error_code error;
    fs::create_directories(root, error);
    for (const auto& entry : fs::directory_iterator(root, error)) {
      const auto known = files_.find(entry.path().filename().string());
      if (known == files_.end() || !entry.is_regular_file(error) ||
          entry.file_size(error) != known->second.size()) {
        fs::remove_all(entry.path(), error);
      }
    }
    for (const auto& [name, bytes] : files_) {
      if (fs::exists(root / name, error)) continue;
      std::ofstream(root / name, std::ios::binary)
          .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
  }

 private:
  canvaro_test::TempDir dir_;
  std::map<std::string, std::string> files_;
};

// Made once at start-up; removed with its files when the fuzzer exits normally.
std::unique_ptr<const SwapDirectory> swapDirectory;

void LoadAndExercise(std::string_view text) {
  const Core::Property tree = Core::PropertySerializer::FromString(text);
  ICanvaroUndoPtr doc = ICanvaroUndo::Create(
      swapDirectory->path(), [n = 0]() mutable { return "fuzz_" + std::to_string(n++) + ".raw"; });
  doc->Deserialize(Drevin::SerializerProperty::Create(tree));
  canvaro_test::ExerciseDocument(*doc);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  FLAGS_minloglevel = google::GLOG_FATAL;
  swapDirectory = std::make_unique<const SwapDirectory>();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  swapDirectory->Restore();
  try {
    LoadAndExercise(std::string_view(reinterpret_cast<const char*>(data), size));
  } catch (const CanvaroException&) {
  } catch (const Core::CoreException&) {
  }
  return 0;
}
