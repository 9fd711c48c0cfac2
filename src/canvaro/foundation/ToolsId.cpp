#include "canvaro/foundation/ToolsId.h"

#include <utility>

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/SerializeNames.h"
#include "canvaro/foundation/Throw.h"

namespace Kelbra::Canvaro {

namespace SerializeNames {
namespace ToolsName {
const std::string NONE = "NONE";
const std::string TEXT = "TEXT";
const std::string SHAPE_ARROW = "SHAPE_ARROW";
const std::string SHAPE_LINE = "SHAPE_LINE";
const std::string SHAPE_MARKER = "SHAPE_MARKER";
const std::string SHAPE_FRAME = "SHAPE_FRAME";
const std::string STUB = "STUB";
}  // namespace ToolsName
namespace ToolsId {
const std::string TOOL_NAME = "ToolName";
}  // namespace ToolsId
}  // namespace SerializeNames

namespace {

namespace Names = SerializeNames::ToolsName;

// The one lookup table, scanned front to back. It holds pointers to the name constants, so it
// does not depend on the order in which they are initialised.
const std::pair<IToolsId::Value, const std::string*> kToolTable[] = {
    {IToolsId::NONE, &Names::NONE},
    {IToolsId::TEXT, &Names::TEXT},
    {IToolsId::SHAPE_ARROW, &Names::SHAPE_ARROW},
    {IToolsId::SHAPE_LINE, &Names::SHAPE_LINE},
    {IToolsId::SHAPE_MARKER, &Names::SHAPE_MARKER},
    {IToolsId::SHAPE_FRAME, &Names::SHAPE_FRAME},
    {IToolsId::STUB, &Names::STUB},
};

}  // namespace

IToolsId::Value IToolsId::GetToolID(const std::string& name) {
  for (const auto& [value, text] : kToolTable) {
    if (*text == name) return value;
  }
  return NONE;
}

const std::string& IToolsId::GetToolName(Value value) {
  for (const auto& [tool, text] : kToolTable) {
    if (tool == value) return *text;
  }
  ThrowCoded(CanvaroError::InvalidArgument,
             "Tool value " + std::to_string(static_cast<int>(value)) + " has no stored name",
             BOOST_CURRENT_LOCATION);
}

void ToolsId::SetCurrentTool(Value value) { SetCurrentTool(ToolsId(value)); }

void ToolsId::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteString(SerializeNames::ToolsId::TOOL_NAME, GetToolName(value_));
}

void ToolsId::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  value_ = GetToolID(serializer->ReadString(SerializeNames::ToolsId::TOOL_NAME, std::string()));
}

}  // namespace Kelbra::Canvaro
