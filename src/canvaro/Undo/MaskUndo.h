/// \file
/// MaskUndo: the history of one step's mask, stroke by stroke.
///
/// The mask is a picture with one byte per pixel (PixFmt::Gray8): the index of the brush that
/// painted the pixel, 0 where nothing is painted. Every picture lives in the document's
/// FrameStorage; the history keeps frame indices:
///   - item 0's frame is the working mask, the mask in force (empty while nothing is painted);
///   - every later item k's frame holds only the pixels of its rectangle: the pixels from before
///     stroke k while k is done, the pixels of stroke k while it is undone (the redo tail).
/// Undo and redo exchange those pixels with the working mask, in place. Beside the pictures the
/// history keeps the pixel count per brush index (MaskCounter) and the bounding box of the
/// painted pixels, always equal to a full recount of the working mask.
///
///   MaskUndo mask(&storage, width, height, firstMask, info);   // item 0
///   mask.PushMask(strokeInfo, maskAfterStroke);                  // item 1
///   mask.GetPixelCount({ICanvaroBrush::INDEX_DEFAULT});
///   mask.UndoImpl();                                             // the working mask as before
///
/// Contracts:
///   - A picture handed to PushMask or to the constructor becomes the working mask. The history
///     never writes into it (nor into any picture it hands out): undo and redo make new pictures.
///     The caller must not change a picture after handing it over.
///   - A stroke's rectangle is widened to every pixel in which the new mask differs from the
///     working mask, so that the counts always equal a full recount and undo restores every
///     changed pixel. Rectangles are left and top inclusive, right and bottom exclusive, and are
///     clipped to the mask.
///   - Errors: masks that are not Gray8, or whose size differs from the mask's, throw
///     CanvaroException before anything changes; storage failures (CanvaroException with
///     SwapFileFailure) pass through.
///   - Threads: the document's thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/MaskCounter.h"
#include "canvaro/Undo/MaskStatistics.h"
#include "canvaro/Undo/TUndoImpl.h"
#include "canvaro/settings/MaskInfo.h"
#include "kelbra/Proc/CropInfo.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/ROI.h"

namespace Kelbra::Canvaro {

class MaskUndo : public TUndoImplBottom<MaskInfo, void*> {
 public:
  using History = TUndoImpl<MaskInfo, void*>;
  using Item = History::UndoItem;

  static const std::string SAVE_PROPERTY_IS_SAVED;      // "IsSaved"
  static const std::string SAVE_PROPERTY_MASK_COUNTER;  // "MaskCounter"
  static const std::string SAVE_PROPERTY_MASK_INFO;     // "MaskInfo"

  /// An empty history (to be read with Deserialize). `storage` is not owned and must outlive
  /// the history.
  explicit MaskUndo(FrameStorage* storage);
  /// Item 0 with `info` and `mask` (which may be empty) as the working mask, counted in full.
  /// `width` and `height` give the size of the blank mask that undo makes when the working mask
  /// was dropped and the storage never saw a mask picture.
  MaskUndo(FrameStorage* storage, unsigned width, unsigned height, const Proc::IDataVideoPtr& mask,
           const MaskInfo& info);
  ~MaskUndo() override;

  /// Records a stroke: `mask` is the complete new mask, or empty to clear the mask. Keeps the
  /// pixels the stroke replaces (those of `info`'s rectangle; for a clear, those of the painted
  /// box) as a new item after the current one (dropping the redo tail) and makes `info` current
  /// (for a clear, only its painter and blender). False, with nothing recorded, when the
  /// rectangle is empty or outside the mask, when clearing a mask that holds nothing, and on a
  /// history without items.
  bool PushMask(const MaskInfo& info, const Proc::IDataVideoPtr& mask);
  /// Whether PushMask would record a state, without changing anything. Throws CanvaroException
  /// (InvalidArgument) for a mask that PushMask refuses (not Gray8, of another size).
  bool CanPush(const MaskInfo& info, const Proc::IDataVideoPtr& mask);
  /// Makes `info` current and recounts the working mask from scratch, scanning the union of
  /// `info`'s rectangle and the painted box (pixels outside both must be unpainted, which holds
  /// when the mask changed only inside the rectangle; a history never counted scans the whole
  /// mask). Drops an all-unpainted working mask from the storage, then logs the box and the
  /// pixel count.
  void CheckInfo(const MaskInfo& info);

