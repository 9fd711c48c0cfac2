#include "canvaro/settings/MaskInfo.h"

namespace Kelbra::Canvaro {

const std::string MaskInfo::MaskInfoEx::PAINTER = "Painter";
const std::string MaskInfo::MaskInfoEx::BLENDER = "Blender";

const std::string MaskInfo::LEFT = "Left";
const std::string MaskInfo::RIGHT = "Right";
const std::string MaskInfo::TOP = "Top";
const std::string MaskInfo::BOTTOM = "Bottom";
const std::string MaskInfo::INFO_EX = "InfoEx";

MaskInfo::MaskInfoEx::MaskInfoEx(const Blender::IBlender::Initializer& blender)
    : blender_(blender) {}

MaskInfo::MaskInfoEx::MaskInfoEx(const ISettingsPainter::ConstPtr& painter,
                                 const Blender::IBlender::Initializer& blender)
    : painter_(painter), blender_(blender) {}

MaskInfo::MaskInfoEx::~MaskInfoEx() = default;

void MaskInfo::MaskInfoEx::Serialize(const Drevin::ISerializerPtr& serializer) const {
  if (painter_) serializer->WriteObject(PAINTER, *painter_);
  serializer->WriteObject(BLENDER, blender_);
}

void MaskInfo::MaskInfoEx::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  if (serializer->Has(PAINTER)) {
    const Drevin::ISerializerConstPtr painterNode = serializer->GetChild(PAINTER);
    ISettingsPainter::Ptr painter =
        ISettingsPainter::CreatePainterSettings(painterNode->GetClassId());
    painter->Deserialize(painterNode);
    painter_ = painter;
  }
  if (serializer->Has(BLENDER)) serializer->ReadObject(BLENDER, blender_);
}

MaskInfo::MaskInfo()
    : infoEx_(Blender::IBlender::Initializer(Blender::IBlender::Initializer::DEFAULT,
                                             Proc::Color::Black())) {}

MaskInfo::MaskInfo(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom,
                   const MaskInfoEx& infoEx)
    : left_(left), right_(right), top_(top), bottom_(bottom), infoEx_(infoEx) {}

MaskInfo::~MaskInfo() = default;

void MaskInfo::SetRect(std::int32_t left, std::int32_t right, std::int32_t top,
                       std::int32_t bottom) {
  left_ = left;
  right_ = right;
  top_ = top;
  bottom_ = bottom;
}

void MaskInfo::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteInt(LEFT, left_);
  serializer->WriteInt(RIGHT, right_);
  serializer->WriteInt(TOP, top_);
  serializer->WriteInt(BOTTOM, bottom_);
  serializer->WriteObject(INFO_EX, infoEx_);
}

void MaskInfo::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  left_ = serializer->ReadInt(LEFT, left_);
  right_ = serializer->ReadInt(RIGHT, right_);
  top_ = serializer->ReadInt(TOP, top_);
  bottom_ = serializer->ReadInt(BOTTOM, bottom_);
  if (serializer->Has(INFO_EX)) serializer->ReadObject(INFO_EX, infoEx_);
}

}  // namespace Kelbra::Canvaro
