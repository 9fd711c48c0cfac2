/// \file
/// ArrowInfo: the arrow shape, a line (LineInfoDetails::RenderingType) with a head and a tail
/// whose styles are numbers of the host's arrow-end styles. It follows the picture exactly as a
/// line does.
///
///   ShapeInfoBasePtr arrow = ArrowInfo::Create(IToolsId::SHAPE_ARROW);   // head 2, tail 0
///
/// Keys: the line's, then "ArrowTypeHead", "ArrowTypeTail". Class id "ArrowInfo",
/// ShapeType::Arrow.
#pragma once

#include <cstdint>

#include "canvaro/shapes/LineInfo.h"

namespace Kelbra::Canvaro {

namespace ArrowInfoDetails {

class RenderingType : public LineInfoDetails::RenderingType {
 public:
  static constexpr ShapeType kShapeType = ShapeType::Arrow;

  /// The line's parameters and both end styles.
  bool operator==(const RenderingType& other) const;

  std::int32_t GetHeadType() const { return headType_; }
  void SetHeadType(std::int32_t type) { headType_ = type; }
  std::int32_t GetTailType() const { return tailType_; }
  void SetTailType(std::int32_t type) { tailType_ = type; }

  /// The line's keys, then "ArrowTypeHead", "ArrowTypeTail".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  std::int32_t headType_ = 2;
  std::int32_t tailType_ = 0;
};

}  // namespace ArrowInfoDetails

using ArrowInfo = ShapeInfoT<ArrowInfoDetails::RenderingType>;
extern template class ShapeInfoT<ArrowInfoDetails::RenderingType>;

}  // namespace Kelbra::Canvaro
