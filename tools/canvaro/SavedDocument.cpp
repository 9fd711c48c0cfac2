#include "SavedDocument.h"

#include <limits>
#include <map>

#include "ToolError.h"
#include "canvaro/Undo/MaskCounter.h"
#include "canvaro/Undo/MaskUndo.h"
#include "canvaro/foundation/SerializeNames.h"
#include "canvaro/settings/EffectSettings.h"
#include "canvaro/settings/EffectsSettings.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"
#include "kelbra/Conf/IFormatCodecVideo.h"
#include "kelbra/Conf/IFormatFile.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/PropertySerializer.h"

namespace canvaro_tool {

namespace fs = std::filesystem;
using Kelbra::Core::Property;
namespace Canvaro = Kelbra::Canvaro;

namespace {

// Keys that only the library's sources name (the document, the histories, the step list).
const std::string kShape = "Shape";
const std::string kUndoManager = "UndoManager";
const std::string kFrames = "Frames";
const std::string kMask = "Mask";
const std::string kIndex = "Index";
const std::string kItems = "Items";
const std::string kInfo = "Info";
const std::string kFrameIndex = "FrameIndex";
const std::string kStorage = "Storage";
const std::string kItemList = "ItemList";
const std::string kItem = "Item";
const std::string kName = "Name";
const std::string kData = "Data";
const std::string kStorageItems = "StorageItems";
const std::string kStorageItem = "StorageItem";
const std::string kVisible = "Visible";
const std::string kZValue = "ZValue";
const std::string kPositionX = "PositionX";
const std::string kPositionY = "PositionY";
const std::string kRotationAngle = "RotationAngle";

[[noreturn]] void Malformed(const std::string& path, const std::string& what) {
  throw ToolError("malformed document: " + (path.empty() ? std::string("top level") : path) + ": " +
                  what);
}

// A node of the tree with its place, for messages. Readers give `fallback` for an absent key and
// throw ToolError for a value of the wrong type.
class Node {
 public:
  Node(const Property& node, std::string path) : node_(node), path_(std::move(path)) {}

  const std::string& Path() const { return path_; }
  const Property& Get() const { return node_; }

  std::int64_t Int(const std::string& key, std::int64_t fallback) const {
    const Property::Entry* entry = Typed(key, {Property::Type::Int, Property::Type::Int64});
    if (entry == nullptr) return fallback;
    if (entry->type() == Property::Type::Int) return std::get<std::int32_t>(entry->value);
    return std::get<std::int64_t>(entry->value);
  }
  std::int32_t Int32(const std::string& key, std::int32_t fallback) const {
    const std::int64_t value = Int(key, fallback);
    if (value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
      Malformed(At(key), std::to_string(value) + " is out of range");
    }
    return static_cast<std::int32_t>(value);
  }
  double Double(const std::string& key, double fallback) const {
    const Property::Entry* entry =
        Typed(key, {Property::Type::Double, Property::Type::Int, Property::Type::Int64});
    if (entry == nullptr) return fallback;
    if (entry->type() == Property::Type::Double) return std::get<double>(entry->value);
    return static_cast<double>(Int(key, 0));
  }
  bool Bool(const std::string& key, bool fallback) const {
    const Property::Entry* entry = Typed(key, {Property::Type::Bool});
    return entry == nullptr ? fallback : std::get<bool>(entry->value);
  }
  std::string String(const std::string& key, const std::string& fallback) const {
    const Property::Entry* entry = Typed(key, {Property::Type::String});
    return entry == nullptr ? fallback : std::get<std::string>(entry->value);
  }
  std::optional<Node> Child(const std::string& key) const {
    const Property::Entry* entry = Typed(key, {Property::Type::Node});
    if (entry == nullptr) return std::nullopt;
    return Node(*std::get<std::unique_ptr<Property>>(entry->value), At(key));
  }
  // The item nodes of the collection `key`; none when it is absent.
  std::vector<Node> Collection(const std::string& key) const {
    std::vector<Node> items;
    const Property::Entry* entry = Typed(key, {Property::Type::Collection});
    if (entry == nullptr) return items;
    const auto& collection = std::get<Property::Collection>(entry->value);
    for (std::size_t i = 0; i < collection.size(); ++i) {
      items.emplace_back(collection[i], At(key) + "[" + std::to_string(i) + "]");
    }
    return items;
  }

 private:
  std::string At(const std::string& key) const { return path_.empty() ? key : path_ + "." + key; }

