/// \file
/// ICanvaroShape: the annotation shapes of a document, as the host edits and reads them. Every
/// edit is an undo step of the document (several in one call make one step); a removed shape is
/// hidden, never deleted, so item indices stay valid for the life of the document.
///
///   ShapeInfo arrow(*ArrowInfo::Create(IToolsId::SHAPE_ARROW));
///   shapes.SetShape(arrow, nullptr);                          // new shape: item 0
///   ShapeInfo moved = shapes.GetShapeItemInfo(0, kCurrentState);
///   ...edit a clone of it, then SetShape the clone...          // a new state of item 0
///   shapes.RemoveShapeAll(ShapeType::Arrow);                   // hides every arrow, one step
///
/// Kinds are selected by ShapeType masks (ShapeType::All for every kind). Item and state numbers
/// are not checked: asking for one that does not exist is a caller error.
#pragma once

#include <cstdint>
#include <vector>

#include "canvaro/CoreUtil/DrawableItemHandler.h"
#include "canvaro/Undo/ICanvaroVideoInfoProvider.h"
#include "canvaro/shapes/ShapeInfo.h"
#include "canvaro/shapes/ShapeType.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class ICanvaroShape : public virtual IDrawableItemHandler,
                      public virtual ICanvaroVideoInfoProvider {
 public:
  /// The state number that means "the state in force" in the getters below.
  static constexpr unsigned kCurrentState = 0xFFFFFFFFu;

  /// Places a new shape (index -1) or records a new state of the shape at its index, with an
  /// optional picture of its own. An unchanged shape without a picture records nothing.
  virtual void SetShape(const ShapeInfo& shape, const Proc::IDataVideoPtr& picture) = 0;
  /// SetShape without pictures for each shape in order, as one step.
  virtual void SetShapes(const std::vector<ShapeInfo>& shapes) = 0;
  /// Replaces the state in force of the shape's item without recording a step.
  virtual void OverwriteShape(const ShapeInfo& shape) = 0;
  /// Hides every visible shape of the kinds in `mask`, as one step; nothing when there is none.
  virtual void RemoveShapeAll(ShapeType mask) = 0;
  /// Items whose shape in force is of a kind in `mask`, hidden ones included.
  virtual unsigned GetShapeItemCount(ShapeType mask) const = 0;
  /// The same, visible ones only.
  virtual unsigned GetShapeActiveItemCount(ShapeType mask) const = 0;
  /// The shapes in force of those items, in item order (shared handles), hidden ones included.
  virtual std::vector<ShapeInfo> GetShapeItems(ShapeType mask) const = 0;
  /// The same, visible ones only.
  virtual std::vector<ShapeInfo> GetShapeActiveItems(ShapeType mask) const = 0;
  /// The shape of state `state` (kCurrentState: the one in force) of item `item`.
  virtual const ShapeInfo& GetShapeItemInfo(unsigned item, unsigned state) const = 0;
  /// The picture of that state; empty when it has none. Throws CanvaroException when a swapped
  /// picture cannot be read back.
  virtual Proc::IDataVideoPtr GetShapeItemVideo(unsigned item, unsigned state) const = 0;
  /// The frame index of that state's picture; kNoIndex when it has none.
  virtual Index GetShapeItemVideoIndex(unsigned item, unsigned state) const = 0;
};

}  // namespace Kelbra::Canvaro
