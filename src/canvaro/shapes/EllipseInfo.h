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

#include "canvaro/shapes/LineInfoBase.h"
#include "canvaro/shapes/RectangleInfoBase.h"
#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"
#include "canvaro/shapes/ShapeInfoT.h"

namespace Kelbra::Canvaro {

namespace EllipseInfoDetails {

class RenderingType : public RenderingTypeBaseToolIdRemovable,
                      public LineInfoBaseDetails::RenderingTypeLineBase,
                      public RectangleInfoDetailsBase::RenderingTypeRectangleBase {
 public:
  static constexpr ShapeType kShapeType = ShapeType::Ellipse;

  /// Colours, stroke and box.
  bool operator==(const RenderingType& other) const;

  /// As a rectangle's box: the size in pixels is kept across a quarter turn.
  void Transpose(const Conf::FrameInfo& frame,
                 const Proc::SettingsEffectTranspose& transpose) override;
  /// Box, angle and stroke follow the picture's scaling (IRenderingType::ResizeImpl).
  void Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
              PositionType& position) override;
  /// The box becomes relative to the crop.
  void Crop(const Conf::FrameInfo& frame, const ROI& roi) override;

  /// The colours, the stroke, then the box.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;
};

}  // namespace EllipseInfoDetails

using EllipseInfo = ShapeInfoT<EllipseInfoDetails::RenderingType>;
extern template class ShapeInfoT<EllipseInfoDetails::RenderingType>;

}  // namespace Kelbra::Canvaro
