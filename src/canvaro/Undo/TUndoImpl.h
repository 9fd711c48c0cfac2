/// \file
/// TUndoImpl<Info, Mask>: the generic undo history from which every history of the library is
/// built (the document's settings, each shape, each step's mask strokes).
///
/// A history is an ordered list of snapshots (UndoItem: an Info record, an optional shared Mask
/// object and the index of a frame in the document's FrameStorage) and a cursor on the one in
/// force. Items after the cursor are the redo tail; a push after an undo discards it.
///
///   TUndoImpl<MaskInfo, void*> history(&storage);
///   history.Push(first);                                 // item 0, the base state
///   history.Push(second);                                // item 1, current
///   history.Get(history.GetCurrentIndexImpl()).SetFrameIndex(storage.AddFrame(picture));
///   if (history.IsUndoEnabledImpl()) history.UndoImpl(); // back to item 0
///
/// Info is a copyable, default-constructible record with Serialize (it is written as a child
/// object) and Deserialize(const ISerializerConstPtr&). Mask is held by std::shared_ptr, so that
/// steps that keep the same mask share it; void* stands for "no mask".
///
/// The layer classes fix a history's role: TUndoImplTop is a participant of the document-wide
/// steps (an IMultiUndoItem), TUndoImplBottom lives inside another history and is driven by it.
/// TUndoImpl is their virtual base, so the most-derived class constructs it:
///
///   class ShapeItem : public TUndoImplTop<ShapeInfo, void*> {
///     ShapeItem(FrameStorage* s) : TUndoImpl<ShapeInfo, void*>(s), TUndoImplTop(s) {}
///   };
///
/// Errors: the cursor operations do not check bounds (the caller asks IsUndoEnabledImpl /
/// IsRedoEnabledImpl first; debug builds assert). Deserialize throws CanvaroException for a saved
/// index outside the saved items, and passes the serializer's exceptions through; on any
/// exception the history is left as it was.
///
/// Threads: none; the owner serialises access.
#pragma once

#include <cassert>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "canvaro/Undo/IMultiUndoItem.h"
#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class FrameStorage;

/// The larger of two frame indices, where kNoIndex means "none" rather than the largest value.
constexpr Index MaxIndex(Index a, Index b) {
  if (a == kNoIndex) return b;
  if (b == kNoIndex) return a;
  return a > b ? a : b;
}

namespace detail::UndoKeys {
inline const std::string INDEX = "Index";
inline const std::string ITEMS = "Items";
inline const std::string INFO = "Info";
inline const std::string FRAME_INDEX = "FrameIndex";
}  // namespace detail::UndoKeys

namespace detail {
/// Throws CanvaroError::InvalidDocument for a saved history index outside its items.
[[noreturn]] void ThrowBadHistoryIndex(std::int64_t index, std::size_t items);
}  // namespace detail

template <class Info, class Mask>
class TUndoImpl : public virtual Drevin::ISerializable {
 public:
  /// One snapshot of the history.
  class UndoItem : public Drevin::ISerializable {
   public:
    UndoItem() = default;
    UndoItem(const Info& info, Index frameIndex, const std::shared_ptr<Mask>& mask)
        : info_(info), mask_(mask), frameIndex_(frameIndex) {}

    const Info& GetInfo() const { return info_; }
    Info& GetInfo() { return info_; }
    void SetInfo(const Info& info) { info_ = info; }
    /// Empty when the step has no mask.
    const std::shared_ptr<Mask>& GetMask() const { return mask_; }
    void SetMask(const std::shared_ptr<Mask>& mask) { mask_ = mask; }
    /// kNoIndex when the step shows no frame of its own.
    Index GetFrameIndex() const { return frameIndex_; }
    void SetFrameIndex(Index frameIndex) { frameIndex_ = frameIndex; }

    /// The record as the child object "Info", then "FrameIndex" (kNoIndex is stored as -1).
    void Serialize(const Drevin::ISerializerPtr& serializer) const override {
      serializer->WriteObject(detail::UndoKeys::INFO, info_);
      serializer->WriteInt(detail::UndoKeys::FRAME_INDEX, static_cast<std::int32_t>(frameIndex_));
    }
    /// Reads "Info" (which must be there) and "FrameIndex" (absent keeps the current value).
    void Deserialize(const Drevin::ISerializerConstPtr& serializer) override {
      info_.Deserialize(serializer->GetChild(detail::UndoKeys::INFO));
      frameIndex_ = static_cast<Index>(serializer->ReadInt(detail::UndoKeys::FRAME_INDEX,
                                                           static_cast<std::int32_t>(frameIndex_)));
    }

   private:
    Info info_{};
    std::shared_ptr<Mask> mask_;
    Index frameIndex_ = kNoIndex;
  };

  /// `storage` is not owned; it may be null for a history that never asks for frames.
  explicit TUndoImpl(FrameStorage* storage) : storage_(storage) {}
  TUndoImpl(const TUndoImpl&) = delete;
  TUndoImpl& operator=(const TUndoImpl&) = delete;

