#include "canvaro/Undo/UndoManager.h"

#include <algorithm>
#include <set>
#include <utility>

#include "canvaro/foundation/Log.h"

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/TUndoImpl.h"
#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/Throw.h"

namespace Kelbra::Canvaro {

namespace {

const std::string kIndexKey = "Index";
const std::string kStorageKey = "Storage";
const std::string kItemListKey = "ItemList";
const std::string kItemKey = "Item";

[[noreturn]] void ThrowBadStepList(const std::string& description) {
  ThrowCoded(CanvaroError::InvalidDocument, description, BOOST_CURRENT_LOCATION);
}

}  // namespace

IUndoManagerPtr UndoManager::Create(FrameStorage& storage) {
  return IUndoManagerPtr(new UndoManager(storage));
}

UndoManager::UndoManager(FrameStorage& storage) : ToolsId(IToolsId::NONE), storage_(storage) {}

UndoManager::~UndoManager() = default;

void UndoManager::Release() const {
  if (refCount_.Release() == 0) delete this;
}

bool UndoManager::IsRedoEnabled() const {
  return !steps_.empty() && static_cast<std::int64_t>(steps_.size()) - 1 > current_;
}

void UndoManager::Add(IMultiUndoItem* item) {
  if (inTransaction_) {
    transactionItems_.push_back(item);
  } else {
    steps_.resize(static_cast<std::size_t>(current_ + 1));
    steps_.push_back(Step{item});
    ++current_;
  }
  HandleUndo(DrawerEventUndo(EventOrigin::Here()));
}

void UndoManager::Undo() {
  // Nothing to undo is a caller's slip that must not take the host down, in any build.
  if (current_ <= 0 || current_ >= static_cast<std::int64_t>(steps_.size())) return;
  inTransaction_ = true;
  try {
    // A copy: the participants may report back to this manager while they step.
    const Step step = steps_[static_cast<std::size_t>(current_)];
    for (auto it = step.rbegin(); it != step.rend(); ++it) (*it)->MultiUndo();
    --current_;
    HandleUndo(DrawerEventUndo(EventOrigin::Here()));
  } catch (...) {
    // What the participants reported before the failure still reaches the observers.
    EndReplay();
    throw;
  }
  EndReplay();
}

void UndoManager::Redo() {
  if (current_ + 1 >= static_cast<std::int64_t>(steps_.size())) return;
  inTransaction_ = true;
  try {
    ++current_;
    const Step step = steps_[static_cast<std::size_t>(current_)];
    for (IMultiUndoItem* item : step) item->MultiRedo();
    HandleUndo(DrawerEventUndo(EventOrigin::Here()));
  } catch (...) {
    EndReplay();
    throw;
  }
  EndReplay();
}

void UndoManager::EndReplay() {
  inTransaction_ = false;
  Notify();
}

void UndoManager::SetAvailableItem(IMultiUndoItem* item) {
  if (item == nullptr) return;
  availableItems_.emplace(item->GetMultiName(), item);
}

void UndoManager::Truncate() {
  std::set<IMultiUndoItem*> all;
  std::set<IMultiUndoItem*> active;
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    for (IMultiUndoItem* item : steps_[i]) {
      all.insert(item);
      if (static_cast<std::int64_t>(i) <= current_) active.insert(item);
    }
  }
  // Participants of an open transaction belong to the step being built: their frames stay.
  for (IMultiUndoItem* item : transactionItems_) {
    all.insert(item);
    active.insert(item);
  }
  for (IMultiUndoItem* item : all) item->Truncate();
  Index last = kNoIndex;
  for (IMultiUndoItem* item : active) last = MaxIndex(last, item->GetLastActiveFrameIndex());
  if (last != kNoIndex) storage_.Truncate(last + 1);
  steps_.resize(static_cast<std::size_t>(current_ + 1));
}

void UndoManager::TransactionStart() {
  inTransaction_ = true;
  transactionItems_.clear();
  ResetTransactionInfo();
}

void UndoManager::TransactionCommit() {
  inTransaction_ = false;
  if (transactionItems_.empty()) return;
  steps_.resize(static_cast<std::size_t>(current_ + 1));
  steps_.push_back(transactionItems_);
  ++current_;
  Notify();
  transactionItems_.clear();
}

void UndoManager::TransactionRollback() {
  // Taken out first: the participants may report back while they step. What they report stays
  // gathered (inTransaction_ is still set), so a rolled-back transaction delivers nothing.
  const Step added = std::exchange(transactionItems_, Step());
  for (auto it = added.rbegin(); it != added.rend(); ++it) {
    // One participant that cannot step back (its picture is lost with a failed storage) must
    // not keep the others from stepping back, nor escape from a guard's destructor.
    try {
      (*it)->MultiUndo();
    } catch (const std::exception& e) {
      CANVARO_LOG(ERROR) << "Rolling back '" << (*it)->GetMultiName() << "' failed: " << e.what();
    } catch (...) {
      CANVARO_LOG(ERROR) << "Rolling back '" << (*it)->GetMultiName() << "' failed: Unknown error";
    }
  }
  inTransaction_ = false;
}

RAII::UndoTransactionGuard::~UndoTransactionGuard() noexcept {
  try {
    if (commit_) {
      manager_.TransactionCommit();
    } else {
      manager_.TransactionRollback();
    }
  } catch (const std::exception& e) {
    CANVARO_LOG(ERROR) << "Ending an undo transaction failed: " << e.what();
  } catch (...) {
    CANVARO_LOG(ERROR) << "Ending an undo transaction failed: Unknown error";
  }
}

