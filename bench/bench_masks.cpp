// Benchmarks of the mask history on a 24-megapixel mask (6000 x 4000, one byte per pixel).
//
// CheckInfo/<kind> recounts a whole mask that is empty, sparsely painted (a hundred small
// brush dabs) or fully painted; Memchr/<kind> scans the same bytes with memchr as the baseline
// of the same run, and ByteSum/full adds up the bytes of the full mask in a plain loop. Compare
// their bytes_per_second. Goal: the empty case reaches at least 0.8 of memchr's; the full case
// is reported against the byte sum, a lower bound of what touching every byte costs.
// UndoRedo/<side> undoes and redoes one square stroke of side x side pixels: its time
// grows with the stroke's area (see the fitted complexity), not with the mask's size;
// CopyWholeMask is what one copy of the mask would cost instead.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include <benchmark/benchmark.h>
#include <glog/logging.h>

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/MaskUndo.h"
#include "canvaro/settings/ICanvaroBrush.h"
#include "canvaro/settings/MaskInfo.h"
#include "kelbra/Core/FileSystem.h"
#include "kelbra/Proc/IDataVideo.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

constexpr std::int32_t kWidth = 6000;
constexpr std::int32_t kHeight = 4000;

enum class Kind { Empty, Sparse, Full };

MaskInfo Rect(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom) {
  return MaskInfo(left, right, top, bottom,
                  MaskInfo::MaskInfoEx(Blender::IBlender::Initializer(
                      Blender::IBlender::Initializer::DEFAULT, Proc::Color::Black())));
}

Proc::IDataVideoPtr MakeMask(Kind kind) {
  auto mask = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, {kWidth, kHeight, 1, 1});
  auto plane = mask->GetPlane(0);
  const std::uint8_t fill = kind == Kind::Full ? ICanvaroBrush::INDEX_DEFAULT : 0;
  for (std::int32_t y = 0; y < kHeight; ++y) std::memset(plane.GetOffsetPtr(0, y), fill, kWidth);
  if (kind == Kind::Sparse) {
    // A hundred round dabs of radius 20: about half a percent of the pixels.
    std::mt19937 random(7);
    for (int dab = 0; dab < 100; ++dab) {
      const std::int32_t cx = 20 + static_cast<std::int32_t>(random() % (kWidth - 40));
      const std::int32_t cy = 20 + static_cast<std::int32_t>(random() % (kHeight - 40));
      for (std::int32_t y = -20; y <= 20; ++y)
        for (std::int32_t x = -20; x <= 20; ++x)
          if (x * x + y * y <= 400) *plane.GetOffsetPtr(cx + x, cy + y) = 7;
    }
  }
  return mask;
}

// A storage in a fresh swap directory, removed afterwards. Nothing is swapped here.
struct Storage {
  Storage() {
    char pattern[] = "/tmp/canvaro-bench-XXXXXX";
    directory = ioPath(::mkdtemp(pattern));
    storage = std::make_unique<FrameStorage>(
        directory, [n = 0]() mutable { return "frame" + std::to_string(n++); });
  }
  ~Storage() {
    storage.reset();
    Core::RemoveDir(directory);
  }
  ioPath directory;
  std::unique_ptr<FrameStorage> storage;
};

void QuietLogs() { FLAGS_minloglevel = google::GLOG_WARNING; }

void CheckInfo(benchmark::State& state, Kind kind) {
  QuietLogs();
  Storage s;
  const Proc::IDataVideoPtr picture = MakeMask(kind);
  MaskUndo mask(s.storage.get(), kWidth, kHeight, picture, Rect(0, kWidth, 0, kHeight));
  const Index working = mask.Get(0).GetFrameIndex();
  for (auto _ : state) {
    // An unpainted mask is dropped by every count: put it back (no pixels are touched).
    s.storage->Reset(working, picture);
    mask.CheckInfo(Rect(0, kWidth, 0, kHeight));
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
  state.counters["painted"] = static_cast<double>(mask.GetPixelCount({}));
}

void Memchr(benchmark::State& state, Kind kind) {
  const Proc::IDataVideoPtr picture = MakeMask(kind);
  const auto plane = std::as_const(*picture).GetPlane(0);
  for (auto _ : state) {
    // A value no mask here holds, so that every byte is looked at.
    std::size_t found = 0;
    for (std::int32_t y = 0; y < kHeight; ++y) {
      found += std::memchr(plane.GetOffsetPtr(0, y), 1, kWidth) != nullptr;
    }
    benchmark::DoNotOptimize(found);
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

void ByteSum(benchmark::State& state, Kind kind) {
  const Proc::IDataVideoPtr picture = MakeMask(kind);
  const auto plane = std::as_const(*picture).GetPlane(0);
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (std::int32_t y = 0; y < kHeight; ++y) {
      const std::uint8_t* row = plane.GetOffsetPtr(0, y);
      for (std::int32_t x = 0; x < kWidth; ++x) sum += row[x];
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

void UndoRedo(benchmark::State& state) {
  QuietLogs();
  const auto side = static_cast<std::int32_t>(state.range(0));
  Storage s;
  const Proc::IDataVideoPtr start = MakeMask(Kind::Sparse);
  MaskUndo mask(s.storage.get(), kWidth, kHeight, start, Rect(0, kWidth, 0, kHeight));
  // The stroke: a square of brush 200 in the middle of the mask.
  const Proc::IDataVideoPtr stroked = Proc::CopyDataVideo(*start);
  auto plane = stroked->GetPlane(0);
  const std::int32_t left = (kWidth - side) / 2;
  const std::int32_t top = (kHeight - side) / 2;
  for (std::int32_t y = top; y < top + side; ++y)
    std::memset(plane.GetOffsetPtr(left, y), 200, side);
  mask.PushMask(Rect(left, left + side, top, top + side), stroked);

  for (auto _ : state) {
    mask.UndoImpl();
    mask.RedoImpl();
  }
  if (mask.GetPixelCount({200}) != static_cast<std::uint64_t>(side) * side) {
    state.SkipWithError("the stroke's pixels were not counted back");
  }
  state.SetComplexityN(std::int64_t{side} * side);
  state.SetItemsProcessed(state.iterations() * 2 * std::int64_t{side} * side);
}

void CopyWholeMask(benchmark::State& state) {
  const Proc::IDataVideoPtr mask = MakeMask(Kind::Sparse);
  for (auto _ : state) benchmark::DoNotOptimize(Proc::CopyDataVideo(*mask));
  state.SetBytesProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

BENCHMARK_CAPTURE(CheckInfo, empty, Kind::Empty)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Memchr, empty, Kind::Empty)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(CheckInfo, sparse, Kind::Sparse)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Memchr, sparse, Kind::Sparse)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(CheckInfo, full, Kind::Full)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Memchr, full, Kind::Full)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ByteSum, full, Kind::Full)->Unit(benchmark::kMillisecond);
BENCHMARK(UndoRedo)
    ->RangeMultiplier(4)
    ->Range(16, 1024)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(CopyWholeMask)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  // Every count logs two lines, even when they are filtered; with TZ unset the C library looks
  // at the time zone file for each of them, which would hide the work measured here.
  ::setenv("TZ", "UTC", 0);
  google::InitGoogleLogging(argv[0]);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  std::printf("Goal: CheckInfo/empty >= 0.8 x Memchr/empty (bytes_per_second).\n");
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
