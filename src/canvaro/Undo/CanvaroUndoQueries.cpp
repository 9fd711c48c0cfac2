// The document's queries, its memory policy, the drawable frame info and the shape operations it
// forwards to its shape set.
#include "canvaro/foundation/Log.h"

#include "canvaro/Undo/CanvaroUndo.h"
#include "canvaro/Undo/ShapeUndo.h"
#include "kelbra/Proc/BufferPool.h"

namespace Kelbra::Canvaro {

// ---- settings steps ----

unsigned CanvaroUndo::GetVideoCount() const { return static_cast<unsigned>(GetItemCount()); }

Conf::FrameInfo CanvaroUndo::GetVideoInfo(unsigned item) const {
  const Index frame = ItemAt(item).GetFrameIndex();
  return frame != kNoIndex ? storage_.GetFrameInfo(frame) : Conf::FrameInfo{};
}

Proc::IDataVideoPtr CanvaroUndo::GetVideo(unsigned item) const {
  const Index frame = ItemAt(item).GetFrameIndex();
  return frame != kNoIndex ? storage_.GetFrame(frame) : Proc::IDataVideoPtr();
}

Proc::IDataVideoPtr CanvaroUndo::GetSourceVideo() const {
  ItemAt(kCurrentItem);  // throws on an empty document
  return GetVideo(0);
}

const SettingsCore& CanvaroUndo::GetSettings(unsigned item) const { return ItemAt(item).GetInfo(); }

unsigned CanvaroUndo::GetCurrentIndex() const { return GetCurrentIndexImpl(); }

unsigned CanvaroUndo::GetCurrentMaskIndex() const {
  const MaskUndo* mask = CurrentMask();
  return mask != nullptr ? mask->GetCurrentIndexImpl() : kCurrentItem;
}

unsigned CanvaroUndo::GetPackageIndex(const std::string& name) const {
  if (GetItemCount() == 0) return kCurrentItem;
  const EffectsSettingsPackage& package =
      ItemAt(kCurrentItem).GetInfo().GetEffectsSettings().GetPackage();
  return package.GetName() == name ? static_cast<unsigned>(package.GetPackageIndex())
                                   : kCurrentItem;
}

unsigned CanvaroUndo::GetSameSettingsIndex(const EffectsSettings& effects) const {
  if (GetItemCount() == 0) return kCurrentItem;
  for (std::int64_t i = static_cast<std::int32_t>(GetCurrentIndexImpl()); i >= 0; --i) {
    if (Get(static_cast<Index>(i)).GetInfo().GetEffectsSettings() == effects) {
      return static_cast<unsigned>(i);
    }
  }
  return kCurrentItem;
}

std::vector<Index> CanvaroUndo::GetUsedFrameIndexList() const {
  if (GetItemCount() == 0) return {};
  return {ItemAt(kCurrentItem).GetFrameIndex()};
}

// ---- masks ----

Proc::IDataVideoPtr CanvaroUndo::GetMask(unsigned item) const {
  const MaskUndo* mask = ItemAt(item).GetMask().get();
  // The working mask picture is the frame of the mask history's first item.
  if (mask == nullptr || mask->GetItemCount() == 0) return nullptr;
  const Index frame = mask->Get(0).GetFrameIndex();
  return frame != kNoIndex ? storage_.GetFrame(frame) : Proc::IDataVideoPtr();
}

const MaskInfo& CanvaroUndo::GetMaskInfo(unsigned item) const {
  const MaskUndo* mask = ItemAt(item).GetMask().get();
  if (mask == nullptr) {
    static const MaskInfo kNoMask;
    return kNoMask;
  }
  return mask->GetInfo();
}

std::uint64_t CanvaroUndo::GetMaskPixelCount(const std::vector<std::uint8_t>& brushIndices) const {
  const MaskUndo* mask = CurrentMask();
  return mask != nullptr ? mask->GetPixelCount(brushIndices) : 0;
}

// ---- memory ----

std::uint64_t CanvaroUndo::GetCoreSize() const { return storage_.GetSize(); }

void CanvaroUndo::CheckForSize() const {
  if (swapDirectory_.empty()) return;
  // Freed picture buffers kept for reuse count as memory in use.
  const std::uint64_t size = GetCoreSize() + Proc::GetPooledBufferBytes();
  if (size < kMemoryThreshold) return;
  CANVARO_LOG(WARNING) << "Memory usage: " << size << ". Swap required";
  std::vector<Index> keep;
  if (GetItemCount() != 0 && GetCurrentIndexImpl() != kNoIndex) {
    keep.push_back(Get(GetCurrentIndexImpl()).GetFrameIndex());
  }
  storage_.SwapExcept(keep);
}

IUndoManager& CanvaroUndo::GetUndoManager() const { return *manager_; }

void CanvaroUndo::WaitForPendingSaves() const { storage_.WaitForPendingSaves(); }

// ---- drawable frame info ----

void CanvaroUndo::SetDrawableFrameInfo(const Conf::FrameInfo& info) { drawableFrameInfo_ = info; }

const Conf::FrameInfo& CanvaroUndo::GetDrawableFrameInfo() const { return drawableFrameInfo_; }

// ---- shapes ----

void CanvaroUndo::SetShape(const ShapeInfo& shape, const Proc::IDataVideoPtr& picture) {
  shapes_->SetShape(shape, picture);
}

void CanvaroUndo::SetShapes(const std::vector<ShapeInfo>& shapes) { shapes_->SetShapes(shapes); }

void CanvaroUndo::OverwriteShape(const ShapeInfo& shape) { shapes_->OverwriteShape(shape); }

void CanvaroUndo::RemoveShapeAll(ShapeType mask) { shapes_->RemoveShapeAll(mask); }

unsigned CanvaroUndo::GetShapeItemCount(ShapeType mask) const {
  return shapes_->GetShapeItemCount(mask);
}

unsigned CanvaroUndo::GetShapeActiveItemCount(ShapeType mask) const {
  return shapes_->GetShapeActiveItemCount(mask);
}

std::vector<ShapeInfo> CanvaroUndo::GetShapeItems(ShapeType mask) const {
  return shapes_->GetShapeItems(mask);
}

std::vector<ShapeInfo> CanvaroUndo::GetShapeActiveItems(ShapeType mask) const {
  return shapes_->GetShapeActiveItems(mask);
}

const ShapeInfo& CanvaroUndo::GetShapeItemInfo(unsigned item, unsigned state) const {
  return shapes_->GetShapeItemInfo(item, state);
}

Proc::IDataVideoPtr CanvaroUndo::GetShapeItemVideo(unsigned item, unsigned state) const {
  return shapes_->GetShapeItemVideo(item, state);
}

Index CanvaroUndo::GetShapeItemVideoIndex(unsigned item, unsigned state) const {
  return shapes_->GetShapeItemVideoIndex(item, state);
}

}  // namespace Kelbra::Canvaro
