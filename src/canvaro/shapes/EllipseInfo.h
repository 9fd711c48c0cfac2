/// \file
/// EllipseInfo: the ellipse shape, inscribed in a box
/// (RectangleInfoDetailsBase::RenderingTypeRectangleBase) centred on the shape's position and
/// turned by its angle, drawn with a stroke (LineInfoBaseDetails::RenderingTypeLineBase).
///
///   ShapeInfoBasePtr ellipse = EllipseInfo::Create(IToolsId::SHAPE_FRAME);   // 0.25 x 0.25
///
/// Keys: "TextColor", "OutlineColor", "Opacity", "Thickness", "OutlineThickness", "Style",
/// "Width", "Height". Class id "EllipseInfo", ShapeType::Ellipse.
#pragma once

#include "canvaro/shapes/ShapeInfoT.h"
#include "canvaro/shapes/StrokedBox.h"

namespace Kelbra::Canvaro {

namespace EllipseInfoDetails {

/// An outline in a box, nothing more: every operation is StrokedBox's.
class RenderingType : public RectangleInfoDetailsBase::StrokedBox {
 public:
  static constexpr ShapeType kShapeType = ShapeType::Ellipse;

  bool operator==(const RenderingType& other) const { return StrokedBox::operator==(other); }
};

}  // namespace EllipseInfoDetails

using EllipseInfo = ShapeInfoT<EllipseInfoDetails::RenderingType>;
extern template class ShapeInfoT<EllipseInfoDetails::RenderingType>;

}  // namespace Kelbra::Canvaro
