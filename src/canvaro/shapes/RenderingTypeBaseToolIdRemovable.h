/// \file
/// RenderingTypeBaseToolIdRemovable: the rendering base of every shape kind. Removing a shape
/// through it can also clear the shape's current tool, so that a removed shape no longer claims
/// the tool that made it.
#pragma once

#include "canvaro/shapes/RenderingTypeBase.h"

namespace Kelbra::Canvaro {

class RenderingTypeBaseToolIdRemovable : public RenderingTypeBase {
 public:
  /// Hides `shape`, marks it unsaved and, when `resetTool` is true, sets its current tool to
  /// NONE.
  void Remove(ShapeInfoBase& shape, bool resetTool) const override;
};

}  // namespace Kelbra::Canvaro
