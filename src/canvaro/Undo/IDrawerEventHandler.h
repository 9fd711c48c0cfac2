/// \file
/// IDrawerEventHandler: how the library tells its host (the drawing surface) what changed, and
/// the seven event records it sends.
///
/// Every history that can change the picture publishes these events on its observer list
/// (DrawerEventHandlerList). The undo manager observes the histories, gathers their events per
/// user action and publishes them again to the host's observers:
///
///   class Surface : public IDrawerEventHandler {
///     void HandleFrame(const DrawerEventFrame& e) override { Redraw(e.reason); }
///     ...   // all seven handlers; derive from DrawerEventObserver to override only some
///   };
///   document->RegisterEventHandler(&surface);
///
/// Each record starts with its origin (EventOrigin): where in the library it was raised, for
/// diagnostics only. Raisers fill it with EventOrigin::Here(), which records the source file and
/// line of the call; the function name is left empty.
///
/// Events are delivered synchronously on the publishing thread; records are copied on the way,
/// so a handler may keep what it receives.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "canvaro/shapes/ShapeInfo.h"
#include "kelbra/Core/EventHandlerList.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

/// Where a drawer event was raised (diagnostics only; no receiver decides anything on it).
struct DrawerEventOrigin {
  std::string sourceFile;
  std::string sourceFunction;  // left empty by the library's raisers
  std::int32_t sourceLine = -1;

  /// The file and line of the caller.
  static DrawerEventOrigin Here(const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    return DrawerEventOrigin{file, std::string(), line};
  }
};

class IDrawerEventHandler {
 public:
  /// Why the frame (or a shape) in force changed.
  enum class EventFrameReason : std::uint32_t {
    Undo = 1,    // a step was undone
    Redo = 2,    // a step was redone
    Change = 3,  // a step was added or the one in force replaced
  };

  /// Where an event was raised.
  using EventOrigin = DrawerEventOrigin;

  /// A step was added to, undone in or redone in the step list.
  struct DrawerEventUndo : EventOrigin {
    DrawerEventUndo() = default;
    explicit DrawerEventUndo(EventOrigin origin) : EventOrigin(std::move(origin)) {}
  };

  /// The frame in force changed.
  struct DrawerEventFrame : EventOrigin {
    DrawerEventFrame() = default;
    explicit DrawerEventFrame(EventFrameReason why, EventOrigin origin = {})
        : EventOrigin(std::move(origin)), reason(why) {}
    EventFrameReason reason = EventFrameReason::Change;
  };

  /// The host is to show a temporary picture; the library only passes it on.
  struct DrawerEventFrameTemporary : EventOrigin {
    DrawerEventFrameTemporary() = default;
    explicit DrawerEventFrameTemporary(Proc::IDataVideoPtr shown, EventOrigin origin = {})
        : EventOrigin(std::move(origin)), picture(std::move(shown)) {}
    Proc::IDataVideoPtr picture;
  };

  /// The host is to show a foreground picture; the library only passes it on.
  struct DrawerEventForeground : EventOrigin {
    DrawerEventForeground() = default;
    explicit DrawerEventForeground(Proc::IDataVideoPtr shown, EventOrigin origin = {})
        : EventOrigin(std::move(origin)), picture(std::move(shown)) {}
    Proc::IDataVideoPtr picture;
  };

  /// A shape is (again) in force after an edit, an undo or a redo.
  struct DrawerEventShapeItem : EventOrigin {
    DrawerEventShapeItem() = default;
    DrawerEventShapeItem(ShapeInfo current, EventFrameReason why, EventOrigin origin = {})
        : EventOrigin(std::move(origin)), shape(std::move(current)), reason(why) {}
    ShapeInfo shape;
    EventFrameReason reason = EventFrameReason::Change;
  };

  /// The current tool changed; toolId is an IToolsId::Value, kNoToolId for none.
  struct DrawerEventToolIdChange : EventOrigin {
    static constexpr std::uint32_t kNoToolId = 0xFFFFFFFFu;
    DrawerEventToolIdChange() = default;
    explicit DrawerEventToolIdChange(std::uint32_t tool, EventOrigin origin = {})
        : EventOrigin(std::move(origin)), toolId(tool) {}
    std::uint32_t toolId = kNoToolId;
  };

  /// The saved state of the document changed, or data was written away to disk.
  struct DrawerEventChangeToSave : EventOrigin {
    DrawerEventChangeToSave() = default;
    explicit DrawerEventChangeToSave(EventOrigin origin) : EventOrigin(std::move(origin)) {}
  };

  virtual ~IDrawerEventHandler() = default;

  virtual void HandleUndo(const DrawerEventUndo& event) = 0;
  virtual void HandleFrame(const DrawerEventFrame& event) = 0;
  virtual void HandleChangeToSave(const DrawerEventChangeToSave& event) = 0;
  virtual void HandleFrameTemporary(const DrawerEventFrameTemporary& event) = 0;
  virtual void HandleForeground(const DrawerEventForeground& event) = 0;
  virtual void HandleToolIdChange(const DrawerEventToolIdChange& event) = 0;
  virtual void HandleChangeShapeItem(const DrawerEventShapeItem& event) = 0;
};

/// The observer list of every publisher of drawer events.
using DrawerEventHandlerList = Core::EventHandlerList<IDrawerEventHandler, Core::SyncExecutePolicy>;

namespace Details {
// Which handler receives an event of each kind; the one place that pairs them.
using H = IDrawerEventHandler;
constexpr auto HandlerOf(const H::DrawerEventUndo&) { return &H::HandleUndo; }
constexpr auto HandlerOf(const H::DrawerEventFrame&) { return &H::HandleFrame; }
constexpr auto HandlerOf(const H::DrawerEventChangeToSave&) { return &H::HandleChangeToSave; }
constexpr auto HandlerOf(const H::DrawerEventFrameTemporary&) { return &H::HandleFrameTemporary; }
constexpr auto HandlerOf(const H::DrawerEventForeground&) { return &H::HandleForeground; }
constexpr auto HandlerOf(const H::DrawerEventToolIdChange&) { return &H::HandleToolIdChange; }
constexpr auto HandlerOf(const H::DrawerEventShapeItem&) { return &H::HandleChangeShapeItem; }
}  // namespace Details

/// Delivers a copy of `event` to every observer of `list` through the handler of its kind
/// (HandleFrame for a DrawerEventFrame, and so on). What an observer throws passes to the caller,
/// and the observers after it miss the event.
template <class Event>
void Publish(const DrawerEventHandlerList& list, const Event& event) {
  list.PerformForEachEventHandler(Core::EventPublisher(Details::HandlerOf(event), event));
}

}  // namespace Kelbra::Canvaro
