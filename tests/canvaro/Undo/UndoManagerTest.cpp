// The generic undo machinery: the history template each participant builds on, the forwarder
// that passes drawer events on, and the manager that joins participants' changes into steps.
#include "canvaro/Undo/UndoManager.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/Undo/DrawerEventForwarder.h"
#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/TUndoImpl.h"
#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Documents.h"
#include "support/Errors.h"
#include "support/Outcome.h"
#include "support/RecordingObserver.h"
#include "support/TempDir.h"
#include "support/TestShape.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::RecordingObserver;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Reason = IDrawerEventHandler::EventFrameReason;
using Handler = IDrawerEventHandler;

using History = TUndoImpl<SettingsCore, void*>;

std::string TextAt(const History& history, Index index) {
  return history.Get(index).GetInfo().GetEffectsSettings().GetPackage().GetName();
}

std::vector<std::string> Texts(const History& history) {
  std::vector<std::string> texts;
  for (Index i = 0; i < history.GetItemCount(); ++i) texts.push_back(TextAt(history, i));
  return texts;
}

TEST(TUndoImplTest, MaxIndexTreatsNoIndexAsNone) {
  EXPECT_EQ(MaxIndex(kNoIndex, kNoIndex), kNoIndex);
  EXPECT_EQ(MaxIndex(kNoIndex, 3), 3u);
  EXPECT_EQ(MaxIndex(5, kNoIndex), 5u);
  EXPECT_EQ(MaxIndex(5, 7), 7u);
  EXPECT_EQ(MaxIndex(0, kNoIndex), 0u);
}

TEST(TUndoImplTest, IncompleteOrBadSavesLeaveTheHistoryAlone) {
  History history(nullptr);
  history.Push(canvaro_test::Settings("a"));
  history.Push(canvaro_test::Settings("b"));
  const auto load = [&](std::string_view text) {
    const Core::Property tree = Core::PropertySerializer::FromString(text);
    history.Deserialize(Drevin::SerializerProperty::Create(tree));
  };

  // Without items, without an index or without a record at all: ignored.
  load(R"({"entries": [{"key": "Index", "int": 0}]})");
  load(R"({"entries": [{"key": "Items", "collection": [{"entries": []}]}]})");
  history.Deserialize(nullptr);
  EXPECT_THAT(Texts(history), ElementsAre("a", "b"));
  EXPECT_EQ(history.GetCurrentIndexImpl(), 1u);

  // An index past the items: refused.
  History other(nullptr);
  other.Push(canvaro_test::Settings("x"));
  Core::Property pastTheItems;
  other.Serialize(Drevin::SerializerProperty::Create(pastTheItems));
  pastTheItems.SetInt("Index", 1);
  EXPECT_THROW(history.Deserialize(Drevin::SerializerProperty::Create(std::as_const(pastTheItems))),
               CanvaroException);
  EXPECT_THAT(Texts(history), ElementsAre("a", "b"));

  load(R"({"entries": [{"key": "Index", "int": -1}, {"key": "Items", "collection": []}]})");
  EXPECT_EQ(history.GetItemCount(), 0u);
  EXPECT_EQ(history.GetCurrentIndexImpl(), kNoIndex);
}

TEST(DrawerEventForwarderTest, PassesEveryKindOfEventOnToItsObservers) {
  DrawerEventForwarder forwarder;
  RecordingObserver first, second;
  forwarder.RegisterEventHandler(&first);
  forwarder.RegisterEventHandler(&second);

  auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, Conf::FrameInfo{2, 2, 1, 1});
  ShapeInfo shape(*canvaro_test::TestShape::Create(IToolsId::TEXT));
  Handler& handler = forwarder;
  handler.HandleUndo(Handler::DrawerEventUndo(DrawerEventOrigin::Here()));
  handler.HandleFrame(Handler::DrawerEventFrame(Reason::Redo));
  handler.HandleChangeToSave(Handler::DrawerEventChangeToSave());
  handler.HandleFrameTemporary(Handler::DrawerEventFrameTemporary(picture));
  handler.HandleForeground(Handler::DrawerEventForeground(picture));
  handler.HandleToolIdChange(Handler::DrawerEventToolIdChange(IToolsId::SHAPE_LINE));
  handler.HandleChangeShapeItem(Handler::DrawerEventShapeItem(shape, Reason::Undo));

  for (const RecordingObserver* observer : {&first, &second}) {
    EXPECT_THAT(observer->log, ElementsAre("undo", "frame 2", "save", "temporary", "foreground",
                                           "tool 2", "shape 1"));
    EXPECT_EQ(observer->lastPicture, picture);
    ASSERT_EQ(observer->shapes.size(), 1u);
    EXPECT_EQ(observer->shapes[0].GetImpl(), shape.GetImpl());  // copied handle, shared record
  }
  EXPECT_THAT(first.lastUndo.sourceFile, EndsWith("UndoManagerTest.cpp"));
  EXPECT_GT(first.lastUndo.sourceLine, 0);
  EXPECT_EQ(first.lastUndo.sourceFunction, "");
}

