#include "kelbra/Core/EventHandlerList.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Kelbra::Core::EventHandlerList;
using Kelbra::Core::EventPublisher;
using ::testing::ElementsAre;

struct Event {
  int value = 0;
};

class IObserver {
 public:
  virtual ~IObserver() = default;
  virtual void OnEvent(const Event& event) = 0;
};

using List = EventHandlerList<IObserver>;

// Records the events it sees into a shared journal, and runs an optional action on each.
class Observer : public IObserver {
 public:
  Observer(std::string name, std::vector<std::string>& journal)
      : name_(std::move(name)), journal_(journal) {}
  void OnEvent(const Event& event) override {
    journal_.push_back(name_ + ":" + std::to_string(event.value));
    if (action) action(event);
  }
  std::function<void(const Event&)> action;

 private:
  std::string name_;
  std::vector<std::string>& journal_;
};

void Publish(const List& list, int value) {
  list.PerformForEachEventHandler(EventPublisher(&IObserver::OnEvent, Event{value}));
}

// Observers a and b, registered in that order, and a third one that is not registered yet.
class EventHandlerListTest : public testing::Test {
 protected:
  void SetUp() override {
    list.RegisterEventHandler(&a);
    list.RegisterEventHandler(&b);
  }
  std::vector<std::string> journal;
  Observer a{"a", journal}, b{"b", journal}, c{"c", journal};
  List list;
};

TEST_F(EventHandlerListTest, RegistrationKeepsOrderAndIgnoresNullAndDuplicates) {
  list.RegisterEventHandler(&a);
  list.RegisterEventHandler(nullptr);
  list.RegisterEventHandler(&c);
  Publish(list, 1);
  EXPECT_THAT(journal, ElementsAre("a:1", "b:1", "c:1"));

  journal.clear();
  list.UnregisterEventHandler(&b);
  list.UnregisterEventHandler(&b);
  list.UnregisterEventHandler(nullptr);
  Publish(list, 2);
  EXPECT_THAT(journal, ElementsAre("a:2", "c:2"));
  EXPECT_EQ(list.GetEventHandlers().size(), 2u);
}

TEST_F(EventHandlerListTest, ChangesFromInsideAHandlerTakeEffectFromTheNextEvent) {
  a.action = [&](const Event&) {
    list.UnregisterEventHandler(&a);
    list.RegisterEventHandler(&c);
  };
  Publish(list, 1);
  EXPECT_THAT(journal, ElementsAre("a:1", "b:1"));

  journal.clear();
  b.action = [&](const Event&) { list.UnregisterEventHandler(&b); };
  Publish(list, 2);  // b leaves during its own handler; c, after it, still hears the event
  EXPECT_THAT(journal, ElementsAre("b:2", "c:2"));

  // A handler may publish again on the same list: the inner event reaches everyone first.
  journal.clear();
  list.RegisterEventHandler(&a);
  list.RegisterEventHandler(&b);
  b.action = nullptr;
  a.action = [&](const Event& event) {
    if (event.value == 3) Publish(list, 4);
  };
  Publish(list, 3);
  EXPECT_THAT(journal, ElementsAre("c:3", "a:3", "c:4", "a:4", "b:4", "b:3"));
}

TEST_F(EventHandlerListTest, AThrowingObserverStopsTheEventAndReleasesTheLocks) {
  a.action = [](const Event& event) {
    if (event.value == 1) throw std::runtime_error("observer failed");
  };
  EXPECT_THROW(Publish(list, 1), std::runtime_error);
  EXPECT_THAT(journal, ElementsAre("a:1"));

  // Another thread can still register and publish: nothing stayed locked.
  std::thread other([&] {
    list.UnregisterEventHandler(&a);
    Publish(list, 2);
  });
  other.join();
  EXPECT_THAT(journal, ElementsAre("a:1", "b:2"));
}

// A publication from another thread waits for the one under way, even when it finds no
// observers; registration from another thread does not. The journal is guarded by the list's
// execution lock alone.
TEST_F(EventHandlerListTest, PublicationsFromTwoThreadsAreSerialised) {
  std::promise<void> started;
  std::promise<void> otherRegistered;
  std::atomic<bool> otherPublishing{false};
  std::atomic<bool> firstFinished{false};
  a.action = [&](const Event& event) {
    if (event.value != 1) return;
    started.set_value();
    otherRegistered.get_future().wait();
    while (!otherPublishing.load()) std::this_thread::yield();
    // Give the other thread time to get as far as it can.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    journal.push_back("a:end");
    firstFinished = true;
  };

  std::thread publisher([&] { Publish(list, 1); });
  started.get_future().wait();

  // The list lock is free during a delivery: registering here does not block.
  list.RegisterEventHandler(&c);
  list.UnregisterEventHandler(&c);
  list.UnregisterEventHandler(&a);
  list.UnregisterEventHandler(&b);
  otherRegistered.set_value();

  bool finishedBeforeReturn = false;
  std::thread latePublisher([&] {
    otherPublishing = true;
    Publish(list, 2);  // no observers left, but it still waits for the delivery under way
    finishedBeforeReturn = firstFinished.load();
  });
  latePublisher.join();
  publisher.join();

  EXPECT_TRUE(finishedBeforeReturn);
  EXPECT_THAT(journal, ElementsAre("a:1", "a:end", "b:1"));
}

}  // namespace
