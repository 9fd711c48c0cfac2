#include "canvaro/shapes/InfoTypeBase.h"

#include "canvaro/shapes/ShapeSerializeNames.h"
#include "canvaro/shapes/Tolerance.h"
#include "kelbra/Core/CoreException.h"

namespace Kelbra::Canvaro {

namespace Keys = SerializeNames::InfoTypeBase;

bool InfoTypeBase::operator==(const InfoTypeBase& other) const {
  return visible_ == other.visible_ && presetId_ == other.presetId_ &&
         NearlyEqual(zValue_, other.zValue_);
}

void InfoTypeBase::Reset() {
  index_ = -1;
  visible_ = true;
  saved_ = false;
  zValue_ = 0.0;
  tool_ = IToolsId::NONE;
  presetId_.clear();
}

void InfoTypeBase::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteInt(Keys::INDEX, index_);
  serializer->WriteBool(Keys::VISIBLE, visible_);
  serializer->WriteBool(Keys::SAVED, saved_);
  serializer->WriteString(Keys::INFO_TYPE_BASE_TOOL_NAME, IToolsId::GetToolName(tool_));
  serializer->WriteString(Keys::PRESET_ID, presetId_);
  serializer->WriteDouble(Keys::ZVALUE, zValue_);
  serializer->WriteInt(Keys::CHANGE_TYPE, changeType_);
}

void InfoTypeBase::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  index_ = serializer->ReadInt(Keys::INDEX, index_);
  visible_ = serializer->ReadBool(Keys::VISIBLE, visible_);
  saved_ = serializer->ReadBool(Keys::SAVED, saved_);
  tool_ = IToolsId::GetToolID(
      serializer->ReadString(Keys::INFO_TYPE_BASE_TOOL_NAME, IToolsId::GetToolName(tool_)));
  presetId_ = serializer->ReadString(Keys::PRESET_ID, presetId_);
  try {
    zValue_ = serializer->ReadDouble(Keys::ZVALUE, zValue_);
  } catch (const Core::WrongTypeIsRequested&) {
    // Older writers stored the z value as an integer.
    zValue_ = serializer->ReadInt(Keys::ZVALUE, static_cast<std::int32_t>(zValue_));
  }
  changeType_ = serializer->ReadInt(Keys::CHANGE_TYPE, changeType_);
}

}  // namespace Kelbra::Canvaro
