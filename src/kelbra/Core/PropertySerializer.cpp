#include "kelbra/Core/PropertySerializer.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>

#include <nlohmann/json.hpp>

#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataString.h"
#include "kelbra/Core/TextEncoding.h"

namespace Kelbra::Core {

namespace {

using Json = nlohmann::ordered_json;

// Field names of the text form.
constexpr const char* kClass = "class";
constexpr const char* kClassBytes = "classBytes";
constexpr const char* kEntries = "entries";
constexpr const char* kKey = "key";
constexpr const char* kKeyBytes = "keyBytes";
constexpr const char* kString = "string";
constexpr const char* kBytes = "bytes";
constexpr const char* kInt = "int";
constexpr const char* kInt64 = "int64";
constexpr const char* kBool = "bool";
constexpr const char* kDouble = "double";
constexpr const char* kNode = "node";
constexpr const char* kCollection = "collection";

// ---- writing -------------------------------------------------------------------------------

Json DoubleToJson(double value);


// The writer emits the text directly (no JSON document in between). Pretty text puts every
// scalar entry on one line and indents nested nodes by two spaces per level.
class Writer {
 public:
  explicit Writer(bool pretty) : pretty_(pretty) {}

  void Node(const Property& node, int level) {
    out_ += '{';
    if (!node.GetClassId().empty()) {
      Break(level + 1);
      Text(kClass, kClassBytes, node.GetClassId());
      out_ += ',';
    }
    Break(level + 1);
    out_ += "\"entries\":";
    Space();
    out_ += '[';
    const auto& entries = node.Entries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (i > 0) out_ += ',';
      Break(level + 2);
      Entry(entries[i], level + 2);
    }
    if (!entries.empty()) Break(level + 1);
    out_ += ']';
    Break(level);
    out_ += '}';
  }

  std::string Take() {
    if (pretty_) out_ += '\n';
    return std::move(out_);
  }

 private:
  void Entry(const Property::Entry& entry, int level) {
    out_ += '{';
    Text(kKey, kKeyBytes, entry.key);
    out_ += ',';
    Space();
    std::visit(
        [this, level](const auto& value) {
          using T = std::decay_t<decltype(value)>;
          if constexpr (std::is_same_v<T, std::string>) {
            Text(kString, kBytes, value);
          } else if constexpr (std::is_same_v<T, std::int32_t>) {
            Field(kInt, std::to_string(value));
          } else if constexpr (std::is_same_v<T, std::int64_t>) {
            Field(kInt64, std::to_string(value));
          } else if constexpr (std::is_same_v<T, bool>) {
            Field(kBool, value ? "true" : "false");
          } else if constexpr (std::is_same_v<T, double>) {
            Field(kDouble, DoubleToJson(value).dump());
          } else if constexpr (std::is_same_v<T, std::unique_ptr<Property>>) {
            Field(kNode, "");
            Node(*value, level);
          } else {
            Field(kCollection, "[");
            for (std::size_t i = 0; i < value.size(); ++i) {
              if (i > 0) out_ += ',';
              Break(level + 1);
              Node(value[i], level + 1);
            }
            if (!value.empty()) Break(level);
            out_ += ']';
          }
        },
        entry.value);
    out_ += '}';
  }

  // "name": value
  void Field(const char* name, const std::string& value) {
    out_ += '"';
    out_ += name;
    out_ += "\":";
    Space();
    out_ += value;
  }

  // Text that JSON can hold as a string goes under `textName`; other bytes go base64 under
  // `bytesName`.
  void Text(const char* textName, const char* bytesName, const std::string& text) {
    if (IsValidUtf8(text)) {
      Field(textName, Json(text).dump());
    } else {
      Field(bytesName, Json(EncodeBase64(text)).dump());
    }
  }

  void Break(int level) {
    if (!pretty_) return;
    out_ += '\n';
    out_.append(static_cast<std::size_t>(level) * 2, ' ');
  }
  void Space() {
    if (pretty_) out_ += ' ';
  }

