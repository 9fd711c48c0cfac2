// Opens arbitrary document packages. One input holds every file of a package, in sections:
//
//   <text of document.json>
//   \n=== manifest.json\n<text of manifest.json>
//   \n=== <name>\n<bytes of pictures/<name>>          (any number of pictures)
//
// A section starts at every "\n=== " and its first line names its file. A picture name that is
// not a plain file name is skipped, and a later section of the same name wins; without a manifest
// section the package has no manifest. In the manifest, "$SIZE:<name>$" and "$XXH3:<name>$" become
// the size and checksum of the picture <name> (ScratchArea.h), so that mutated pictures still
// match the manifest and reach the loader.
//
// Each input is written as a fresh package beside a fresh swap directory and a sentinel folder.
// CheckDocumentPackage must not throw; it reports problems for every package that OpenDocument
// then refuses. OpenDocument must end in a document or in the library's exceptions, and an opened
// document is used as a host would (ExerciseDocument). Afterwards nothing outside the package and
// the swap directory may have been touched, and the package's files must be byte for byte as
// written: opening never writes into a package, and what the document does to its swap files
// (links of the pictures) never reaches them.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include <glog/logging.h>

#include "ScratchArea.h"
#include "canvaro/Undo/DocumentPackage.h"
#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/CoreException.h"
#include "support/ExerciseDocument.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
namespace fs = std::filesystem;
using canvaro_fuzz::Files;

std::unique_ptr<canvaro_fuzz::ScratchArea> area;

bool IsPlainName(std::string_view name) {
  return !name.empty() && name.size() < 200 && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

Files Split(std::string_view input) {
  constexpr std::string_view kMark = "\n=== ";
  Files pictures;
  std::string_view manifest;
  bool hasManifest = false;
  std::size_t end = input.find(kMark);
  const std::string_view document = input.substr(0, end);
  while (end != std::string_view::npos) {
    const std::size_t start = end + kMark.size();
    end = input.find(kMark, start);
    const std::string_view section =
        input.substr(start, end == std::string_view::npos ? end : end - start);
    const std::size_t line = section.find('\n');
    const std::string_view name = section.substr(0, line);
    const std::string_view bytes = line == std::string_view::npos ? "" : section.substr(line + 1);
    if (name == "manifest.json") {
      manifest = bytes;
      hasManifest = true;
    } else if (IsPlainName(name)) {
      pictures[std::string(name)] = bytes;
    }
  }
  Files files{{"document.json", std::string(document)}, {"pictures/", ""}};
  if (hasManifest) files["manifest.json"] = canvaro_fuzz::FillIn(std::string(manifest), pictures);
  for (auto& [name, bytes] : pictures) files["pictures/" + name] = std::move(bytes);
  return files;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  FLAGS_minloglevel = google::GLOG_FATAL;
  area = std::make_unique<canvaro_fuzz::ScratchArea>(std::set<std::string>{"package", "swap"});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Files files = Split(std::string_view(reinterpret_cast<const char*>(data), size));
  const fs::path package = *area / "package";
  const fs::path swap = *area / "swap";
  fs::remove_all(package);
  fs::remove_all(swap);
  fs::create_directory(package);
  fs::create_directory(swap);
  canvaro_fuzz::WriteTree(package, files);

  area->Arm();
  const bool whole = CheckDocumentPackage(package).empty();
  try {
    ICanvaroUndoPtr document = OpenDocument(
        package, swap, [n = 0]() mutable { return "fuzz_" + std::to_string(n++) + ".raw"; });
    if (!whole) canvaro_fuzz::Violation("OpenDocument opened a package with problems");
    canvaro_test::ExerciseDocument(*document);
  } catch (const CanvaroException&) {
  } catch (const Core::CoreException&) {
  }
  area->Check();
  if (canvaro_fuzz::ReadTree(package) != files)
    canvaro_fuzz::Violation("the package's files changed");
  return 0;
}
