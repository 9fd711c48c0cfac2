/// \file
/// PositionType: where a shape's anchor stands on the picture and how far it is turned.
///
/// x and y are fractions of the picture's width and height (0 = left/top edge, 1 = right/bottom
/// edge), so a shape keeps its place when the picture is scaled; the angle is in degrees, kept in
/// (-180, 180] by Transpose. The is-default flag tells the host that the user never placed the
/// shape; Reset leaves it alone on purpose.
///
///   PositionType p;                                                    // (0.5, 0.5), 0 degrees
///   p.Transpose(Proc::SettingsEffectTranspose(Proc::SettingsEffectTranspose::Rotate90));
///   p.Crop(frame, ROI{100, 50, 400, 300});                             // relative to the crop
#pragma once

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Proc/SettingsEffectTranspose.h"
#include "kelbra/ROI.h"

namespace Kelbra::Canvaro {

class PositionType : public virtual Drevin::ISerializable {
 public:
  PositionType() = default;
  PositionType(const PositionType&) = default;
  PositionType& operator=(const PositionType&) = default;
  ~PositionType() override = default;

  /// x, y and angle each within 1e-5, is-default flags equal.
  bool operator==(const PositionType& other) const;

  /// x = y = 0.5, angle 0; is-default is kept.
  void Reset();

  /// Follows the picture through a quarter-turn rotation (kinds 1 to 3; any other kind leaves the
  /// position as it is) and brings the angle back into (-180, 180].
  void Transpose(const Proc::SettingsEffectTranspose& transpose);
  /// Re-expresses the position relative to `roi`, a rectangle in pixels of a picture of `frame`'s
  /// size. A point outside the rectangle gets values outside [0, 1]; nothing is clamped. An
  /// empty rectangle leaves the position unchanged.
  void Crop(const Conf::FrameInfo& frame, const ROI& roi);

  double GetX() const { return x_; }
  void SetX(double x) { x_ = x; }
  double GetY() const { return y_; }
  void SetY(double y) { y_ = y; }
  double GetAngle() const { return angle_; }
  void SetAngle(double angle) { angle_ = angle; }
  bool IsDefault() const { return isDefault_; }
  void SetDefault(bool isDefault) { isDefault_ = isDefault; }

  /// Writes "PositionX", "PositionY", "RotationAngle", "PositionDefault", in this order.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the same keys; an absent key leaves its field as it is.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  double x_ = 0.5;
  double y_ = 0.5;
  double angle_ = 0.0;
  bool isDefault_ = true;
};

}  // namespace Kelbra::Canvaro
