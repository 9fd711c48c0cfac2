// The tool's commands, each as its options and a function that runs it. The command line
// (CommandLine.h) fills the options; each function prints its results on stdout and returns the
// exit status; failures are thrown (ToolError: status 1, UsageError: status 2) and reported by
// main().
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace canvaro_tool {

// canvaro demo [--picture FILE.png | --size WxH] [--steps N] [--out DIR] [--verbose]
struct DemoOptions {
  std::optional<std::string> picture;
  std::optional<std::string> size;  // "WxH", checked by RunDemo
  int steps = 12;
  std::string out = "canvaro-demo";
  bool verbose = false;
};
int RunDemo(const DemoOptions& options);

// canvaro inspect DOC [--json] [--swap DIR]
struct InspectOptions {
  std::string document;
  bool json = false;
  std::optional<std::string> swap;
};
int RunInspect(const InspectOptions& options);

// canvaro verify DOC [--swap DIR] [--load]
struct VerifyOptions {
  std::string document;
  std::optional<std::string> swap;
  bool load = false;  // also open the package with the library and walk every step
};
int RunVerify(const VerifyOptions& options);

// canvaro export DOC [--item N] [--mask] --out FILE.png [--swap DIR]
struct ExportOptions {
  std::string document;
  std::optional<std::int64_t> item;  // the current item when absent
  bool mask = false;
  std::string out;
  std::optional<std::string> swap;
};
int RunExport(const ExportOptions& options);

}  // namespace canvaro_tool
