// canvaro verify: checks every swap file that a saved document names, and that the frame
// indices of its items, masks and shapes point into its frame list.
#include <iostream>

#include "Commands.h"
#include "SavedDocument.h"
#include "SwapFiles.h"
#include "ToolError.h"

namespace canvaro_tool {

namespace {

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
  for (const NamedFile& file : files) {
    for (std::string& problem : CheckSwapFile(paths.swapDirectory, file, /*load=*/true)) {
      problems.push_back(std::move(problem));
    }
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
