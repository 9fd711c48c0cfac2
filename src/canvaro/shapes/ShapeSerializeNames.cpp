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
const std::string WIDTH = "Width";
const std::string HEIGHT = "Height";
}  // namespace RenderingTypeBase

namespace RenderingTypeLineBase {
const std::string THICKNESS = "Thickness";
const std::string OUTLINE_THICKNESS = "OutlineThickness";
const std::string STYLE = "Style";
}  // namespace RenderingTypeLineBase

namespace RenderingTypeLineInfo {
const std::string LENGTH = "Length";
}  // namespace RenderingTypeLineInfo

namespace RenderingTypeArrowInfo {
const std::string ARROW_TYPE_HEAD = "ArrowTypeHead";
const std::string ARROW_TYPE_TAIL = "ArrowTypeTail";
}  // namespace RenderingTypeArrowInfo

namespace RenderingTypeArrowShapedInfo {
const std::string ARROW_SHAPE = "ArrowShape";
}  // namespace RenderingTypeArrowShapedInfo

namespace RenderingTypeRectangleInfo {
const std::string RADIUS = "Radius";
}  // namespace RenderingTypeRectangleInfo

namespace RenderingTypeTextInfo {
const std::string TEXT = "Text";
const std::string TEXT_ALIGNMENT = "TextAlignment";
const std::string FONT = "Font";
const std::string FONT_SIZE = "FontSize";
const std::string FONT_EFFECTS = "FontEffects";
const std::string OUTLINE_SIZE = "OutlineSize";
const std::string BORDER_SIZE = "BorderSize";
const std::string BORDER_COLOR = "BorderColor";
const std::string BORDER_OPACITY = "BorderOpacity";
const std::string BACKGROUND_COLOR = "BackgroundColor";
const std::string BACKGROUND_OPACITY = "BackgroundOpacity";
}  // namespace RenderingTypeTextInfo

}  // namespace Kelbra::Canvaro::SerializeNames
