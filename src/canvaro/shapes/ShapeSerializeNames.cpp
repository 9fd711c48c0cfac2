#include "canvaro/shapes/ShapeSerializeNames.h"

namespace Kelbra::Canvaro::SerializeNames {

namespace InfoTypeBase {
const std::string INDEX = "Index";
const std::string VISIBLE = "Visible";
const std::string SAVED = "Saved";
const std::string INFO_TYPE_BASE_TOOL_NAME = "InfoTypeBaseToolName";
const std::string PRESET_ID = "PresetID";
const std::string ZVALUE = "ZValue";
const std::string CHANGE_TYPE = "ChangeType";
}  // namespace InfoTypeBase

namespace PositionType {
const std::string POSITION_X = "PositionX";
const std::string POSITION_Y = "PositionY";
const std::string ROTATION_ANGLE = "RotationAngle";
const std::string IS_DEFAULT = "PositionDefault";
}  // namespace PositionType

namespace RenderingTypeBase {
const std::string COLOR = "TextColor";
const std::string OUTLINE_COLOR = "OutlineColor";
const std::string OPACITY = "Opacity";
}  // namespace RenderingTypeBase

}  // namespace Kelbra::Canvaro::SerializeNames
