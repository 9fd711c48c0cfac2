/// \file
/// detail::MaskStatistics: the painted pixels of a mask picture, kept up to date region by
/// region: the count per mask value (a MaskCounter) and the bounding box of the painted pixels.
///
/// The mask history changes its working mask one rectangle at a time. Before a change it takes
/// the rectangle's pixels out (Remove), after it counts them in again (Add), so that the counts
/// and the box always equal a full recount of the mask while the work stays in proportion to the
/// rectangle. Painted pixels are also counted per row and per column: that is what lets the box
/// shrink when its edge is erased without scanning the rest of the mask.
///
///   MaskStatistics stats;
///   stats.Reset(width, height);
///   stats.Add(mask->GetPlane(0), {0, 0, width, height});   // a full count
///   stats.Remove(oldPixels->GetPlane(0), rect);              // ... a change of `rect` ...
///   stats.Add(mask->GetView(rect)->GetPlane(0), rect);
///
/// Scans test 64 bytes at a time with SSE2 where the target has it (every x86-64), eight bytes
/// at a time elsewhere: an unpainted mask is read at about the speed of memchr, and a block of one
/// value is counted at once. Regions must lie inside the mask and hold one byte per pixel. One
/// thread at a time.
#pragma once

#include <cstdint>
#include <vector>

#include "canvaro/Undo/MaskCounter.h"
#include "kelbra/Proc/CropInfo.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/ROI.h"

namespace Kelbra::Canvaro::detail {

class MaskStatistics {
 public:
  /// Nothing painted on a mask of `width` x `height` pixels.
  void Reset(std::uint32_t width, std::uint32_t height);
  /// Counts the painted pixels of `pixels`, whose top-left pixel sits at (region.left,
  /// region.top) of the mask and which spans region.width x region.height.
  void Add(const Proc::Details::PlaneTemplate<true>& pixels, const ROI& region);
  /// Takes the painted pixels of `pixels` out again; they must have been counted at `region`.
  void Remove(const Proc::Details::PlaneTemplate<true>& pixels, const ROI& region);

  const MaskCounter& GetCounter() const { return counter_; }
  MaskCounter& GetCounter() { return counter_; }
  /// The bounding box of the painted pixels; the empty box when nothing is painted.
  const Proc::CropInfo& GetBox() const { return box_; }
  std::uint32_t GetWidth() const { return static_cast<std::uint32_t>(columns_.size()); }
  std::uint32_t GetHeight() const { return static_cast<std::uint32_t>(rows_.size()); }

 private:
  template <int kSign>
  void Count(const Proc::Details::PlaneTemplate<true>& pixels, const ROI& region);
  /// Brings the box up to date after `region` changed.
  void UpdateBox(const ROI& region);

  MaskCounter counter_;
  std::vector<std::uint32_t> rows_;     // painted pixels per row
  std::vector<std::uint32_t> columns_;  // painted pixels per column
  Proc::CropInfo box_;
};

}  // namespace Kelbra::Canvaro::detail
