// Benchmarks of the raw frame files and the frame storage on a 24-megapixel RGBA picture
// (6000 x 4000, 96,000,000 bytes), each against a plain sequential baseline of the same bytes
// to and from the same disk in the same run.
//
//   BaselineWrite       open, write() in 1 MiB pieces, close
//   SaveRawFrame        the same bytes as a raw frame file (one Write per row), Direct and Atomic
//   BaselineRead        open, read() in 1 MiB pieces into a buffer already in memory
//   BaselineReadFresh   the same into a newly allocated buffer, as a loader must
//   LoadRawFrame        a raw frame file into a new picture (one Read per row)
//   StorageSwapOut      20 frames added, SwapExcept of all but one, wait for the worker
//   StorageLoadBack     GetFrame of the 19 swapped frames
//
// Files go to $CANVARO_BENCH_DIR, else /var/tmp (keep them off tmpfs: the point is the disk).
// Every rate is bytes per second; compare SaveRawFrame with BaselineWrite and LoadRawFrame with
// BaselineRead. For a quick run: --benchmark_min_time=0.05
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
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

const Proc::IDataVideoPtr& Picture() {
  static const Proc::IDataVideoPtr picture = [] {
    auto p = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, kInfo);
    const auto plane = p->GetPlane(0);
    for (std::size_t row = 0; row < plane.GetRowCount(); ++row) {
      std::uint8_t* bytes = plane.GetOffsetPtr(0, row);
      for (std::size_t x = 0; x < plane.GetRowLength(); ++x) {
        bytes[x] = static_cast<std::uint8_t>(row * 31 + x * 7);
      }
    }
    return p;
  }();
  return picture;
}

std::size_t FileBytes() { return Canvaro::CoreUtil::kRawFrameHeaderSize + 6000u * 4000u * 4u; }

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

void SaveTo(const ioPath& path, Core::DataOutputFile::Mode mode) {
  const auto out = Core::DataOutputFile::Create(path, mode);
  Canvaro::CoreUtil::SaveRawFrame(Picture(), out);
  out->Close();
}

// ---- raw frame files against plain write and read ----

void BaselineWrite(benchmark::State& state) {
  const std::vector<char> bytes(FileBytes(), 'x');
  const ioPath path = Dir() / "baseline.bin";
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove(path.native());
    state.ResumeTiming();
    WritePlain(path, bytes);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * FileBytes()));
}

void SaveRawFrame(benchmark::State& state) {
  const auto mode = static_cast<Core::DataOutputFile::Mode>(state.range(0));
  state.SetLabel(mode == Core::DataOutputFile::Mode::Atomic ? "atomic" : "direct");
  Picture();
  const ioPath path = Dir() / "frame.raw";
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove(path.native());
    state.ResumeTiming();
    SaveTo(path, mode);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * FileBytes()));
}

void BaselineRead(benchmark::State& state) {
  const ioPath path = Dir() / "baseline-read.bin";
  WritePlain(path, std::vector<char>(FileBytes(), 'y'));
  std::vector<char> buffer(FileBytes(), 0);
  for (auto _ : state) {
    ReadPlain(path, buffer.data(), buffer.size());
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * FileBytes()));
}

void BaselineReadFresh(benchmark::State& state) {
  const ioPath path = Dir() / "baseline-read.bin";
  WritePlain(path, std::vector<char>(FileBytes(), 'y'));
  for (auto _ : state) {
    std::unique_ptr<char[]> buffer(new char[FileBytes()]);
    ReadPlain(path, buffer.get(), FileBytes());
    benchmark::DoNotOptimize(buffer.get());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * FileBytes()));
}

void LoadRawFrame(benchmark::State& state) {
  const ioPath path = Dir() / "load.raw";
  SaveTo(path, Core::DataOutputFile::Mode::Direct);
  for (auto _ : state) {
    Proc::IDataVideoPtr frame;
    Canvaro::CoreUtil::LoadRawFrame(frame, Core::DataInputFile::Create(path));
    benchmark::DoNotOptimize(frame.get());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * FileBytes()));
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

BENCHMARK(BaselineWrite)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(SaveRawFrame)
    ->Arg(static_cast<int>(Core::DataOutputFile::Mode::Direct))
    ->Arg(static_cast<int>(Core::DataOutputFile::Mode::Atomic))
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BaselineRead)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BaselineReadFresh)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(LoadRawFrame)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(StorageSwapOut)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(StorageLoadBack)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

}  // namespace

int main(int argc, char** argv) {
  // The worker's swap lines would swamp the report.
  FLAGS_minloglevel = google::GLOG_WARNING;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
