#include "canvaro/shapes/LineInfo.h"

#include "canvaro/shapes/ShapeSerializeNames.h"
#include "canvaro/shapes/Tolerance.h"

namespace Kelbra::Canvaro {

template class ShapeInfoT<LineInfoDetails::RenderingType>;

namespace LineInfoDetails {

bool RenderingType::operator==(const RenderingType& other) const {
  return RenderingTypeBase::operator==(other) && RenderingTypeLineBase::operator==(other) &&
         NearlyEqual(length_, other.length_);
}

void RenderingType::Transpose(const Conf::FrameInfo& frame,
                              const Proc::SettingsEffectTranspose& transpose) {
  const double aspect = GetTransposeAspect(frame, transpose);
  if (aspect >= 0) length_ /= aspect;
}

void RenderingType::Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
                           PositionType& position) {
  double noHeight = 0.0;
  ResizeImpl(from, to, length_, noHeight, position, Thickness());
}

void RenderingType::Crop(const Conf::FrameInfo& frame, const ROI& roi) {
  double noHeight = 0.0;
  CropImpl(frame, roi, length_, noHeight);
}

void RenderingType::Serialize(const Drevin::ISerializerPtr& serializer) const {
  RenderingTypeBase::Serialize(serializer);
  RenderingTypeLineBase::Serialize(serializer);
  serializer->WriteDouble(SerializeNames::RenderingTypeLineInfo::LENGTH, length_);
}

void RenderingType::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  RenderingTypeBase::Deserialize(serializer);
  RenderingTypeLineBase::Deserialize(serializer);
  length_ = serializer->ReadDouble(SerializeNames::RenderingTypeLineInfo::LENGTH, length_);
}

}  // namespace LineInfoDetails

}  // namespace Kelbra::Canvaro
