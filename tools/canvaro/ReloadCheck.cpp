#include "ReloadCheck.h"

#include <cstring>

#include "ToolError.h"
#include "canvaro/Undo/DocumentPackage.h"
#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/IUndoManager.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace canvaro_tool {

namespace fs = std::filesystem;
namespace Proc = Kelbra::Proc;
using namespace Kelbra::Canvaro;

namespace {

constexpr unsigned kCurrent = ICanvaroUndo::kCurrentItem;

// A 64-bit hash of every row of every plane (without padding), with format and size mixed in.
std::uint64_t HashPixels(const Proc::IDataVideoPtr& picture) {
  if (!picture) return 0;
  const Proc::IDataVideo& constPicture = *picture;
  std::uint64_t hash = 0xcbf29ce484222325ull;
  auto mix = [&](std::uint64_t value) {
    hash ^= value;
    hash *= 0x100000001b3ull;
    hash ^= hash >> 29;
  };
  mix(static_cast<std::uint64_t>(constPicture.GetPixFmt()));
  mix(static_cast<std::uint64_t>(constPicture.GetFrameInfo().width));
  mix(static_cast<std::uint64_t>(constPicture.GetFrameInfo().height));
  for (unsigned p = 0; p < constPicture.GetPlanesCount(); ++p) {
    const auto plane = constPicture.GetPlane(p);
    for (std::size_t y = 0; y < plane.GetRowCount(); ++y) {
      const std::uint8_t* row = plane.GetOffsetPtr(0, y);
      const std::size_t length = plane.GetRowLength();
      std::size_t x = 0;
      for (; x + 8 <= length; x += 8) {
        std::uint64_t word;
        std::memcpy(&word, row + x, 8);
        mix(word);
      }
      for (; x < length; ++x) mix(row[x]);
    }
  }
  return hash;
}

// Removes the scratch directory on every way out.
class ScratchDirectory {
 public:
  explicit ScratchDirectory(fs::path path) : path_(std::move(path)) {}
  ~ScratchDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

 private:
  fs::path path_;
};

std::string Describe(const StepState& state) {
  return "item " + std::to_string(state.item) + ", stroke " + std::to_string(state.maskIndex) +
         ", " + std::to_string(state.painted) + " painted pixels, " +
         std::to_string(state.shapes.size()) + " visible shapes";
}

}  // namespace

StepState CaptureStep(const ICanvaroUndo& document) {
  StepState state;
  state.step = document.GetUndoManager().GetCurrentStep();
  state.item = document.GetCurrentIndex();
  state.maskIndex = document.GetCurrentMaskIndex();
  state.pictureHash = HashPixels(document.GetVideo(kCurrent));
  state.maskHash = HashPixels(document.GetMask(kCurrent));
  state.painted = document.GetMaskPixelCount({});
  state.shapes = document.GetShapeActiveItems(ShapeType::All);
  return state;
}

std::vector<StepState> RecordSteps(ICanvaroUndo& document, OperationTimes& times) {
  std::size_t back = 0;
  while (document.IsUndoEnabled()) {
    times.Time("undo", [&] { document.Undo(); });
    ++back;
  }
  std::vector<StepState> states{CaptureStep(document)};
  while (document.IsRedoEnabled()) {
    times.Time("redo", [&] { document.Redo(); });
    states.push_back(CaptureStep(document));
  }
  const std::size_t forward = states.size() - 1 - back;
  for (std::size_t i = 0; i < forward; ++i) times.Time("undo", [&] { document.Undo(); });
  return states;
}

std::vector<ItemHashes> RecordItems(const ICanvaroUndo& document) {
  std::vector<ItemHashes> items;
  for (unsigned i = 0; i < document.GetVideoCount(); ++i) {
    items.push_back({HashPixels(document.GetVideo(i)), HashPixels(document.GetMask(i))});
  }
  return items;
}

