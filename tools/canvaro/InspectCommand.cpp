// canvaro inspect: a saved document as a readable tree, or as JSON for scripts. Both come from
// one JSON model built from the saved tree and the swap directory, so they always agree.
#include <iomanip>
#include <iostream>
#include <optional>
#include <sstream>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "SavedDocument.h"
#include "SwapFiles.h"
#include "ToolError.h"

namespace canvaro_tool {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

// The frame at `index` with the state of its file.
Json FrameJson(const DocumentModel& model, const fs::path& swapDirectory, std::int64_t index) {
  Json frame;
  frame["index"] = index;
  const FrameRecord* record = model.FrameAt(index);
  if (record == nullptr) {
    frame["state"] = index < 0 ? "none" : "unknown frame";
    return frame;
  }
  frame["file"] = record->fileName;
  frame["width"] = record->info.width;
  frame["height"] = record->info.height;
  frame["aspect"] =
      std::to_string(record->info.aspectX) + ":" + std::to_string(record->info.aspectY);
  if (record->fileName.empty()) {
    frame["state"] = "no picture";
    return frame;
  }
  // Only the name's last component counts, as in the library: nothing outside is looked at.
  std::error_code error;
  const std::optional<fs::path> path = SwapFilePath(swapDirectory, record->fileName);
  if (path && fs::is_regular_file(*path, error)) {
    frame["bytesOnDisk"] = fs::file_size(*path, error);
    frame["state"] = "present";
  } else {
    frame["state"] = "missing";
  }
  return frame;
}

Json RectJson(const MaskRect& rect) {
  return Json{
      {"left", rect.left}, {"right", rect.right}, {"top", rect.top}, {"bottom", rect.bottom}};
}

std::string ParticipantName(const DocumentModel& model, const std::string& name) {
  if (name == "CanvaroUndo") return name;
  for (const auto& shape : model.shapes) {
    if (shape.name == name && shape.Current() != nullptr) {
      return name + " (" + shape.Current()->kind + ")";
    }
  }
  return name;
}

Json BuildJson(const DocumentModel& model, const DocumentPaths& paths) {
  Json doc;
  doc["document"] = paths.file.string();
  doc["swapDirectory"] = paths.swapDirectory.string();

  if (model.hasStepList) {
    Json steps = Json::array();
    for (std::size_t i = 0; i < model.steps.size(); ++i) {
      Json participants = Json::array();
      for (const auto& name : model.steps[i].participants) {
        participants.push_back(ParticipantName(model, name));
      }
      steps.push_back({{"index", i},
                       {"current", static_cast<std::int64_t>(i) == model.currentStep},
                       {"participants", participants}});
    }
    doc["steps"] = {{"count", model.steps.size()}, {"current", model.currentStep}, {"list", steps}};
  } else {
    doc["steps"] = nullptr;
  }

  Json items = Json::array();
  for (std::size_t i = 0; i < model.items.size(); ++i) {
    const ItemModel& item = model.items[i];
    Json json;
    json["index"] = i;
    json["current"] = static_cast<std::int64_t>(i) == model.currentItem;
    json["frame"] = FrameJson(model, paths.swapDirectory, item.frameIndex);
    json["settings"] = {{"package", item.packageName}, {"packageIndex", item.packageIndex},
                        {"preset", item.presetName},   {"drawingTool", item.drawingTool},
                        {"tool", item.tool},           {"effects", item.effects}};
    if (item.mask.present) {
      Json brushes = Json::array();
      for (const auto& [brush, pixels] : item.mask.brushes) {
        brushes.push_back({{"brush", brush}, {"pixels", pixels}});
      }
      json["mask"] = {{"strokes", item.mask.strokes.empty() ? 0 : item.mask.strokes.size() - 1},
                      {"current", item.mask.index},
                      {"rectangle", RectJson(item.mask.rect)},
                      {"pixels", item.mask.pixelCount},
                      {"brushes", brushes},
                      {"frame", FrameJson(model, paths.swapDirectory, item.mask.WorkingFrame())}};
    } else {
      json["mask"] = nullptr;
    }
    items.push_back(json);
  }
  doc["items"] = {{"count", model.items.size()}, {"current", model.currentItem}, {"list", items}};

  Json shapes = Json::array();
  for (std::size_t i = 0; i < model.shapes.size(); ++i) {
    const ShapeModel& shape = model.shapes[i];
    Json json;
    json["index"] = i;
    json["name"] = shape.name;
    json["states"] = shape.states.size();
    json["currentState"] = shape.currentState;
    if (const ShapeState* state = shape.Current()) {
      json["kind"] = state->kind;
      json["visible"] = state->visible;
      json["zValue"] = state->zValue;
      json["position"] = {{"x", state->x}, {"y", state->y}, {"angle", state->angle}};
      json["frame"] =
          state->frameIndex < 0 ? Json() : FrameJson(model, paths.swapDirectory, state->frameIndex);
    }
    shapes.push_back(json);
  }
  doc["shapes"] = shapes;

  std::uint64_t onDisk = 0, missing = 0, empty = 0, bytes = 0;
  for (std::size_t i = 0; i < model.frames.size(); ++i) {
    const Json frame = FrameJson(model, paths.swapDirectory, static_cast<std::int64_t>(i));
    const std::string state = frame["state"];
    if (state == "present") {
      ++onDisk;
      bytes += frame["bytesOnDisk"].get<std::uint64_t>();
    } else if (state == "missing") {
      ++missing;
    } else {
      ++empty;
    }
  }
  doc["frames"] = {{"count", model.frames.size()},
                   {"onDisk", onDisk},
                   {"missing", missing},
                   {"withoutPicture", empty},
                   {"bytesOnDisk", bytes}};
  return doc;
}

std::string FrameText(const Json& frame) {
  std::ostringstream out;
  const std::string state = frame["state"];
  if (state == "none") return "none";
  out << "frame " << frame["index"].get<std::int64_t>();
  if (state == "unknown frame") return out.str() + " (not in the document's frame list)";
  if (state == "no picture") return out.str() + ", no picture";
  out << ", " << frame["file"].get<std::string>() << ", " << frame["width"].get<int>() << "x"
      << frame["height"].get<int>();
  if (state == "present") {
    out << ", " << frame["bytesOnDisk"].get<std::uint64_t>() << " bytes on disk";
  } else {
    out << ", MISSING";
  }
  return out.str();
}

void PrintText(const Json& doc, std::ostream& out) {
  out << "Document " << doc["document"].get<std::string>() << "\n";
  out << "Swap directory " << doc["swapDirectory"].get<std::string>() << "\n";

  if (doc["steps"].is_null()) {
    out << "Steps: no step list saved\n";
  } else {
    const Json& steps = doc["steps"];
    out << "Steps: " << steps["count"] << ", current " << steps["current"] << "\n";
    for (const Json& step : steps["list"]) {
      out << "  " << (step["current"].get<bool>() ? "* " : "  ") << "step " << step["index"] << ":";
      for (const Json& name : step["participants"]) out << " " << name.get<std::string>();
      out << "\n";
    }
  }

  const Json& items = doc["items"];
  out << "Items: " << items["count"] << ", current " << items["current"] << "\n";
  for (const Json& item : items["list"]) {
    const Json& settings = item["settings"];
    out << "  " << (item["current"].get<bool>() ? "* " : "  ") << "item " << item["index"]
        << ": package \"" << settings["package"].get<std::string>() << "\", preset \""
        << settings["preset"].get<std::string>() << "\"";
    if (!settings["drawingTool"].get<std::string>().empty()) {
      out << ", drawing tool \"" << settings["drawingTool"].get<std::string>() << "\"";
    }
    out << ", " << settings["effects"].size() << " effect(s)";
    for (const Json& effect : settings["effects"]) out << " " << effect.get<std::string>();
    out << "\n      picture: " << FrameText(item["frame"]) << "\n";
    const Json& mask = item["mask"];
    if (mask.is_null()) {
      out << "      mask: none\n";
      continue;
    }
    out << "      mask: " << mask["strokes"] << " stroke(s), at " << mask["current"];
    const Json& rect = mask["rectangle"];
    out << ", rectangle [" << rect["left"] << ", " << rect["right"] << ") x [" << rect["top"]
        << ", " << rect["bottom"] << "), " << mask["pixels"] << " painted pixel(s)";
    for (const Json& brush : mask["brushes"]) {
      out << "; brush " << brush["brush"] << ": " << brush["pixels"];
    }
    out << "\n            " << FrameText(mask["frame"]) << "\n";
  }

  const Json& shapes = doc["shapes"];
  out << "Shapes: " << shapes.size() << "\n";
  for (const Json& shape : shapes) {
    out << "    shape " << shape["index"] << " " << shape["name"].get<std::string>() << ": ";
    if (!shape.contains("kind")) {
      out << "no state in force (" << shape["states"] << " states)\n";
      continue;
    }
    const Json& position = shape["position"];
    out << shape["kind"].get<std::string>() << ", "
        << (shape["visible"].get<bool>() ? "visible" : "hidden") << ", z " << std::setprecision(12)
        << shape["zValue"].get<double>() << std::setprecision(3) << std::fixed << ", at ("
        << position["x"].get<double>() << ", " << position["y"].get<double>() << "), "
        << position["angle"].get<double>() << " deg" << std::defaultfloat << ", " << shape["states"]
        << " state(s), current " << shape["currentState"];
    if (!shape["frame"].is_null()) out << ", picture " << FrameText(shape["frame"]);
    out << "\n";
  }

  const Json& frames = doc["frames"];
  out << "Frames: " << frames["count"] << ", " << frames["onDisk"] << " on disk ("
      << frames["bytesOnDisk"] << " bytes), " << frames["missing"] << " missing, "
      << frames["withoutPicture"] << " without picture\n";
}

}  // namespace

int RunInspect(const InspectOptions& options) {
  const DocumentPaths paths = ResolveDocument(options.document, options.swap);
  const DocumentModel model = ReadDocumentModel(ReadDocumentTree(paths.file));
  const Json doc = BuildJson(model, paths);
  if (options.json) {
    // Names in a document are the host's bytes: invalid UTF-8 is shown as U+FFFD, not refused.
    std::cout << doc.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
  } else {
    PrintText(doc, std::cout);
  }
  return 0;
}

}  // namespace canvaro_tool
