// canvaro demo: a scripted editing session as a host runs it, saved, reloaded and checked, with
// a summary of what it cost.
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <set>

#include <glog/logging.h>

#include "BuiltInPicture.h"
#include "Commands.h"
#include "DemoSession.h"
#include "OperationTimes.h"
#include "Png.h"
#include "Progress.h"
#include "ReloadCheck.h"
#include "SavedDocument.h"
#include "ToolError.h"
#include "canvaro/Undo/DocumentPackage.h"
#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/Undo/IUndoManager.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace canvaro_tool {

namespace fs = std::filesystem;
namespace Proc = Kelbra::Proc;
using namespace Kelbra::Canvaro;

namespace {

constexpr const char* kScratchFolderName = "reload-check";

// Counts the library's swap batches and memory warnings from its log lines.
class SwapLogCounter : public google::LogSink {
 public:
  SwapLogCounter() { google::AddLogSink(this); }
  ~SwapLogCounter() override { google::RemoveLogSink(this); }
  SwapLogCounter(const SwapLogCounter&) = delete;
  SwapLogCounter& operator=(const SwapLogCounter&) = delete;

  void send(google::LogSeverity, const char*, const char*, int, const struct ::tm*,
            const char* message, size_t length) override {
    const std::string_view text(message, length);
    if (text == "Swap started") ++swapBatches;
    if (text.rfind("Memory usage: ", 0) == 0) ++memoryWarnings;
  }

  std::atomic<unsigned> swapBatches{0};
  std::atomic<unsigned> memoryWarnings{0};
};

std::string MiB(std::uint64_t bytes) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f MiB", static_cast<double>(bytes) / (1024.0 * 1024.0));
  return text;
}

// The process's peak resident memory, from /proc; 0 where that is not available.
std::uint64_t PeakMemory() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stoull(line.substr(6)) * 1024;
  }
  return 0;
}

// Makes `dir` ready: new, or an earlier demo output whose files are removed.
void PrepareOutput(const fs::path& dir) {
  std::error_code error;
  if (fs::exists(dir, error) && !fs::is_directory(dir, error)) {
    throw ToolError("cannot write to " + dir.string() + ": it is a file, not a directory");
  }
  const std::set<std::string> ours = {kDocumentFileName, kManifestFileName, kPicturesFolderName,
                                      kSwapFolderName, kScratchFolderName};
  if (fs::is_directory(dir, error)) {
    for (const auto& entry : fs::directory_iterator(dir)) {
      const std::string name = entry.path().filename().string();
      // Temporary files of an interrupted save are left-overs, not the user's files.
      if (name.starts_with(".") && name.find(".tmp-") != std::string::npos) {
        fs::remove(entry.path(), error);
        continue;
      }
      if (ours.count(name) == 0) {
        throw ToolError("will not write into " + dir.string() + ": it holds " +
                        entry.path().filename().string() +
                        ", which is not from canvaro demo (choose an empty or new --out)");
      }
    }
    for (const auto& name : ours) fs::remove_all(dir / name);
  }
  fs::create_directories(dir / kSwapFolderName, error);
  if (error)
    throw ToolError("cannot create " + (dir / kSwapFolderName).string() + ": " + error.message());
}

// `text` as a whole number in [min, max]; `what` names it in the UsageError otherwise.
std::int64_t ParseInt(const std::string& text, const std::string& what, std::int64_t min,
                      std::int64_t max) {
  std::int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [ptr, error] = std::from_chars(text.data(), end, value);
  if (text.empty() || error != std::errc() || ptr != end || value < min || value > max) {
    throw UsageError(what + " wants a whole number from " + std::to_string(min) + " to " +
                     std::to_string(max) + ", not '" + text + "'");
  }
  return value;
}

