#include "canvaro/shapes/RectangleInfo.h"

#include "canvaro/shapes/ShapeSerializeNames.h"
#include "canvaro/shapes/Tolerance.h"

namespace Kelbra::Canvaro {

template class ShapeInfoT<RectangleInfoDetails::RenderingType>;

namespace RectangleInfoDetails {

bool RenderingType::operator==(const RenderingType& other) const {
  return StrokedBox::operator==(other) && NearlyEqual(radius_, other.radius_);
}

void RenderingType::Serialize(const Drevin::ISerializerPtr& serializer) const {
  StrokedBox::Serialize(serializer);
  serializer->WriteDouble(SerializeNames::RenderingTypeRectangleInfo::RADIUS, radius_);
}

void RenderingType::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  StrokedBox::Deserialize(serializer);
  radius_ = serializer->ReadDouble(SerializeNames::RenderingTypeRectangleInfo::RADIUS, radius_);
}

}  // namespace RectangleInfoDetails

}  // namespace Kelbra::Canvaro
