#include "canvaro/shapes/ArrowInfo.h"

#include "canvaro/shapes/ShapeSerializeNames.h"

namespace Kelbra::Canvaro {

template class ShapeInfoT<ArrowInfoDetails::RenderingType>;

namespace ArrowInfoDetails {

namespace Keys = SerializeNames::RenderingTypeArrowInfo;

bool RenderingType::operator==(const RenderingType& other) const {
  return LineInfoDetails::RenderingType::operator==(other) && headType_ == other.headType_ &&
         tailType_ == other.tailType_;
}

void RenderingType::Serialize(const Drevin::ISerializerPtr& serializer) const {
  LineInfoDetails::RenderingType::Serialize(serializer);
  serializer->WriteInt(Keys::ARROW_TYPE_HEAD, headType_);
  serializer->WriteInt(Keys::ARROW_TYPE_TAIL, tailType_);
}

void RenderingType::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  LineInfoDetails::RenderingType::Deserialize(serializer);
  headType_ = serializer->ReadInt(Keys::ARROW_TYPE_HEAD, headType_);
  tailType_ = serializer->ReadInt(Keys::ARROW_TYPE_TAIL, tailType_);
}

}  // namespace ArrowInfoDetails

}  // namespace Kelbra::Canvaro
