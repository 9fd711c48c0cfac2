/// \file
/// MarkerInfo: the marker (highlighter) shape: a filled box
/// (RectangleInfoDetailsBase::RenderingTypeRectangleBase) centred on the shape's position and
/// turned by its angle, without a stroke.
///
///   ShapeInfoBasePtr marker = MarkerInfo::Create(IToolsId::SHAPE_MARKER);   // 0.25 x 0.25
///
/// Keys: "TextColor", "OutlineColor", "Opacity", "Width", "Height". Class id "MarkerInfo",
/// ShapeType::Marker.
#pragma once

#include "canvaro/shapes/RectangleInfoBase.h"
#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"
#include "canvaro/shapes/ShapeInfoT.h"

namespace Kelbra::Canvaro {

namespace MarkerInfoDetails {

class RenderingType : public RenderingTypeBaseToolIdRemovable,
                      public RectangleInfoDetailsBase::RenderingTypeRectangleBase {
 public:
  static constexpr ShapeType kShapeType = ShapeType::Marker;

  /// Colours and box.
  bool operator==(const RenderingType& other) const;

  /// As a rectangle's box: the size in pixels is kept across a quarter turn.
  void Transpose(const Conf::FrameInfo& frame,
                 const Proc::SettingsEffectTranspose& transpose) override;
  /// Box and angle follow the picture's scaling (IRenderingType::ResizeImpl).
  void Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
              PositionType& position) override;
  /// The box becomes relative to the crop.
  void Crop(const Conf::FrameInfo& frame, const ROI& roi) override;

  /// The colours, then the box.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;
};

}  // namespace MarkerInfoDetails

using MarkerInfo = ShapeInfoT<MarkerInfoDetails::RenderingType>;
extern template class ShapeInfoT<MarkerInfoDetails::RenderingType>;

}  // namespace Kelbra::Canvaro
