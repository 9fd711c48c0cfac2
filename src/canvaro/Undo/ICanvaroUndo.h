/// \file
/// ICanvaroUndo: the document, the one object a host holds for an open picture and its whole
/// edit history (rendered pictures with the settings that made them, mask strokes, annotation
/// shapes), with undo and redo across all of them.
///
///   auto document = ICanvaroUndo::Create(swapDir, [n = 0]() mutable {
///     return "frame_" + std::to_string(n++) + ".raw";
///   });
///   document->RegisterEventHandler(&surface);
///   document->Add(SettingsCore(), source, nullptr, maskInfo);       // silent
///   document->Add(SettingsCore(blur), blurred, nullptr, maskInfo);   // frame, shapes, save events
///   document->AddMask(stroke, strokeInfo);                           // a step of its own
///   if (document->IsUndoEnabled()) document->Undo();                 // undoes the stroke
///
/// Steps. The first Add stores the source picture as item 0, the base step that is never undone;
/// observers hear only of the new step (HandleUndo), not of a changed frame. Every later Add,
/// every mask stroke and every shape edit is one step of the document's undo manager;
/// GetTransactionManager() groups several edits into one. An edit after an undo discards the redo
/// steps of every part and frees their pictures.
///
/// Memory. Pictures live in the document's frame storage. After each new, replaced or redone step
/// the document compares the bytes of pictures held in memory with 250 MiB (kMemoryThreshold);
/// when reached it logs "Memory usage: <bytes>. Swap required" (warning) and has every picture
/// but the current step's written to swap files in `swapDirectory` by the storage's worker
/// thread. Swapped pictures are read back when asked for. An empty swap directory never swaps.
///
/// Saving. Serialize writes shapes, step list, pictures (as swap file names: the storage queues
/// every picture for writing first; WaitForPendingSaves() waits for the files) and the settings
/// history with each step's masks. Deserialize reads them into a fresh document made on the same
/// swap directory.
///
/// Item indices. Queries that take an item index read kCurrentItem as the item in force; any
/// other index selects that item and must be below GetVideoCount(), shape item and state numbers
/// below the shape's counts. An index out of range throws CanvaroError::InvalidArgument.
///
/// Ownership: reference-counted, made only by Create and held by boost::intrusive_ptr. Observers
/// are not owned; unregister them before they go. The undo manager (GetUndoManager) is valid
/// while the document lives. Records returned by reference (GetSettings, GetMaskInfo,
/// GetShapeItemInfo) are valid until the next edit, Set, undo, redo or Deserialize of the
/// document: copy them to keep them. Passing one of them straight back into an edit is safe (the
/// edit copies its arguments before it drops any redo step).
///
/// Errors: every failure is a CanvaroException carrying a description (what()) and, except for
/// the settings factories' "Not implemented", a CanvaroError code (see CanvaroException.h):
///   InvalidArgument  a refused argument: an index out of range, an empty shape handle, a mask
///                    picture that is not Gray8 or not the picture's size, a package tool outside
///                    the tool table.
///   InvalidState     a call that needs a step in force on an empty document, or swap files on a
///                    document made without a swap directory.
///   InvalidDocument  a saved document that cannot be loaded (damaged or inconsistent records).
///   SwapFileFailure  a swap file that cannot be written or read; the description names the file
///                    and the system's reason.
/// A refused edit changes nothing: arguments are checked before any redo step is dropped, and no
/// event is published. The serializer's own exceptions pass through.
///
/// Threads: call from one thread (the host's editing thread); the document takes no lock. The
/// only thread of its own is the frame storage's worker, which writes swap files.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "canvaro/CoreUtil/DrawableItemHandler.h"
#include "canvaro/Undo/IDrawerEventHandler.h"
#include "canvaro/Undo/IMultiUndoItem.h"
#include "canvaro/Undo/ISavable.h"
#include "canvaro/Undo/IUndoManager.h"
#include "canvaro/settings/EffectsSettings.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"
#include "canvaro/shapes/ShapeInfo.h"
#include "canvaro/shapes/ShapeType.h"
#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Path.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class FrameStorage;
class ICanvaroUndo;
using ICanvaroUndoPtr = boost::intrusive_ptr<ICanvaroUndo>;

