/// \file
/// ISavable: a part of the document that knows whether its state in force is the one last
/// written to disk. The document asks its parts before it reports "nothing to save", and marks
/// them after a save:
///
///   if (!shapes.IsSaved()) PromptToSave();
///   ...
///   shapes.SetSaved(true);
#pragma once

namespace Kelbra::Canvaro {

class ISavable {
 public:
  virtual ~ISavable() = default;

  /// True when the state in force is the one on disk.
  virtual bool IsSaved() const = 0;
  /// Marks the state in force as written (true) or changed since (false). Implementations say
  /// how much they mark.
  virtual void SetSaved(bool saved) = 0;
};

}  // namespace Kelbra::Canvaro
