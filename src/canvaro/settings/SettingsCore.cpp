#include "canvaro/settings/SettingsCore.h"

namespace Kelbra::Canvaro {

const std::string SettingsCore::EFFECTS_SETTINGS = "tagEffectSettings";
const std::string SettingsCore::UNDO_FRAME_INFO = "tagUndoFrameInfo";

SettingsCore::SettingsCore() : effectsSettings_(IEffectSettings::ConstPtr()) {}

SettingsCore::SettingsCore(const IEffectSettings::Ptr& effect)
    : effectsSettings_(EffectsSettings::ShareTag{}, effect) {}

SettingsCore::SettingsCore(const IEffectSettings::ConstPtr& effect) : effectsSettings_(effect) {}

SettingsCore::SettingsCore(const SettingsCore& other) : effectsSettings_(other.effectsSettings_) {}

SettingsCore& SettingsCore::operator=(const SettingsCore& other) {
  if (this != &other) effectsSettings_ = other.effectsSettings_;
  return *this;
}

SettingsCore::~SettingsCore() = default;

bool SettingsCore::operator==(const SettingsCore& other) const {
  return effectsSettings_ == other.effectsSettings_;
}

void SettingsCore::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteObject(EFFECTS_SETTINGS, effectsSettings_);
}

void SettingsCore::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  if (serializer->Has(EFFECTS_SETTINGS)) serializer->ReadObject(EFFECTS_SETTINGS, effectsSettings_);
}

}  // namespace Kelbra::Canvaro