  /// "Index" (the cursor), then the collection "Items", oldest first; each item writes itself
  /// into its node, and SerializeMask adds to the same node.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override {
    serializer->WriteInt(detail::UndoKeys::INDEX, current_);
    auto list = serializer->CreateCollection(detail::UndoKeys::ITEMS);
    for (const UndoItem& item : items_) {
      Drevin::ISerializerPtr node = list->AddItem();
      item.Serialize(node);
      SerializeMask(item, node);
    }
  }

  /// Replaces the history by the saved one. A null serializer, or a node without "Index" or
  /// without "Items", leaves the history untouched.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override {
    if (serializer == nullptr || !serializer->Has(detail::UndoKeys::INDEX) ||
        !serializer->Has(detail::UndoKeys::ITEMS)) {
      return;
    }
    std::vector<UndoItem> items;
    if (auto list = serializer->GetCollection(detail::UndoKeys::ITEMS)) {
      items.reserve(list->GetCount());
      for (std::size_t i = 0; i < list->GetCount(); ++i) {
        Drevin::ISerializerConstPtr node = list->GetItem(i);
        UndoItem item(Info(), kNoIndex, nullptr);
        item.Deserialize(node);
        DeserializeMask(item, node);
        items.push_back(std::move(item));
      }
    }
    const std::int32_t current = serializer->ReadInt(detail::UndoKeys::INDEX, -1);
    if (current < -1 || current >= static_cast<std::int64_t>(items.size())) {
      detail::ThrowBadHistoryIndex(current, items.size());
    }
    items_ = std::move(items);
    current_ = current;
  }

  ~TUndoImpl() override = default;

  /// Appends a copy of `info` after the current item (dropping the redo tail) with no mask and
  /// no frame, and makes it current. The caller fills in mask and frame through Get(). Always
  /// true.
  virtual bool Push(const Info& info) {
    items_.resize(static_cast<std::size_t>(current_ + 1));
    items_.emplace_back(info, kNoIndex, nullptr);
    ++current_;
    return true;
  }

  /// Whether the cursor is off the base item. Tests against 0 only, so an empty history says
  /// true as well.
  virtual bool IsUndoEnabledImpl() const { return current_ != 0; }
  /// Whether an item follows the current one.
  virtual bool IsRedoEnabledImpl() const {
    return static_cast<std::int64_t>(items_.size()) - 1 > current_;
  }
  /// One item back; not at the base item.
  virtual void UndoImpl() {
    assert(current_ > 0 && "undo at the base item");
    --current_;
  }
  /// One item forward; not at the last item.
  virtual void RedoImpl() {
    assert(current_ + 1 < static_cast<std::int64_t>(items_.size()) && "redo at the last item");
    ++current_;
  }
  /// The cursor; kNoIndex (-1) while the history is empty.
  virtual Index GetCurrentIndexImpl() const { return static_cast<Index>(current_); }
  virtual std::size_t GetItemCount() const { return items_.size(); }
  /// Drops the redo tail.
  virtual void TruncateImpl() { items_.resize(static_cast<std::size_t>(current_ + 1)); }
  /// The highest frame index of the items up to the current one; kNoIndex when none has one.
  virtual Index GetLastActiveFrameIndexImpl() const {
    Index last = kNoIndex;
    for (std::int32_t i = current_; i >= 0 && i < static_cast<std::int64_t>(items_.size()); --i) {
      last = MaxIndex(last, items_[static_cast<std::size_t>(i)].GetFrameIndex());
    }
    return last;
  }
  /// Hooks that let a history store its items' masks in the items' nodes; by default nothing.
  virtual void SerializeMask(const UndoItem& /*item*/,
                             const Drevin::ISerializerPtr& /*serializer*/) const {}
  virtual void DeserializeMask(UndoItem& /*item*/,
                               const Drevin::ISerializerConstPtr& /*serializer*/) {}
  /// Whether the frame of item `index` must stay in memory: only the current item's does.
  virtual bool StayInMemory(Index index) const { return index == GetCurrentIndexImpl(); }

  /// Item `index`, which must exist.
  const UndoItem& Get(Index index) const {
    assert(index < items_.size());
    return items_[index];
  }
  UndoItem& Get(Index index) {
    assert(index < items_.size());
    return items_[index];
  }

  /// Bytes of picture data of `frame`; 0 for none.
  static std::uint64_t GetFrameSize(const Proc::IDataVideoConstPtr& frame) {
    return frame != nullptr ? frame->GetBufferSize() : 0;
  }

 protected:
  FrameStorage* GetStorage() const { return storage_; }
  /// Drops every item: the history becomes empty.
  void Clear() {
    items_.clear();
    current_ = -1;
  }

 private:
  std::vector<UndoItem> items_;
  std::int32_t current_ = -1;
  FrameStorage* storage_;
};

/// A history that is itself a participant of the document-wide steps. By default a participant
/// steps this history: MultiUndo/MultiRedo move the cursor, Truncate drops the redo tail and
/// GetLastActiveFrameIndex asks the items; the derived class names itself (GetMultiName) and
/// overrides whatever it does differently.
template <class Info, class Mask>
class TUndoImplTop : public virtual TUndoImpl<Info, Mask>, public virtual IMultiUndoItem {
 public:
  explicit TUndoImplTop(FrameStorage* storage) : TUndoImpl<Info, Mask>(storage) {}

  void MultiUndo() override { this->UndoImpl(); }
  void MultiRedo() override { this->RedoImpl(); }
  void Truncate() override { this->TruncateImpl(); }
  Index GetLastActiveFrameIndex() const override { return this->GetLastActiveFrameIndexImpl(); }
};

/// A history that lives inside another one and is driven by its owner.
template <class Info, class Mask>
class TUndoImplBottom : public virtual TUndoImpl<Info, Mask> {
 public:
  explicit TUndoImplBottom(FrameStorage* storage) : TUndoImpl<Info, Mask>(storage) {}
};

}  // namespace Kelbra::Canvaro
