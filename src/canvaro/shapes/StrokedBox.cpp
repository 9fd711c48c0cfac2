#include "canvaro/shapes/StrokedBox.h"

namespace Kelbra::Canvaro::RectangleInfoDetailsBase {

bool StrokedBox::operator==(const StrokedBox& other) const {
  return RenderingTypeBase::operator==(other) && RenderingTypeLineBase::operator==(other) &&
         RenderingTypeRectangleBase::operator==(other);
}

void StrokedBox::Transpose(const Conf::FrameInfo& frame,
                           const Proc::SettingsEffectTranspose& transpose) {
  TransposeBox(frame, transpose);
}

void StrokedBox::Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
                        PositionType& position) {
  ResizeImpl(from, to, Width(), Height(), position, Thickness());
}

void StrokedBox::Crop(const Conf::FrameInfo& frame, const ROI& roi) { CropBox(frame, roi); }

void StrokedBox::Serialize(const Drevin::ISerializerPtr& serializer) const {
  RenderingTypeBase::Serialize(serializer);
  RenderingTypeLineBase::Serialize(serializer);
  RenderingTypeRectangleBase::Serialize(serializer);
}

void StrokedBox::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  RenderingTypeBase::Deserialize(serializer);
  RenderingTypeLineBase::Deserialize(serializer);
  RenderingTypeRectangleBase::Deserialize(serializer);
}

}  // namespace Kelbra::Canvaro::RectangleInfoDetailsBase
