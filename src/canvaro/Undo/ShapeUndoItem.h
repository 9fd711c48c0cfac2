/// \file
/// ShapeUndoItem: the history of one annotation shape: its states (a ShapeInfo, and the frame
/// index of a picture stored with the state or kNoIndex) and the state in force. It is a
/// participant of the document's undo steps, known to the undo manager by the name
/// "Item_NNNNNNNN" made from the shape's index.
///
///   ShapeUndoItem item(&storage, shape);   // states: [shape hidden and saved, shape]
///   manager->Add(&item);                   // the placing is one step
///   item.Push(moved);                      // a further state, once more manager->Add(&item)
///   item.RegisterEventHandler(&set);       // undo and redo announce the state they reach
///
/// The first state of an item made from a shape is the baseline before the shape was placed: a
/// hidden copy, already saved, so that undoing the placing hides the shape and leaves nothing
/// unsaved behind.
///
/// Events: UndoImpl and RedoImpl publish, in this order, a DrawerEventShapeItem with the shape
/// now in force (reason Undo or Redo), a DrawerEventChangeToSave and a DrawerEventToolIdChange.
/// The tool reported is that of the state left by an undo, but that of the state reached by a
/// redo: the host's tool follows the shape the user last worked on.
///
/// Stored shapes are never changed: SetSaved and SetCurrentShape store a new record.
/// Ownership: the storage is not owned. Threads: one at a time (the document's).
#pragma once

#include <string>

#include "canvaro/Undo/IDrawerEventHandler.h"
#include "canvaro/Undo/IMultiUndoItem.h"
#include "canvaro/Undo/ISavable.h"
#include "canvaro/Undo/TUndoImpl.h"
#include "canvaro/shapes/ShapeInfo.h"

namespace Kelbra::Canvaro {

class ShapeUndoItem : public TUndoImplTop<ShapeInfo, void*>,
                      public virtual DrawerEventHandlerList,
                      public virtual IMultiUndoItem,
                      public virtual ISavable {
 public:
  using History = TUndoImpl<ShapeInfo, void*>;

  /// An item for `shape`, named after its index, with the saved hidden baseline as state 0 and
  /// `shape` as state 1, in force.
  ShapeUndoItem(FrameStorage* storage, const ShapeInfo& shape);
  /// An empty item called `name`, to be filled by Deserialize.
  ShapeUndoItem(FrameStorage* storage, const std::string& name);
  ~ShapeUndoItem() override;

  /// Makes `shape` the new state in force (the item's redo tail is dropped). When it removes a
  /// shape that no state since the shape last appeared had saved, the removed state counts as
  /// saved: placing and removing a shape without saving leaves nothing to save. Always true.
  bool Push(const ShapeInfo& shape) override;

  /// The shape in force; the item must not be empty.
  const ShapeInfo& GetCurrentShape() const;
  /// Replaces the shape of the state in force (no new state; its frame index is kept).
  void SetCurrentShape(const ShapeInfo& shape);
  /// Whether the shape in force is shown; false for an empty item.
  bool IsVisible() const;

  /// Whether the shape in force is the one on disk; true for an empty item.
  bool IsSaved() const override;
  /// Marks the shape in force (only it) as saved or not.
  void SetSaved(bool saved) override;
  /// Whether any state since the shape last became visible, before the newest, was saved.
  bool WasSaved() const;

  /// One state back or forward, with the events of the header comment. Nothing happens (and
  /// nothing is published) at the first state or at the last one respectively.
  void UndoImpl() override;
  void RedoImpl() override;

  /// ---- IMultiUndoItem (the rest comes from TUndoImplTop) ----
  std::string GetMultiName() const override { return name_; }

  /// The name of the item of the shape with index `index`: "Item_" and eight digits.
  static std::string MakeName(std::int32_t index);

 private:
  /// Moves the cursor and announces the shape now in force.
  void UndoRedoImpl(IDrawerEventHandler::EventFrameReason reason);

  std::string name_;
};

}  // namespace Kelbra::Canvaro
