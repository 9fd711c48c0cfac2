// CanvaroUndo: the document behind ICanvaroUndo (ICanvaroUndo.h says what a host may rely on).
//
// The document is itself the history of settings steps: each item is a SettingsCore with the
// index of the step's picture in the frame storage and the step's own mask history (MaskUndo),
// and the document is the participant "CanvaroUndo" of its undo manager. It owns its parts:
//
//   FrameStorage   every picture (steps, masks, shape pictures), in memory or in swap files
//   UndoManager    the document-wide steps; observes the document's event list and passes the
//                  gathered events on to the host's observers
//   ShapeUndo      the annotation shapes, one history per shape, steps on the same manager
//
// Events travel document -> manager -> host: the document publishes on its own list (events_),
// whose one observer is the manager; the shape set publishes to events_ too, which passes its
// events on unchanged. Host observers register on the manager.
//
// Only ICanvaroUndo::Create makes one. Threads: one caller thread; no lock of its own.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "canvaro/CoreUtil/DrawableItemHandler.h"
#include "canvaro/Undo/DrawerEventForwarder.h"
#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/Undo/MaskUndo.h"
#include "canvaro/Undo/TUndoImpl.h"
#include "canvaro/settings/SettingsCore.h"

namespace Kelbra::Canvaro {

class ShapeUndo;

class CanvaroUndo final : public ICanvaroUndo,
                          public TUndoImplTop<SettingsCore, MaskUndo>,
                          public virtual DrawableItemHandler {
 public:
  using History = TUndoImpl<SettingsCore, MaskUndo>;
  using Item = History::UndoItem;

  // The participant name in the manager's saved step list.
  static const std::string kMultiName;  // "CanvaroUndo"

  // ---- IRefCountable ----
  void AddRef() const override { refCount_.AddRef(); }
  void Release() const override;
  long GetRefCount() const override { return refCount_.GetRefCount(); }

  // ---- steps ----
  bool IsUndoEnabled() const override;
  bool IsRedoEnabled() const override;
  void Undo() override;
  void Redo() override;
  IUndoTransactionManager& GetTransactionManager() override;
  std::uint64_t GetCoreSize() const override;
  void Add(const SettingsCore& settings, const Proc::IDataVideoPtr& frame,
           const Proc::IDataVideoPtr& maskPicture, const MaskInfo& maskInfo) override;
  void Set(const SettingsCore& settings, const Proc::IDataVideoPtr& frame,
           const Proc::IDataVideoPtr& maskPicture, const MaskInfo& maskInfo) override;

  // ---- queries ----
  unsigned GetVideoCount() const override;
  Conf::FrameInfo GetVideoInfo(unsigned item) const override;
  Proc::IDataVideoPtr GetVideo(unsigned item) const override;
  Proc::IDataVideoPtr GetSourceVideo() const override;
  const SettingsCore& GetSettings(unsigned item) const override;
  unsigned GetCurrentIndex() const override;
  unsigned GetCurrentMaskIndex() const override;
  unsigned GetPackageIndex(const std::string& name) const override;
  unsigned GetSameSettingsIndex(const EffectsSettings& effects) const override;
  std::vector<Index> GetUsedFrameIndexList() const override;

  // ---- masks ----
  void AddMask(const Proc::IDataVideoPtr& maskPicture) override;
  void AddMask(const Proc::IDataVideoPtr& maskPicture, const MaskInfo& maskInfo) override;
  Proc::IDataVideoPtr GetMask(unsigned item) const override;
  const MaskInfo& GetMaskInfo(unsigned item) const override;
  std::uint64_t GetMaskPixelCount(const std::vector<std::uint8_t>& brushIndices) const override;

  // ---- memory ----
  void CheckForSize() const override;
  IUndoManager& GetUndoManager() const override;

  // ---- drawable frame info: a copy kept for the host; no event, no step, not saved ----
  void SetDrawableFrameInfo(const Conf::FrameInfo& info) override;
  const Conf::FrameInfo& GetDrawableFrameInfo() const override;

  // ---- shapes, forwarded to the shape set ----
  void SetShape(const ShapeInfo& shape, const Proc::IDataVideoPtr& picture) override;
  void SetShapes(const std::vector<ShapeInfo>& shapes) override;
  void OverwriteShape(const ShapeInfo& shape) override;
  void RemoveShapeAll(ShapeType mask) override;
  unsigned GetShapeItemCount(ShapeType mask) const override;
  unsigned GetShapeActiveItemCount(ShapeType mask) const override;
  std::vector<ShapeInfo> GetShapeItems(ShapeType mask) const override;
  std::vector<ShapeInfo> GetShapeActiveItems(ShapeType mask) const override;
  const ShapeInfo& GetShapeItemInfo(unsigned item, unsigned state) const override;
  Proc::IDataVideoPtr GetShapeItemVideo(unsigned item, unsigned state) const override;
  Index GetShapeItemVideoIndex(unsigned item, unsigned state) const override;

  // ---- participant of the undo manager ----

  // A step of the document is undone: a mask stroke of the item in force when its mask history
  // can undo, otherwise the item itself. Publishes the tool of the undone stroke (or of the new
  // item's mask settings), then frame, shape and change-to-save events with reason undo. When
  // the picture to show cannot be loaded (CanvaroException, SwapFileFailure), nothing moves.
  void MultiUndo() override;
  // The mirror image, with reason redo; checks the memory budget.
  void MultiRedo() override;
  std::string GetMultiName() const override { return kMultiName; }
  // Drops the redo tail of the settings history and of the current item's mask history.
  void Truncate() override;
  // The highest picture index still used by the items up to the one in force, by the strokes of
  // its mask and by the states of every shape item up to the one in force.
  Index GetLastActiveFrameIndex() const override;

  // ---- observers and saved state ----
  void RegisterEventHandler(IDrawerEventHandler* handler) override;
  void UnregisterEventHandler(IDrawerEventHandler* handler) override;
  bool IsSaved() const override;
  void SetSaved(bool saved) override;
  void HandleChangeToSave(const IDrawerEventHandler::DrawerEventChangeToSave& event) override;

  // ---- saving (CanvaroUndoSerialize.cpp) ----
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;
  // The item's mask history as the child "Mask" of the item's node.
  void SerializeMask(const Item& item, const Drevin::ISerializerPtr& serializer) const override;
  // A new mask history read from the child "Mask" (an empty one when there is none).
  void DeserializeMask(Item& item, const Drevin::ISerializerConstPtr& serializer) override;

  // ---- for hosts, tools and tests ----
  void WaitForPendingSaves() const override;
  const FrameStorage& GetFrameStorage() const override { return storage_; }

 private:
  friend class ICanvaroUndo;

  CanvaroUndo(const ioPath& swapDirectory, std::function<std::string()> nameGenerator);
  ~CanvaroUndo() override;

  // Releases the pictures of a replaced step (its picture and its mask history's) that no item
  // or shape state names any more.
  void ReleaseReplaced(Index frame, std::shared_ptr<MaskUndo> mask);
  bool IsFrameNamed(Index frame) const;
  // Whether `frame` is the picture or the working mask of the step in force (kept in memory).
  bool IsFrameInForce(Index frame) const;
  // Stores the step (after dropping every redo step) and makes it a step of the manager; true
  // when the document now holds at least two items.
  bool PushWithMask(const SettingsCore& settings, const Proc::IDataVideoPtr& frame,
                    const Proc::IDataVideoPtr& maskPicture, const MaskInfo& maskInfo);
  // A mask history for a step showing `frame`.
  std::shared_ptr<MaskUndo> MakeMask(const Proc::IDataVideoPtr& frame,
                                     const Proc::IDataVideoPtr& maskPicture,
                                     const MaskInfo& maskInfo);
  // Publishes the frame event, one shape-item event per shape item and a change-to-save event.
  void Notify(IDrawerEventHandler::EventFrameReason reason) const;
  // Publishes a tool change naming the tool recorded with `info` (none when it records none).
  void NotifyTool(const MaskInfo& info) const;

  // The item `item` (kCurrentItem: the one in force).
  const Item& ItemAt(unsigned item) const;
  // The item in force; throws CanvaroException naming `operation` on an empty document.
  Item& CurrentItem(const char* operation);
  // The current item's mask history; null on an empty document or an item without one.
  MaskUndo* CurrentMask() const;

  mutable RefCountImpl refCount_;
  ioPath swapDirectory_;
  Conf::FrameInfo drawableFrameInfo_{};
  // The document's own event list; its observer is the manager. Declared before the parts that
  // publish into it, so that it outlives them.
  mutable DrawerEventForwarder events_;
  FrameStorage storage_;
  IUndoManagerPtr manager_;
  std::unique_ptr<ShapeUndo> shapes_;
};

}  // namespace Kelbra::Canvaro
