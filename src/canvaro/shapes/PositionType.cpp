#include "canvaro/shapes/PositionType.h"

#include <cmath>

#include "canvaro/shapes/ShapeSerializeNames.h"
#include "canvaro/shapes/Tolerance.h"

namespace Kelbra::Canvaro {

namespace Keys = SerializeNames::PositionType;

bool PositionType::operator==(const PositionType& other) const {
  return NearlyEqual(x_, other.x_) && NearlyEqual(y_, other.y_) &&
         NearlyEqual(angle_, other.angle_) && isDefault_ == other.isDefault_;
}

void PositionType::Reset() {
  x_ = 0.5;
  y_ = 0.5;
  angle_ = 0.0;
}

void PositionType::Transpose(const Proc::SettingsEffectTranspose& transpose) {
  const double x = x_;
  const double y = y_;
  double added = 0.0;
  switch (transpose.GetTransposeKind()) {
    case Proc::SettingsEffectTranspose::Rotate90:
      x_ = 1.0 - y;
      y_ = x;
      added = 90.0;
      break;
    case Proc::SettingsEffectTranspose::Rotate180:
      x_ = 1.0 - x;
      y_ = 1.0 - y;
      added = 180.0;
      break;
    case Proc::SettingsEffectTranspose::Rotate270:
      x_ = y;
      y_ = 1.0 - x;
      added = 270.0;
      break;
    default:
      break;
  }
  angle_ = std::fmod(angle_ + added + 360.0, 360.0);
  if (angle_ > 180.0) angle_ -= 360.0;
}

void PositionType::Crop(const Conf::FrameInfo& frame, const ROI& roi) {
  // A zero-sized crop has no inside to be relative to; dividing by it would store infinities.
  if (roi.width == 0 || roi.height == 0) return;
  x_ = (x_ * frame.width - roi.left) / roi.width;
  y_ = (y_ * frame.height - roi.top) / roi.height;
}

void PositionType::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteDouble(Keys::POSITION_X, x_);
  serializer->WriteDouble(Keys::POSITION_Y, y_);
  serializer->WriteDouble(Keys::ROTATION_ANGLE, angle_);
  serializer->WriteBool(Keys::IS_DEFAULT, isDefault_);
}

void PositionType::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  x_ = serializer->ReadDouble(Keys::POSITION_X, x_);
  y_ = serializer->ReadDouble(Keys::POSITION_Y, y_);
  angle_ = serializer->ReadDouble(Keys::ROTATION_ANGLE, angle_);
  isDefault_ = serializer->ReadBool(Keys::IS_DEFAULT, isDefault_);
}

}  // namespace Kelbra::Canvaro
