// Benchmarks of the raw frame files and the frame storage on RGBA pictures of 24 megapixels
// (6000 x 4000, 96,000,000 bytes) and of 640 x 480, each against a plain sequential baseline of
// the same bytes to and from the same disk in the same run.
//
//   BaselineWrite       open, write() in 1 MiB pieces, close
//   SaveRawFrame        the same bytes as a raw frame file: direct, replace (a temporary file
//                       renamed into place, as swap files are written) and atomic (the same,
//                       flushed to the disk: the price of durability)
//   BaselineRead        open, read() in 1 MiB pieces into a buffer already in memory
//   BaselineReadFresh   the same into a newly allocated buffer of the kind pictures get (huge
//                       pages for large ones), as a loader must
//   LoadRawFrame        a raw frame file into a new picture
//   StorageSwapOut      20 frames added, SwapExcept of all but one, wait for the worker
//   StorageLoadBack     GetFrame of the 19 swapped frames
//
// Files go to $CANVARO_BENCH_DIR, else /var/tmp (keep them off tmpfs: the point is the disk).
// Every rate is bytes per second. Goals: SaveRawFrame at least 0.95 of BaselineWrite, and
// LoadRawFrame at least 0.95 of BaselineReadFresh, at both sizes. For a quick run:
// --benchmark_min_time=0.05
#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <glog/logging.h>

#include "canvaro/CoreUtil/RawFrame.h"
#include "canvaro/Undo/FrameStorage.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Proc/IDataVideo.h"

namespace {

using namespace Kelbra;

constexpr Conf::FrameInfo kInfo{6000, 4000, 1, 1};
constexpr Conf::FrameInfo kSmallInfo{640, 480, 1, 1};
constexpr std::size_t kChunk = std::size_t{1} << 20;
constexpr unsigned kStorageFrames = 20;

// A directory for the run's files, removed at exit.
class BenchDir {
 public:
  BenchDir() {
    const char* base = std::getenv("CANVARO_BENCH_DIR");
    std::string pattern = std::string(base ? base : "/var/tmp") + "/canvaro-bench-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp " + pattern);
    path_ = pattern;
  }
  ~BenchDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_.native(), ignored);
  }
  ioPath operator/(const std::string& name) const { return path_ / name; }
  const ioPath& path() const { return path_; }

 private:
  ioPath path_;
};

BenchDir& Dir() {
  static BenchDir dir;
  return dir;
}

// The benchmark's picture size: argument 0 is the width, argument 1 the height.
Conf::FrameInfo InfoOf(const benchmark::State& state) {
  return {static_cast<std::int32_t>(state.range(0)), static_cast<std::int32_t>(state.range(1)), 1,
          1};
}

const Proc::IDataVideoPtr& Picture(const Conf::FrameInfo& info = kInfo) {
  static std::map<std::int64_t, Proc::IDataVideoPtr> pictures;
  Proc::IDataVideoPtr& picture = pictures[std::int64_t{info.width} << 32 | info.height];
  if (!picture) {
    picture = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, info);
    const auto plane = picture->GetPlane(0);
    for (std::size_t row = 0; row < plane.GetRowCount(); ++row) {
      std::uint8_t* bytes = plane.GetOffsetPtr(0, row);
      for (std::size_t x = 0; x < plane.GetRowLength(); ++x) {
        bytes[x] = static_cast<std::uint8_t>(row * 31 + x * 7);
      }
    }
  }
  return picture;
}

std::size_t FileBytes(const Conf::FrameInfo& info = kInfo) {
  return Canvaro::CoreUtil::kRawFrameHeaderSize + std::size_t{4} * info.width * info.height;
}

// Memory of the kind the library's pictures get: large buffers aligned to huge pages and advised
// to use them, small ones cache-line aligned.
struct FreeDeleter {
  void operator()(char* p) const { std::free(p); }
};
std::unique_ptr<char, FreeDeleter> AllocateLikePictures(std::size_t bytes) {
  constexpr std::size_t kHugePage = std::size_t{2} << 20;
  const bool large = bytes >= 2 * kHugePage;
  const std::size_t alignment = large ? kHugePage : 64;
  const std::size_t rounded = (bytes + alignment - 1) / alignment * alignment;
  void* buffer = nullptr;
  if (::posix_memalign(&buffer, alignment, rounded) != 0) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
  if (large) ::madvise(buffer, rounded, MADV_HUGEPAGE);
#endif
  return std::unique_ptr<char, FreeDeleter>(static_cast<char*>(buffer));
}

