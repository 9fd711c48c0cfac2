// canvaro verify: checks every swap file that a saved document names, and that the frame
// indices of its items, masks and shapes point into its frame list; for a package also every
// picture against the manifest's size and checksum, and with --load that the library opens it
// and walks every step.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "Commands.h"
#include "SavedDocument.h"
#include "SwapFiles.h"
#include "ToolError.h"
#include "canvaro/Undo/DocumentPackage.h"
#include "canvaro/Undo/IUndoManager.h"

namespace canvaro_tool {

namespace {

// Opens the package in a scratch swap directory and walks every step back and forth, reading
// every picture; the first failure, or "" when all went well. At most `steps` undos and as many
// redos: a loaded step list may claim a step to undo where there is none (saved index -1, as in a
// document without a step), and Undo then does nothing.
std::string OpenAndWalk(const DocumentPaths& paths, std::size_t steps) {
  if (!paths.package) return "--load needs a document package (a folder with a manifest)";
  namespace fs = std::filesystem;
  std::string pattern = (fs::temp_directory_path() / "canvaro-verify-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) return "cannot make a scratch folder for --load";
  const fs::path scratch = pattern;
  std::string failure;
  try {
    using namespace Kelbra::Canvaro;
    ICanvaroUndoPtr document = OpenDocument(paths.file.parent_path(), scratch, [n = 0]() mutable {
      return "verify_" + std::to_string(n++) + ".raw";
    });
    const auto readAll = [&] {
      for (unsigned i = 0; i < document->GetVideoCount(); ++i) {
        document->GetVideo(i);
        document->GetMask(i);
      }
    };
    readAll();
    for (std::size_t i = 0; i < steps && document->IsUndoEnabled(); ++i) document->Undo();
    readAll();
    for (std::size_t i = 0; i < steps && document->IsRedoEnabled(); ++i) {
      document->Redo();
      readAll();
    }
  } catch (...) {
    failure = "the library cannot open and walk the document: " + DescribeCurrent();
  }
  std::error_code ignored;
  fs::remove_all(scratch, ignored);
  return failure;
}

// Frame indices that point nowhere.
std::vector<std::string> CheckReferences(const DocumentModel& model) {
  std::vector<std::string> problems;
  auto check = [&](std::int64_t index, const std::string& what) {
    if (index >= 0 && model.FrameAt(index) == nullptr) {
      problems.push_back(what + " refers to frame " + std::to_string(index) +
                         ", but the document has " + std::to_string(model.frames.size()) +
                         " frames");
    }
  };
  for (std::size_t i = 0; i < model.items.size(); ++i) {
    const ItemModel& item = model.items[i];
    check(item.frameIndex, "item " + std::to_string(i));
    for (std::size_t k = 0; k < item.mask.strokes.size(); ++k) {
      check(item.mask.strokes[k].frameIndex,
            "item " + std::to_string(i) + " mask stroke " + std::to_string(k));
    }
  }
  for (std::size_t i = 0; i < model.shapes.size(); ++i) {
    for (std::size_t k = 0; k < model.shapes[i].states.size(); ++k) {
      check(model.shapes[i].states[k].frameIndex,
            "shape " + std::to_string(i) + " state " + std::to_string(k));
    }
  }
  return problems;
}

}  // namespace

int RunVerify(const VerifyOptions& options) {
  const DocumentPaths paths = ResolveDocument(options.document, options.swap);
  const DocumentModel model = ReadDocumentModel(ReadDocumentTree(paths.file));

  std::vector<std::string> problems = CheckReferences(model);
  const std::vector<NamedFile> files = CollectNamedFiles(model);
  std::vector<std::string> reported;  // file names with a problem already
  for (const NamedFile& file : files) {
    for (std::string& problem : CheckSwapFile(paths.swapDirectory, file, /*load=*/true)) {
      problems.push_back(std::move(problem));
      reported.push_back(file.record.fileName);
    }
  }
  if (paths.package) {
    // A picture already reported above is not reported again for its manifest record.
    for (std::string& problem : Kelbra::Canvaro::CheckDocumentPackage(paths.file.parent_path())) {
      const bool known =
          std::any_of(reported.begin(), reported.end(), [&](const std::string& name) {
            return problem.find("/" + name + "'") != std::string::npos;
          });
      if (!known) problems.push_back(std::move(problem));
    }
  }
  if (options.load && problems.empty()) {
    if (std::string failure = OpenAndWalk(paths, model.steps.size()); !failure.empty())
      problems.push_back(failure);
  }
  for (const std::string& problem : problems) std::cout << problem << "\n";
  if (!problems.empty()) {
    std::cerr << "canvaro: " << problems.size() << " problem(s) in " << paths.file.string() << "\n";
    return kExitProblem;
  }
  std::cout << "OK: " << files.size() << " swap file(s) of " << paths.file.string()
            << " are whole and load\n";
  return 0;
}

}  // namespace canvaro_tool