Kelbra::Conf::FrameInfo ParseSize(const std::string& text) {
  const auto x = text.find('x');
  if (x == std::string::npos)
    throw UsageError("--size wants WxH (for example 640x480), not '" + text + "'");
  const auto width = ParseInt(text.substr(0, x), "--size width", 1, kMaxPngSide);
  const auto height = ParseInt(text.substr(x + 1), "--size height", 1, kMaxPngSide);
  return {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), 1, 1};
}

struct StorageFigures {
  unsigned frames = 0;
  unsigned onDisk = 0;
  std::uint64_t bytesOnDisk = 0;
};

StorageFigures Figures(const FrameStorage& storage) {
  StorageFigures figures;
  figures.frames = storage.GetCount();
  for (Kelbra::Index i = 0; i < storage.GetCount(); ++i) {
    const Kelbra::ioPath name = storage.GetFileName(i);
    if (name.empty()) continue;
    std::error_code error;
    const auto size = fs::file_size(storage.GetSwapDirectory().native() / name.native(), error);
    if (error) continue;
    ++figures.onDisk;
    figures.bytesOnDisk += size;
  }
  return figures;
}

}  // namespace

int RunDemo(const DemoOptions& options) {
  const int steps = options.steps;
  const fs::path out = options.out;
  if (options.picture && options.size) {
    throw UsageError("--size sets the built-in picture's size; it cannot go with --picture");
  }
  const Kelbra::Conf::FrameInfo size =
      options.size ? ParseSize(*options.size)
                   : Kelbra::Conf::FrameInfo{kBuiltInWidth, kBuiltInHeight, 1, 1};
  if (options.verbose) FLAGS_stderrthreshold = google::GLOG_INFO;

  const auto started = std::chrono::steady_clock::now();
  OperationTimes times;
  Proc::IDataVideoPtr source;
  std::string sourceName;
  if (const auto& picture = options.picture) {
    source = times.Time("read picture", [&] { return ReadPng(*picture); });
    sourceName = fs::path(*picture).filename().string();
  } else {
    source =
        times.Time("make picture", [&] { return MakeBuiltInPicture(size.width, size.height); });
    sourceName = "built-in picture";
  }
  const auto& info = source->GetFrameInfo();
  const std::uint64_t pictureBytes = std::uint64_t{4} * info.width * info.height;
  const std::uint64_t maskBytes = std::uint64_t{1} * info.width * info.height;
  // Beside the document's pictures, a render holds its new picture and a blur two scratch copies;
  // a stroke holds one mask.
  constexpr std::uint64_t kToolPictures = 3;

  PrepareOutput(out);
  const fs::path documentFile = out / kDocumentFileName;
  const fs::path swapDirectory = out / kSwapFolderName;
  std::cout << "canvaro demo: " << steps << " editing step(s) on " << sourceName << " ("
            << info.width << "x" << info.height << " RGBA, " << MiB(pictureBytes)
            << " per picture)\n"
            << "Writing to " << out.string() << ": the document package (" << kDocumentFileName
            << ", " << kManifestFileName << ", " << kPicturesFolderName << "/), swap files in "
            << swapDirectory.string() << "/ while it runs\n"
            << "  up to about " << MiB((steps + 1) * pictureBytes + steps * maskBytes * 2)
            << " of pictures and masks; the document keeps at most "
            << MiB(ICanvaroUndo::kMemoryThreshold) << " of them in memory and swaps the rest\n";

  SwapLogCounter swapLog;
  ICanvaroUndoPtr document = ICanvaroUndo::Create(swapDirectory, [n = 0]() mutable {
    char name[32];
    std::snprintf(name, sizeof name, "frame_%06d.raw", n++);
    return std::string(name);
  });

  DemoSession session(*document, times);
  session.Start(source, sourceName);
  source.reset();
  {
    Progress progress(steps);
    for (int step = 1; step <= steps; ++step) {
      progress.Update(step - 1, "step " + std::to_string(step) + "...");
      const std::string label = session.RunStep(step);
      progress.Update(step, label);
    }
    session.Finish();
  }
  document->WaitForPendingSaves();
  const StorageFigures beforeSave = Figures(document->GetFrameStorage());
  const std::uint64_t inMemoryBeforeSave = document->GetCoreSize();
  const unsigned swapBatches = swapLog.swapBatches.load();
  const auto& counts = session.GetCounts();
  std::cout << "Edited: " << counts.renders << " rendered picture(s), " << counts.strokes
            << " mask stroke(s), " << counts.shapeEdits << " shape edit(s), " << counts.undos
            << " undo(s), " << counts.redos << " redo(s)\n";

  std::cout << "Recording every step of the session for the reload check...\n";
  const Recorded expected{RecordSteps(*document, times), RecordItems(*document)};

  std::cout << "Saving...\n";
  times.Time("save", [&] { SaveDocument(*document, out); });
  StorageFigures afterSave;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(out / kPicturesFolderName, error)) {
    ++afterSave.onDisk;
    afterSave.bytesOnDisk += entry.file_size(error);
  }
  const std::uint64_t documentBytes = fs::file_size(documentFile, error);

  std::cout << "Loading the saved document into a fresh one and comparing...\n";
  const ReloadResult check =
      CheckReload(*document, session.GetEffects(), expected, out, out / kScratchFolderName, times);

  const auto elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - started);
  const IUndoManager& manager = document->GetUndoManager();
  std::cout << "\nSummary\n"
            << "  steps:            " << manager.GetStepCount() << " undo steps (current "
            << manager.GetCurrentStep() << "), " << document->GetVideoCount() << " items, "
            << document->GetShapeItemCount(ShapeType::All) << " shapes ("
            << document->GetShapeActiveItemCount(ShapeType::All) << " visible)\n"
            << "  frames:           " << beforeSave.frames
            << " before saving: " << beforeSave.onDisk << " swapped to disk, "
            << MiB(inMemoryBeforeSave) << " of pictures in memory\n"
            << "  swapped:          " << MiB(beforeSave.bytesOnDisk) << " in " << beforeSave.onDisk
            << " swap file(s), " << swapBatches << " swap batch(es) after "
            << swapLog.memoryWarnings.load() << " memory warning(s)\n"
            << "  saved:            " << out.string() << " (" << documentBytes
            << " bytes of text), " << afterSave.onDisk << " picture(s), "
            << MiB(afterSave.bytesOnDisk) << "\n"
            << "  peak memory:      " << MiB(PeakMemory()) << " (the document keeps at most "
            << MiB(ICanvaroUndo::kMemoryThreshold)
            << " of pictures, more only while the disk catches up; the tool renders with up to "
            << MiB(kToolPictures * pictureBytes + maskBytes) << " of its own)\n";
  char line[64];
  std::snprintf(line, sizeof line, "  total time:       %.2f s\n", elapsed.count());
  std::cout << line << "  time per operation:\n";
  times.Print(std::cout);
  if (check.mismatches.empty()) {
    std::cout << "  reload:           matched (" << check.itemsCompared
              << " items pixel for pixel, " << check.stepsCompared << " step states)\n";
  } else {
    std::cout << "  reload:           DID NOT MATCH\n";
    for (std::size_t i = 0; i < check.mismatches.size() && i < 20; ++i) {
      std::cout << "    " << check.mismatches[i] << "\n";
    }
  }
  std::cout << "\nNext: canvaro inspect " << out.string() << "; canvaro verify " << out.string()
            << "; canvaro export " << out.string() << " --item " << document->GetCurrentIndex()
            << " --out picture.png\n";
  // The package holds its own pictures: the session's swap files are scratch.
  document.reset();
  fs::remove_all(swapDirectory, error);
  if (!check.mismatches.empty()) {
    std::cerr << "canvaro: the reloaded document did not match the session ("
              << check.mismatches.size() << " difference(s))\n";
    return kExitProblem;
  }
  return 0;
}

}  // namespace canvaro_tool
