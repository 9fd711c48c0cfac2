/// \file
/// ShapeUndo: the annotation shapes of one document (ICanvaroShape), each with its own history
/// (ShapeUndoItem), and every change recorded as a step of the document's undo manager.
///
///   ShapeUndo shapes(&storage, manager);
///   shapes.RegisterEventHandler(&document);            // hears every shape change
///   ShapeInfo line(*LineInfo::Create(IToolsId::SHAPE_LINE));
///   shapes.SetShape(line, nullptr);                    // item 0, z 1073741723.5, one step
///   manager->Undo();                                   // the line is hidden again
///
/// A shape's index (InfoTypeBase) is the position of its item; a new shape (index -1) gets the
/// next one and a z value above every visible shape. Shapes are never deleted: removing one adds
/// a hidden state, which undo takes back. Undo and redo are driven by the manager on the items;
/// their events pass through this set (a DrawerEventForwarder) to its observers. Edits announce
/// a DrawerEventShapeItem (reason Change) with the shape now in force, then a
/// DrawerEventChangeToSave.
///
/// The drawable frame info is kept here as a plain copy (all zero at first), so that the set
/// answers it like the document does; it is not saved and raises no event.
///
/// Errors: SetShape and OverwriteShape throw CanvaroException for a shape whose index names no
/// item; the getters do not check item or state numbers. Exceptions of the storage and of the
/// serializer pass through; SetShapes and RemoveShapeAll still close their transaction, keeping
/// what was done. Deserialize throws CanvaroException for a saved item without states or with a
/// state naming a picture that the storage does not hold.
///
/// Ownership: the storage is not owned, the manager is shared, the items are owned and live as
/// long as the set (the manager holds them by pointer). Threads: the document's only; no locks.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "canvaro/CoreUtil/DrawableItemHandler.h"
#include "canvaro/Undo/DrawerEventForwarder.h"
#include "canvaro/Undo/ICanvaroShape.h"
#include "canvaro/Undo/ISavable.h"
#include "canvaro/Undo/IUndoManager.h"
#include "canvaro/Undo/ShapeUndoItem.h"
#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Canvaro {

class FrameStorage;

class ShapeUndo : public DrawableItemHandler,
                  public virtual ICanvaroShape,
                  public virtual DrawerEventForwarder,
                  public virtual Drevin::ISerializable,
                  public virtual ISavable {
 public:
  /// An empty set over `storage` (pictures of shapes) and `manager` (the document's steps).
  ShapeUndo(FrameStorage* storage, const IUndoManagerPtr& manager);
  ~ShapeUndo() override;
  ShapeUndo(const ShapeUndo&) = delete;
  ShapeUndo& operator=(const ShapeUndo&) = delete;

  // The drawable frame info is the document's: the shape set's own SetDrawableFrameInfo and
  // GetDrawableFrameInfo throw std::logic_error("Undefined operation").

  /// ---- ICanvaroShape ----
  void SetShape(const ShapeInfo& shape, const Proc::IDataVideoPtr& picture) override;
  void SetShapes(const std::vector<ShapeInfo>& shapes) override;
  void OverwriteShape(const ShapeInfo& shape) override;
  void RemoveShapeAll(ShapeType mask) override;
  unsigned GetShapeItemCount(ShapeType mask) const override;
  unsigned GetShapeActiveItemCount(ShapeType mask) const override;
  std::vector<ShapeInfo> GetShapeItems(ShapeType mask) const override;
  std::vector<ShapeInfo> GetShapeActiveItems(ShapeType mask) const override;
  const ShapeInfo& GetShapeItemInfo(unsigned item, unsigned state) const override;
  /// The geometry of the picture of the item's state in force; all zero when it has none.
  Conf::FrameInfo GetVideoInfo(unsigned item) const override;
  Proc::IDataVideoPtr GetShapeItemVideo(unsigned item, unsigned state) const override;
  Index GetShapeItemVideoIndex(unsigned item, unsigned state) const override;

  /// Hides every visible shape of the kinds in `mask` (clearing their tool when `resetTool` is
  /// true), each through SetShape; the caller brackets it in a transaction.
  void RemoveShapeAllImpl(ShapeType mask, bool resetTool);
  /// The z value for a new shape: one above the highest visible one, the middle of the range
  /// for the first, and ZValueMax (with an error logged) when the range is used up.
  double GenerateNewZValue() const;

  /// ---- ISerializable ----
  /// The collection "Items", one node per item with its "Name" and its history as "Data".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Appends the saved items and makes each known to the manager by name, so that the manager
  /// can load its step list afterwards. No "Items" leaves the set as it is. Meant for an empty
  /// set.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

  /// ---- ISavable ----
  /// True when every item's shape in force is saved (or there is none).
  bool IsSaved() const override;
  /// Marks only the first item whose saved state differs from `saved`; the document calls it
  /// until IsSaved answers as wanted.
  void SetSaved(bool saved) override;

  // ---- beyond the document's needs: for hosts, tools and tests ----

  /// Number of items, hidden ones included.
  std::size_t GetItemCount() const { return items_.size(); }
  /// Item `index`, which must exist.
  const ShapeUndoItem& GetItem(std::size_t index) const { return *items_[index]; }

 private:
  /// The item of an existing shape; throws CanvaroException when its index names none.
  ShapeUndoItem& ItemOf(const ShapeInfo& shape) const;
  /// State `state` (kCurrentState: the one in force) of item `item`; throws CanvaroException
  /// (InvalidArgument) when either does not exist.
  const TUndoImpl<ShapeInfo, void*>::UndoItem& StateAt(unsigned item, unsigned state) const;
  /// Announces the shape now in force of `item` after an edit.
  void AnnounceChange(const ShapeUndoItem& item);

  FrameStorage* storage_;
  IUndoManagerPtr undoManager_;
  std::vector<std::shared_ptr<ShapeUndoItem>> items_;
  Conf::FrameInfo drawableFrameInfo_{};
};

}  // namespace Kelbra::Canvaro
