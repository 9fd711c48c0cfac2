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

#include "canvaro/shapes/LineInfoBase.h"
#include "canvaro/shapes/RectangleInfoBase.h"
#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"
#include "canvaro/shapes/ShapeInfoT.h"

namespace Kelbra::Canvaro {

namespace RectangleInfoDetails {

class RenderingType : public RenderingTypeBaseToolIdRemovable,
                      public LineInfoBaseDetails::RenderingTypeLineBase,
                      public RectangleInfoDetailsBase::RenderingTypeRectangleBase {
 public:
  static constexpr ShapeType kShapeType = ShapeType::Rectangle;

  /// Colours, stroke, box and radius (within 1e-5).
  bool operator==(const RenderingType& other) const;

  double GetRadius() const { return radius_; }
  void SetRadius(double radius) { radius_ = radius; }

  /// The box keeps its size in pixels across a quarter turn.
  void Transpose(const Conf::FrameInfo& frame,
                 const Proc::SettingsEffectTranspose& transpose) override;
  /// Box, angle and stroke follow the picture's scaling (IRenderingType::ResizeImpl).
  void Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
              PositionType& position) override;
  /// The box becomes relative to the crop.
  void Crop(const Conf::FrameInfo& frame, const ROI& roi) override;

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
