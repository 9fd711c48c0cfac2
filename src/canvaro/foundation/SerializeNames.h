/// \file
/// Key and name constants of the foundation records. The texts are part of the saved-document
/// format and never change.
#pragma once

#include <string>

namespace Kelbra::Canvaro::SerializeNames {

// The stored names of the tools, in the order of the tool table.
namespace ToolsName {
extern const std::string NONE;          // "NONE"
extern const std::string TEXT;          // "TEXT"
extern const std::string SHAPE_ARROW;   // "SHAPE_ARROW"
extern const std::string SHAPE_LINE;    // "SHAPE_LINE"
extern const std::string SHAPE_MARKER;  // "SHAPE_MARKER"
extern const std::string SHAPE_FRAME;   // "SHAPE_FRAME"
extern const std::string STUB;          // "STUB"
}  // namespace ToolsName

namespace ToolsId {
extern const std::string TOOL_NAME;  // "ToolName"
}  // namespace ToolsId

}  // namespace Kelbra::Canvaro::SerializeNames
