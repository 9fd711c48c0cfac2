/// \file
/// Key constants of the shape model's records. The texts are part of the saved-document format
/// and never change; the shape kinds add their own groups beside these.
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
/// The main colour of every kind, not only of text.
extern const std::string COLOR;          // "TextColor"
extern const std::string OUTLINE_COLOR;  // "OutlineColor"
extern const std::string OPACITY;        // "Opacity"
/// Box sizes of rectangles, ellipses, markers and text.
extern const std::string WIDTH;   // "Width"
extern const std::string HEIGHT;  // "Height"
}  // namespace RenderingTypeBase

// Strokes of lines, arrows, rectangles and ellipses.
namespace RenderingTypeLineBase {
extern const std::string THICKNESS;          // "Thickness"
extern const std::string OUTLINE_THICKNESS;  // "OutlineThickness"
extern const std::string STYLE;              // "Style"
}  // namespace RenderingTypeLineBase

namespace RenderingTypeLineInfo {
extern const std::string LENGTH;  // "Length"
}  // namespace RenderingTypeLineInfo

namespace RenderingTypeArrowInfo {
extern const std::string ARROW_TYPE_HEAD;  // "ArrowTypeHead"
extern const std::string ARROW_TYPE_TAIL;  // "ArrowTypeTail"
}  // namespace RenderingTypeArrowInfo

namespace RenderingTypeArrowShapedInfo {
extern const std::string ARROW_SHAPE;  // "ArrowShape"
}  // namespace RenderingTypeArrowShapedInfo

namespace RenderingTypeRectangleInfo {
extern const std::string RADIUS;  // "Radius"
}  // namespace RenderingTypeRectangleInfo

namespace RenderingTypeTextInfo {
extern const std::string TEXT;                // "Text"
extern const std::string TEXT_ALIGNMENT;      // "TextAlignment"
extern const std::string FONT;                // "Font"
extern const std::string FONT_SIZE;           // "FontSize"
extern const std::string FONT_EFFECTS;        // "FontEffects"
extern const std::string OUTLINE_SIZE;        // "OutlineSize"
extern const std::string BORDER_SIZE;         // "BorderSize"
extern const std::string BORDER_COLOR;        // "BorderColor"
extern const std::string BORDER_OPACITY;      // "BorderOpacity"
extern const std::string BACKGROUND_COLOR;    // "BackgroundColor"
extern const std::string BACKGROUND_OPACITY;  // "BackgroundOpacity"
}  // namespace RenderingTypeTextInfo

}  // namespace Kelbra::Canvaro::SerializeNames