  const Property::Entry* Typed(const std::string& key,
                               std::initializer_list<Property::Type> types) const {
    const Property::Entry* entry = node_.Find(key);
    if (entry == nullptr) return nullptr;
    for (const auto type : types) {
      if (entry->type() == type) return entry;
    }
    Malformed(At(key), std::string("holds ") + Property::TypeName(entry->type()) + ", expected " +
                           Property::TypeName(*types.begin()));
  }

  const Property& node_;
  std::string path_;
};

FrameRecord ReadFrameRecord(const Node& node) {
  FrameRecord record;
  record.fileName = node.String(Kelbra::Conf::IFormatFile::TAG_FILENAME, "");
  using Video = Kelbra::Conf::IFormatCodecVideo;
  record.info.width = node.Int32(Video::TAG_WIDTH, 0);
  record.info.height = node.Int32(Video::TAG_HEIGHT, 0);
  record.info.aspectX = node.Int32(Video::TAG_ASPECTX, 0);
  record.info.aspectY = node.Int32(Video::TAG_ASPECTY, 0);
  return record;
}

MaskRect ReadRect(const Node& node) {
  using Canvaro::MaskInfo;
  return {node.Int32(MaskInfo::LEFT, 0), node.Int32(MaskInfo::RIGHT, 0),
          node.Int32(MaskInfo::TOP, 0), node.Int32(MaskInfo::BOTTOM, 0)};
}

MaskModel ReadMask(const Node& node) {
  MaskModel mask;
  mask.present = true;
  mask.index = node.Int32(kIndex, -1);
  for (const Node& item : node.Collection(kItems)) {
    MaskStroke stroke;
    if (auto info = item.Child(kInfo)) stroke.rect = ReadRect(*info);
    stroke.frameIndex = item.Int(kFrameIndex, -1);
    stroke.frame = ReadFrameRecord(item);
    mask.strokes.push_back(stroke);
  }
  if (auto info = node.Child(Canvaro::MaskUndo::SAVE_PROPERTY_MASK_INFO)) {
    mask.rect = ReadRect(*info);
  }
  if (auto counter = node.Child(Canvaro::MaskUndo::SAVE_PROPERTY_MASK_COUNTER)) {
    using Canvaro::MaskCounter;
    mask.pixelCount = counter->Int(MaskCounter::SAVE_PROPERTY_PIX_COUNT, 0);
    for (const Node& detail : counter->Collection(MaskCounter::SAVE_PROPERTY_PIX_COUNT_DETAIL)) {
      mask.brushes.emplace_back(detail.Int(MaskCounter::SAVE_PROPERTY_PIX_COUNT_DETAIL_ID, 0),
                                detail.Int(MaskCounter::SAVE_PROPERTY_PIX_COUNT_DETAIL_VAL, 0));
    }
  }
  return mask;
}

ItemModel ReadItem(const Node& node) {
  ItemModel item;
  item.frameIndex = node.Int(kFrameIndex, -1);
  if (auto info = node.Child(kInfo)) {
    if (auto effects = info->Child(Canvaro::SettingsCore::EFFECTS_SETTINGS)) {
      if (auto package = effects->Child(Canvaro::EffectsSettings::PACKAGE)) {
        using Canvaro::EffectsSettingsPackage;
        item.packageName = package->String(EffectsSettingsPackage::NAME, "");
        item.packageIndex = package->Int32(EffectsSettingsPackage::PACKAGE_INDEX, -1);
        item.presetName = package->String(EffectsSettingsPackage::PRESET_NAME, "");
        item.drawingTool = package->String(EffectsSettingsPackage::DRAWING_TOOL, "");
        item.tool = package->String(Canvaro::SerializeNames::ToolsId::TOOL_NAME, "");
      }
      for (const Node& effect : effects->Collection(Canvaro::IEffectSettings::EFFECTS)) {
        const auto child = effect.Child(Canvaro::IEffectSettings::EFFECT);
        item.effects.push_back(child ? child->Get().GetClassId() : std::string("?"));
      }
    }
  }
  if (auto mask = node.Child(kMask)) item.mask = ReadMask(*mask);
  return item;
}

ShapeModel ReadShape(const Node& node) {
  ShapeModel shape;
  shape.name = node.String(kName, "");
  const auto data = node.Child(kData);
  if (!data) return shape;
  shape.currentState = data->Int32(kIndex, -1);
  for (const Node& item : data->Collection(kItems)) {
    ShapeState state;
    state.frameIndex = item.Int(kFrameIndex, -1);
    if (auto info = item.Child(kInfo)) {
      state.kind = info->Get().GetClassId();
      state.visible = info->Bool(kVisible, true);
      state.zValue = info->Double(kZValue, 0);
      state.x = info->Double(kPositionX, 0.5);
      state.y = info->Double(kPositionY, 0.5);
      state.angle = info->Double(kRotationAngle, 0);
    }
    shape.states.push_back(state);
  }
  return shape;
}

}  // namespace

DocumentPaths ResolveDocument(const std::string& document,
                              const std::optional<std::string>& swapDirectory) {
  DocumentPaths paths;
  std::error_code error;
  paths.file = fs::path(document);
  if (fs::is_directory(paths.file, error)) paths.file /= kDocumentFileName;
  if (!fs::exists(paths.file, error)) {
    throw ToolError("cannot read document " + paths.file.string() + ": no such file");
  }
  if (fs::is_directory(paths.file, error)) {
    throw ToolError("cannot read document " + paths.file.string() + ": it is a directory");
  }
  paths.package = fs::exists(paths.file.parent_path() / kManifestFileName, error);
  paths.swapDirectory = swapDirectory   ? fs::path(*swapDirectory)
                        : paths.package ? paths.file.parent_path() / kPicturesFolderName
                                        : paths.file.parent_path() / kSwapFolderName;
  return paths;
}

Property ReadDocumentTree(const fs::path& file) {
  try {
    Property tree;
    Kelbra::Core::PropertySerializer::Deserialize(tree, Kelbra::Core::DataInputFile::Create(file));
    return tree;
  } catch (const std::exception& error) {
    throw ToolError("cannot read document " + file.string() + ": " + Describe(error));
  }
}

const ShapeState* ShapeModel::Current() const {
  if (currentState < 0 || static_cast<std::size_t>(currentState) >= states.size()) return nullptr;
  return &states[static_cast<std::size_t>(currentState)];
}

const FrameRecord* DocumentModel::FrameAt(std::int64_t index) const {
  if (index < 0 || static_cast<std::uint64_t>(index) >= frames.size()) return nullptr;
  return &frames[static_cast<std::size_t>(index)];
}

DocumentModel ReadDocumentModel(const Property& root) {
  const Node top(root, "");
  DocumentModel model;
  if (auto frames = top.Child(kFrames)) {
    for (const Node& item : frames->Collection(kStorageItems)) {
      const auto record = item.Child(kStorageItem);
      model.frames.push_back(record ? ReadFrameRecord(*record) : FrameRecord{});
    }
  }
  if (auto manager = top.Child(kUndoManager)) {
    model.hasStepList = true;
    model.currentStep = manager->Int32(kIndex, -1);
    for (const Node& step : manager->Collection(kStorage)) {
      StepModel stepModel;
      for (const Node& participant : step.Collection(kItemList)) {
        stepModel.participants.push_back(participant.String(kItem, ""));
      }
      model.steps.push_back(std::move(stepModel));
    }
  }
  model.currentItem = top.Int32(kIndex, -1);
  for (const Node& item : top.Collection(kItems)) model.items.push_back(ReadItem(item));
  if (auto shapes = top.Child(kShape)) {
    for (const Node& item : shapes->Collection(kItems)) model.shapes.push_back(ReadShape(item));
  }
  if (model.frames.empty() && model.items.empty() && model.shapes.empty() && !model.hasStepList) {
    Malformed("", "no frames, items, shapes or steps: this is not a saved document");
  }
  return model;
}

std::vector<NamedFile> CollectNamedFiles(const DocumentModel& model) {
  std::vector<NamedFile> files;
  std::map<std::string, std::size_t> seen;
  auto add = [&](const FrameRecord& record, const std::string& where) {
    if (record.fileName.empty() || seen.count(record.fileName) != 0) return;
    seen[record.fileName] = files.size();
    files.push_back({record, where});
  };
  for (std::size_t i = 0; i < model.frames.size(); ++i) {
    add(model.frames[i], "frame " + std::to_string(i));
  }
  for (std::size_t i = 0; i < model.items.size(); ++i) {
    const auto& strokes = model.items[i].mask.strokes;
    for (std::size_t k = 0; k < strokes.size(); ++k) {
      add(strokes[k].frame, "item " + std::to_string(i) + " mask stroke " + std::to_string(k));
    }
  }
  return files;
}

}  // namespace canvaro_tool
