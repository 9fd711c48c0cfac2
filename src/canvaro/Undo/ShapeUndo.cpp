#include "canvaro/Undo/ShapeUndo.h"

#include "canvaro/foundation/Log.h"

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/Throw.h"

namespace Kelbra::Canvaro {

namespace {

using Reason = IDrawerEventHandler::EventFrameReason;

const std::string kItems = "Items";
const std::string kName = "Name";
const std::string kData = "Data";

// A clone of `shape`'s record, changed by `edit`; records in a history are never changed.
template <class Edit>
ShapeInfo Edited(const ShapeInfo& shape, Edit edit) {
  ShapeInfoBasePtr clone = shape->Clone();
  edit(*clone);
  return ShapeInfo(ShapeInfoBaseConstPtr(clone));
}

[[noreturn]] void ThrowBadRecord(const std::string& what) {
  ThrowCoded(CanvaroError::InvalidDocument, what, BOOST_CURRENT_LOCATION);
}

[[noreturn]] void ThrowBadItem(const std::string& what) {
  ThrowCoded(CanvaroError::InvalidArgument, what, BOOST_CURRENT_LOCATION);
}

void CheckNotEmpty(const ShapeInfo& shape, const char* operation) {
  if (!shape) ThrowBadItem(std::string(operation) + ": the shape handle is empty");
}

}  // namespace

ShapeUndo::ShapeUndo(FrameStorage* storage, const IUndoManagerPtr& manager)
    : storage_(storage), undoManager_(manager) {}

ShapeUndo::~ShapeUndo() = default;

ShapeUndoItem& ShapeUndo::ItemOf(const ShapeInfo& shape) const {
  CheckNotEmpty(shape, "A shape edit");
  const std::int32_t index = shape->GetIndex();
  if (index < 0 || static_cast<std::size_t>(index) >= items_.size()) {
    ThrowBadItem("Shape index " + std::to_string(index) + " names no item of the " +
                 std::to_string(items_.size()) + " in the set");
  }
  return *items_[static_cast<std::size_t>(index)];
}

void ShapeUndo::SetShape(const ShapeInfo& given, const Proc::IDataVideoPtr& givenPicture) {
  // Copies first: `given` may be a state of an item whose redo tail the truncation drops.
  const ShapeInfo shape = given;
  const Proc::IDataVideoPtr picture = givenPicture;
  CheckNotEmpty(shape, "SetShape");
  if (shape->GetIndex() >= 0) ItemOf(shape);
  ShapeUndoItem* item = nullptr;
  Index frame = kNoIndex;
  if (shape->GetIndex() >= 0) {
    item = &ItemOf(shape);
    if (picture == nullptr && shape == item->GetCurrentShape()) return;
    undoManager_->Truncate();
    if (picture != nullptr) frame = storage_->AddFrame(picture);
    const Index inherited = item->Get(item->GetCurrentIndexImpl()).GetFrameIndex();
    item->Push(Edited(shape, [](ShapeInfoBase& s) { s.SetSaved(false); }));
    item->Get(item->GetCurrentIndexImpl()).SetFrameIndex(inherited);
  } else {
    const ShapeInfo placed = Edited(shape, [this](ShapeInfoBase& s) {
      s.SetIndex(static_cast<std::int32_t>(items_.size()));
      s.SetZValue(GenerateNewZValue());
    });
    undoManager_->Truncate();
    if (picture != nullptr) frame = storage_->AddFrame(picture);
    auto created = std::make_shared<ShapeUndoItem>(storage_, placed);
    created->Get(0).SetFrameIndex(frame);
    items_.push_back(created);
    item = created.get();
    item->RegisterEventHandler(static_cast<IDrawerEventHandler*>(this));
  }
  if (frame != kNoIndex) item->Get(item->GetCurrentIndexImpl()).SetFrameIndex(frame);
  undoManager_->Add(item);
  AnnounceChange(*item);
}

void ShapeUndo::SetShapes(const std::vector<ShapeInfo>& given) {
  const std::vector<ShapeInfo> shapes = given;
  // Every shape is checked before the first one changes anything.
  for (const ShapeInfo& shape : shapes) {
    CheckNotEmpty(shape, "SetShapes");
    if (shape->GetIndex() >= 0) ItemOf(shape);
  }
  RAII::UndoTransactionGuard transaction(undoManager_->GetTransactionManager());
  for (const ShapeInfo& shape : shapes) SetShape(shape, nullptr);
}

void ShapeUndo::OverwriteShape(const ShapeInfo& given) {
  const ShapeInfo shape = given;
  ShapeUndoItem& item = ItemOf(shape);
  if (shape == item.GetCurrentShape()) return;
  item.SetCurrentShape(Edited(shape, [](ShapeInfoBase& s) { s.SetSaved(false); }));
  AnnounceChange(item);
}

void ShapeUndo::RemoveShapeAll(ShapeType mask) {
  if (GetShapeActiveItemCount(mask) == 0) return;
  RAII::UndoTransactionGuard transaction(undoManager_->GetTransactionManager());
  RemoveShapeAllImpl(mask, false);
}

void ShapeUndo::RemoveShapeAllImpl(ShapeType mask, bool resetTool) {
  // SetShape of an existing shape never adds items, so the count stays put.
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const ShapeInfo& current = items_[i]->GetCurrentShape();
    if (!current->IsVisible() || !HasAnyOf(mask, current->GetShapeType())) continue;
    SetShape(Edited(current, [resetTool](ShapeInfoBase& s) { s.Remove(resetTool); }), nullptr);
  }
}

