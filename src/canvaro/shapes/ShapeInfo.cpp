#include "canvaro/shapes/ShapeInfo.h"

#include "canvaro/foundation/Throw.h"

#include "canvaro/foundation/CanvaroException.h"

namespace Kelbra::Canvaro {

ShapeInfo::ShapeInfo(const ShapeInfoBase& shape) : impl_(shape.Clone()) {}

ShapeInfo::ShapeInfo(const ShapeInfoBaseConstPtr& shape)
    : impl_(shape != nullptr ? shape->Clone() : nullptr) {}

bool ShapeInfo::operator==(const ShapeInfo& other) const {
  if (impl_ == nullptr || other.impl_ == nullptr) return impl_ == other.impl_;
  return *impl_ == *other.impl_;
}

std::string ShapeInfo::GetClassId() const {
  return impl_ != nullptr ? impl_->GetClassId() : std::string();
}

void ShapeInfo::Serialize(const Drevin::ISerializerPtr& serializer) const {
  if (impl_ != nullptr) impl_->Serialize(serializer);
}

void ShapeInfo::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  const std::string& classId = serializer->GetClassId();
  const ShapeInfoBase::CreatorItem* row =
      classId.empty() ? nullptr : ShapeInfoBase::GetCreatorItem(classId);
  if (row == nullptr) {
    ThrowCoded(
        CanvaroError::InvalidDocument,
        "Cannot read a shape of class id '" + classId + "': no shape kind is registered under it",
        BOOST_CURRENT_LOCATION);
  }
  auto read = row->create(IToolsId::NONE);
  read->Deserialize(serializer);
  impl_ = std::move(read);
}

ShapeInfo ShapeInfo::Transpose(const Conf::FrameInfo& frame,
                               const Proc::SettingsEffectTranspose& transpose) const {
  if (impl_ == nullptr) return ShapeInfo();
  ShapeInfoBasePtr clone = impl_->Clone();
  clone->Transpose(frame, transpose);
  return ShapeInfo(std::move(clone));
}

ShapeInfo ShapeInfo::Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to) const {
  if (impl_ == nullptr) return ShapeInfo();
  ShapeInfoBasePtr clone = impl_->Clone();
  clone->Resize(from, to);
  return ShapeInfo(std::move(clone));
}

ShapeInfo ShapeInfo::Crop(const Conf::FrameInfo& frame, const ROI& roi) const {
  if (impl_ == nullptr) return ShapeInfo();
  ShapeInfoBasePtr clone = impl_->Clone();
  clone->Crop(frame, roi);
  return ShapeInfo(std::move(clone));
}

}  // namespace Kelbra::Canvaro