// A participant: a small history on the template that publishes drawer events to its observers
// (the manager observes it; events handed to it are passed on) and writes what it is asked to do
// into a shared journal.
class Participant : public TUndoImplTop<SettingsCore, void*>, public DrawerEventForwarder {
 public:
  Participant(std::string name, std::vector<std::string>& journal, FrameStorage* storage = nullptr)
      : TUndoImpl<SettingsCore, void*>(storage),
        TUndoImplTop(storage),
        name_(std::move(name)),
        journal_(journal) {}

  // Pushes a state and reports the change as the document would.
  void Edit(const std::string& text, Index frame = kNoIndex) {
    Push(canvaro_test::Settings(text));
    Get(GetCurrentIndexImpl()).SetFrameIndex(frame);
  }

  void MultiUndo() override {
    journal_.push_back(name_ + " undo");
    if (onUndo) onUndo();
    UndoImpl();
    Raise(Reason::Undo);
  }
  void MultiRedo() override {
    journal_.push_back(name_ + " redo");
    RedoImpl();
    Raise(Reason::Redo);
  }
  void Truncate() override {
    ++truncations;
    TUndoImplTop::Truncate();
  }
  std::string GetMultiName() const override { return name_; }

  std::string Text() const { return TextAt(*this, GetCurrentIndexImpl()); }

  // What to publish on undo and redo: a shape-item event, a frame event and a tool change, in
  // an order the manager has to rearrange.
  bool raises = false;
  std::function<void()> onUndo;
  int truncations = 0;

 private:
  void Raise(Reason reason) {
    if (!raises) return;
    HandleChangeShapeItem(Handler::DrawerEventShapeItem(ShapeInfo(), reason));
    HandleFrame(Handler::DrawerEventFrame(reason));
    HandleToolIdChange(Handler::DrawerEventToolIdChange(IToolsId::SHAPE_ARROW));
  }

  std::string name_;
  std::vector<std::string>& journal_;
};

TEST(TUndoImplTest, LastActiveFrameLooksUpToTheCursorOnly) {
  std::vector<std::string> journal;
  Participant history("P", journal);
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), kNoIndex);
  history.Edit("a");
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), kNoIndex);
  history.Get(0).SetFrameIndex(4);
  history.Edit("b");  // no frame of its own
  history.Edit("c", 2);
  history.Edit("d", 9);
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), 9u);
  history.UndoImpl();
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), 4u);
  history.UndoImpl();
  history.UndoImpl();
  history.Get(0).SetFrameIndex(kNoIndex);
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), kNoIndex);
}

class UndoManagerTest : public ::testing::Test {
 protected:
  UndoManagerTest()
      : storage_(dir_.path(), [n = 0]() mutable { return "frame" + std::to_string(n++); }),
        manager_(UndoManager::Create(storage_)) {
    manager_->GetTransactionManager().RegisterHandler(&observer_);
    for (Participant* p : {&a_, &b_, &c_}) {
      p->RegisterEventHandler(manager_.get());
      p->Edit(p->GetMultiName() + "0");  // every participant has a base state
    }
    Change(a_, "A1");  // and A a first step, whose delivery no case looks at
    observer_.log.clear();
  }

  // A change of `p`: a new state, then the step.
  void Change(Participant& p, const std::string& text, Index frame = kNoIndex) {
    p.Edit(text, frame);
    manager_->Add(&p);
  }

  canvaro_test::TempDir dir_;
  FrameStorage storage_;
  IUndoManagerPtr manager_;
  RecordingObserver observer_;
  std::vector<std::string> journal_;
  Participant a_{"A", journal_, &storage_};
  Participant b_{"B", journal_, &storage_};
  Participant c_{"C", journal_, &storage_};
};

