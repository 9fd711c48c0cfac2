#include "canvaro/settings/EffectsSettings.h"

namespace Kelbra::Canvaro {

const std::string EffectsSettingsPackage::NAME = "keyEffectSettingsPackageName";
const std::string EffectsSettingsPackage::PACKAGE_INDEX = "keyEffectSettingsPackageIndex";
const std::string EffectsSettingsPackage::PRESET_NAME = "keyEffectSettingsPackagePresetName";
const std::string EffectsSettingsPackage::DRAWING_TOOL = "keyEffectSettingsPackageDrawingTool";
const std::string EffectsSettingsPackage::EFFECT_INDEX = "keyEffectSettingsEffectIndex";
const std::string EffectsSettingsPackage::BLEND_SOURCE = "keyEffectSettingsBlendSource";

const std::string EffectsSettings::PACKAGE = "tagEffectSettingsPackage";
const std::string EffectsSettings::TILE_SETTINGS = "tagTileSettings";

EffectsSettingsPackage::EffectsSettingsPackage() : ToolsId(IToolsId::NONE) {}

EffectsSettingsPackage::EffectsSettingsPackage(const EffectsSettingsPackage& other)
    : ToolsId(other.GetCurrentToolID()),
      name_(other.name_),
      packageIndex_(other.packageIndex_),
      presetName_(other.presetName_),
      drawingTool_(other.drawingTool_),
      effectIndex_(other.effectIndex_),
      blendSource_(other.blendSource_) {}

EffectsSettingsPackage& EffectsSettingsPackage::operator=(const EffectsSettingsPackage& other) {
  SetCurrentTool(other.GetCurrentTool());
  name_ = other.name_;
  packageIndex_ = other.packageIndex_;
  presetName_ = other.presetName_;
  drawingTool_ = other.drawingTool_;
  effectIndex_ = other.effectIndex_;
  blendSource_ = other.blendSource_;
  return *this;
}

EffectsSettingsPackage::~EffectsSettingsPackage() = default;

void EffectsSettingsPackage::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteString(NAME, name_);
  serializer->WriteInt(PACKAGE_INDEX, packageIndex_);
  serializer->WriteString(PRESET_NAME, presetName_);
  serializer->WriteString(DRAWING_TOOL, drawingTool_);
  serializer->WriteInt(EFFECT_INDEX, effectIndex_);
  serializer->WriteInt(BLEND_SOURCE, blendSource_);
  ToolsId::Serialize(serializer);
}

void EffectsSettingsPackage::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  name_ = serializer->ReadString(NAME, name_);
  packageIndex_ = serializer->ReadInt(PACKAGE_INDEX, packageIndex_);
  presetName_ = serializer->ReadString(PRESET_NAME, presetName_);
  drawingTool_ = serializer->ReadString(DRAWING_TOOL, drawingTool_);
  effectIndex_ = serializer->ReadInt(EFFECT_INDEX, effectIndex_);
  blendSource_ = serializer->ReadInt(BLEND_SOURCE, blendSource_);
  ToolsId::Deserialize(serializer);
}

EffectsSettings::EffectsSettings(const IEffectSettings::ConstPtr& effect) {
  if (effect) effects_.push_back(effect->Clone());
}

EffectsSettings::EffectsSettings(ShareTag, const IEffectSettings::Ptr& effect) {
  effects_.push_back(effect);
}

EffectsSettings::EffectsSettings(const EffectsSettings& other)
    : package_(other.package_), hostFlag_(other.hostFlag_) {
  EffectSettings::CloneList(other.effects_, effects_);
}

EffectsSettings& EffectsSettings::operator=(const EffectsSettings& other) {
  if (this == &other) return *this;
  package_ = other.package_;
  hostFlag_ = other.hostFlag_;
  EffectSettings::CloneList(other.effects_, effects_);
  return *this;
}

EffectsSettings::~EffectsSettings() = default;

void EffectsSettings::AddRef() const { refCount_.AddRef(); }

void EffectsSettings::Release() const {
  if (refCount_.Release() == 0) delete this;
}

long EffectsSettings::GetRefCount() const { return refCount_.GetRefCount(); }

IEffectSettings::ConstList EffectsSettings::EffectsConst() const {
  IEffectSettings::ConstList result;
  EffectSettings::CopyList(effects_, result);
  return result;
}

void EffectsSettings::SetEffectsConst(const IEffectSettings::ConstList& effects) {
  EffectSettings::CloneList(effects, effects_);
}

bool EffectsSettings::operator==(const EffectsSettings& other) const {
  if (package_.GetName() != other.package_.GetName() ||
      package_.GetPresetName() != other.package_.GetPresetName() ||
      package_.GetPackageIndex() != other.package_.GetPackageIndex() ||
      effects_.size() != other.effects_.size()) {
    return false;
  }
  for (std::size_t i = 0; i < effects_.size(); ++i) {
    const IEffectSettings* left = effects_[i].get();
    const IEffectSettings* right = other.effects_[i].get();
    // Unlike IEffectSettings::Equals, the same object on both sides is still asked, so the
    // effect's own rule decides every position.
    if (left == nullptr || right == nullptr) {
      if (left != right) return false;
    } else if (!left->IsEqual(*right)) {
      return false;
    }
  }
  return true;
}

void EffectsSettings::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteObject(PACKAGE, package_);
  EffectSettings::Serialize(serializer, IEffectSettings::EFFECTS, effects_);
}

void EffectsSettings::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  if (serializer->Has(PACKAGE)) serializer->ReadObject(PACKAGE, package_);
  EffectSettings::Deserialize(serializer, IEffectSettings::EFFECTS, effects_);
}

}  // namespace Kelbra::Canvaro