  bool pretty_;
  std::string out_;
};

Json DoubleToJson(double value) {
  if (std::isfinite(value)) return Json(value);
  if (std::isinf(value)) return Json(value > 0 ? "inf" : "-inf");
  char bits[40];
  std::snprintf(bits, sizeof bits, "nan(0x%016llx)",
                static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
  return Json(bits);
}

// ---- reading -------------------------------------------------------------------------------

class Reader {
 public:
  explicit Reader(std::string source) : source_(std::move(source)) {}

  void ReadNode(const Json& json, Property& node, const std::string& place, int depth) {
    if (depth > PropertySerializer::kMaxDepth) {
      Fail(place, "nodes are nested deeper than " + std::to_string(PropertySerializer::kMaxDepth));
    }
    if (!json.is_object()) Fail(place, "a node must be an object");
    for (const auto& [name, value] : json.items()) {
      if (name != kClass && name != kClassBytes && name != kEntries) {
        Fail(place, "unknown field '" + name + "'");
      }
    }
    node.SetClassId(GetText(json, kClass, kClassBytes, place, /*required=*/false));
    const auto entries = json.find(kEntries);
    if (entries == json.end()) Fail(place, "missing field 'entries'");
    if (!entries->is_array()) Fail(place + ".entries", "must be an array");
    std::size_t index = 0;
    for (const Json& entry : *entries) {
      ReadEntry(entry, node, place + ".entries[" + std::to_string(index++) + "]", depth);
    }
  }

 private:
  void ReadEntry(const Json& json, Property& node, const std::string& place, int depth) {
    if (!json.is_object()) Fail(place, "an entry must be an object");
    const std::string key = GetText(json, kKey, kKeyBytes, place, /*required=*/true);
    const std::string at = place + " ('" + key + "')";
    if (node.Has(key)) Fail(at, "the key occurs twice in one node");
    const char* typeName = nullptr;
    const Json* value = nullptr;
    for (const auto& [name, item] : json.items()) {
      if (name == kKey || name == kKeyBytes) continue;
      if (value != nullptr) Fail(at, "an entry must hold exactly one value");
      typeName = nullptr;
      for (const char* known : {kString, kBytes, kInt, kInt64, kBool, kDouble, kNode, kCollection}) {
        if (name == known) typeName = known;
      }
      if (typeName == nullptr) Fail(at, "unknown value type '" + name + "'");
      value = &item;
    }
    if (value == nullptr) Fail(at, "the entry has no value");

    const std::string type = typeName;
    if (type == kString) {
      if (!value->is_string()) Fail(at, "a string value must be a JSON string");
      node.SetString(key, value->get<std::string>());
    } else if (type == kBytes) {
      node.SetString(key, DecodeText(*value, at));
    } else if (type == kInt) {
      node.SetInt(key, static_cast<std::int32_t>(GetInteger(*value, at, INT32_MIN, INT32_MAX)));
    } else if (type == kInt64) {
      node.SetInt64(key, GetInteger(*value, at, INT64_MIN, INT64_MAX));
    } else if (type == kBool) {
      if (!value->is_boolean()) Fail(at, "a bool value must be true or false");
      node.SetBool(key, value->get<bool>());
    } else if (type == kDouble) {
      node.SetDouble(key, GetDouble(*value, at));
    } else if (type == kNode) {
      ReadNode(*value, node.AddChild(key), at + ".node", depth + 1);
    } else {
      if (!value->is_array()) Fail(at, "a collection must be an array");
      Property::Collection& collection = node.AddCollection(key);
      std::size_t index = 0;
      for (const Json& item : *value) {
        ReadNode(item, collection.emplace_back(),
                 at + ".collection[" + std::to_string(index++) + "]", depth + 1);
      }
    }
  }

  std::string GetText(const Json& json, const char* textName, const char* bytesName,
                      const std::string& place, bool required) {
    const auto text = json.find(textName);
    const auto bytes = json.find(bytesName);
    if (text != json.end() && bytes != json.end()) {
      Fail(place, std::string("both '") + textName + "' and '" + bytesName + "' are given");
    }
    if (text != json.end()) {
      if (!text->is_string()) Fail(place, std::string("'") + textName + "' must be a string");
      return text->get<std::string>();
    }
    if (bytes != json.end()) return DecodeText(*bytes, place);
    if (required) Fail(place, std::string("missing field '") + textName + "'");
    return {};
  }

  std::string DecodeText(const Json& value, const std::string& place) {
    if (!value.is_string()) Fail(place, "bytes must be a base64 string");
    std::string decoded;
    if (!DecodeBase64(value.get_ref<const std::string&>(), decoded)) {
      Fail(place, "bytes are not valid base64");
    }
    return decoded;
  }

  std::int64_t GetInteger(const Json& value, const std::string& place, std::int64_t min,
                          std::int64_t max) {
    if (value.is_number_integer() && !value.is_number_unsigned()) {
      const auto v = value.get<std::int64_t>();
      if (v >= min && v <= max) return v;
    } else if (value.is_number_unsigned()) {
      const auto v = value.get<std::uint64_t>();
      if (v <= static_cast<std::uint64_t>(max)) return static_cast<std::int64_t>(v);
    } else {
      Fail(place, "an integer value must be a JSON integer");
    }
    Fail(place, "integer " + value.dump() + " is out of range");
  }

  double GetDouble(const Json& value, const std::string& place) {
    if (value.is_number()) return value.get<double>();
    if (value.is_string()) {
      const auto& text = value.get_ref<const std::string&>();
      if (text == "inf") return std::numeric_limits<double>::infinity();
      if (text == "-inf") return -std::numeric_limits<double>::infinity();
      unsigned long long bits = 0;
      int consumed = 0;
      if (std::sscanf(text.c_str(), "nan(0x%16llx)%n", &bits, &consumed) == 1 &&
          static_cast<std::size_t>(consumed) == text.size()) {
        const double nan = std::bit_cast<double>(static_cast<std::uint64_t>(bits));
        if (std::isnan(nan)) return nan;
      }
    }
    Fail(place, "a double value must be a number, \"inf\", \"-inf\" or \"nan(0x...)\"");
  }

  [[noreturn]] void Fail(const std::string& place, const std::string& problem) {
    throw PropertyException("Malformed property text in " + source_ + " at " + place + ": " +
                            problem);
  }

  std::string source_;
};

std::string ReadAll(const IDataInputPtr& in) {
  std::string text;
  const std::uint64_t remaining = in->GetRemaining();
  if (remaining > 0 && remaining < (std::uint64_t{1} << 40)) {
    text.reserve(static_cast<std::size_t>(remaining));
  }
  char chunk[1 << 16];
  while (const std::size_t got = in->ReadSome(chunk, sizeof chunk)) text.append(chunk, got);
  return text;
}

}  // namespace

void PropertySerializer::Serialize(const Property& tree, const IDataOutputPtr& out, bool pretty) {
  Writer writer(pretty);
  writer.Node(tree, 0);
  const std::string text = writer.Take();
  out->Write(text.data(), text.size());
}

void PropertySerializer::Deserialize(Property& tree, const IDataInputPtr& in) {
  const std::string source = in->GetName();
  const std::string text = ReadAll(in);
  Json json;
  try {
    json = Json::parse(text);
  } catch (const Json::exception& e) {
    throw PropertyException("Malformed property text in " + source + ": " + e.what());
  }
  Property result;
  Reader(source).ReadNode(json, result, "$", 0);
  tree = std::move(result);
}

std::string PropertySerializer::ToString(const Property& tree, bool pretty) {
  std::string text;
  Serialize(tree, DataOutputString::Create(text), pretty);
  return text;
}

Property PropertySerializer::FromString(std::string_view text) {
  Property tree;
  Deserialize(tree, DataInputString::Create(std::string(text)));
  return tree;
}

}  // namespace Kelbra::Core