TEST_F(UndoManagerTest, TransactionsMakeOneStepAndUndoItBackwards) {
  {
    RAII::UndoTransactionGuard transaction(manager_->GetTransactionManager());
    Change(a_, "A2");
    Change(b_, "B1");
    Change(a_, "A3");  // twice in one step: undone twice
    EXPECT_EQ(manager_->GetStepCount(), 1u);
    EXPECT_THAT(observer_.log, IsEmpty());  // gathered, not delivered
  }
  EXPECT_EQ(manager_->GetStepCount(), 2u);
  EXPECT_THAT(observer_.log, ElementsAre("undo"));

  manager_->Undo();
  EXPECT_THAT(journal_, ElementsAre("A undo", "B undo", "A undo"));
  EXPECT_EQ(a_.Text(), "A1");
  EXPECT_EQ(b_.Text(), "B0");
  manager_->Redo();
  EXPECT_THAT(journal_, ElementsAre("A undo", "B undo", "A undo", "A redo", "B redo", "A redo"));
  EXPECT_EQ(a_.Text(), "A3");

  // A transaction committed after two undos drops both redo steps.
  Change(b_, "B2");
  Change(c_, "C1");
  manager_->Undo();
  manager_->Undo();
  {
    RAII::UndoTransactionGuard transaction(manager_->GetTransactionManager());
    Change(a_, "A4");
  }
  EXPECT_EQ(manager_->GetStepCount(), 3u);
  EXPECT_FALSE(manager_->IsRedoEnabled());
}

TEST_F(UndoManagerTest, EmptyCommitMakesNoStepAndDeliversNothing) {
  const auto commitOnlyAnEvent = [&] {
    manager_->GetTransactionManager().TransactionStart();
    a_.HandleFrame(Handler::DrawerEventFrame(Reason::Change));
    manager_->GetTransactionManager().TransactionCommit();
  };
  commitOnlyAnEvent();
  EXPECT_EQ(manager_->GetStepCount(), 1u);
  EXPECT_TRUE(observer_.log.empty());

  // The gathered event waits for the next delivery ...
  Change(b_, "B1");
  EXPECT_THAT(observer_.log, ElementsAre("undo", "frame 3"));

  // ... unless a transaction starts first: that drops it.
  observer_.log.clear();
  commitOnlyAnEvent();
  {
    RAII::UndoTransactionGuard transaction(manager_->GetTransactionManager());
    Change(c_, "C1");
  }
  EXPECT_THAT(observer_.log, ElementsAre("undo"));
}

TEST_F(UndoManagerTest, RollbackUndoesInReverseOrderAndMakesNoStep) {
  {
    RAII::UndoTransactionGuard transaction(manager_->GetTransactionManager(), false);
    Change(a_, "A2");
    Change(b_, "B1");
    Change(c_, "C1");
  }
  EXPECT_THAT(journal_, ElementsAre("C undo", "B undo", "A undo"));
  EXPECT_EQ(manager_->GetStepCount(), 1u);
  EXPECT_EQ(a_.Text(), "A1");
  EXPECT_EQ(c_.Text(), "C0");
  EXPECT_TRUE(observer_.log.empty());

  // Not gathering any more: the next change is delivered at once.
  Change(b_, "B2");
  EXPECT_THAT(observer_.log, ElementsAre("undo"));
}

TEST_F(UndoManagerTest, GatheredEventsAreCoalescedAndDeliveredInAFixedOrder) {
  auto& transaction = manager_->GetTransactionManager();
  transaction.TransactionStart();
  a_.HandleChangeShapeItem(Handler::DrawerEventShapeItem(ShapeInfo(), Reason::Change));
  a_.HandleFrame(Handler::DrawerEventFrame(Reason::Change));
  a_.HandleToolIdChange(
      Handler::DrawerEventToolIdChange(Handler::DrawerEventToolIdChange::kNoToolId));
  a_.HandleFrame(Handler::DrawerEventFrame(Reason::Undo));
  a_.HandleToolIdChange(
      Handler::DrawerEventToolIdChange(IToolsId::SHAPE_LINE));  // replaces the "none"
  a_.HandleFrame(Handler::DrawerEventFrame(Reason::Change));    // same reason: dropped
  a_.HandleToolIdChange(
      Handler::DrawerEventToolIdChange(IToolsId::TEXT));  // a tool is set: ignored
  a_.HandleChangeToSave(Handler::DrawerEventChangeToSave());
  a_.HandleChangeShapeItem(Handler::DrawerEventShapeItem(ShapeInfo(), Reason::Redo));
  b_.HandleFrameTemporary(Handler::DrawerEventFrameTemporary());  // never held
  manager_->Add(&b_);
  EXPECT_THAT(observer_.log, ElementsAre("temporary"));
  transaction.TransactionCommit();
  EXPECT_THAT(observer_.log, ElementsAre("temporary", "undo", "save", "tool 2", "frame 3",
                                         "frame 1", "shape 3", "shape 2"));
}

