// Document packages against plain copies of the same bytes, on one session made once per run:
// 40 steps, each a 24-megapixel RGBA picture (6000 x 4000, 96,000,000 bytes), every picture
// swapped out to the session's swap directory before anything is measured.
//
//   Save          SaveDocument into a fresh package folder: the pictures are already in swap
//                 files, so each is a hard link (and an fsync of it), then the manifest and the
//                 document's text form
//   Open          OpenDocument of that package into a fresh swap directory: every picture read
//                 whole for its checksum, then linked into the swap directory
//   CopyCp        `cp -r` of the swap directory (the same picture bytes) into a fresh folder
//   CopyFsync     each swap file copied with read()/write() into a fresh folder and fsync()ed,
//                 then the folder fsync()ed: what a save costs when it cannot link
//
// Each figure is wall-clock time of the operation alone (making and removing folders is not
// timed), one operation per iteration, with the median, min and max over the repetitions.
// Files go to $CANVARO_BENCH_DIR, else /var/tmp; the run needs about 8 GB there (the session's
// swap files and one copy). The point: a save of swapped pictures costs far less than writing
// them, as it links them.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <glog/logging.h>

#include "canvaro/Undo/DocumentPackage.h"
#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"
#include "kelbra/Proc/IDataVideo.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kSteps = 40;
constexpr Conf::FrameInfo kInfo{6000, 4000, 1, 1};

// The session: its folder (removed at exit), document and swap files.
struct Session {
  Session() {
    const char* base = std::getenv("CANVARO_BENCH_DIR");
    std::string pattern = std::string(base ? base : "/var/tmp") + "/canvaro-bench-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp " + pattern);
    root = pattern;
    fs::create_directory(root / "swap");
    document = ICanvaroUndo::Create(ioPath(root / "swap"), [n = 0]() mutable {
      return "frame_" + std::to_string(n++) + ".raw";
    });
    const MaskInfo noMask(0, 0, 0, 0,
                          MaskInfo::MaskInfoEx(Blender::IBlender::Initializer(
                              Blender::IBlender::Initializer::DEFAULT, Proc::Color::Black())));
    for (int i = 0; i < kSteps; ++i) {
      auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, kInfo);
      picture->Fill(Proc::Color(static_cast<std::uint8_t>(i), 128, 64, 255));
      SettingsCore settings;
      settings.GetEffectsSettings().GetPackage().SetName("Step " + std::to_string(i));
      document->Add(settings, picture, nullptr, noMask);
    }
    document->GetFrameStorage().SwapExcept({});
    document->WaitForPendingSaves();
    for (const auto& entry : fs::directory_iterator(root / "swap")) bytes += entry.file_size();
    SaveDocument(*document, ioPath(root / "package"));
  }
  ~Session() {
    document.reset();
    std::error_code ignored;
    fs::remove_all(root, ignored);
  }

  fs::path root;
  ICanvaroUndoPtr document;
  std::int64_t bytes = 0;  // of the swap files
};

Session& TheSession() {
  static Session session;
  return session;
}

// Times `operation` on a fresh `target` folder (removed after each iteration, untimed).
void Measure(benchmark::State& state, const std::string& target,
             const std::function<void(const fs::path&)>& operation) {
  Session& session = TheSession();
  const fs::path folder = session.root / target;
  for (auto _ : state) {
    fs::remove_all(folder);
    const auto start = Clock::now();
    operation(folder);
    state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    fs::remove_all(folder);
  }
  state.SetBytesProcessed(state.iterations() * session.bytes);
  state.counters["session_MB"] = static_cast<double>(session.bytes) / 1e6;
}

void Save(benchmark::State& state) {
  Measure(state, "saved",
          [](const fs::path& folder) { SaveDocument(*TheSession().document, ioPath(folder)); });
}

void Open(benchmark::State& state) {
  Measure(state, "opened", [](const fs::path& folder) {
    fs::create_directory(folder);
    ICanvaroUndoPtr opened =
        OpenDocument(ioPath(TheSession().root / "package"), ioPath(folder),
                     [n = 0]() mutable { return "open_" + std::to_string(n++) + ".raw"; });
    benchmark::DoNotOptimize(opened->GetVideoCount());
  });
}

void CopyCp(benchmark::State& state) {
  Measure(state, "cp", [](const fs::path& folder) {
    const std::string command =
        "cp -r '" + (TheSession().root / "swap").string() + "' '" + folder.string() + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error(command + " failed");
  });
}

void Check(bool ok, const char* what) {
  if (!ok) throw std::runtime_error(std::string(what) + " failed");
}

void CopyFsync(benchmark::State& state) {
  Measure(state, "fsync", [](const fs::path& folder) {
    fs::create_directory(folder);
    std::vector<char> buffer(std::size_t{4} << 20);
    for (const auto& entry : fs::directory_iterator(TheSession().root / "swap")) {
      const int in = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
      const int out = ::open((folder / entry.path().filename()).c_str(),
                             O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
      Check(in >= 0 && out >= 0, "open");
      for (ssize_t got; (got = ::read(in, buffer.data(), buffer.size())) != 0;) {
        Check(got > 0 && ::write(out, buffer.data(), static_cast<std::size_t>(got)) == got, "copy");
      }
      Check(::fsync(out) == 0 && ::close(out) == 0 && ::close(in) == 0, "fsync");
    }
    const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    Check(dir >= 0 && ::fsync(dir) == 0 && ::close(dir) == 0, "folder fsync");
  });
}

double Min(const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); }
double Max(const std::vector<double>& v) { return *std::max_element(v.begin(), v.end()); }

void Configure(benchmark::internal::Benchmark* b) {
  b->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->Iterations(1)
      ->Repetitions(5)
      ->ComputeStatistics("min", Min)
      ->ComputeStatistics("max", Max)
      ->ReportAggregatesOnly(true);
}

BENCHMARK(Save)->Apply(Configure);
BENCHMARK(Open)->Apply(Configure);
BENCHMARK(CopyCp)->Apply(Configure);
BENCHMARK(CopyFsync)->Apply(Configure);

}  // namespace

int main(int argc, char** argv) {
  google::InitGoogleLogging(argv[0]);
  FLAGS_minloglevel = google::GLOG_ERROR;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