void ShapeUndo::AnnounceChange(const ShapeUndoItem& item) {
  Publish(*this,
          DrawerEventShapeItem(item.GetCurrentShape(), Reason::Change, DrawerEventOrigin::Here()));
  Publish(*this, DrawerEventChangeToSave(DrawerEventOrigin::Here()));
}

unsigned ShapeUndo::GetShapeItemCount(ShapeType mask) const {
  if (mask == ShapeType::All) return static_cast<unsigned>(items_.size());
  unsigned count = 0;
  for (const auto& item : items_) {
    count += HasAnyOf(mask, item->GetCurrentShape()->GetShapeType());
  }
  return count;
}

unsigned ShapeUndo::GetShapeActiveItemCount(ShapeType mask) const {
  unsigned count = 0;
  for (const auto& item : items_) {
    const ShapeInfo& shape = item->GetCurrentShape();
    count += shape->IsVisible() && HasAnyOf(mask, shape->GetShapeType());
  }
  return count;
}

std::vector<ShapeInfo> ShapeUndo::GetShapeItems(ShapeType mask) const {
  std::vector<ShapeInfo> shapes;
  for (const auto& item : items_) {
    const ShapeInfo& shape = item->GetCurrentShape();
    if (HasAnyOf(mask, shape->GetShapeType())) shapes.push_back(shape);
  }
  return shapes;
}

std::vector<ShapeInfo> ShapeUndo::GetShapeActiveItems(ShapeType mask) const {
  std::vector<ShapeInfo> shapes;
  for (const auto& item : items_) {
    const ShapeInfo& shape = item->GetCurrentShape();
    if (shape->IsVisible() && HasAnyOf(mask, shape->GetShapeType())) shapes.push_back(shape);
  }
  return shapes;
}

const TUndoImpl<ShapeInfo, void*>::UndoItem& ShapeUndo::StateAt(unsigned item,
                                                                unsigned state) const {
  if (item >= items_.size()) {
    ThrowBadItem("Shape item " + std::to_string(item) + " does not exist (the set holds " +
                 std::to_string(items_.size()) + ")");
  }
  const ShapeUndoItem& history = *items_[item];
  const Index index = state == kCurrentState ? history.GetCurrentIndexImpl() : state;
  if (index >= history.GetItemCount()) {
    ThrowBadItem("Shape item " + std::to_string(item) + " has no state " + std::to_string(state) +
                 " (it has " + std::to_string(history.GetItemCount()) + ")");
  }
  return history.Get(index);
}

