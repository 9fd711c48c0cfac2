// IRenderingType: the rendering parameters of one shape kind (colours, widths, fonts, end
// points), as far as the shape record needs to change them when the picture under the shape is
// rotated, resized or cropped. Every kind implements it; the shape record reaches it through
// ShapeInfoBase::RenderingSettings().
#pragma once

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Proc/SettingsEffectTranspose.h"
#include "kelbra/ROI.h"

namespace Kelbra::Canvaro {

class PositionType;

class IRenderingType {
 public:
  virtual ~IRenderingType() = default;

  // Follows a quarter-turn rotation of a picture of size `frame` (the size before rotating).
  virtual void Transpose(const Conf::FrameInfo& frame,
                         const Proc::SettingsEffectTranspose& transpose) = 0;
  // Follows a change of the picture's size from `from` to `to`; the kind decides whether and how
  // the shape's `position` moves with it.
  virtual void Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
                      PositionType& position) = 0;
  // Follows a crop of a picture of size `frame` to `roi` (pixels).
  virtual void Crop(const Conf::FrameInfo& frame, const ROI& roi) = 0;
};

}  // namespace Kelbra::Canvaro
