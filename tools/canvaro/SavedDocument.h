// A saved document read as a plain tree: where its files are, and a model of what it holds,
// built from the key names of the records without making a document. inspect, verify and export
// work from it, so they also handle documents that the library cannot load (steps with a host's
// effects or painters) and documents whose swap files are damaged.
//
//   DocumentPaths paths = ResolveDocument("out/demo", std::nullopt);   // out/demo/document.json
//   DocumentModel model = ReadDocumentModel(ReadDocumentTree(paths.file));
//   for (const ItemModel& item : model.items) ... model.frames[item.frameIndex] ...
//
// Layout written by `canvaro demo`: DIR/document.json (the text form of the document's property
// tree) and DIR/swap/ (its swap files). Frame indices in the model are the saved ones; -1 means
// none, and an index may point past `frames` in a damaged document (check with FrameAt).
//
// Errors: ToolError naming the file, or the place in the tree ("Items[2].FrameIndex") and what
// was wrong there. Absent keys give the records' defaults, as the library's readers do.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Core/Property.h"

namespace canvaro_tool {

inline constexpr const char* kDocumentFileName = "document.json";
inline constexpr const char* kSwapFolderName = "swap";
inline constexpr const char* kManifestFileName = "manifest.json";
inline constexpr const char* kPicturesFolderName = "pictures";

struct DocumentPaths {
  std::filesystem::path file;
  std::filesystem::path swapDirectory;
  bool package = false;  // the document is a package: a manifest beside it
};

// `document` names the document file, or a directory holding kDocumentFileName. The swap
// directory is `swapDirectory` when given, otherwise the pictures folder of a package (a
// kManifestFileName beside the file), otherwise kSwapFolderName beside the file. Throws
// ToolError when the file does not exist.
DocumentPaths ResolveDocument(const std::string& document,
                              const std::optional<std::string>& swapDirectory);

// Reads the text form of a property tree. Throws ToolError for an unreadable file or malformed
// text.
Kelbra::Core::Property ReadDocumentTree(const std::filesystem::path& file);

// A picture's file record: the swap file's name (relative to the swap directory; empty when the
// frame has no picture) and the geometry the document expects.
struct FrameRecord {
  std::string fileName;
  Kelbra::Conf::FrameInfo info;
};

struct MaskRect {
  std::int32_t left = 0, right = 0, top = 0, bottom = 0;
};

struct MaskStroke {
  MaskRect rect;
  std::int64_t frameIndex = -1;
  FrameRecord frame;  // the record stored beside the stroke
};

struct MaskModel {
  bool present = false;
  std::int32_t index = -1;          // the stroke in force (0: none)
  std::vector<MaskStroke> strokes;  // item 0 holds the working mask
  MaskRect rect;                    // the mask settings in force
  std::int64_t pixelCount = 0;
  std::vector<std::pair<std::int64_t, std::int64_t>> brushes;  // brush index, pixels

  // The frame index of the mask in force; -1 when nothing was ever painted.
  std::int64_t WorkingFrame() const { return strokes.empty() ? -1 : strokes.front().frameIndex; }
};

struct ItemModel {
  std::int64_t frameIndex = -1;
  std::string packageName;
  std::int32_t packageIndex = -1;
  std::string presetName;
  std::string drawingTool;
  std::string tool;
  std::vector<std::string> effects;  // class ids of the stored effects
  MaskModel mask;
};

struct ShapeState {
  std::string kind;  // the record's class id ("LineInfo")
  bool visible = true;
  double zValue = 0;
  double x = 0.5, y = 0.5, angle = 0;
  std::int64_t frameIndex = -1;
};

struct ShapeModel {
  std::string name;
  std::int32_t currentState = -1;
  std::vector<ShapeState> states;

  // The state in force, or null when the index is out of range.
  const ShapeState* Current() const;
};

struct StepModel {
  std::vector<std::string> participants;
};

struct DocumentModel {
  std::vector<FrameRecord> frames;
  bool hasStepList = false;
  std::int32_t currentStep = -1;
  std::vector<StepModel> steps;
  std::int32_t currentItem = -1;
  std::vector<ItemModel> items;
  std::vector<ShapeModel> shapes;

  // The frame record at `index`, or null when there is none (-1 or out of range).
  const FrameRecord* FrameAt(std::int64_t index) const;
};

// The model of a saved document's tree. Throws ToolError ("malformed document: ...").
DocumentModel ReadDocumentModel(const Kelbra::Core::Property& root);

// A swap file that the document names, and where: "frame 3", "item 1 mask stroke 2".
struct NamedFile {
  FrameRecord record;
  std::string where;
};

// Every swap file named in `model` (frames and mask strokes), each name once, in order of first
// mention.
std::vector<NamedFile> CollectNamedFiles(const DocumentModel& model);

}  // namespace canvaro_tool
