#include "canvaro/shapes/LineInfoBase.h"

#include "canvaro/shapes/ShapeSerializeNames.h"
#include "canvaro/shapes/Tolerance.h"

namespace Kelbra::Canvaro::LineInfoBaseDetails {

namespace Keys = SerializeNames::RenderingTypeLineBase;

bool RenderingTypeLineBase::operator==(const RenderingTypeLineBase& other) const {
  return thickness_ == other.thickness_ &&
         NearlyEqual(outlineThickness_, other.outlineThickness_) && style_ == other.style_;
}

void RenderingTypeLineBase::Serialize(const Drevin::ISerializerPtr& serializer) const {
  // Stored as the serializer's 32-bit integer; the bits of the unsigned value are kept.
  serializer->WriteInt(Keys::THICKNESS, static_cast<std::int32_t>(thickness_));
  serializer->WriteDouble(Keys::OUTLINE_THICKNESS, outlineThickness_);
  serializer->WriteInt(Keys::STYLE, style_);
}

void RenderingTypeLineBase::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  thickness_ = static_cast<unsigned>(
      serializer->ReadInt(Keys::THICKNESS, static_cast<std::int32_t>(thickness_)));
  outlineThickness_ = serializer->ReadDouble(Keys::OUTLINE_THICKNESS, outlineThickness_);
  style_ = serializer->ReadInt(Keys::STYLE, style_);
}

}  // namespace Kelbra::Canvaro::LineInfoBaseDetails
