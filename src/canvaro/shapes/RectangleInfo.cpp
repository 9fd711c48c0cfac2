#include "canvaro/shapes/RectangleInfo.h"

#include "canvaro/shapes/ShapeSerializeNames.h"
#include "canvaro/shapes/Tolerance.h"

namespace Kelbra::Canvaro {

template class ShapeInfoT<RectangleInfoDetails::RenderingType>;

namespace RectangleInfoDetails {

using RectangleInfoDetailsBase::RenderingTypeRectangleBase;

bool RenderingType::operator==(const RenderingType& other) const {
  return RenderingTypeBase::operator==(other) && RenderingTypeLineBase::operator==(other) &&
         RenderingTypeRectangleBase::operator==(other) && NearlyEqual(radius_, other.radius_);
}

void RenderingType::Transpose(const Conf::FrameInfo& frame,
                              const Proc::SettingsEffectTranspose& transpose) {
  TransposeBox(frame, transpose);
}

void RenderingType::Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
                           PositionType& position) {
  ResizeImpl(from, to, Width(), Height(), position, Thickness());
}

void RenderingType::Crop(const Conf::FrameInfo& frame, const ROI& roi) { CropBox(frame, roi); }

void RenderingType::Serialize(const Drevin::ISerializerPtr& serializer) const {
  RenderingTypeBase::Serialize(serializer);
  RenderingTypeLineBase::Serialize(serializer);
  RenderingTypeRectangleBase::Serialize(serializer);
  serializer->WriteDouble(SerializeNames::RenderingTypeRectangleInfo::RADIUS, radius_);
}

void RenderingType::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  RenderingTypeBase::Deserialize(serializer);
  RenderingTypeLineBase::Deserialize(serializer);
  RenderingTypeRectangleBase::Deserialize(serializer);
  radius_ = serializer->ReadDouble(SerializeNames::RenderingTypeRectangleInfo::RADIUS, radius_);
}

}  // namespace RectangleInfoDetails

}  // namespace Kelbra::Canvaro
