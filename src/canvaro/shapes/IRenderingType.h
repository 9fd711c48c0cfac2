/// \file
/// IRenderingType: the rendering parameters of one shape kind (colours, widths, fonts, end
/// points), as far as the shape record needs to change them when the picture under the shape is
/// rotated, resized or cropped. Every kind implements it; the shape record reaches it through
/// ShapeInfoBase::RenderingSettings().
///
/// The static members are the geometry the kinds share: how a size stored as a fraction of the
/// picture follows a quarter turn (GetTransposeAspect), a crop (CropImpl) and a non-uniform
/// resize of a turned box (ResizeImpl):
///
///   const double a = IRenderingType::GetTransposeAspect(frame, t);
///   if (a >= 0) { width /= a; height *= a; }
///   IRenderingType::CropImpl(frame, roi, width, height);
///
/// None of them throws; degenerate frames or crops (a side of 0 pixels) leave the values as they
/// are, since no finite answer exists.
#pragma once

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Proc/SettingsEffectTranspose.h"
#include "kelbra/ROI.h"

namespace Kelbra::Canvaro {

class PositionType;

class IRenderingType {
 public:
  virtual ~IRenderingType() = default;

  /// Follows a quarter-turn rotation of a picture of size `frame` (the size before rotating).
  virtual void Transpose(const Conf::FrameInfo& frame,
                         const Proc::SettingsEffectTranspose& transpose) = 0;
  /// Follows a change of the picture's size from `from` to `to`; the kind decides whether and how
  /// the shape's `position` moves with it.
  virtual void Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
                      PositionType& position) = 0;
  /// Follows a crop of a picture of size `frame` to `roi` (pixels).
  virtual void Crop(const Conf::FrameInfo& frame, const ROI& roi) = 0;

  /// The factor by which the picture's height/width ratio changes under `transpose`: -1 for the
  /// kinds that keep the orientation (none and half turn), otherwise the old frame's
  /// height / width. A frame without area also gives -1.
  static double GetTransposeAspect(const Conf::FrameInfo& frame,
                                   const Proc::SettingsEffectTranspose& transpose);
  /// Re-expresses two sizes, fractions of a picture of `frame`'s size, relative to the crop
  /// rectangle `roi`: a scales with the width, b with the height. An empty `roi` leaves both.
  static void CropImpl(const Conf::FrameInfo& frame, const ROI& roi, double& a, double& b);
  /// Follows a change of picture size from `from` to `to` for a box of `w` x `h` (fractions of
  /// the picture) turned by the position's angle. The box stays a rectangle: its longer scaled
  /// side is kept, the other is chosen so that the area scales like the picture's, and the angle
  /// becomes the direction of the kept side. `thickness` (pixels, of the box's outline) scales
  /// across the kept side and never drops below 1. Frames with a side of 0 change nothing.
  static void ResizeImpl(const Conf::FrameInfo& from, const Conf::FrameInfo& to, double& w,
                         double& h, PositionType& position, unsigned& thickness);
};

}  // namespace Kelbra::Canvaro
