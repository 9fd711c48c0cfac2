#include "canvaro/shapes/RenderingTypeBase.h"

#include <algorithm>

#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"
#include "canvaro/shapes/ShapeInfoBase.h"
#include "canvaro/shapes/ShapeSerializeNames.h"

namespace Kelbra::Canvaro {

namespace Keys = SerializeNames::RenderingTypeBase;

bool RenderingTypeBase::operator==(const RenderingTypeBase& other) const {
  return color_ == other.color_ && outlineColor_ == other.outlineColor_ &&
         opacity_ == other.opacity_;
}

void RenderingTypeBase::Reset() {
  color_ = Proc::Color(0, 0, 0, 255);
  outlineColor_ = Proc::Color(0, 0, 0, 255);
  opacity_ = 255;
}

void RenderingTypeBase::Remove(ShapeInfoBase& shape, bool /*resetTool*/) const {
  shape.SetVisible(false);
  shape.SetSaved(false);
}

void RenderingTypeBase::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteInt(Keys::COLOR, static_cast<std::int32_t>(color_.rgba()));
  serializer->WriteInt(Keys::OUTLINE_COLOR, static_cast<std::int32_t>(outlineColor_.rgba()));
  serializer->WriteInt(Keys::OPACITY, opacity_);
}

void RenderingTypeBase::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  color_ = Proc::Color::FromRGBA(static_cast<std::uint32_t>(
      serializer->ReadInt(Keys::COLOR, static_cast<std::int32_t>(color_.rgba()))));
  outlineColor_ = Proc::Color::FromRGBA(static_cast<std::uint32_t>(
      serializer->ReadInt(Keys::OUTLINE_COLOR, static_cast<std::int32_t>(outlineColor_.rgba()))));
  opacity_ =
      static_cast<std::uint8_t>(std::clamp(serializer->ReadInt(Keys::OPACITY, opacity_), 0, 255));
}

void RenderingTypeBaseToolIdRemovable::Remove(ShapeInfoBase& shape, bool resetTool) const {
  RenderingTypeBase::Remove(shape, resetTool);
  if (resetTool) shape.SetCurrentTool(IToolsId::NONE);
}

}  // namespace Kelbra::Canvaro
