/// \file
/// UndoManager: the document-wide list of undo steps (IUndoManager) with its transactions, and
/// the gatherer of the participants' drawer events.
///
///   IUndoManagerPtr manager = UndoManager::Create(storage);
///   manager->GetTransactionManager().RegisterHandler(&surface);
///   item.RegisterEventHandler(manager.get());   // the manager hears the item's events
///   manager->Add(&item);                          // a step; the surface hears HandleUndo
///
/// Events. Outside a transaction an event a participant raises is passed on at once. While a
/// transaction, an undo or a redo is under way, the manager keeps them and delivers them once at
/// the end, in this order: the undo event, the change-to-save event, the tool change, every
/// frame event, every shape-item event. Of several undo or change-to-save events the last is
/// kept; of frame events one per reason (the first); of tool changes the first that names a
/// tool; shape-item events are all kept. Temporary-frame and foreground events are never held.
///
/// Saving. The step list is saved by participant name ("Index", "Storage" with one "ItemList" of
/// "Item" names per step, after the tool's "ToolName"). Before loading, every participant that
/// the saved list may name is made known with SetAvailableItem; loading a list that names one
/// that is not throws CanvaroException naming it, and leaves the manager as it was.
///
/// Ownership: holds the storage and the participants without owning them; both must outlive it.
/// Threads: one thread at a time; no locks of its own.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "canvaro/Undo/IUndoManager.h"

namespace Kelbra::Canvaro {

class FrameStorage;

class UndoManager final : public virtual ToolsId,
                          public virtual IUndoManager,
                          public IUndoTransactionManager,
                          public DrawerEventHandlerList {
 public:
  /// A manager with no steps that frees frames of `storage` on Truncate.
  static IUndoManagerPtr Create(FrameStorage& storage);

  /// ---- IUndoManager ----
  bool IsUndoEnabled() const override { return current_ != 0; }
  bool IsRedoEnabled() const override;
  void Undo() override;
  void Redo() override;
  IUndoTransactionManager& GetTransactionManager() override { return *this; }
  std::uint64_t GetCoreSize() const override { return 0; }
  void SetAvailableItem(IMultiUndoItem* item) override;
  void Add(IMultiUndoItem* item) override;
  void Truncate() override;
  std::size_t GetStepCount() const override { return steps_.size(); }
  std::int32_t GetCurrentStep() const override { return current_; }

  /// ---- IUndoTransactionManager ----
  void TransactionStart() override;
  void TransactionCommit() override;
  void TransactionRollback() override;
  void RegisterHandler(IDrawerEventHandler* handler) override { RegisterEventHandler(handler); }
  void UnregisterHandler(IDrawerEventHandler* handler) override { UnregisterEventHandler(handler); }

  /// ---- IDrawerEventHandler: gathering ----
  void HandleUndo(const DrawerEventUndo& event) override;
  void HandleFrame(const DrawerEventFrame& event) override;
  void HandleChangeToSave(const DrawerEventChangeToSave& event) override;
  void HandleFrameTemporary(const DrawerEventFrameTemporary& event) override;
  void HandleForeground(const DrawerEventForeground& event) override;
  void HandleToolIdChange(const DrawerEventToolIdChange& event) override;
  void HandleChangeShapeItem(const DrawerEventShapeItem& event) override;

  /// ---- ISerializable ----
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Appends the saved steps (one per non-empty saved step) and sets the cursor to the saved
  /// one. Meant for a fresh manager; a null serializer does nothing. Throws CanvaroException
  /// for a name that was never made available or a saved index outside the steps.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

  /// ---- IRefCountable ----
  void AddRef() const override { refCount_.AddRef(); }
  void Release() const override;
  long GetRefCount() const override { return refCount_.GetRefCount(); }

 private:
  using Step = std::vector<IMultiUndoItem*>;

  explicit UndoManager(FrameStorage& storage);
  ~UndoManager() override;

  /// Delivers what is pending, in the fixed order, and clears it.
  void Notify();
  /// Drops every pending event.
  void ResetTransactionInfo();
  /// Ends an undo or redo: stops gathering and delivers.
  void EndReplay();

  FrameStorage& storage_;
  std::int32_t current_ = -1;
  std::vector<Step> steps_;
  std::map<std::string, IMultiUndoItem*> availableItems_;
  bool inTransaction_ = false;
  Step transactionItems_;

  bool undoPending_ = false;
  bool framePending_ = false;
  bool changeToSavePending_ = false;
  bool toolIdChangePending_ = false;
  bool shapeItemPending_ = false;
  DrawerEventUndo pendingUndo_;
  DrawerEventChangeToSave pendingChangeToSave_;
  DrawerEventToolIdChange pendingToolIdChange_;
  std::vector<DrawerEventFrame> pendingFrames_;
  std::vector<DrawerEventShapeItem> pendingShapeItems_;

  RefCountImpl refCount_;
};

}  // namespace Kelbra::Canvaro
