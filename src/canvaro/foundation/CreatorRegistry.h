// A process-wide table of the host's makers of objects, by class identifier: how the library
// reads back saved objects of classes only the host knows (effects, painters).
//
//   CreatorRegistry<IEffectSettings::Ptr>& registry = ...;   // one static instance per kind
//   registry.Register("Blur", [] { return IEffectSettings::Ptr(new Blur); });
//   IEffectSettings::Ptr made = registry.Make("Blur");       // "Not implemented" when absent
//
// Thread-safe: registration takes a writer lock, lookups a reader lock, and a creator runs
// outside the lock (it may itself register or look up).
#pragma once

#include <functional>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <utility>

#include "canvaro/foundation/Throw.h"

namespace Kelbra::Canvaro {

template <class Ptr>
class CreatorRegistry {
 public:
  using Creator = std::function<Ptr()>;

  // Registers `creator` under `name`, replacing an earlier one. Throws InvalidArgument for an
  // empty name or an empty creator; the table is unchanged then.
  void Register(const std::string& name, Creator creator) {
    if (name.empty()) {
      ThrowCoded(CanvaroError::InvalidArgument, "A creator needs a class name",
                 BOOST_CURRENT_LOCATION);
    }
    if (!creator) {
      ThrowCoded(CanvaroError::InvalidArgument, "The creator for '" + name + "' is empty",
                 BOOST_CURRENT_LOCATION);
    }
    const std::unique_lock lock(mutex_);
    creators_.insert_or_assign(name, std::move(creator));
  }

  // Removes the creator of `name`; false when there was none.
  bool Unregister(const std::string& name) {
    const std::unique_lock lock(mutex_);
    return creators_.erase(name) != 0;
  }

  // A new object from the creator of `name`. Throws "Not implemented" (no code) when none is
  // registered, InvalidState when the creator returns null; the creator's own exceptions pass
  // through.
  Ptr Make(const std::string& name) const {
    Creator creator;
    {
      const std::shared_lock lock(mutex_);
      const auto found = creators_.find(name);
      if (found == creators_.end()) ThrowNotImplemented();
      creator = found->second;
    }
    Ptr made = creator();
    if (!made) {
      ThrowCoded(CanvaroError::InvalidState, "The creator for '" + name + "' made no object",
                 BOOST_CURRENT_LOCATION);
    }
    return made;
  }

 private:
  mutable std::shared_mutex mutex_;
  std::unordered_map<std::string, Creator> creators_;
};

}  // namespace Kelbra::Canvaro
