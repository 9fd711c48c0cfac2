/// \file
/// Observer lists: a publisher keeps its observers in an EventHandlerList and delivers each event
/// to all of them, in registration order.
///
///   class Document : public Core::EventHandlerList<IDocumentObserver> {
///     void Changed() {
///       PerformForEachEventHandler(Core::EventPublisher(&IDocumentObserver::OnChange, event));
///     }
///   };
///   document.RegisterEventHandler(&observer);   // not owned: unregister before it dies
///
/// Handler is the observer interface; the list holds raw, non-owning pointers to it.
/// Policy decides how one call reaches one observer; SyncExecutePolicy (the only one) calls it at
/// once on the publishing thread.
///
/// Delivery works on a snapshot of the list taken when the publication starts, so an observer may
/// register or unregister observers (itself included) from inside its handler: the change takes
/// effect from the next publication. Both locks are recursive, so a handler may publish again on
/// the same list.
///
/// Threads: any thread may register, unregister and publish. Publications on one list are
/// serialised by its execution lock: a publication started on another thread waits until the one
/// under way has reached every observer. An exception thrown by an observer stops that
/// publication (later observers miss the event), releases the locks and reaches the publisher.
#pragma once

#include <algorithm>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace Kelbra::Core {

/// Runs each delivery at once, on the calling thread.
struct SyncExecutePolicy {
  template <class Call, class Handler>
  static void Execute(Call& call, Handler& handler) {
    std::invoke(call, handler);
  }
};

/// One publication: a member operation of Handler bound to its own copy of the event, callable
/// with a Handler&. The copy keeps the event alive and unchanged for every observer, whatever the
/// publisher does with its own record meanwhile.
///
///   list.PerformForEachEventHandler(EventPublisher(&IDrawerEventHandler::HandleFrame, event));
template <class Handler, class Event>
class EventPublisher {
 public:
  using Method = void (Handler::*)(const Event&);

  EventPublisher(Method method, Event event) : method_(method), event_(std::move(event)) {}

  void operator()(Handler& handler) const { (handler.*method_)(event_); }

  const Event& GetEvent() const { return event_; }

 private:
  Method method_;
  Event event_;
};

template <class Handler, class Event>
EventPublisher(void (Handler::*)(const Event&), Event) -> EventPublisher<Handler, Event>;

template <class Handler, class Policy = SyncExecutePolicy>
class EventHandlerList {
 public:
  EventHandlerList() = default;
  /// Observers belong to one publisher: a copy of a publisher would not be what they registered
  /// with.
  EventHandlerList(const EventHandlerList&) = delete;
  EventHandlerList& operator=(const EventHandlerList&) = delete;
  virtual ~EventHandlerList() = default;

  /// Appends `handler` unless it is null or already registered.
  void RegisterEventHandler(Handler* handler) {
    if (handler == nullptr) return;
    std::lock_guard lock(listMutex_);
    if (std::find(handlers_.begin(), handlers_.end(), handler) == handlers_.end()) {
      handlers_.push_back(handler);
    }
  }

  /// Removes `handler`, keeping the order of the others; null and unknown handlers are ignored.
  void UnregisterEventHandler(Handler* handler) {
    if (handler == nullptr) return;
    std::lock_guard lock(listMutex_);
    handlers_.erase(std::remove(handlers_.begin(), handlers_.end(), handler), handlers_.end());
  }

  /// Delivers one event: `call(Handler&)` for every observer registered when it starts, in
  /// registration order, through the policy. Waits for a publication under way on another
  /// thread. Exceptions from an observer pass through (see the header comment).
  template <class Call>
  void PerformForEachEventHandler(Call call) const {
    std::vector<Handler*> snapshot;
    {
      std::lock_guard lock(listMutex_);
      snapshot = handlers_;
    }
    std::lock_guard execution(executeMutex_);
    for (Handler* handler : snapshot) Policy::Execute(call, *handler);
  }

  /// The observers registered right now, in order (a copy).
  std::vector<Handler*> GetEventHandlers() const {
    std::lock_guard lock(listMutex_);
    return handlers_;
  }

 private:
  std::vector<Handler*> handlers_;
  mutable std::recursive_mutex listMutex_;
  mutable std::recursive_mutex executeMutex_;
};

}  // namespace Kelbra::Core