void Check(bool ok, const char* what) {
  if (!ok) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

void WritePlain(const ioPath& path, const std::vector<char>& bytes) {
  const int fd = ::open(path.string().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  Check(fd >= 0, "open");
  for (std::size_t at = 0; at < bytes.size(); at += kChunk) {
    const std::size_t size = std::min(kChunk, bytes.size() - at);
    Check(::write(fd, bytes.data() + at, size) == static_cast<ssize_t>(size), "write");
  }
  Check(::close(fd) == 0, "close");
}

void ReadPlain(const ioPath& path, char* into, std::size_t size) {
  const int fd = ::open(path.string().c_str(), O_RDONLY | O_CLOEXEC);
  Check(fd >= 0, "open");
  for (std::size_t at = 0; at < size; at += kChunk) {
    const std::size_t piece = std::min(kChunk, size - at);
    Check(::read(fd, into + at, piece) == static_cast<ssize_t>(piece), "read");
  }
  Check(::close(fd) == 0, "close");
}

void SaveTo(const ioPath& path, Core::DataOutputFile::Mode mode,
            const Conf::FrameInfo& info = kInfo) {
  const auto out = Core::DataOutputFile::Create(path, mode);
  Canvaro::CoreUtil::SaveRawFrame(Picture(info), out);
  out->Close();
}

// ---- raw frame files against plain write and read ----

void BaselineWrite(benchmark::State& state) {
  const std::size_t size = FileBytes(InfoOf(state));
  const std::vector<char> bytes(size, 'x');
  const ioPath path = Dir() / "baseline.bin";
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove(path.native());
    state.ResumeTiming();
    WritePlain(path, bytes);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

void SaveRawFrame(benchmark::State& state) {
  const auto mode = static_cast<Core::DataOutputFile::Mode>(state.range(2));
  state.SetLabel(mode == Core::DataOutputFile::Mode::Atomic    ? "atomic"
                 : mode == Core::DataOutputFile::Mode::Replace ? "replace"
                                                               : "direct");
  const Conf::FrameInfo info = InfoOf(state);
  Picture(info);
  const ioPath path = Dir() / "frame.raw";
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove(path.native());
    state.ResumeTiming();
    SaveTo(path, mode, info);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * FileBytes(info)));
}

void BaselineRead(benchmark::State& state) {
  const std::size_t size = FileBytes(InfoOf(state));
  const ioPath path = Dir() / "baseline-read.bin";
  WritePlain(path, std::vector<char>(size, 'y'));
  std::vector<char> buffer(size, 0);
  for (auto _ : state) {
    ReadPlain(path, buffer.data(), buffer.size());
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

void BaselineReadFresh(benchmark::State& state) {
  const std::size_t size = FileBytes(InfoOf(state));
  const ioPath path = Dir() / "baseline-read.bin";
  WritePlain(path, std::vector<char>(size, 'y'));
  for (auto _ : state) {
    const auto buffer = AllocateLikePictures(size);
    ReadPlain(path, buffer.get(), size);
    benchmark::DoNotOptimize(buffer.get());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

void LoadRawFrame(benchmark::State& state) {
  const Conf::FrameInfo info = InfoOf(state);
  const ioPath path = Dir() / "load.raw";
  SaveTo(path, Core::DataOutputFile::Mode::Direct, info);
  for (auto _ : state) {
    Proc::IDataVideoPtr frame;
    Canvaro::CoreUtil::LoadRawFrame(frame, Core::DataInputFile::Create(path));
    benchmark::DoNotOptimize(frame.get());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * FileBytes(info)));
}

// ---- the storage ----

std::unique_ptr<Canvaro::FrameStorage> FilledStorage(const ioPath& directory) {
  std::filesystem::create_directories(directory.native());
  auto storage = std::make_unique<Canvaro::FrameStorage>(
      directory, [n = 0]() mutable { return "frame" + std::to_string(n++) + ".raw"; });
  // One picture, twenty frames: the worker writes twenty files, memory holds one picture.
  for (unsigned i = 0; i < kStorageFrames; ++i) storage->AddFrame(Picture());
  return storage;
}

void StorageSwapOut(benchmark::State& state) {
  Picture();
  const ioPath directory = Dir() / "swap-out";
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove_all(directory.native());
    auto storage = FilledStorage(directory);
    state.ResumeTiming();
    storage->SwapExcept({kStorageFrames - 1});
    storage->WaitForPendingSaves();
    state.PauseTiming();
    storage.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * (kStorageFrames - 1) * FileBytes()));
}

void StorageLoadBack(benchmark::State& state) {
  Picture();
  const ioPath directory = Dir() / "load-back";
  std::filesystem::remove_all(directory.native());
  auto storage = FilledStorage(directory);
  storage->SwapExcept({kStorageFrames - 1});
  storage->WaitForPendingSaves();
  for (auto _ : state) {
    for (Index i = 0; i + 1 < kStorageFrames; ++i) benchmark::DoNotOptimize(storage->GetFrame(i));
    state.PauseTiming();
    storage->SwapExcept({kStorageFrames - 1});  // drops the loaded pictures, writes nothing
    storage->WaitForPendingSaves();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * (kStorageFrames - 1) * FileBytes()));
}

// Both picture sizes, as {width, height}.
void Sizes(benchmark::internal::Benchmark* b) {
  for (const Conf::FrameInfo& info : {kInfo, kSmallInfo}) b->Args({info.width, info.height});
}
void SizesAndModes(benchmark::internal::Benchmark* b) {
  for (const Conf::FrameInfo& info : {kInfo, kSmallInfo}) {
    for (const auto mode : {Core::DataOutputFile::Mode::Direct, Core::DataOutputFile::Mode::Replace,
                            Core::DataOutputFile::Mode::Atomic})
      b->Args({info.width, info.height, static_cast<int>(mode)});
  }
}

BENCHMARK(BaselineWrite)->Apply(Sizes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(SaveRawFrame)->Apply(SizesAndModes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BaselineRead)->Apply(Sizes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BaselineReadFresh)->Apply(Sizes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(LoadRawFrame)->Apply(Sizes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(StorageSwapOut)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(StorageLoadBack)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

}  // namespace

int main(int argc, char** argv) {
  // The worker's swap lines would swamp the report.
  FLAGS_minloglevel = google::GLOG_WARNING;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  std::printf(
      "Goals: SaveRawFrame direct and replace >= 0.95 x BaselineWrite, LoadRawFrame >= 0.95 x "
      "BaselineReadFresh (the same kind of buffer), at 6000x4000 and at 640x480.\n");
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
