/// \file
/// IMultiUndoItem: a participant of the document-wide undo steps that UndoManager keeps.
///
/// A participant is a history of its own (the document's settings, one shape); the manager
/// records which participants changed in each user action and, on undo or redo of that step,
/// asks each of them to step its own history once. Participants are not owned by the manager:
/// they must outlive it or never be undone again.
///
///   manager->Add(&shapeItem);   // shapeItem changed: one new step (or part of a transaction)
///   manager->Undo();            // calls shapeItem.MultiUndo()
#pragma once

#include <string>

#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class IMultiUndoItem {
 public:
  virtual ~IMultiUndoItem() = default;

  /// Steps this participant's own history back by one.
  virtual void MultiUndo() = 0;
  /// Steps it forward by one.
  virtual void MultiRedo() = 0;
  /// The stable name under which saved step lists refer to this participant.
  virtual std::string GetMultiName() const = 0;
  /// Drops the participant's own redo tail.
  virtual void Truncate() = 0;
  /// The highest frame index the participant still needs, kNoIndex for none.
  virtual Index GetLastActiveFrameIndex() const = 0;
};

}  // namespace Kelbra::Canvaro
