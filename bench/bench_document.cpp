// Benchmarks of the whole document, driven as a host drives it.
//
// Session40Steps: 40 steps, each a freshly rendered 24-megapixel RGBA picture (6000 x 4000,
// about 92 MiB), on a swap directory. Reported side by side: the peak resident memory of the
// process during the session (VmHWM, reset at the start) against the budget of 250 MiB plus a
// few pictures (the picture in force, the one being rendered, and those the worker is still
// writing), and the median, min and max time of an Add once the budget is reached, with and
// without host work between the edits.
//
// UndoToSwappedStep: undo to a step whose picture is on disk, which reads it back (one step
// further back per iteration); PlainRead reads one of the swap files with plain stdio, as the
// baseline of the same run.
//
// SaveLoad1000Steps: a document of 1,000 steps (settings, mask strokes and shapes, on small
// pictures) saved to its text form and loaded into a fresh document; reports both times and
// the size of the text.
//
// Run a single benchmark per process for a meaningful peak: --benchmark_filter=Session40Steps.
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include <benchmark/benchmark.h>
#include <glog/logging.h>

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"
#include "canvaro/shapes/LineInfo.h"
#include "kelbra/Core/FileSystem.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "kelbra/Proc/BufferPool.h"
#include "kelbra/Proc/IDataVideo.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using Clock = std::chrono::steady_clock;

constexpr std::int32_t kWidth = 6000;
constexpr std::int32_t kHeight = 4000;
constexpr double kMiB = 1024.0 * 1024.0;

// A swap directory of its own, removed at the end.
class SwapDir {
 public:
  explicit SwapDir(const std::string& name)
      : path_(std::filesystem::temp_directory_path() / (name + "_" + std::to_string(::getpid()))) {
    std::filesystem::create_directories(path_.native());
  }
  ~SwapDir() { Core::RemoveDir(path_); }
  const ioPath& path() const { return path_; }

 private:
  ioPath path_;
};

std::function<std::string()> Names() {
  return [n = 0]() mutable { return "frame_" + std::to_string(n++) + ".raw"; };
}

// A value of /proc/self/status in KiB ("VmHWM", "VmRSS").
double StatusMiB(const std::string& key) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(key + ":", 0) == 0) return std::stod(line.substr(key.size() + 1)) / 1024.0;
  }
  return 0;
}

// Resets the peak resident size to the current one.
void ResetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

MaskInfo NoMask() {
  return MaskInfo(0, 0, 0, 0,
                  MaskInfo::MaskInfoEx(Blender::IBlender::Initializer(
                      Blender::IBlender::Initializer::DEFAULT, Proc::Color::Black())));
}

SettingsCore Step(int i) {
  SettingsCore settings;
  settings.GetEffectsSettings().GetPackage().SetName("Step " + std::to_string(i));
  return settings;
}

// What the host's renderer hands over: a new picture with every byte written.
Proc::IDataVideoPtr Render(int i, std::int32_t width = kWidth, std::int32_t height = kHeight) {
  auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {width, height, 1, 1});
  picture->Fill(
      Proc::Color(static_cast<std::uint8_t>(i), 128, static_cast<std::uint8_t>(255 - i), 255));
  return picture;
}

void Session40Steps(benchmark::State& state) {
  constexpr int kSteps = 40;
  const auto hostWork = std::chrono::milliseconds(state.range(0));
  for (auto _ : state) {
    SwapDir dir("canvaro_bench_session");
    ResetPeak();
    const double startMiB = StatusMiB("VmRSS");
    std::vector<double> addSeconds;
    {
      ICanvaroUndoPtr doc = ICanvaroUndo::Create(dir.path(), Names());
      for (int i = 0; i < kSteps; ++i) {
        Proc::IDataVideoPtr picture = Render(i);
        std::this_thread::sleep_for(hostWork);
        const auto start = Clock::now();
        doc->Add(Step(i), picture, nullptr, NoMask());
        addSeconds.push_back(std::chrono::duration<double>(Clock::now() - start).count());
      }
      doc->WaitForPendingSaves();
      state.counters["in_memory_MiB"] = static_cast<double>(doc->GetCoreSize()) / kMiB;
    }
    double total = 0;
    for (const double seconds : addSeconds) total += seconds;
    state.SetIterationTime(total);
    // Over the steps after the budget is reached, when every Add queues a picture to write.
    std::vector<double> late(addSeconds.begin() + 5, addSeconds.end());
    std::sort(late.begin(), late.end());
    const double pictureMiB = kWidth * kHeight * 4 / kMiB;
    state.counters["peak_MiB"] = StatusMiB("VmHWM") - startMiB;
    state.counters["budget_plus_4_pictures_MiB"] = 250 + 4 * pictureMiB;
    double first = 0, last = 0;
    for (int i = 0; i < 10; ++i) {
      first += addSeconds[i];
      last += addSeconds[kSteps - 10 + i];
    }
    state.counters["add_last10_over_first10"] = last / first;
    state.counters["add_ms_median"] = late[late.size() / 2] * 1000;
    state.counters["add_ms_min"] = late.front() * 1000;
    state.counters["add_ms_max"] = late.back() * 1000;
  }
}
// Arg: milliseconds of host work between two edits. With none, the disk is slower than the
// edits and each Add waits until no more than the budget is unwritten; with enough, the disk
// keeps up and an Add never waits.
BENCHMARK(Session40Steps)
    ->ArgName("host_ms")
    ->Arg(0)
    ->Arg(300)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// A host that walks back through a 40-step history of 24-megapixel pictures, showing the picture
