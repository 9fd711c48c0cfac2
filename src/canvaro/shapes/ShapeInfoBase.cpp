#include "canvaro/shapes/ShapeInfoBase.h"

namespace Kelbra::Canvaro {

ShapeInfoBase::ShapeInfoBase(IToolsId::Value tool) : ToolsId(IToolsId::NONE) { SetTool(tool); }

ShapeInfoBase::~ShapeInfoBase() = default;

bool ShapeInfoBase::operator==(const ShapeInfoBase& other) const {
  return GetShapeType() == other.GetShapeType() && InfoTypeBase::operator==(other) &&
         position_ == other.position_;
}

void ShapeInfoBase::Reset() {
  position_.Reset();
  InfoTypeBase::Reset();
}

void ShapeInfoBase::Transpose(const Conf::FrameInfo& frame,
                              const Proc::SettingsEffectTranspose& transpose) {
  position_.Transpose(transpose);
  RenderingSettings().Transpose(frame, transpose);
}

void ShapeInfoBase::Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to) {
  RenderingSettings().Resize(from, to, position_);
}

void ShapeInfoBase::Crop(const Conf::FrameInfo& frame, const ROI& roi) {
  position_.Crop(frame, roi);
  RenderingSettings().Crop(frame, roi);
}

void ShapeInfoBase::Serialize(const Drevin::ISerializerPtr& serializer) const {
  InfoTypeBase::Serialize(serializer);
  ToolsId::Serialize(serializer);
  position_.Serialize(serializer);
}

void ShapeInfoBase::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  InfoTypeBase::Deserialize(serializer);
  ToolsId::Deserialize(serializer);
  position_.Deserialize(serializer);
}

std::string ShapeInfoBase::GetClassId() const {
  const CreatorItem* row = GetCreatorItem(GetShapeType());
  return row != nullptr ? row->classId : ISerializableBase::GetClassId();
}

void ShapeInfoBase::Release() const {
  if (refCount_.Release() == 0) delete this;
}

}  // namespace Kelbra::Canvaro
