/// \file
/// StrokedBox: the rendering shared by the kinds drawn as an outline in a box (rectangle,
/// ellipse): colours (RenderingTypeBaseToolIdRemovable), a stroke
/// (LineInfoBaseDetails::RenderingTypeLineBase) and a box
/// (RectangleInfoDetailsBase::RenderingTypeRectangleBase) centred on the shape's position.
///
///   class RenderingType : public RectangleInfoDetailsBase::StrokedBox { ... };   // a kind
///
/// The box keeps its size in pixels across a quarter turn, box, angle and stroke follow the
/// picture's scaling, and a crop makes the box relative to the cropped area. Written as the
/// colours, the stroke, then the box; a kind writes its own entries after these.
#pragma once

#include "canvaro/shapes/LineInfoBase.h"
#include "canvaro/shapes/RectangleInfoBase.h"
#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"

namespace Kelbra::Canvaro::RectangleInfoDetailsBase {

class StrokedBox : public RenderingTypeBaseToolIdRemovable,
                   public LineInfoBaseDetails::RenderingTypeLineBase,
                   public RenderingTypeRectangleBase {
 public:
  /// Colours, stroke and box.
  bool operator==(const StrokedBox& other) const;

  void Transpose(const Conf::FrameInfo& frame,
                 const Proc::SettingsEffectTranspose& transpose) override;
  void Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
              PositionType& position) override;
  void Crop(const Conf::FrameInfo& frame, const ROI& roi) override;

  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;
};

}  // namespace Kelbra::Canvaro::RectangleInfoDetailsBase
