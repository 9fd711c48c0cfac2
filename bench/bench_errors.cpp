// Benchmarks of the library's failures as a host meets them.
//
// RefusedQuery asks a document for an item that does not exist and reads the error's text:
// what a host pays per failed thumbnail. With the call stack only captured at the throw, this
// stays in microseconds. RenderCallStack is what reading the stack as text costs on top, paid
// only by a caller who logs it.
#include <string>

#include <benchmark/benchmark.h>
#include <glog/logging.h>

#include "canvaro/canvaro.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

ICanvaroUndoPtr MakeDocument() {
  auto document = ICanvaroUndo::Create(ioPath(), [] { return std::string("unused"); });
  document->Add(SettingsCore(), Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {64, 48, 1, 1}),
                nullptr, MaskInfo());
  return document;
}

void BM_RefusedQuery(benchmark::State& state) {
  const ICanvaroUndoPtr document = MakeDocument();
  for (auto _ : state) {
    try {
      document->GetVideo(99);
    } catch (const CanvaroException& e) {
      benchmark::DoNotOptimize(e.what());
    }
  }
}
BENCHMARK(BM_RefusedQuery)->Unit(benchmark::kMicrosecond);

void BM_RenderCallStack(benchmark::State& state) {
  const ICanvaroUndoPtr document = MakeDocument();
  for (auto _ : state) {
    try {
      document->GetVideo(99);
    } catch (const CanvaroException& e) {
      const CallStack* stack = boost::get_error_info<TagCallStack>(e);
      if (stack != nullptr) benchmark::DoNotOptimize(stack->str().size());
    }
  }
}
BENCHMARK(BM_RenderCallStack)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace

int main(int argc, char** argv) {
  FLAGS_logtostderr = true;
  FLAGS_minloglevel = 2;
  google::InitGoogleLogging(argv[0]);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