void UndoManager::ResetTransactionInfo() {
  undoPending_ = false;
  framePending_ = false;
  changeToSavePending_ = false;
  toolIdChangePending_ = false;
  shapeItemPending_ = false;
  pendingFrames_.clear();
  pendingShapeItems_.clear();
}

void UndoManager::HandleUndo(const DrawerEventUndo& event) {
  undoPending_ = true;
  pendingUndo_ = event;
  if (!inTransaction_) Notify();
}

void UndoManager::HandleFrame(const DrawerEventFrame& event) {
  framePending_ = true;
  const bool known =
      std::any_of(pendingFrames_.begin(), pendingFrames_.end(),
                  [&](const auto& pending) { return pending.reason == event.reason; });
  if (!known) pendingFrames_.push_back(event);
  if (!inTransaction_) Notify();
}

void UndoManager::HandleChangeToSave(const DrawerEventChangeToSave& event) {
  pendingChangeToSave_ = event;
  changeToSavePending_ = true;
  if (!inTransaction_) Notify();
}

void UndoManager::HandleFrameTemporary(const DrawerEventFrameTemporary& event) {
  Publish(*this, event);
}

void UndoManager::HandleForeground(const DrawerEventForeground& event) { Publish(*this, event); }

void UndoManager::HandleToolIdChange(const DrawerEventToolIdChange& event) {
  if (toolIdChangePending_ && pendingToolIdChange_.toolId != DrawerEventToolIdChange::kNoToolId) {
    return;
  }
  pendingToolIdChange_ = event;
  toolIdChangePending_ = true;
  if (!inTransaction_) Notify();
}

void UndoManager::HandleChangeShapeItem(const DrawerEventShapeItem& event) {
  shapeItemPending_ = true;
  pendingShapeItems_.push_back(event);
  if (!inTransaction_) Notify();
}

void UndoManager::Notify() {
  // Everything is taken out before the first delivery, so that an observer that makes the
  // manager raise or deliver again neither sees these events twice nor loses its own.
  const bool undo = std::exchange(undoPending_, false);
  const bool changeToSave = std::exchange(changeToSavePending_, false);
  const bool toolIdChange = std::exchange(toolIdChangePending_, false);
  const bool frame = std::exchange(framePending_, false);
  const bool shapeItem = std::exchange(shapeItemPending_, false);
  const std::vector<DrawerEventFrame> frames = std::exchange(pendingFrames_, {});
  const std::vector<DrawerEventShapeItem> shapeItems = std::exchange(pendingShapeItems_, {});

  if (undo) Publish(*this, pendingUndo_);
  if (changeToSave) Publish(*this, pendingChangeToSave_);
  if (toolIdChange) Publish(*this, pendingToolIdChange_);
  if (frame) {
    for (const DrawerEventFrame& event : frames) Publish(*this, event);
  }
  if (shapeItem) {
    for (const DrawerEventShapeItem& event : shapeItems) Publish(*this, event);
  }
}

void UndoManager::Serialize(const Drevin::ISerializerPtr& serializer) const {
  ToolsId::Serialize(serializer);
  serializer->WriteInt(kIndexKey, current_);
  auto stepList = serializer->CreateCollection(kStorageKey);
  for (const Step& step : steps_) {
    auto itemList = stepList->AddItem()->CreateCollection(kItemListKey);
    for (const IMultiUndoItem* item : step)
      itemList->AddItem()->WriteString(kItemKey, item->GetMultiName());
  }
}

void UndoManager::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  if (serializer == nullptr) return;

  // Everything is read and checked before anything changes, so a bad step list leaves the
  // manager as it was.
  ToolsId tool(IToolsId::NONE);
  tool.Deserialize(serializer);
  std::vector<Step> loaded;
  std::size_t nonEmpty = 0;
  if (auto stepList = serializer->GetCollection(kStorageKey)) {
    for (std::size_t i = 0; i < stepList->GetCount(); ++i) {
      Step& step = loaded.emplace_back();
      auto itemList = stepList->GetItem(i)->GetCollection(kItemListKey);
      const std::size_t count = itemList != nullptr ? itemList->GetCount() : 0;
      for (std::size_t j = 0; j < count; ++j) {
        const std::string name = itemList->GetItem(j)->ReadString(kItemKey, std::string());
        const auto found = availableItems_.find(name);
        if (found == availableItems_.end()) {
          ThrowBadStepList("Saved undo step " + std::to_string(i) + " names the participant '" +
                           name + "', which was never made available to the undo manager");
        }
        step.push_back(found->second);
      }
      if (!step.empty()) ++nonEmpty;
    }
  }
  const std::int64_t stepCount = nonEmpty > 0 ? current_ + 1 + static_cast<std::int64_t>(nonEmpty)
                                              : static_cast<std::int64_t>(steps_.size());
  const std::int32_t loadedCurrent =
      nonEmpty > 0 ? current_ + static_cast<std::int32_t>(nonEmpty) : current_;
  const std::int32_t index = serializer->ReadInt(kIndexKey, loadedCurrent);
  if (index < -1 || index >= stepCount) {
    ThrowBadStepList("Saved undo step index " + std::to_string(index) + " is outside the " +
                     std::to_string(stepCount) + " steps");
  }

  SetCurrentTool(tool);
  for (const Step& step : loaded) {
    RAII::UndoTransactionGuard transaction(*this);
    for (IMultiUndoItem* item : step) Add(item);
  }
  current_ = index;
}

}  // namespace Kelbra::Canvaro
