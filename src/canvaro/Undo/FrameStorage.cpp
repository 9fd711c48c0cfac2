#include "canvaro/Undo/FrameStorage.h"

#include "canvaro/Undo/FrameStorageImpl.h"

namespace Kelbra::Canvaro {

FrameStorage::FrameStorage(const ioPath& swapDirectory, std::function<std::string()> nameGenerator)
    : impl_(std::make_unique<Impl>(swapDirectory, std::move(nameGenerator))) {}

FrameStorage::~FrameStorage() = default;

Index FrameStorage::AddFrame(const Proc::IDataVideoPtr& frame) { return impl_->AddFrame(frame); }

Proc::IDataVideoPtr FrameStorage::GetFrame(Index index) const { return impl_->GetFrame(index); }

const Conf::FrameInfo& FrameStorage::GetFrameInfo(Index index) const {
  return impl_->GetFrameInfo(index);
}

Proc::IDataVideoPtr FrameStorage::Reset(Index index, const Proc::IDataVideoPtr& frame) {
  return impl_->Reset(index, frame);
}

void FrameStorage::Truncate(Index count) { impl_->Truncate(count); }

std::uint64_t FrameStorage::GetSize() const { return impl_->GetSize(); }

void FrameStorage::Swap(const std::vector<Index>& indices) const { impl_->Swap(indices); }

void FrameStorage::SwapExcept(const std::vector<Index>& keep) const { impl_->SwapExcept(keep); }

void FrameStorage::Serialize(const Drevin::ISerializerPtr& serializer) const {
  impl_->Serialize(serializer);
}

void FrameStorage::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  impl_->Deserialize(serializer);
}

Index FrameStorage::DeserializeItem(const Drevin::ISerializerConstPtr& serializer) {
  return impl_->DeserializeItem(serializer);
}

void FrameStorage::SerializeItem(Index index, const Drevin::ISerializerPtr& serializer) const {
  impl_->SerializeItem(index, serializer);
}

Index FrameStorage::GetCount() const { return impl_->GetCount(); }

void FrameStorage::SetLoadBudget(std::uint64_t bytes, std::function<bool(Index)> keep) {
  impl_->SetLoadBudget(bytes, std::move(keep));
}

void FrameStorage::WaitForPendingSaves() const { impl_->WaitForPendingSaves(); }

bool FrameStorage::IsFailed() const { return impl_->IsFailed(); }

const ioPath& FrameStorage::GetSwapDirectory() const { return impl_->GetSwapDirectory(); }

ioPath FrameStorage::GetFileName(Index index) const { return impl_->GetFileName(index); }

}  // namespace Kelbra::Canvaro
