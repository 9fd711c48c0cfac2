/// \file
/// The settings record of one frame step in the undo history: what was applied to the previous
/// frame to make this one.
///
/// It is an EffectsSettings (package description and effect list) wrapped in a node of its own.
/// The two constructors differ in ownership of the effect:
///
///   SettingsCore shared(effect);                        // mutable effect: shared, not cloned
///   SettingsCore owned(IEffectSettings::ConstPtr(e));   // const effect: holds a clone
///   SettingsCore copy(shared);                          // copies always clone
///
/// Equality and every query go through GetEffectsSettings(). Reading a step whose effect list holds
/// an effect whose class has no registered creator (IEffectSettings::RegisterEffectCreator) throws
/// CanvaroException "Not implemented". One thread at a time per record.
#pragma once

#include <concepts>
#include <string>
#include <type_traits>

#include "canvaro/settings/EffectSettings.h"
#include "canvaro/settings/EffectsSettings.h"
#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Canvaro {

class SettingsCore : public virtual Drevin::ISerializable {
 public:
  static const std::string EFFECTS_SETTINGS;  // "tagEffectSettings": the EffectsSettings node
  /// "tagUndoFrameInfo": the name of a step-record node for the histories that store these
  /// records; the record itself never writes it.
  static const std::string UNDO_FRAME_INFO;

  /// A default package and no effect: the record a history reads a saved step into.
  SettingsCore();
  /// A default package and `effect` itself as the only effect, shared with the caller, so changes
  /// to the effect show through the record. A null `effect` gives one null element.
  explicit SettingsCore(const IEffectSettings::Ptr& effect);
  /// A default package and a clone of `effect` as the only effect (no effect when it is null).
  explicit SettingsCore(const IEffectSettings::ConstPtr& effect);
  /// A pointer to a concrete effect picks the rule by its constness, as the two above do.
  template <class Effect>
  requires std::derived_from<std::remove_const_t<Effect>, IEffectSettings>
  explicit SettingsCore(const boost::intrusive_ptr<Effect>& effect)
      : SettingsCore(std::conditional_t<std::is_const_v<Effect>, IEffectSettings::ConstPtr,
                                        IEffectSettings::Ptr>(effect)) {}
  /// Copies clone the effects.
  SettingsCore(const SettingsCore& other);
  SettingsCore& operator=(const SettingsCore& other);
  ~SettingsCore() override;

  const EffectsSettings& GetEffectsSettings() const { return effectsSettings_; }
  EffectsSettings& GetEffectsSettings() { return effectsSettings_; }

  /// Equality of the held EffectsSettings.
  bool operator==(const SettingsCore& other) const;
  bool operator!=(const SettingsCore& other) const { return !(*this == other); }

  /// Writes the child node "tagEffectSettings" and nothing else.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the child node "tagEffectSettings" (an absent node keeps the record as it is).
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  EffectsSettings effectsSettings_;
};

}  // namespace Kelbra::Canvaro