// in force at every step, and then reads every item once. Reported: the peak resident memory of
// the walk above the process's size before the document, against 250 MiB + 3 pictures.
void UndoBackAndReadEveryItem(benchmark::State& state) {
  constexpr int kSteps = 40;
  for (auto _ : state) {
    SwapDir dir("canvaro_bench_walk");
    const double startMiB = StatusMiB("VmRSS");
    ICanvaroUndoPtr doc = ICanvaroUndo::Create(dir.path(), Names());
    for (int i = 0; i < kSteps; ++i) doc->Add(Step(i), Render(i), nullptr, NoMask());
    doc->WaitForPendingSaves();
    ResetPeak();
    const auto start = Clock::now();
    while (doc->IsUndoEnabled()) {
      doc->Undo();
      benchmark::DoNotOptimize(doc->GetVideo(ICanvaroUndo::kCurrentItem));
    }
    for (unsigned i = 0; i < doc->GetVideoCount(); ++i) benchmark::DoNotOptimize(doc->GetVideo(i));
    state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    const double pictureMiB = kWidth * kHeight * 4 / kMiB;
    state.counters["peak_MiB"] = StatusMiB("VmHWM") - startMiB;
    state.counters["goal_peak_MiB"] = 250 + 3 * pictureMiB;
  }
}
BENCHMARK(UndoBackAndReadEveryItem)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

// A document of eight 24-megapixel steps, at its last step, with every other step's picture on
// disk and out of memory.
struct SwappedDocument {
  static constexpr int kSteps = 12;
  SwappedDocument() : dir("canvaro_bench_undo"), doc(ICanvaroUndo::Create(dir.path(), Names())) {
    for (int i = 0; i < kSteps; ++i) doc->Add(Step(i), Render(i), nullptr, NoMask());
    // The budget alone leaves every other step in memory; the benchmark wants them all on disk.
    doc->GetFrameStorage().SwapExcept(doc->GetUsedFrameIndexList());
    doc->WaitForPendingSaves();
  }
  SwapDir dir;
  ICanvaroUndoPtr doc;
};

// Each iteration undoes one step further back; undo never swaps, so every step undone to is
// read from its file. Arg 1 empties the pool of freed picture buffers before each undo (outside
// the timing), so that every load gets fresh pages, as without the pool.
void UndoToSwappedStep(benchmark::State& state) {
  SwappedDocument session;
  ICanvaroUndo& doc = *session.doc;
  rusage before{};
  ::getrusage(RUSAGE_SELF, &before);
  for (auto _ : state) {
    if (state.range(0) != 0) {
      state.PauseTiming();
      Proc::TrimBufferPool();
      state.ResumeTiming();
    }
    doc.Undo();
  }
  rusage after{};
  ::getrusage(RUSAGE_SELF, &after);
  state.counters["page_faults_per_undo"] = static_cast<double>(after.ru_minflt - before.ru_minflt) /
                                           static_cast<double>(state.iterations());
  // Every step undone to was on disk; the budget of loads let go of the older ones read back.
  state.counters["in_memory_MiB"] = static_cast<double>(doc.GetCoreSize()) / kMiB;
  state.SetBytesProcessed(state.iterations() * kWidth * kHeight * 4);
}
BENCHMARK(UndoToSwappedStep)
    ->ArgName("empty_pool")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(SwappedDocument::kSteps - 2);

// The same bytes read with stdio from one of the swap files, into a buffer already in memory
// (arg 0) or into a fresh picture buffer with huge pages, as a load without the pool of freed
// buffers must (arg 1: the page faults and the kernel's zeroing of a new picture).
void PlainRead(benchmark::State& state) {
  SwappedDocument session;
  const ioPath file = session.dir.path() / session.doc->GetFrameStorage().GetFileName(0);
  const std::size_t bytes = static_cast<std::size_t>(kWidth) * kHeight * 4 + 4096;
  std::vector<char> warm(bytes);
  for (auto _ : state) {
    Proc::TrimBufferPool();
    std::uint8_t* fresh =
        state.range(0) != 0 ? Proc::Details::AcquirePictureBuffer(bytes) : nullptr;
    char* buffer = fresh != nullptr ? reinterpret_cast<char*>(fresh) : warm.data();
    std::FILE* in = std::fopen(file.string().c_str(), "rb");
    if (in == nullptr) {
      state.SkipWithError("no swap file");
      break;
    }
    benchmark::DoNotOptimize(std::fread(buffer, 1, bytes, in));
    std::fclose(in);
    Proc::Details::ReleasePictureBuffer(fresh, bytes);
  }
  Proc::TrimBufferPool();
  state.SetBytesProcessed(state.iterations() * kWidth * kHeight * 4);
}
BENCHMARK(PlainRead)
    ->ArgName("fresh_buffer")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(SwappedDocument::kSteps - 2);