ReloadResult CheckReload(const ICanvaroUndo& original, const std::vector<ToolEffectPtr>& effects,
                         const Recorded& expected, const fs::path& package,
                         const fs::path& scratchDirectory, OperationTimes& times) {
  ReloadResult result;
  // Every picture of the saved document has its swap file: this writes nothing.
  original.GetFrameStorage().SwapExcept({});
  original.WaitForPendingSaves();
  auto mismatch = [&](const std::string& text) { result.mismatches.push_back(text); };

  fs::remove_all(scratchDirectory);
  fs::create_directories(scratchDirectory);
  const ScratchDirectory scratch(scratchDirectory);
  ICanvaroUndoPtr loaded;
  try {
    times.Time("open", [&] {
      loaded = OpenDocument(package, scratchDirectory,
                            [n = 0]() mutable { return "check_" + std::to_string(n++) + ".raw"; });
    });
  } catch (...) {
    mismatch("the saved document does not load: " + DescribeCurrent());
    return result;
  }

  auto same = [&](auto a, auto b, const std::string& what) {
    if (a != b)
      mismatch(what + ": " + std::to_string(a) + " saved, " + std::to_string(b) + " loaded");
    return a == b;
  };
  same(original.GetVideoCount(), loaded->GetVideoCount(), "items");
  same(original.GetCurrentIndex(), loaded->GetCurrentIndex(), "current item");
  same(original.GetUndoManager().GetStepCount(), loaded->GetUndoManager().GetStepCount(), "steps");
  same(original.GetUndoManager().GetCurrentStep(), loaded->GetUndoManager().GetCurrentStep(),
       "current step");
  same(original.GetShapeItemCount(ShapeType::All), loaded->GetShapeItemCount(ShapeType::All),
       "shapes");
  if (!result.mismatches.empty()) return result;

  times.Time("compare items", [&] {
    for (unsigned i = 0; i < original.GetVideoCount(); ++i) {
      const std::string item = "item " + std::to_string(i);
      const ItemHashes want = i < expected.items.size() ? expected.items[i] : ItemHashes{};
      if (HashPixels(loaded->GetVideo(i)) != want.picture) {
        mismatch(item + ": the pictures differ");
      }
      if (HashPixels(loaded->GetMask(i)) != want.mask) mismatch(item + ": the masks differ");
      if (!(original.GetVideoInfo(i) == loaded->GetVideoInfo(i))) {
        mismatch(item + ": the geometry differs");
      }
      const MaskInfo& a = original.GetMaskInfo(i);
      const MaskInfo& b = loaded->GetMaskInfo(i);
      if (a.GetLeft() != b.GetLeft() || a.GetRight() != b.GetRight() || a.GetTop() != b.GetTop() ||
          a.GetBottom() != b.GetBottom() ||
          !(a.GetInfoEx().GetBlender() == b.GetInfoEx().GetBlender())) {
        mismatch(item + ": the mask settings differ");
      }
      if (original.GetSettings(i) != loaded->GetSettings(i)) {
        mismatch(item + ": the settings differ");
      }
      const ToolEffectPtr effect =
          ToolEffect::FromPackage(loaded->GetSettings(i).GetEffectsSettings().GetPackage());
      const ToolEffectPtr made = i < effects.size() ? effects[i] : nullptr;
      if (!IEffectSettings::Equals(made, effect)) {
        mismatch(item + ": the recorded effect differs");
      }
      ++result.itemsCompared;
    }
    for (unsigned i = 0; i < original.GetShapeItemCount(ShapeType::All); ++i) {
      if (original.GetShapeItemInfo(i, kCurrent) != loaded->GetShapeItemInfo(i, kCurrent) ||
          HashPixels(original.GetShapeItemVideo(i, kCurrent)) !=
              HashPixels(loaded->GetShapeItemVideo(i, kCurrent))) {
        mismatch("shape " + std::to_string(i) + " differs");
      }
    }
  });

  const std::vector<StepState> walked =
      times.Time("walk loaded", [&] { return RecordSteps(*loaded, times); });
  const std::vector<StepState>& steps = expected.steps;
  if (walked.size() != steps.size()) {
    mismatch("the loaded document has " + std::to_string(walked.size()) + " states, the session " +
             std::to_string(steps.size()));
  }
  for (std::size_t i = 0; i < std::min(walked.size(), steps.size()); ++i) {
    if (!(walked[i] == steps[i])) {
      mismatch("step " + std::to_string(i) + " differs: saved " + Describe(steps[i]) + "; loaded " +
               Describe(walked[i]));
    }
    ++result.stepsCompared;
  }
  loaded.reset();  // before the scratch directory goes
  return result;
}

}  // namespace canvaro_tool
