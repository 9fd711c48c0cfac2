// Feeds arbitrary text to a fresh document as its saved form. The swap directory holds the real
// swap files of the sample sessions (made once at start-up), so that mutated saves find real
// pictures and masks under the names they mention.
//
// Every input must end in a loaded document or in one of the documented exceptions:
// CanvaroException, or Core::CoreException (Core::PropertyException and its
// Core::WrongTypeIsRequested included). A loaded document is then used as a host would
// (ExerciseDocument: every query, undo and redo while enabled, one edit of each kind); that may
// fail with the same exceptions only.
//
// Each input gets a fresh copy of the swap files in a fresh swap directory, beside a sentinel
// folder (ScratchArea.h). The document may delete swap files (undo and redo of mask strokes
// replace them) and a failed storage removes its whole directory; nothing is restored over what
// the input did, and afterwards nothing outside the swap directory may have been touched.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include <glog/logging.h>

#include "ScratchArea.h"
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

std::unique_ptr<canvaro_fuzz::ScratchArea> area;
canvaro_fuzz::Files swapFiles;  // written at start-up

void LoadAndExercise(std::string_view text) {
  const Core::Property tree = Core::PropertySerializer::FromString(text);
  ICanvaroUndoPtr doc = ICanvaroUndo::Create((*area / "swap").string(), [n = 0]() mutable {
    return "fuzz_" + std::to_string(n++) + ".raw";
  });
  doc->Deserialize(Drevin::SerializerProperty::Create(tree));
  canvaro_test::ExerciseDocument(*doc);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  FLAGS_minloglevel = google::GLOG_FATAL;
  area = std::make_unique<canvaro_fuzz::ScratchArea>(std::set<std::string>{"swap"});
  const canvaro_test::TempDir seeds;
  canvaro_test::WriteSampleDocuments(seeds.path());
  swapFiles = canvaro_fuzz::ReadTree(seeds.path().native());
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fs::path swap = *area / "swap";
  fs::remove_all(swap);
  fs::create_directory(swap);
  canvaro_fuzz::WriteTree(swap, swapFiles);
  area->Arm();
  try {
    LoadAndExercise(std::string_view(reinterpret_cast<const char*>(data), size));
  } catch (const CanvaroException&) {
  } catch (const Core::CoreException&) {
  }
  area->Check();
  return 0;
}
