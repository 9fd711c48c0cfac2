// The document: construction and teardown, edits, and the participant operations that the undo
// manager drives. Queries and shape forwarding are in CanvaroUndoQueries.cpp, saving in
// CanvaroUndoSerialize.cpp.
#include "canvaro/Undo/CanvaroUndo.h"

#include <utility>

#include <boost/assert/source_location.hpp>
#include <boost/throw_exception.hpp>
#include "canvaro/foundation/Log.h"

#include "canvaro/Undo/ShapeUndo.h"
#include "canvaro/Undo/UndoManager.h"
#include "canvaro/foundation/Throw.h"
#include "canvaro/foundation/ToolsId.h"

namespace Kelbra::Canvaro {

namespace {

using Events = IDrawerEventHandler;

// The tool recorded with a mask step: the host's painter says which tool painted the stroke
// when it carries one; NONE otherwise.
IToolsId::Value ToolOf(const MaskInfo& info) {
  const auto* tool = dynamic_cast<const IToolsId*>(info.GetInfoEx().GetPainter().get());
  return tool != nullptr ? tool->GetCurrentToolID() : IToolsId::NONE;
}

// Whether a mask history has a stroke to undo. An empty history (never the case for a step made
// by the document) has none, although the template's test answers true for it.
bool CanUndoStroke(const MaskUndo* mask) {
  return mask != nullptr && mask->GetItemCount() > 1 && mask->IsUndoEnabledImpl();
}

bool CanRedoStroke(const MaskUndo* mask) {
  return mask != nullptr && mask->GetItemCount() > 0 && mask->IsRedoEnabledImpl();
}

[[noreturn]] void ThrowUnusable(const std::string& what) {
  ThrowCoded(CanvaroError::InvalidState, what, BOOST_CURRENT_LOCATION);
}

// Refuses a step's first mask picture that its mask history could not take, before anything
// changes: one byte per pixel, and the size of the step's picture when there is one.
void CheckStepMask(const Proc::IDataVideoPtr& frame, const Proc::IDataVideoPtr& mask,
                   const char* operation) {
  if (!mask) return;
  if (mask->GetPixFmt() != Proc::PixFmt::Gray8) {
    ThrowCoded(CanvaroError::InvalidArgument,
               std::string(operation) + ": a mask picture must have one byte per pixel (Gray8)",
               BOOST_CURRENT_LOCATION);
  }
  if (!frame) return;
  const Conf::FrameInfo& picture = frame->GetFrameInfo();
  const Conf::FrameInfo& given = mask->GetFrameInfo();
  if (picture.width != given.width || picture.height != given.height) {
    ThrowCoded(CanvaroError::InvalidArgument,
               std::string(operation) + ": a mask of " + std::to_string(given.width) + "x" +
                   std::to_string(given.height) + " does not fit a picture of " +
                   std::to_string(picture.width) + "x" + std::to_string(picture.height),
               BOOST_CURRENT_LOCATION);
  }
}

// Refuses settings that could not be saved: a tool outside the tool table.
void CheckSettings(const SettingsCore& settings, const char* operation) {
  const IToolsId::Value tool = settings.GetEffectsSettings().GetPackage().GetCurrentToolID();
  try {
    IToolsId::GetToolName(tool);
  } catch (const CanvaroException&) {
    ThrowCoded(CanvaroError::InvalidArgument,
               std::string(operation) + ": the settings' tool value " +
                   std::to_string(static_cast<int>(tool)) + " is not a known tool",
               BOOST_CURRENT_LOCATION);
  }
}

}  // namespace

const std::string CanvaroUndo::kMultiName = "CanvaroUndo";

ICanvaroUndoPtr ICanvaroUndo::Create(const ioPath& swapDirectory,
                                     std::function<std::string()> nameGenerator) {
  return ICanvaroUndoPtr(new CanvaroUndo(swapDirectory, std::move(nameGenerator)));
}

CanvaroUndo::CanvaroUndo(const ioPath& swapDirectory, std::function<std::string()> nameGenerator)
    : History(&storage_),
      TUndoImplTop(&storage_),
      swapDirectory_(swapDirectory),
      storage_(swapDirectory, std::move(nameGenerator)),
      manager_(UndoManager::Create(storage_)),
      shapes_(std::make_unique<ShapeUndo>(&storage_, manager_)) {
  events_.RegisterEventHandler(manager_.get());
  shapes_->RegisterEventHandler(&events_);
  manager_->SetAvailableItem(this);
  // Reading pictures back (undo, redo, queries) keeps within the budget too, by letting go of
  // pictures that are already on disk: stepping through the history never writes.
  storage_.SetLoadBudget(kMemoryThreshold, [this](Index frame) { return IsFrameInForce(frame); });
  // Edits never wait for the disk while it keeps up; when it does not, an edit waits until no
  // more than a budget's worth of pictures is waiting to be written.
  storage_.SetWriteBacklog(kMemoryThreshold);
}

bool CanvaroUndo::IsFrameInForce(Index frame) const {
  if (GetItemCount() == 0 || GetCurrentIndexImpl() == kNoIndex) return false;
  const Item& item = Get(GetCurrentIndexImpl());
  if (item.GetFrameIndex() == frame) return true;
  const MaskUndo* mask = item.GetMask().get();
  return mask != nullptr && mask->GetItemCount() != 0 && mask->GetWorkingIndex() == frame;
}

CanvaroUndo::~CanvaroUndo() {
  CANVARO_LOG(INFO) << "Data size: " << GetCoreSize();
  shapes_->UnregisterEventHandler(&events_);
  events_.UnregisterEventHandler(manager_.get());
}

void CanvaroUndo::Release() const {
  if (refCount_.Release() == 0) delete this;
}

// ---- steps ----

bool CanvaroUndo::IsUndoEnabled() const {
  // The manager answers true without steps; the document asks it only once a step exists.
  return manager_->GetStepCount() > 0 && manager_->IsUndoEnabled();
}
bool CanvaroUndo::IsRedoEnabled() const { return manager_->IsRedoEnabled(); }
void CanvaroUndo::Undo() { manager_->Undo(); }
void CanvaroUndo::Redo() { manager_->Redo(); }
IUndoTransactionManager& CanvaroUndo::GetTransactionManager() {
  return manager_->GetTransactionManager();
}

std::shared_ptr<MaskUndo> CanvaroUndo::MakeMask(const Proc::IDataVideoPtr& frame,
                                                const Proc::IDataVideoPtr& maskPicture,
                                                const MaskInfo& maskInfo) {
  const Conf::FrameInfo info = frame != nullptr ? frame->GetFrameInfo() : Conf::FrameInfo{};
  return std::make_shared<MaskUndo>(&storage_, static_cast<unsigned>(info.width),
                                    static_cast<unsigned>(info.height), maskPicture, maskInfo);
}

bool CanvaroUndo::PushWithMask(const SettingsCore& settings, const Proc::IDataVideoPtr& frame,
                               const Proc::IDataVideoPtr& maskPicture, const MaskInfo& maskInfo) {
  CheckSettings(settings, "Add");
  CheckStepMask(frame, maskPicture, "Add");
  manager_->Truncate();
  const Index frameIndex = storage_.AddFrame(frame);
  std::shared_ptr<MaskUndo> mask = MakeMask(frame, maskPicture, maskInfo);
  Push(settings);
  Item& item = Get(GetCurrentIndexImpl());
  item.SetFrameIndex(frameIndex);
  item.SetMask(mask);
  manager_->Add(this);
  return GetItemCount() >= 2;
}

void CanvaroUndo::Add(const SettingsCore& givenSettings, const Proc::IDataVideoPtr& givenFrame,
                      const Proc::IDataVideoPtr& givenMask, const MaskInfo& givenMaskInfo) {
  // Copies first: the arguments may be the document's own records (GetSettings, GetMaskInfo of
  // a redo item), which the truncation drops.
  const SettingsCore settings = givenSettings;
  const Proc::IDataVideoPtr frame = givenFrame;
  const Proc::IDataVideoPtr maskPicture = givenMask;
  const MaskInfo maskInfo = givenMaskInfo;
  // The source picture (the first push) is not a change the host needs to hear of.
  if (PushWithMask(settings, frame, maskPicture, maskInfo))
    Notify(Events::EventFrameReason::Change);
  CheckForSize();
}

void CanvaroUndo::Set(const SettingsCore& givenSettings, const Proc::IDataVideoPtr& givenFrame,
                      const Proc::IDataVideoPtr& givenMask, const MaskInfo& givenMaskInfo) {
  const SettingsCore settings = givenSettings;
  const Proc::IDataVideoPtr frame = givenFrame;
  const Proc::IDataVideoPtr maskPicture = givenMask;
  const MaskInfo maskInfo = givenMaskInfo;
  CurrentItem("Set");
  CheckSettings(settings, "Set");
  CheckStepMask(frame, maskPicture, "Set");
  const Index frameIndex = storage_.AddFrame(frame);
  std::shared_ptr<MaskUndo> mask = MakeMask(frame, maskPicture, maskInfo);
  Item& item = CurrentItem("Set");
  const Index replacedFrame = item.GetFrameIndex();
  std::shared_ptr<MaskUndo> replacedMask = item.GetMask();
  item.SetInfo(settings);
  item.SetMask(mask);
  item.SetFrameIndex(frameIndex);
  ReleaseReplaced(replacedFrame, std::move(replacedMask));
  Notify(Events::EventFrameReason::Change);
  CheckForSize();
}

void CanvaroUndo::ReleaseReplaced(Index frame, std::shared_ptr<MaskUndo> mask) {
  // Frames that nothing else names: another item or a shape state may share one only in a
  // loaded document, and then it stays.
  std::vector<Index> frames;
  if (frame != kNoIndex) frames.push_back(frame);
  if (mask != nullptr && mask.use_count() == 1) {
    for (Index i = 0; i < mask->GetItemCount(); ++i) {
      if (mask->Get(i).GetFrameIndex() != kNoIndex) frames.push_back(mask->Get(i).GetFrameIndex());
    }
  }
  mask.reset();
  for (const Index index : frames) {
    if (IsFrameNamed(index)) continue;
    try {
      storage_.Reset(index, nullptr);
    } catch (const std::exception& e) {
      // The step is already replaced; a file that cannot be removed only costs disk space.
      CANVARO_LOG(WARNING) << "Cannot release replaced picture " << index << ": " << e.what();
    }
  }
}

bool CanvaroUndo::IsFrameNamed(Index frame) const {
  for (Index i = 0; i < GetItemCount(); ++i) {
    const Item& item = Get(i);
    if (item.GetFrameIndex() == frame) return true;
    if (const MaskUndo* mask = item.GetMask().get()) {
      for (Index k = 0; k < mask->GetItemCount(); ++k) {
        if (mask->Get(k).GetFrameIndex() == frame) return true;
      }
    }
  }
  for (std::size_t i = 0; i < shapes_->GetItemCount(); ++i) {
    const ShapeUndoItem& shape = shapes_->GetItem(i);
    for (Index k = 0; k < shape.GetItemCount(); ++k) {
      if (shape.Get(k).GetFrameIndex() == frame) return true;
    }
  }
  return false;
}

// ---- masks ----

void CanvaroUndo::AddMask(const Proc::IDataVideoPtr& maskPicture) {
  MaskUndo* mask = CurrentItem("AddMask").GetMask().get();
  if (mask == nullptr) ThrowUnusable("AddMask: the step in force has no mask history");
  const MaskInfo info = mask->GetInfo();
  AddMask(maskPicture, info);
}

void CanvaroUndo::AddMask(const Proc::IDataVideoPtr& givenMask, const MaskInfo& givenInfo) {
  const Proc::IDataVideoPtr maskPicture = givenMask;
  const MaskInfo maskInfo = givenInfo;
  if (CurrentItem("AddMask").GetMask() == nullptr) {
    ThrowUnusable("AddMask: the step in force has no mask history");
  }
  // A stroke that would record nothing leaves the redo steps alone.
  if (!CurrentItem("AddMask").GetMask()->CanPush(maskInfo, maskPicture)) return;
  manager_->Truncate();
  // Truncation keeps the item in force, and with it its mask history.
  if (!CurrentItem("AddMask").GetMask()->PushMask(maskInfo, maskPicture)) return;
  manager_->Add(this);
  CheckForSize();
  Notify(Events::EventFrameReason::Change);
}

// ---- participant ----

void CanvaroUndo::MultiUndo() {
  MaskUndo* mask = CurrentMask();
  if (CanUndoStroke(mask)) {
    const MaskInfo undone = mask->GetInfo();
    mask->UndoImpl();
    NotifyTool(undone);
    Notify(Events::EventFrameReason::Undo);
    return;
  }
  // The base item is never undone; an empty history has nothing to undo.
  const Index current = GetCurrentIndexImpl();
  if (current == kNoIndex || current == 0 || !IsUndoEnabledImpl()) return;
  // Bring the picture about to be in force back into memory while the host waits for the step
  // anyway; before the cursor moves, so that a failed load leaves the step in force.
  const Item& item = Get(current - 1);
  if (item.GetFrameIndex() != kNoIndex) storage_.GetFrame(item.GetFrameIndex());
  UndoImpl();
  if (item.GetMask() != nullptr) NotifyTool(item.GetMask()->GetInfo());
  Notify(Events::EventFrameReason::Undo);
}

void CanvaroUndo::MultiRedo() {
  MaskUndo* mask = CurrentMask();
  if (CanRedoStroke(mask)) {
    mask->RedoImpl();
    NotifyTool(mask->GetInfo());
  } else {
    if (GetItemCount() == 0 || !IsRedoEnabledImpl()) return;
    const Item& item = Get(GetCurrentIndexImpl() + 1);
    if (item.GetFrameIndex() != kNoIndex) storage_.GetFrame(item.GetFrameIndex());
    RedoImpl();
    if (item.GetMask() != nullptr) NotifyTool(item.GetMask()->GetInfo());
  }
  CheckForSize();
  Notify(Events::EventFrameReason::Redo);
}

void CanvaroUndo::Truncate() {
  TruncateImpl();
  // The strokes undone on the item in force go with the other redo steps; left behind, a later
  // redo of the next item's step would replay them instead.
  if (MaskUndo* mask = CurrentMask()) mask->TruncateImpl();
}

Index CanvaroUndo::GetLastActiveFrameIndex() const {
  Index last = GetLastActiveFrameIndexImpl();
  // The masks of every item up to the one in force, not only the current one: a loaded document
  // or a Set places mask pictures after the pictures of later items.
  const Index current = GetCurrentIndexImpl();
  for (Index i = 0; current != kNoIndex && i <= current && i < GetItemCount(); ++i) {
    if (const MaskUndo* mask = Get(i).GetMask().get()) {
      last = MaxIndex(last, mask->GetLastActiveFrameIndexImpl());
    }
  }
  // Every shape item answers queries on its states up to the one in force, also an item that no
  // remaining step names (placed in a step that was undone and dropped, or in a rolled-back
  // transaction: its hidden first state keeps the picture). Their pictures must stay.
  for (std::size_t i = 0; i < shapes_->GetItemCount(); ++i) {
    last = MaxIndex(last, shapes_->GetItem(i).GetLastActiveFrameIndexImpl());
  }
  return last;
}

// ---- events ----

void CanvaroUndo::Notify(IDrawerEventHandler::EventFrameReason reason) const {
  Publish(events_, Events::DrawerEventFrame(reason, DrawerEventOrigin::Here()));
  for (const ShapeInfo& shape : shapes_->GetShapeItems(ShapeType::All)) {
    Publish(events_, Events::DrawerEventShapeItem(shape, reason, DrawerEventOrigin::Here()));
  }
  Publish(events_, Events::DrawerEventChangeToSave(DrawerEventOrigin::Here()));
}

void CanvaroUndo::NotifyTool(const MaskInfo& info) const {
  Publish(events_, Events::DrawerEventToolIdChange(static_cast<std::uint32_t>(ToolOf(info)),
                                                   DrawerEventOrigin::Here()));
}

void CanvaroUndo::RegisterEventHandler(IDrawerEventHandler* handler) {
  manager_->GetTransactionManager().RegisterHandler(handler);
}

void CanvaroUndo::UnregisterEventHandler(IDrawerEventHandler* handler) {
  manager_->GetTransactionManager().UnregisterHandler(handler);
}

void CanvaroUndo::HandleChangeToSave(const IDrawerEventHandler::DrawerEventChangeToSave& event) {
  events_.HandleChangeToSave(event);
}

// ---- saved state ----

bool CanvaroUndo::IsSaved() const {
  const MaskUndo* mask = CurrentMask();
  return (mask == nullptr || mask->IsSaved()) && shapes_->IsSaved();
}

void CanvaroUndo::SetSaved(bool saved) {
  if (MaskUndo* mask = CurrentMask()) mask->SetSaved(saved);
  shapes_->SetSaved(saved);
  Publish(events_, Events::DrawerEventChangeToSave(DrawerEventOrigin::Here()));
}

// ---- items ----

const CanvaroUndo::Item& CanvaroUndo::ItemAt(unsigned item) const {
  if (item != kCurrentItem) {
    if (item >= GetItemCount()) {
      ThrowCoded(CanvaroError::InvalidArgument,
                 "Item " + std::to_string(item) + " does not exist (the document has " +
                     std::to_string(GetItemCount()) + ")",
                 BOOST_CURRENT_LOCATION);
    }
    return Get(item);
  }
  if (GetItemCount() == 0) ThrowUnusable("The document has no step in force yet");
  return Get(GetCurrentIndexImpl());
}

CanvaroUndo::Item& CanvaroUndo::CurrentItem(const char* operation) {
  if (GetItemCount() == 0 || GetCurrentIndexImpl() == kNoIndex) {
    ThrowUnusable(std::string(operation) + " needs a step in force; the document is empty");
  }
  return Get(GetCurrentIndexImpl());
}

MaskUndo* CanvaroUndo::CurrentMask() const {
  if (GetItemCount() == 0 || GetCurrentIndexImpl() == kNoIndex) return nullptr;
  return Get(GetCurrentIndexImpl()).GetMask().get();
}

}  // namespace Kelbra::Canvaro