const ShapeInfo& ShapeUndo::GetShapeItemInfo(unsigned item, unsigned state) const {
  return StateAt(item, state).GetInfo();
}

Index ShapeUndo::GetShapeItemVideoIndex(unsigned item, unsigned state) const {
  return StateAt(item, state).GetFrameIndex();
}

Proc::IDataVideoPtr ShapeUndo::GetShapeItemVideo(unsigned item, unsigned state) const {
  const Index frame = GetShapeItemVideoIndex(item, state);
  return frame == kNoIndex ? nullptr : storage_->GetFrame(frame);
}

Conf::FrameInfo ShapeUndo::GetVideoInfo(unsigned item) const {
  const Index frame = GetShapeItemVideoIndex(item, kCurrentState);
  return frame == kNoIndex ? Conf::FrameInfo{} : storage_->GetFrameInfo(frame);
}

double ShapeUndo::GenerateNewZValue() const {
  double top = InfoTypeBase::ZValueMin - 1;
  for (const auto& item : items_) {
    const ShapeInfo& shape = item->GetCurrentShape();
    if (shape->IsVisible() && shape->GetZValue() > top) top = shape->GetZValue();
  }
  if (InfoTypeBase::ZValueMin > top) {
    return (InfoTypeBase::ZValueMax - InfoTypeBase::ZValueMin) * 0.5;
  }
  if (top + 1 <= InfoTypeBase::ZValueMax) return top + 1;
  CANVARO_LOG(ERROR)
      << "ZValue for new ShapeInfo item is greater than maximum allowed! Shape items "
         "count is "
      << items_.size() << ".";
  return InfoTypeBase::ZValueMax;
}

void ShapeUndo::Serialize(const Drevin::ISerializerPtr& serializer) const {
  auto list = serializer->CreateCollection(kItems);
  for (const auto& item : items_) {
    Drevin::ISerializerPtr node = list->AddItem();
    node->WriteString(kName, item->GetMultiName());
    node->WriteObject(kData, *item);
  }
}

void ShapeUndo::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  auto list = serializer->GetCollection(kItems);
  if (list == nullptr) return;
  for (std::size_t i = 0; i < list->GetCount(); ++i) {
    Drevin::ISerializerConstPtr node = list->GetItem(i);
    const std::string name =
        node->ReadString(kName, ShapeUndoItem::MakeName(static_cast<std::int32_t>(items_.size())));
    auto item = std::make_shared<ShapeUndoItem>(storage_, name);
    node->ReadObject(kData, *item);
    // Every query reads the shape in force: an item without one cannot join the set.
    if (item->GetCurrentIndexImpl() == kNoIndex) {
      ThrowBadRecord("Saved shape item '" + name + "' has no states");
    }
    for (std::size_t state = 0; state < item->GetItemCount(); ++state) {
      const auto& saved = item->Get(static_cast<Index>(state));
      if (!saved.GetInfo()) {
        ThrowBadRecord("Saved shape item '" + name + "' has a state without a shape");
      }
      // The pictures were read before the shapes; an index past them would be read unchecked.
      const Index frame = saved.GetFrameIndex();
      if (frame != kNoIndex && frame >= storage_->GetCount()) {
        ThrowBadRecord("Saved shape item '" + name + "' names picture " + std::to_string(frame) +
                       ", but only " + std::to_string(storage_->GetCount()) + " were saved");
      }
    }
    items_.push_back(item);
    item->RegisterEventHandler(static_cast<IDrawerEventHandler*>(this));
    undoManager_->SetAvailableItem(item.get());
  }
}

bool ShapeUndo::IsSaved() const {
  for (const auto& item : items_) {
    if (!item->IsSaved()) return false;
  }
  return true;
}

void ShapeUndo::SetSaved(bool saved) {
  for (const auto& item : items_) {
    if (item->IsSaved() != saved) {
      item->SetSaved(saved);
      return;
    }
  }
}

}  // namespace Kelbra::Canvaro
