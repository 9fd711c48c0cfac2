#include "canvaro/shapes/ShapedArrowInfo.h"

#include "canvaro/shapes/ShapeSerializeNames.h"

namespace Kelbra::Canvaro {

template class ShapeInfoT<ShapedArrowInfoDetails::RenderingType>;

namespace ShapedArrowInfoDetails {

namespace Keys = SerializeNames::RenderingTypeArrowShapedInfo;

bool RenderingType::operator==(const RenderingType& other) const {
  return LineInfoDetails::RenderingType::operator==(other) && arrowShape_ == other.arrowShape_;
}

void RenderingType::Serialize(const Drevin::ISerializerPtr& serializer) const {
  LineInfoDetails::RenderingType::Serialize(serializer);
  serializer->WriteInt(Keys::ARROW_SHAPE, arrowShape_);
}

void RenderingType::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  LineInfoDetails::RenderingType::Deserialize(serializer);
  arrowShape_ = serializer->ReadInt(Keys::ARROW_SHAPE, arrowShape_);
}

}  // namespace ShapedArrowInfoDetails

}  // namespace Kelbra::Canvaro
