#include "canvaro/Undo/ShapeUndoItem.h"

#include <boost/format.hpp>

namespace Kelbra::Canvaro {

namespace {

using Reason = IDrawerEventHandler::EventFrameReason;

// A clone of `shape`'s record, changed by `edit`; records in a history are never changed.
template <class Edit>
ShapeInfo Edited(const ShapeInfo& shape, Edit edit) {
  ShapeInfoBasePtr clone = shape->Clone();
  edit(*clone);
  return ShapeInfo(ShapeInfoBaseConstPtr(clone));
}

}  // namespace

std::string ShapeUndoItem::MakeName(std::int32_t index) {
  return (boost::format("Item_%08d") % index).str();
}

ShapeUndoItem::ShapeUndoItem(FrameStorage* storage, const ShapeInfo& shape)
    : History(storage), TUndoImplTop(storage), name_(MakeName(shape->GetIndex())) {
  History::Push(Edited(shape, [](ShapeInfoBase& baseline) {
    baseline.SetVisible(false);
    baseline.SetSaved(true);
  }));
  History::Push(shape);
}

ShapeUndoItem::ShapeUndoItem(FrameStorage* storage, const std::string& name)
    : History(storage), TUndoImplTop(storage), name_(name) {}

ShapeUndoItem::~ShapeUndoItem() = default;

bool ShapeUndoItem::Push(const ShapeInfo& shape) {
  History::Push(shape);
  if (GetItemCount() >= 2 && !shape->IsVisible() && !shape->IsSaved() && !WasSaved()) {
    SetSaved(true);
  }
  return true;
}

const ShapeInfo& ShapeUndoItem::GetCurrentShape() const {
  return Get(GetCurrentIndexImpl()).GetInfo();
}

void ShapeUndoItem::SetCurrentShape(const ShapeInfo& shape) {
  Get(GetCurrentIndexImpl()).SetInfo(shape);
}

bool ShapeUndoItem::IsVisible() const {
  return GetCurrentIndexImpl() != kNoIndex && GetCurrentShape()->IsVisible();
}

bool ShapeUndoItem::IsSaved() const {
  return GetCurrentIndexImpl() == kNoIndex || GetCurrentShape()->IsSaved();
}

void ShapeUndoItem::SetSaved(bool saved) {
  if (GetCurrentIndexImpl() == kNoIndex) return;
  SetCurrentShape(Edited(GetCurrentShape(), [saved](ShapeInfoBase& s) { s.SetSaved(saved); }));
}

bool ShapeUndoItem::WasSaved() const {
  const std::size_t count = GetItemCount();
  if (count < 2) return false;
  const std::size_t newest = count - 1;
  // The first state after the last hidden one before the newest: where the shape last
  // appeared.
  std::size_t appeared = 0;
  for (std::size_t i = newest; i-- > 0;) {
    if (!Get(static_cast<Index>(i)).GetInfo()->IsVisible()) {
      appeared = i + 1;
      break;
    }
  }
  for (std::size_t i = newest; i-- > appeared;) {
    if (Get(static_cast<Index>(i)).GetInfo()->IsSaved()) return true;
  }
  return false;
}

void ShapeUndoItem::UndoImpl() {
  // A loaded step list may name the item in more steps than it has states: those steps find
  // nothing to step.
  if (GetCurrentIndexImpl() == kNoIndex || !IsUndoEnabledImpl()) return;
  const auto left = GetCurrentShape()->GetCurrentToolID();
  UndoRedoImpl(Reason::Undo);
  Publish(*this, IDrawerEventHandler::DrawerEventToolIdChange(static_cast<std::uint32_t>(left),
                                                              DrawerEventOrigin::Here()));
}

void ShapeUndoItem::RedoImpl() {
  if (!IsRedoEnabledImpl()) return;
  UndoRedoImpl(Reason::Redo);
  const auto reached = GetCurrentShape()->GetCurrentToolID();
  Publish(*this, IDrawerEventHandler::DrawerEventToolIdChange(static_cast<std::uint32_t>(reached),
                                                              DrawerEventOrigin::Here()));
}

void ShapeUndoItem::UndoRedoImpl(IDrawerEventHandler::EventFrameReason reason) {
  if (reason == Reason::Undo) {
    History::UndoImpl();
  } else {
    History::RedoImpl();
  }
  Publish(*this, IDrawerEventHandler::DrawerEventShapeItem(GetCurrentShape(), reason,
                                                           DrawerEventOrigin::Here()));
  Publish(*this, IDrawerEventHandler::DrawerEventChangeToSave(DrawerEventOrigin::Here()));
}

}  // namespace Kelbra::Canvaro
