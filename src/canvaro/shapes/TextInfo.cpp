#include "canvaro/shapes/TextInfo.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "canvaro/shapes/ShapeSerializeNames.h"
#include "canvaro/shapes/Tolerance.h"

namespace Kelbra::Canvaro {

template class ShapeInfoT<TextInfoDetails::RenderingType>;

namespace TextInfoDetails {

namespace Keys = SerializeNames::RenderingTypeTextInfo;
namespace BoxKeys = SerializeNames::RenderingTypeBase;

namespace {

std::int32_t ToInt(const Proc::Color& color) { return static_cast<std::int32_t>(color.rgba()); }
Proc::Color ToColor(std::int32_t packed) {
  return Proc::Color::FromRGBA(static_cast<std::uint32_t>(packed));
}
std::uint8_t ToByte(std::int32_t value) {
  return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

}  // namespace

bool RenderingType::operator==(const RenderingType& other) const {
  return RenderingTypeBase::operator==(other) && NearlyEqual(outlineSize_, other.outlineSize_) &&
         borderColor_ == other.borderColor_ && borderOpacity_ == other.borderOpacity_ &&
         NearlyEqual(borderSize_, other.borderSize_) &&
         backgroundOpacity_ == other.backgroundOpacity_ &&
         backgroundColor_ == other.backgroundColor_ && text_ == other.text_ &&
         textAlignment_ == other.textAlignment_ && font_ == other.font_ &&
         fontSize_ == other.fontSize_ && fontEffects_ == other.fontEffects_ &&
         NearlyEqual(width_, other.width_) && NearlyEqual(height_, other.height_);
}

void RenderingType::Transpose(const Conf::FrameInfo&, const Proc::SettingsEffectTranspose&) {}

void RenderingType::Crop(const Conf::FrameInfo&, const ROI&) {}

void RenderingType::Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
                           PositionType& position) {
  if (from.width <= 0 || from.height <= 0 || to.width <= 0 || to.height <= 0) return;
  // A box of no height scales its width by the same factor whatever that width is, so an
  // unmeasured box is scaled as one pixel wide.
  const double oldWidth = width_ > 0 ? width_ : 1.0;
  double w = oldWidth / from.width;
  double noHeight = 0.0;
  unsigned fontSizeCopy = static_cast<unsigned>(std::max(fontSize_, 0));
  ResizeImpl(from, to, w, noHeight, position, fontSizeCopy);

  const double scaled = std::trunc(to.width * fontSize_ * w / oldWidth);
  constexpr double kMaxFontSize = std::numeric_limits<std::int32_t>::max();
  fontSize_ = scaled <= kMinFontSize ? kMinFontSize
                                     : static_cast<std::int32_t>(std::min(scaled, kMaxFontSize));
  width_ = 0.0;
  height_ = 0.0;
}

void RenderingType::Serialize(const Drevin::ISerializerPtr& serializer) const {
  RenderingTypeBase::Serialize(serializer);
  serializer->WriteString(Keys::TEXT, text_);
  serializer->WriteInt(Keys::TEXT_ALIGNMENT, textAlignment_);
  serializer->WriteString(Keys::FONT, font_);
  serializer->WriteInt(Keys::FONT_SIZE, fontSize_);
  serializer->WriteInt(Keys::FONT_EFFECTS, fontEffects_);
  serializer->WriteDouble(Keys::OUTLINE_SIZE, outlineSize_);
  serializer->WriteDouble(Keys::BORDER_SIZE, borderSize_);
  serializer->WriteInt(Keys::BORDER_COLOR, ToInt(borderColor_));
  serializer->WriteInt(Keys::BORDER_OPACITY, borderOpacity_);
  serializer->WriteInt(Keys::BACKGROUND_COLOR, ToInt(backgroundColor_));
  serializer->WriteInt(Keys::BACKGROUND_OPACITY, backgroundOpacity_);
  serializer->WriteDouble(BoxKeys::WIDTH, width_);
  serializer->WriteDouble(BoxKeys::HEIGHT, height_);
}

void RenderingType::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  RenderingTypeBase::Deserialize(serializer);
  text_ = serializer->ReadString(Keys::TEXT, text_);
  textAlignment_ = serializer->ReadInt(Keys::TEXT_ALIGNMENT, textAlignment_);
  font_ = serializer->ReadString(Keys::FONT, font_);
  fontSize_ = serializer->ReadInt(Keys::FONT_SIZE, fontSize_);
  fontEffects_ = serializer->ReadInt(Keys::FONT_EFFECTS, fontEffects_);
  outlineSize_ = serializer->ReadDouble(Keys::OUTLINE_SIZE, outlineSize_);
  borderSize_ = serializer->ReadDouble(Keys::BORDER_SIZE, borderSize_);
  borderColor_ = ToColor(serializer->ReadInt(Keys::BORDER_COLOR, ToInt(borderColor_)));
  borderOpacity_ = ToByte(serializer->ReadInt(Keys::BORDER_OPACITY, borderOpacity_));
  backgroundColor_ = ToColor(serializer->ReadInt(Keys::BACKGROUND_COLOR, ToInt(backgroundColor_)));
  backgroundOpacity_ = ToByte(serializer->ReadInt(Keys::BACKGROUND_OPACITY, backgroundOpacity_));
  width_ = serializer->ReadDouble(BoxKeys::WIDTH, width_);
  height_ = serializer->ReadDouble(BoxKeys::HEIGHT, height_);
}

}  // namespace TextInfoDetails

}  // namespace Kelbra::Canvaro
