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
canvaro_fuzz::Files package;  // the package's files; document.json is the input at hand

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
  const canvaro_fuzz::Files pictures = canvaro_fuzz::ReadTree(seeds.path().native());
  package["manifest.json"] =
      canvaro_fuzz::FillIn(canvaro_fuzz::ManifestTemplate(pictures), pictures);
  package["pictures/"] = "";
  for (const auto& [name, bytes] : pictures) package["pictures/" + name] = bytes;
  fs::create_directory(*area / "package");
  canvaro_fuzz::WriteTree(*area / "package", package);
  fs::create_directory(*area / "tmp");
  ::setenv("TMPDIR", (*area / "tmp").c_str(), 1);
  std::cerr.rdbuf(nullptr);  // verify's summary line
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fs::path folder = *area / "package";
  package["document.json"].assign(reinterpret_cast<const char*>(data), size);
  canvaro_fuzz::WriteBytes(folder / "document.json", package["document.json"]);

  area->Arm();
  const std::string json = Output([&] { canvaro_tool::RunInspect({folder.string(), true, {}}); });
  Output([&] { canvaro_tool::RunInspect({folder.string(), false, {}}); });
  Output([&] { canvaro_tool::RunVerify({folder.string(), {}, true}); });
  area->Check();

  const std::string outside =
      "\"bytesOnDisk\": " + std::to_string(canvaro_fuzz::ScratchArea::kSentinelSize);
  if (json.find(outside) != std::string::npos) {
    canvaro_fuzz::Violation("inspect reports the size of a file outside the package");
  }
  if (canvaro_fuzz::ReadTree(folder) != package) canvaro_fuzz::Violation("the package changed");
  return 0;
}
