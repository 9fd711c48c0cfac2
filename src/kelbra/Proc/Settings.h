/// \file
/// Proc::Settings: the parameter object of one picture effect (a blur radius, a colour curve, a
/// rotation), as the host's picture library defines it.
///
/// Each concrete effect has its own Settings class; code that holds effects of unknown kinds tells
/// them apart by the type name the parameter object reports:
///
///   const Proc::Settings& parameters = effect->GetSettings();
///   if (parameters.GetTypeName() == "SettingsEffectBlur") ...
///
/// The type name is a fixed text per class, the same for every object of it, and stays valid as
/// long as the object does. Settings objects are owned by whoever made them (usually the effect
/// that holds them); this base gives no ownership or thread guarantees of its own.
#pragma once

#include <string>

namespace Kelbra::Proc {

class Settings {
 public:
  /// The name of the parameter object's kind, exact and case-sensitive.
  virtual const std::string& GetTypeName() const = 0;

  virtual ~Settings() = default;

 protected:
  Settings() = default;
  Settings(const Settings&) = default;
  Settings& operator=(const Settings&) = default;
};

}  // namespace Kelbra::Proc
