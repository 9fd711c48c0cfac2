/// \file
/// ShapedArrowInfo: the shaped arrow, a line (LineInfoDetails::RenderingType) drawn as a filled
/// arrow outline of one of the host's shaped-arrow styles. It follows the picture exactly as a
/// line does.
///
///   ShapeInfoBasePtr arrow = ShapedArrowInfo::Create(IToolsId::SHAPE_ARROW);   // shape 0
///
/// Keys: the line's, then "ArrowShape". Class id "ShapedArrow", ShapeType::ShapedArrow.
#pragma once

#include <cstdint>

#include "canvaro/shapes/LineInfo.h"

namespace Kelbra::Canvaro {

namespace ShapedArrowInfoDetails {

class RenderingType : public LineInfoDetails::RenderingType {
 public:
  static constexpr ShapeType kShapeType = ShapeType::ShapedArrow;

  /// The line's parameters and the arrow shape.
  bool operator==(const RenderingType& other) const;

  std::int32_t GetArrowShape() const { return arrowShape_; }
  void SetArrowShape(std::int32_t shape) { arrowShape_ = shape; }

  /// The line's keys, then "ArrowShape".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  std::int32_t arrowShape_ = 0;
};

}  // namespace ShapedArrowInfoDetails

using ShapedArrowInfo = ShapeInfoT<ShapedArrowInfoDetails::RenderingType>;
extern template class ShapeInfoT<ShapedArrowInfoDetails::RenderingType>;

}  // namespace Kelbra::Canvaro