  const MaskInfo& GetInfo() const { return info_; }
  /// The bounding box of the painted pixels of the working mask. After Deserialize it is known
  /// only once the mask has changed (or CheckInfo ran); until then it is empty.
  const Proc::CropInfo& GetCropInfo() const { return stats_.GetBox(); }
  /// Painted pixels of the listed brush indices; all painted pixels for an empty list.
  std::uint64_t GetPixelCount(const std::vector<std::uint8_t>& brushIndices) const;

  bool IsSaved() const { return isSaved_; }
  void SetSaved(bool saved) { isSaved_ = saved; }

  /// Only the working mask (item 0's frame) has to stay in memory.
  bool StayInMemory(Index index) const override { return index == 0; }

  /// Undoes the current stroke: its pixels and the working mask's are exchanged, and the
  /// previous item's info becomes current. Nothing at item 0 or on an empty history.
  void UndoImpl() override;
  /// Redoes the next stroke; nothing at the last item. Both undo and redo load their pictures
  /// first: when that fails, the history stays where it was.
  void RedoImpl() override;
  /// Drops the redo tail and releases the pictures it kept.
  void TruncateImpl() override;

  /// Replaces this history by a copy of `other`'s items up to its current one, each picture
  /// duplicated into a new frame (of this history's storage), and takes over its saved flag, its
  /// info, and (when `other` is not this) its counts and painted box.
  void CopyFrom(const MaskUndo& other);

  /// The history ("Index", "Items", each item's frame record beside its "Info"), then "IsSaved",
  /// "MaskCounter", "MaskInfo" and "MaskCounter" once more. The storage names the frames that
  /// have no swap file yet and queues them for writing.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// "MaskInfo", "MaskCounter", "IsSaved" (each absent key keeps the current value), then the
  /// history, whose pictures are appended to the storage from the item records. Throws
  /// CanvaroException (SwapFileFailure) when a named swap file is missing.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

  /// The frame index of the working mask (item 0's); the history must not be empty.
  Index GetWorkingIndex() const;

 protected:
  /// Each item's picture is stored as a frame record in the item's node.
  void SerializeMask(const Item& item, const Drevin::ISerializerPtr& serializer) const override;
  void DeserializeMask(Item& item, const Drevin::ISerializerConstPtr& serializer) override;

 private:
  /// Exchanges the pixels of the current item's rectangle with the working mask.
  void UndoRedoImpl();
  /// Counts the working mask in full if that has not happened since it was loaded.
  void EnsureCounted();
  /// Drops an all-unpainted working mask and logs the statistics.
  void FinishCount();

  /// The working mask; empty when there is none.
  Proc::IDataVideoPtr GetWorkingMask() const;
  /// The size of the mask: the working frame's (also after it was dropped), else the size given
  /// to the constructor, else item 0's rectangle. Throws CanvaroException for a size no picture
  /// can have (a loaded record may claim one).
  Conf::FrameInfo GetMaskGeometry() const;
  /// `rect` clipped to the mask.
  ROI Clip(const MaskInfo& rect, const Conf::FrameInfo& geometry) const;
  /// A blank mask picture of `width` x `height`.
  static Proc::IDataVideoPtr MakeBlank(std::int32_t width, std::int32_t height);

  MaskInfo info_;
  bool isSaved_ = false;
  unsigned width_ = 0;
  unsigned height_ = 0;
  detail::MaskStatistics stats_;
  /// Whether stats_ describes the working mask; false after loading, until it is counted.
  bool counted_ = false;
};

}  // namespace Kelbra::Canvaro
