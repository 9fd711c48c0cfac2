// Key constants of the shape model's records. The texts are part of the saved-document format
// and never change; the shape kinds add their own groups beside these.
#pragma once

#include <string>

namespace Kelbra::Canvaro::SerializeNames {

namespace InfoTypeBase {
extern const std::string INDEX;                     // "Index"
extern const std::string VISIBLE;                   // "Visible"
extern const std::string SAVED;                     // "Saved"
extern const std::string INFO_TYPE_BASE_TOOL_NAME;  // "InfoTypeBaseToolName"
extern const std::string PRESET_ID;                 // "PresetID"
extern const std::string ZVALUE;                    // "ZValue"
extern const std::string CHANGE_TYPE;               // "ChangeType"
}  // namespace InfoTypeBase

namespace PositionType {
extern const std::string POSITION_X;      // "PositionX"
extern const std::string POSITION_Y;      // "PositionY"
extern const std::string ROTATION_ANGLE;  // "RotationAngle"
extern const std::string IS_DEFAULT;      // "PositionDefault"
}  // namespace PositionType

namespace RenderingTypeBase {
// The main colour of every kind, not only of text.
extern const std::string COLOR;          // "TextColor"
extern const std::string OUTLINE_COLOR;  // "OutlineColor"
extern const std::string OPACITY;        // "Opacity"
}  // namespace RenderingTypeBase

}  // namespace Kelbra::Canvaro::SerializeNames
