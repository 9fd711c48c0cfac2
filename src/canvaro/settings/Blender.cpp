#include "canvaro/settings/Blender.h"

namespace Kelbra::Canvaro::Blender {

const std::string IBlender::Initializer::MASK_TYPE = "keyBlenderSettingsMaskType";
const std::string IBlender::Initializer::COLOR = "keyBlenderSettingsMaskColor";
const std::string IBlender::Initializer::OPACITY = "keyBlenderSettingsMaskOpacity";
const std::string IBlender::Initializer::RANGE_MIN = "keyBlenderSettingsMaskRangeMin";
const std::string IBlender::Initializer::RANGE_MAX = "keyBlenderSettingsMaskRangeMax";

namespace {

// The stored integer of an 8-bit field may be wider (an older or foreign writer); only its low
// byte counts.
std::uint8_t LowByte(std::int32_t value) { return static_cast<std::uint8_t>(value & 0xFF); }

}  // namespace

IBlender::Initializer::Initializer(MaskType type, const Proc::Color& color)
    : maskType_(type), color_(color) {}

IBlender::Initializer::~Initializer() = default;

IBlender::Initializer& IBlender::Initializer::SetOpacity(std::uint8_t opacity) {
  opacity_ = opacity;
  return *this;
}

IBlender::Initializer& IBlender::Initializer::SetRangeMin(std::uint8_t rangeMin) {
  rangeMin_ = rangeMin;
  return *this;
}

IBlender::Initializer& IBlender::Initializer::SetRangeMax(std::uint8_t rangeMax) {
  rangeMax_ = rangeMax;
  return *this;
}

bool IBlender::Initializer::operator==(const Initializer& other) const {
  return maskType_ == other.maskType_ && color_ == other.color_ && opacity_ == other.opacity_ &&
         rangeMin_ == other.rangeMin_ && rangeMax_ == other.rangeMax_;
}

void IBlender::Initializer::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteInt(MASK_TYPE, maskType_);
  serializer->WriteInt(COLOR, static_cast<std::int32_t>(color_.rgba()));
  serializer->WriteInt(OPACITY, opacity_);
  serializer->WriteInt(RANGE_MIN, rangeMin_);
  serializer->WriteInt(RANGE_MAX, rangeMax_);
}

void IBlender::Initializer::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  maskType_ = static_cast<MaskType>(serializer->ReadInt(MASK_TYPE, maskType_));
  color_ = Proc::Color::FromRGBA(static_cast<std::uint32_t>(
      serializer->ReadInt(COLOR, static_cast<std::int32_t>(color_.rgba()))));
  opacity_ = LowByte(serializer->ReadInt(OPACITY, opacity_));
  rangeMin_ = LowByte(serializer->ReadInt(RANGE_MIN, rangeMin_));
  rangeMax_ = LowByte(serializer->ReadInt(RANGE_MAX, rangeMax_));
}

}  // namespace Kelbra::Canvaro::Blender
