// The demo's proof that a saved document comes back whole: load the saved text form into a
// fresh document and compare it with the session's document, pixel for pixel.
//
//   Recorded expected{RecordSteps(*document, times), RecordItems(*document)};  // before saving
//   ... save ...
//   ReloadResult result = CheckReload(*document, effects, expected, paths, times);
//
// What is compared: every item's picture and mask (by a 64-bit hash of their pixels, recorded
// before saving), geometry and settings (and the tool effect its package records) between the
// two documents; then the loaded document is walked through every step, from the first to the
// last, and each state is compared with the one recorded from the session's document: item and
// stroke in force, the picture and the mask (hashed), painted pixel count, visible shapes.
//
// Memory: the session's document lets go of its pictures before the loaded one is opened (they
// are all on disk after saving), and nothing compares two pictures side by side, so that the check
// stays within one document's budget.
//
// Swap files. Undo and redo of mask strokes replace pictures in the storage, which deletes their
// swap files, so no document may walk the saved swap directory. The loaded document therefore
// works on a scratch copy of it (hard links where the file system allows, copies otherwise),
// which CheckReload removes again. The session's document is only read after saving.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "OperationTimes.h"
#include "ToolEffect.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/shapes/ShapeInfo.h"

namespace canvaro_tool {

// What a host sees of a document at one step.
struct StepState {
  std::int32_t step = 0;
  unsigned item = 0;
  unsigned maskIndex = 0;
  std::uint64_t pictureHash = 0;
  std::uint64_t maskHash = 0;
  std::uint64_t painted = 0;
  std::vector<Kelbra::Canvaro::ShapeInfo> shapes;

  bool operator==(const StepState&) const = default;
};

StepState CaptureStep(const Kelbra::Canvaro::ICanvaroUndo& document);

// The state after every step, first to last, walking the document back and forth; leaves it at
// the step where it was.
std::vector<StepState> RecordSteps(Kelbra::Canvaro::ICanvaroUndo& document, OperationTimes& times);

// The hashes of every item's picture and mask, in item order.
struct ItemHashes {
  std::uint64_t picture = 0;
  std::uint64_t mask = 0;
};
std::vector<ItemHashes> RecordItems(const Kelbra::Canvaro::ICanvaroUndo& document);

// What the session's document showed before it was saved.
struct Recorded {
  std::vector<StepState> steps;
  std::vector<ItemHashes> items;
};

struct ReloadResult {
  std::vector<std::string> mismatches;  // empty when everything matched
  unsigned itemsCompared = 0;
  unsigned stepsCompared = 0;
};

// Lets `original` go of its pictures, opens the package `package` into a fresh document working
// on `scratchDirectory` and compares it with `original` and `expected` (see the header comment).
// `effects` are the tool effects of the original's items. Load failures are reported as mismatches.
ReloadResult CheckReload(const Kelbra::Canvaro::ICanvaroUndo& original,
                         const std::vector<ToolEffectPtr>& effects, const Recorded& expected,
                         const std::filesystem::path& package,
                         const std::filesystem::path& scratchDirectory, OperationTimes& times);

}  // namespace canvaro_tool
