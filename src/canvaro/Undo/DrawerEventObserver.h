/// \file
/// DrawerEventObserver: an observer of a document's drawer events that handles none of them, to
/// derive from when a host needs only some.
///
///   class Thumbnails : public DrawerEventObserver {
///     void HandleFrame(const DrawerEventFrame& event) override { Refresh(event.reason); }
///   };
///   Thumbnails thumbnails;
///   document->RegisterEventHandler(&thumbnails);   // not owned: unregister before it goes
///
/// Every handler of IDrawerEventHandler is overridable and does nothing here. Delivery rules are
/// IDrawerEventHandler's: synchronous, on the publishing thread.
#pragma once

#include "canvaro/Undo/IDrawerEventHandler.h"

namespace Kelbra::Canvaro {

class DrawerEventObserver : public IDrawerEventHandler {
 public:
  void HandleUndo(const DrawerEventUndo& /*event*/) override {}
  void HandleFrame(const DrawerEventFrame& /*event*/) override {}
  void HandleChangeToSave(const DrawerEventChangeToSave& /*event*/) override {}
  void HandleFrameTemporary(const DrawerEventFrameTemporary& /*event*/) override {}
  void HandleForeground(const DrawerEventForeground& /*event*/) override {}
  void HandleToolIdChange(const DrawerEventToolIdChange& /*event*/) override {}
  void HandleChangeShapeItem(const DrawerEventShapeItem& /*event*/) override {}
};

}  // namespace Kelbra::Canvaro