// 1,000 steps on 64 x 48 pictures: a settings step, then a mask stroke on it, then a new shape,
// over and over (334 settings steps, 333 strokes, 333 shapes).
ICanvaroUndoPtr ThousandSteps(const ioPath& dir) {
  constexpr std::int32_t w = 64, h = 48;
  ICanvaroUndoPtr doc = ICanvaroUndo::Create(dir, Names());
  Proc::IDataVideoPtr mask;
  for (int i = 0; i < 1000; ++i) {
    switch (i % 3) {
      case 0:
        doc->Add(Step(i), Render(i, w, h), nullptr, NoMask());
        mask = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, {w, h, 1, 1});
        for (std::int32_t y = 0; y < h; ++y) {
          std::memset(mask->GetPlane(0).GetOffsetPtr(0, static_cast<std::size_t>(y)), 0, w);
        }
        break;
      case 1: {
        mask = Proc::CopyDataVideo(*mask);
        const std::int32_t x = i % (w - 8);
        auto plane = mask->GetPlane(0);
        for (std::int32_t y = 4; y < 12; ++y) {
          for (std::int32_t dx = 0; dx < 8; ++dx) {
            *plane.GetOffsetPtr(static_cast<std::size_t>(x + dx), static_cast<std::size_t>(y)) = 90;
          }
        }
        MaskInfo stroke = NoMask();
        stroke.SetRect(x, x + 8, 4, 12);
        doc->AddMask(mask, stroke);
        break;
      }
      default: {
        auto line = LineInfo::Create(IToolsId::SHAPE_LINE);
        line->GetPosition().SetX((i % 100) / 100.0);
        doc->SetShape(ShapeInfo(*line), nullptr);
        break;
      }
    }
  }
  return doc;
}

void SaveLoad1000Steps(benchmark::State& state) {
  for (auto _ : state) {
    SwapDir dir("canvaro_bench_save");
    ICanvaroUndoPtr doc = ThousandSteps(dir.path());
    const std::size_t steps = doc->GetUndoManager().GetStepCount();

    auto start = Clock::now();
    Core::Property tree;
    doc->Serialize(Drevin::SerializerProperty::Create(tree));
    const std::string text = Core::PropertySerializer::ToString(tree);
    const double saveSeconds = std::chrono::duration<double>(Clock::now() - start).count();
    start = Clock::now();
    doc->WaitForPendingSaves();
    const double writeSeconds = std::chrono::duration<double>(Clock::now() - start).count();
    doc.reset();

    start = Clock::now();
    ICanvaroUndoPtr loaded = ICanvaroUndo::Create(
        dir.path(), [n = 0]() mutable { return "loaded_" + std::to_string(n++) + ".raw"; });
    const Core::Property parsed = Core::PropertySerializer::FromString(text);
    loaded->Deserialize(Drevin::SerializerProperty::Create(parsed));
    const double loadSeconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (loaded->GetUndoManager().GetStepCount() != steps) state.SkipWithError("steps differ");

    state.SetIterationTime(saveSeconds + loadSeconds);
    state.counters["steps"] = static_cast<double>(steps);
    state.counters["save_ms"] = saveSeconds * 1000;
    state.counters["swap_files_written_ms"] = writeSeconds * 1000;
    state.counters["load_ms"] = loadSeconds * 1000;
    state.counters["text_KiB"] = static_cast<double>(text.size()) / 1024.0;
    loaded.reset();
  }
}
BENCHMARK(SaveLoad1000Steps)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  google::InitGoogleLogging(argv[0]);
  // The document logs every swap batch, mask count and budget warning; keep the output readable.
  FLAGS_minloglevel = google::GLOG_ERROR;
  ::benchmark::Initialize(&argc, argv);
  if (::benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  std::printf(
      "Goals: Session40Steps/host_ms:300 add_ms_median <= 1 and add_last10_over_first10 <= 1.2; "
      "UndoBackAndReadEveryItem peak_MiB <= goal_peak_MiB; UndoToSwappedStep <= 1.05 x "
      "PlainRead/fresh_buffer:1.\n");
  ::benchmark::RunSpecifiedBenchmarks();
  ::benchmark::Shutdown();
  return 0;
}
