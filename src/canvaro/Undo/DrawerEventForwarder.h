/// \file
/// DrawerEventForwarder: an observer that passes every drawer event it receives on to its own
/// observers, unchanged (copied). A class whose parts raise events that its own observers must
/// see derives from it and registers itself with its parts:
///
///   class ShapeSet : public DrawerEventForwarder { ... };
///   item.RegisterEventHandler(&shapeSet);   // the item's events reach the set's observers
///
/// With no observers of its own, a forwarder swallows the events. Threads and exceptions as for
/// any observer list (kelbra/Core/EventHandlerList.h).
#pragma once

#include "canvaro/Undo/IDrawerEventHandler.h"

namespace Kelbra::Canvaro {

class DrawerEventForwarder : public virtual IDrawerEventHandler,
                             public virtual DrawerEventHandlerList {
 public:
  void HandleUndo(const DrawerEventUndo& event) override { Publish(*this, event); }
  void HandleFrame(const DrawerEventFrame& event) override { Publish(*this, event); }
  void HandleChangeToSave(const DrawerEventChangeToSave& event) override { Publish(*this, event); }
  void HandleFrameTemporary(const DrawerEventFrameTemporary& event) override {
    Publish(*this, event);
  }
  void HandleForeground(const DrawerEventForeground& event) override { Publish(*this, event); }
  void HandleToolIdChange(const DrawerEventToolIdChange& event) override { Publish(*this, event); }
  void HandleChangeShapeItem(const DrawerEventShapeItem& event) override { Publish(*this, event); }
};

}  // namespace Kelbra::Canvaro
