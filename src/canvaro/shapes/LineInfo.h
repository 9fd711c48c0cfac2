/// \file
/// LineInfo: the line shape. Its rendering type adds to the colours a stroke
/// (LineInfoBaseDetails::RenderingTypeLineBase) and a length, a fraction of the picture's width,
/// measured from the shape's position along its angle. Arrows and shaped arrows are lines with
/// ends of their own and derive their rendering types from this one.
///
///   ShapeInfoBasePtr line = LineInfo::Create(IToolsId::SHAPE_LINE);
///   static_cast<LineInfo&>(*line).GetRendering().SetLength(0.5);
///
/// Keys: "TextColor", "OutlineColor", "Opacity", "Thickness", "OutlineThickness", "Style",
/// "Length". Class id "LineInfo", ShapeType::Line.
#pragma once

#include "canvaro/shapes/LineInfoBase.h"
#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"
#include "canvaro/shapes/ShapeInfoT.h"

namespace Kelbra::Canvaro {

namespace LineInfoDetails {

class RenderingType : public RenderingTypeBaseToolIdRemovable,
                      public LineInfoBaseDetails::RenderingTypeLineBase {
 public:
  static constexpr ShapeType kShapeType = ShapeType::Line;

  /// Colours, stroke and length (within 1e-5).
  bool operator==(const RenderingType& other) const;

  double GetLength() const { return length_; }
  void SetLength(double length) { length_ = length; }

  /// The length keeps its size in pixels across a quarter turn.
  void Transpose(const Conf::FrameInfo& frame,
                 const Proc::SettingsEffectTranspose& transpose) override;
  /// The line is treated as a box without height: length, angle and thickness follow the
  /// picture's scaling (IRenderingType::ResizeImpl).
  void Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
              PositionType& position) override;
  /// The length becomes a fraction of the crop's width.
  void Crop(const Conf::FrameInfo& frame, const ROI& roi) override;

  /// The colours, the stroke, then "Length".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  double length_ = 0.25;
};

}  // namespace LineInfoDetails

using LineInfo = ShapeInfoT<LineInfoDetails::RenderingType>;
extern template class ShapeInfoT<LineInfoDetails::RenderingType>;

}  // namespace Kelbra::Canvaro
