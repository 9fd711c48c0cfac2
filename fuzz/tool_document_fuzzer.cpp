// Feeds arbitrary bytes to the command-line tool as the document.json of a package, and runs on
// it what `canvaro inspect`, `canvaro inspect --json` and `canvaro verify --load` run. The
// package's pictures are the sample sessions' swap files under their own names, with a manifest
// of their sizes and checksums, so that the seeds (the sample documents' texts) name real
// pictures.
//
// Each command must end normally or in ToolError, what the commands throw for a damaged document
// (main() reports anything else as an internal failure). Nothing outside the package and the
// scratch folder of verify --load (TMPDIR points into the scratch area) may be touched, the
// package's files must stay as written, and inspect must not report the size of a file outside
// the package (the sentinel's odd size: names in a record count by their last component only).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include <glog/logging.h>

#include "ScratchArea.h"
#include "support/SampleDocuments.h"
#include "support/TempDir.h"
#include "tools/canvaro/Commands.h"
#include "tools/canvaro/ToolError.h"

namespace {

namespace fs = std::filesystem;

std::unique_ptr<canvaro_fuzz::ScratchArea> area;
std::map<std::string, std::string> pictures;  // name -> bytes
std::string manifest;

// What `run` prints on stdout; ToolError ends it like a failed command.
template <typename Run>
std::string Output(Run run) {
  std::ostringstream out;
  std::streambuf* const saved = std::cout.rdbuf(out.rdbuf());
  try {
    run();
  } catch (const canvaro_tool::ToolError&) {
  }
  std::cout.rdbuf(saved);
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  FLAGS_minloglevel = google::GLOG_FATAL;
  area = std::make_unique<canvaro_fuzz::ScratchArea>(std::set<std::string>{"package", "tmp"});
  const canvaro_test::TempDir seeds;
  canvaro_test::WriteSampleDocuments(seeds.path());
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(seeds.path().native())) {
    names.insert(entry.path().filename().string());
    pictures[entry.path().filename().string()] = canvaro_fuzz::ReadBytes(entry.path());
  }
  manifest = canvaro_fuzz::FillIn(canvaro_fuzz::ManifestTemplate(names), pictures);
  fs::create_directories(*area / "package" / "pictures");
  for (const auto& [name, bytes] : pictures) {
    canvaro_fuzz::WriteBytes(*area / "package" / "pictures" / name, bytes);
  }
  canvaro_fuzz::WriteBytes(*area / "package" / "manifest.json", manifest);
  fs::create_directory(*area / "tmp");
  ::setenv("TMPDIR", (*area / "tmp").c_str(), 1);
  std::cerr.rdbuf(nullptr);  // verify's summary line
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fs::path package = *area / "package";
  const std::string document(reinterpret_cast<const char*>(data), size);
  canvaro_fuzz::WriteBytes(package / "document.json", document);

  area->Arm();
  const std::string json = Output([&] { canvaro_tool::RunInspect({package.string(), true, {}}); });
  Output([&] { canvaro_tool::RunInspect({package.string(), false, {}}); });
  Output([&] { canvaro_tool::RunVerify({package.string(), {}, true}); });
  area->Check();

  const std::string outside =
      "\"bytesOnDisk\": " + std::to_string(canvaro_fuzz::ScratchArea::kSentinelSize);
  if (json.find(outside) != std::string::npos) {
    canvaro_fuzz::Violation("inspect reports the size of a file outside the package");
  }
  std::size_t files = 0;
  for (const auto& entry : fs::directory_iterator(package / "pictures")) {
    const auto known = pictures.find(entry.path().filename().string());
    if (known == pictures.end() || canvaro_fuzz::ReadBytes(entry.path()) != known->second) {
      canvaro_fuzz::Violation("the package's picture " + entry.path().string() + " changed");
    }
    ++files;
  }
  if (files != pictures.size() || canvaro_fuzz::ReadBytes(package / "manifest.json") != manifest ||
      canvaro_fuzz::ReadBytes(package / "document.json") != document ||
      std::distance(fs::directory_iterator(package), {}) != 3) {
    canvaro_fuzz::Violation("the package changed");
  }
  return 0;
}
