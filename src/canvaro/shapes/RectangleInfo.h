/// \file
/// RectangleInfo: the rectangle shape: a box (RectangleInfoDetailsBase::RenderingTypeRectangleBase)
/// centred on the shape's position and turned by its angle, drawn with a stroke
/// (LineInfoBaseDetails::RenderingTypeLineBase) and corners rounded by a radius.
///
///   ShapeInfoBasePtr frame = RectangleInfo::Create(IToolsId::SHAPE_FRAME);   // 0.25 x 0.25
///
/// Keys: "TextColor", "OutlineColor", "Opacity", "Thickness", "OutlineThickness", "Style",
/// "Width", "Height", "Radius". Class id "RectangleInfo", ShapeType::Rectangle.
#pragma once

#include "canvaro/shapes/ShapeInfoT.h"
#include "canvaro/shapes/StrokedBox.h"

namespace Kelbra::Canvaro {

namespace RectangleInfoDetails {

/// An outline in a box (StrokedBox) with rounded corners.
class RenderingType : public RectangleInfoDetailsBase::StrokedBox {
 public:
  static constexpr ShapeType kShapeType = ShapeType::Rectangle;

  /// Colours, stroke, box and radius (within 1e-5).
  bool operator==(const RenderingType& other) const;

  double GetRadius() const { return radius_; }
  void SetRadius(double radius) { radius_ = radius; }

  /// The colours, the stroke, the box, then "Radius".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  double radius_ = 0.0;
};

}  // namespace RectangleInfoDetails

using RectangleInfo = ShapeInfoT<RectangleInfoDetails::RenderingType>;
extern template class ShapeInfoT<RectangleInfoDetails::RenderingType>;

}  // namespace Kelbra::Canvaro
