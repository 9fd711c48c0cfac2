#include "canvaro/shapes/MarkerInfo.h"

namespace Kelbra::Canvaro {

template class ShapeInfoT<MarkerInfoDetails::RenderingType>;

namespace MarkerInfoDetails {

using RectangleInfoDetailsBase::RenderingTypeRectangleBase;

bool RenderingType::operator==(const RenderingType& other) const {
  return RenderingTypeBase::operator==(other) && RenderingTypeRectangleBase::operator==(other);
}

void RenderingType::Transpose(const Conf::FrameInfo& frame,
                              const Proc::SettingsEffectTranspose& transpose) {
  TransposeBox(frame, transpose);
}

void RenderingType::Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
                           PositionType& position) {
  unsigned noStroke = 0;
  ResizeImpl(from, to, Width(), Height(), position, noStroke);
}

void RenderingType::Crop(const Conf::FrameInfo& frame, const ROI& roi) { CropBox(frame, roi); }

void RenderingType::Serialize(const Drevin::ISerializerPtr& serializer) const {
  RenderingTypeBase::Serialize(serializer);
  RenderingTypeRectangleBase::Serialize(serializer);
}

void RenderingType::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  RenderingTypeBase::Deserialize(serializer);
  RenderingTypeRectangleBase::Deserialize(serializer);
}

}  // namespace MarkerInfoDetails

}  // namespace Kelbra::Canvaro
