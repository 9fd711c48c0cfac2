// Saving and loading a whole document.
//
// Loading order. The parts depend on each other through frame indices: the settings items and
// the shape states name pictures by their index in the frame storage as it was saved, while a
// mask history appends its pictures to the storage as it reads them. The saved frames are
// therefore read first, into the fresh (empty) storage, so that they get their saved indices
// back; then the settings history with its masks, then the shapes, and the step list last,
// once every participant it names is known to the manager.
#include <memory>
#include <string>

#include <boost/assert/source_location.hpp>
#include <boost/throw_exception.hpp>

#include "canvaro/Undo/CanvaroUndo.h"
#include "canvaro/Undo/ShapeUndo.h"
#include "canvaro/foundation/Throw.h"

namespace Kelbra::Canvaro {

namespace {

const std::string kShape = "Shape";
const std::string kUndoManager = "UndoManager";
const std::string kFrames = "Frames";
const std::string kMask = "Mask";

}  // namespace

void CanvaroUndo::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteObject(kShape, *shapes_);
  serializer->WriteObject(kUndoManager, *manager_);
  // Names every picture's swap file (and queues the writes) before the masks below name theirs.
  serializer->WriteObject(kFrames, storage_);
  History::Serialize(serializer);
}

void CanvaroUndo::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  if (serializer == nullptr) return;
  if (serializer->Has(kFrames)) serializer->ReadObject(kFrames, storage_);
  const Index savedFrames = storage_.GetCount();
  History::Deserialize(serializer);
  // A step naming a picture that was not saved would read past the storage later.
  for (Index i = 0; i < GetItemCount(); ++i) {
    const Index frame = Get(i).GetFrameIndex();
    if (frame != kNoIndex && frame >= savedFrames) {
      ThrowCoded(CanvaroError::InvalidDocument,
                 "Saved step " + std::to_string(i) + " names picture " + std::to_string(frame) +
                     ", but only " + std::to_string(savedFrames) + " pictures were saved",
                 BOOST_CURRENT_LOCATION);
    }
  }
  if (serializer->Has(kShape)) serializer->ReadObject(kShape, *shapes_);
  manager_->SetAvailableItem(this);
  if (serializer->Has(kUndoManager)) {
    serializer->ReadObject(kUndoManager, *manager_);
  } else {
    // A save without a step list: every item was one step, and so was every stroke on it.
    for (Index i = 0; i < GetItemCount(); ++i) {
      const MaskUndo* mask = Get(i).GetMask().get();
      const std::size_t steps =
          mask != nullptr && mask->GetItemCount() > 0 ? mask->GetItemCount() : 1;
      for (std::size_t step = 0; step < steps; ++step) manager_->Add(this);
    }
  }
  // Registering again is a no-op when the manager is still there.
  events_.RegisterEventHandler(manager_.get());
}

void CanvaroUndo::SerializeMask(const Item& item, const Drevin::ISerializerPtr& serializer) const {
  if (item.GetMask() != nullptr) serializer->WriteObject(kMask, *item.GetMask());
}

void CanvaroUndo::DeserializeMask(Item& item, const Drevin::ISerializerConstPtr& serializer) {
  auto mask = std::make_shared<MaskUndo>(&storage_);
  if (serializer->Has(kMask)) serializer->ReadObject(kMask, *mask);
  item.SetMask(mask);
}

}  // namespace Kelbra::Canvaro