class ICanvaroUndo : public virtual IRefCountable,
                     public virtual Drevin::ISerializable,
                     public virtual IMultiUndoItem,
                     public virtual IDrawableItemHandler,
                     public virtual ISavable {
 public:
  /// The item index (and shape state number) that means "the one in force".
  static constexpr unsigned kCurrentItem = 0xFFFFFFFFu;
  /// Bytes of pictures in memory at which the document swaps (250 MiB).
  static constexpr std::uint64_t kMemoryThreshold = 0xFA00000u;

  /// A new, empty document. `swapDirectory` (made by the host beforehand; empty switches swapping
  /// off) receives the swap files, named by `nameGenerator`, which must give a new name on every
  /// call. Starts the frame storage's worker thread; a failure to start it throws
  /// std::system_error.
  static ICanvaroUndoPtr Create(const ioPath& swapDirectory,
                                std::function<std::string()> nameGenerator);

  // ---- steps ----

  /// False at the base step and on a document without steps (before its first edit), so that
  /// `while (IsUndoEnabled()) Undo();` always ends.
  virtual bool IsUndoEnabled() const = 0;
  virtual bool IsRedoEnabled() const = 0;
  /// Undoes the current step of every part it touched; the observers hear once, at the end. Does
  /// nothing at the base step. Throws SwapFileFailure when a picture the step needs cannot be read.
  virtual void Undo() = 0;
  /// Redoes the next step; may swap pictures out. Does nothing without a redo step.
  virtual void Redo() = 0;
  /// Brackets several edits as one step (RAII::UndoTransactionGuard).
  virtual IUndoTransactionManager& GetTransactionManager() = 0;
  /// Bytes of picture data held in memory (pictures on disk count 0; masks, shapes and settings
  /// are not counted apart from their pictures).
  virtual std::uint64_t GetCoreSize() const = 0;

  /// Adds a step: `frame` rendered with `settings`, with the step's first mask picture (may be
  /// empty) and mask settings. Drops every redo step first. Except for the first Add of a document
  /// (the source picture), publishes a frame event (change), one shape-item event per shape item
  /// and a change-to-save event. Then checks the memory budget. Throws InvalidArgument for a mask
  /// picture that is not Gray8 of the frame's size or a package tool outside the tool table;
  /// nothing changes then. The pictures are held, never written to: the host may keep using them.
  virtual void Add(const SettingsCore& settings, const Proc::IDataVideoPtr& frame,
                   const Proc::IDataVideoPtr& maskPicture, const MaskInfo& maskInfo) = 0;
  /// Replaces the step in force (settings, picture, mask history) without making a step or
  /// dropping redo steps; publishes as Add does and checks the memory budget. Releases the
  /// pictures it replaces. Throws InvalidState on an empty document and InvalidArgument as Add.
  virtual void Set(const SettingsCore& settings, const Proc::IDataVideoPtr& frame,
                   const Proc::IDataVideoPtr& maskPicture, const MaskInfo& maskInfo) = 0;

  // ---- queries on settings steps ----

  /// Number of settings steps (items), redo steps included; not the number of stored pictures.
  virtual unsigned GetVideoCount() const = 0;
  /// Geometry of item `item`'s picture, also while it is swapped out.
  virtual Conf::FrameInfo GetVideoInfo(unsigned item) const = 0;
  /// The picture of item `item`, read back from its swap file when needed.
  virtual Proc::IDataVideoPtr GetVideo(unsigned item) const = 0;
  /// The picture of item 0. Throws CanvaroException on an empty document.
  virtual Proc::IDataVideoPtr GetSourceVideo() const = 0;
  /// The settings of item `item`. Valid until the next edit, Set, undo, redo or load.
  virtual const SettingsCore& GetSettings(unsigned item) const = 0;
  /// The item in force; kCurrentItem (-1) while the document is empty.
  virtual unsigned GetCurrentIndex() const = 0;
  /// The position in force in the current item's mask history (0: no stroke); kCurrentItem when
  /// there is none.
  virtual unsigned GetCurrentMaskIndex() const = 0;
  /// The package index of the current item's settings when their package name equals `name`
  /// byte for byte (which may itself be -1, read as kCurrentItem); kCurrentItem otherwise.
  virtual unsigned GetPackageIndex(const std::string& name) const = 0;
  /// Searching from the item in force back to item 0, the first item whose effects settings equal
  /// `effects`; kCurrentItem when none does.
  virtual unsigned GetSameSettingsIndex(const EffectsSettings& effects) const = 0;
  /// The picture index of the item in force, as a list of one (empty on an empty document).
  virtual std::vector<Index> GetUsedFrameIndexList() const = 0;

  // ---- masks ----

  /// A mask stroke on the item in force, with the mask settings in force; see below.
  virtual void AddMask(const Proc::IDataVideoPtr& maskPicture) = 0;
  /// A mask stroke on the item in force: `maskPicture` is the whole new mask (empty clears it).
  /// One step of its own, undone before the item under it. The stroke's rectangle is widened to
  /// every pixel that differs from the mask in force, so the counts stay exact whatever edge
  /// convention the host uses. A stroke with an empty rectangle records nothing, publishes
  /// nothing and keeps the redo steps. A mask picture that is not Gray8 of the item's size throws
  /// InvalidArgument and changes nothing; an empty document throws InvalidState. `maskPicture` is
  /// held, never written to.
  virtual void AddMask(const Proc::IDataVideoPtr& maskPicture, const MaskInfo& maskInfo) = 0;
  /// The mask picture of item `item` (empty when nothing is painted).
  virtual Proc::IDataVideoPtr GetMask(unsigned item) const = 0;
  /// The mask settings in force of item `item`. Valid until the next edit, Set, undo, redo or load.
  virtual const MaskInfo& GetMaskInfo(unsigned item) const = 0;
  /// Painted pixels of the current item's mask with the given brush indices; all painted pixels
  /// for an empty list.
  virtual std::uint64_t GetMaskPixelCount(const std::vector<std::uint8_t>& brushIndices) const = 0;

  /// Swaps every picture but the current step's out when the memory budget is reached (see the
  /// header comment). The edits call it; a host needs it only after changing pictures itself.
  virtual void CheckForSize() const = 0;
  /// The document's undo manager (valid while the document lives).
  virtual IUndoManager& GetUndoManager() const = 0;

  // ---- shapes ----
  // An empty ShapeInfo handle, or an item or state number out of range, throws InvalidArgument.

  /// A new shape (index -1) or a new state of an existing one, with an optional picture: one step.
  /// An unchanged shape without a picture records nothing.
  virtual void SetShape(const ShapeInfo& shape, const Proc::IDataVideoPtr& picture) = 0;
  /// SetShape without pictures for each shape, as one step.
  virtual void SetShapes(const std::vector<ShapeInfo>& shapes) = 0;
  /// Replaces the state in force of the shape's item; no step.
  virtual void OverwriteShape(const ShapeInfo& shape) = 0;
  /// Hides every visible shape of the kinds in `mask`, as one step (none when nothing is visible).
  virtual void RemoveShapeAll(ShapeType mask) = 0;
  /// Shape items of the kinds in `mask`, hidden ones included.
  virtual unsigned GetShapeItemCount(ShapeType mask) const = 0;
  /// The same, visible ones only.
  virtual unsigned GetShapeActiveItemCount(ShapeType mask) const = 0;
  /// The shapes in force of those items, in item order, hidden ones included.
  virtual std::vector<ShapeInfo> GetShapeItems(ShapeType mask) const = 0;
  /// The same, visible ones only.
  virtual std::vector<ShapeInfo> GetShapeActiveItems(ShapeType mask) const = 0;
  /// State `state` (kCurrentItem: the one in force) of shape item `item`. Valid until the next
  /// edit, undo, redo or load.
  virtual const ShapeInfo& GetShapeItemInfo(unsigned item, unsigned state) const = 0;
  /// The picture of that state; empty when it has none.
  virtual Proc::IDataVideoPtr GetShapeItemVideo(unsigned item, unsigned state) const = 0;
  /// The frame index of that state's picture; kNoIndex when it has none.
  virtual Index GetShapeItemVideoIndex(unsigned item, unsigned state) const = 0;

  // ---- observers ----

  /// Adds an observer of the document's events (null and duplicates ignored); not owned.
  virtual void RegisterEventHandler(IDrawerEventHandler* handler) = 0;
  /// Removes an observer; unknown ones are ignored.
  virtual void UnregisterEventHandler(IDrawerEventHandler* handler) = 0;

  // ---- saved state (ISavable) ----

  /// True when the current item's mask and the shapes report saved.
  bool IsSaved() const override = 0;
  /// Passes the flag to the current item's mask and to the shapes (which mark only their first
  /// differing item), then publishes one change-to-save event, changed or not.
  void SetSaved(bool saved) override = 0;
  /// Republishes a change-to-save event of one of the document's parts to its observers.
  virtual void HandleChangeToSave(const IDrawerEventHandler::DrawerEventChangeToSave& event) = 0;

  // ---- saving ----

  /// Writes "Shape", "UndoManager", "Frames" (queueing every picture for its swap file), then the
  /// settings history ("Index", "Items") with each item's mask history as "Mask".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override = 0;
  /// Reads a saved document into this fresh one, made on the swap directory that holds the saved
  /// swap files. A save without "UndoManager" gets one step per item and per mask stroke. Throws
  /// SwapFileFailure for a missing swap file, InvalidDocument for damaged or inconsistent records
  /// (a step naming a picture that was not saved, a step list naming an unknown part, a file name
  /// that is not a plain name, a negative size), and "Not implemented" for settings or masks
  /// holding effects or painters whose classes have no registered creator (see
  /// IEffectSettings::RegisterEffectCreator); serializer errors pass through. After
  /// a failure, discard the document and load into a fresh one.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override = 0;

  // ---- for hosts, tools and tests ----

  /// Blocks until every swap file queued so far has been written (after Serialize, before the
  /// files are copied or read by another document).
  virtual void WaitForPendingSaves() const = 0;
  /// The document's frame storage, read-only: picture count, swap file names, failed state.
  virtual const FrameStorage& GetFrameStorage() const = 0;

 protected:
  ~ICanvaroUndo() override = default;
};

}  // namespace Kelbra::Canvaro