// A participant failing halfway through an undo still gets the events of those undone before
// it delivered, and leaves the manager neither moved nor gathering.
TEST_F(UndoManagerTest, EventsRaisedDuringUndoArriveOnceAtTheEndEvenIfAParticipantFails) {
  {
    RAII::UndoTransactionGuard transaction(manager_->GetTransactionManager());
    Change(a_, "A2");
    Change(b_, "B1");
  }
  a_.raises = b_.raises = true;
  observer_.log.clear();

  // One delivery once both are undone (B first): a single frame event for the two.
  a_.onUndo = [&] { EXPECT_THAT(observer_.log, IsEmpty()); };
  manager_->Undo();
  EXPECT_THAT(observer_.log, ElementsAre("undo", "tool 1", "frame 1", "shape 1", "shape 1"));

  observer_.log.clear();
  manager_->Redo();
  EXPECT_THAT(observer_.log, ElementsAre("undo", "tool 1", "frame 2", "shape 2", "shape 2"));

  a_.onUndo = [] { throw std::runtime_error("cannot load the frame"); };
  observer_.log.clear();
  EXPECT_THROW(manager_->Undo(), std::runtime_error);
  // B was undone first and reported; A failed before it changed anything.
  EXPECT_THAT(observer_.log, ElementsAre("tool 1", "frame 1", "shape 1"));
  EXPECT_EQ(manager_->GetCurrentStep(), 1);

  // The manager is not left gathering.
  observer_.log.clear();
  a_.HandleChangeToSave(Handler::DrawerEventChangeToSave());
  EXPECT_THAT(observer_.log, ElementsAre("save"));
}

TEST_F(UndoManagerTest, TruncateReleasesFramesNoRemainingStepUses) {
  auto frame = [&] {
    return storage_.AddFrame(
        Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, Conf::FrameInfo{4, 4, 1, 1}));
  };
  a_.Get(1).SetFrameIndex(frame());  // 0
  b_.Get(0).SetFrameIndex(frame());  // 1
  Change(b_, "B1", frame());         // 2
  Change(a_, "A2", frame());         // 3
  Change(b_, "B2", frame());         // 4
  Change(a_, "A3", frame());         // 5

  manager_->Undo();
  manager_->Undo();  // cursor on step 2: A at A2 (frame 3), B at B1 (frame 2)
  manager_->Truncate();

  EXPECT_EQ(manager_->GetStepCount(), 3u);
  EXPECT_FALSE(manager_->IsRedoEnabled());
  EXPECT_EQ(a_.truncations, 1);  // once, though A stands in three steps
  EXPECT_EQ(b_.truncations, 1);
  EXPECT_EQ(c_.truncations, 0);  // in no step
  EXPECT_EQ(a_.GetItemCount(), 3u);
  EXPECT_EQ(b_.GetItemCount(), 2u);
  EXPECT_EQ(storage_.GetCount(), 4u);  // frames 4 and 5 are gone
  EXPECT_NE(storage_.GetFrame(3), nullptr);

  // Steps without frames release none.
  for (Participant* p : {&a_, &b_}) {
    for (Index i = 0; i < p->GetItemCount(); ++i) p->Get(i).SetFrameIndex(kNoIndex);
  }
  Change(c_, "C1");
  Change(c_, "C2");
  manager_->Undo();
  manager_->Truncate();
  EXPECT_EQ(storage_.GetCount(), 4u);
}

TEST_F(UndoManagerTest, LoadingANameNeverMadeAvailableThrowsNamingIt) {
  Change(b_, "B1");
  Core::Property tree;
  manager_->Serialize(Drevin::SerializerProperty::Create(tree));

  IUndoManagerPtr loaded = UndoManager::Create(storage_);
  loaded->SetAvailableItem(&a_);
  const auto load = [&] {
    loaded->Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  };
  EXPECT_THAT(canvaro_test::ErrorText<CanvaroException>(load), HasSubstr("'B'"));
  EXPECT_EQ(canvaro_test::OutcomeOf(load), canvaro_test::Outcome::InvalidDocument);
  EXPECT_EQ(loaded->GetStepCount(), 0u);
  EXPECT_EQ(loaded->GetCurrentStep(), -1);
}

}  // namespace
