/// \file
/// What the user applied in one editing step: an ordered list of effects and the description of
/// the package (preset collection) it came from.
///
/// EffectsSettingsPackage is the description: package name and index, preset name, the host's
/// drawing-tool string, the index of the effect being edited, the blend source and the current
/// tool. EffectsSettings holds a package and the effect list:
///
///   EffectsSettings settings(blur);               // holds a clone of blur
///   settings.GetPackage().SetName("Portrait");
///   settings.GetPackage().SetPresetName("Soft");
///   if (settings == other) ...                    // name, preset name, index and effects only
///
/// Effects are owned per record: constructing, copying, assigning and SetEffectsConst clone the
/// effect objects, so no two records share one; EffectsConst() hands out the record's own objects.
/// Equality deliberately ignores the drawing tool, the effect index, the blend source, the current
/// tool and the host flag, so that steps that differ only in which effect of a package is being
/// edited, or by which tool, count as the same settings.
///
/// Reading a record back makes its effects with the host's creators
/// (IEffectSettings::RegisterEffectCreator); an effect whose class has none throws
/// CanvaroException "Not implemented". One thread at a time per record.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "canvaro/foundation/ToolsId.h"
#include "canvaro/settings/EffectSettings.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class SettingsCore;

class EffectsSettingsPackage : public virtual Drevin::ISerializable, public virtual ToolsId {
 public:
  static const std::string NAME;           // "keyEffectSettingsPackageName"
  static const std::string PACKAGE_INDEX;  // "keyEffectSettingsPackageIndex"
  static const std::string PRESET_NAME;    // "keyEffectSettingsPackagePresetName"
  static const std::string DRAWING_TOOL;   // "keyEffectSettingsPackageDrawingTool"
  static const std::string EFFECT_INDEX;   // "keyEffectSettingsEffectIndex"
  static const std::string BLEND_SOURCE;   // "keyEffectSettingsBlendSource"

  /// Value of packageIndex and effectIndex when none is chosen.
  static constexpr std::int32_t kNone = -1;

  /// Empty names, no package or effect index, blend source 0, tool NONE.
  EffectsSettingsPackage();
  EffectsSettingsPackage(const EffectsSettingsPackage& other);
  EffectsSettingsPackage& operator=(const EffectsSettingsPackage& other);
  ~EffectsSettingsPackage() override;

  const std::string& GetName() const { return name_; }
  void SetName(std::string name) { name_ = std::move(name); }
  std::int32_t GetPackageIndex() const { return packageIndex_; }
  void SetPackageIndex(std::int32_t index) { packageIndex_ = index; }
  const std::string& GetPresetName() const { return presetName_; }
  void SetPresetName(std::string name) { presetName_ = std::move(name); }
  /// A free text of the host's, kept apart from the current tool.
  const std::string& GetDrawingTool() const { return drawingTool_; }
  void SetDrawingTool(std::string tool) { drawingTool_ = std::move(tool); }
  std::int32_t GetEffectIndex() const { return effectIndex_; }
  void SetEffectIndex(std::int32_t index) { effectIndex_ = index; }
  /// The host's blend-source number; stored as is.
  std::int32_t GetBlendSource() const { return blendSource_; }
  void SetBlendSource(std::int32_t source) { blendSource_ = source; }

  /// Writes the six entries in the order of the key constants above, then "ToolName".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the same entries; an absent one keeps its value, except "ToolName", whose absence
  /// gives tool NONE.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  std::string name_;
  std::int32_t packageIndex_ = kNone;
  std::string presetName_;
  std::string drawingTool_;
  std::int32_t effectIndex_ = kNone;
  std::int32_t blendSource_ = 0;
};

class EffectsSettings : public virtual IRefCountable, public virtual Drevin::ISerializable {
 public:
  static const std::string PACKAGE;        // "tagEffectSettingsPackage": the package's node
  static const std::string TILE_SETTINGS;  // "tagTileSettings": reserved, not written

  /// A default package and a clone of `effect`, or no effect at all when it is null.
  explicit EffectsSettings(const IEffectSettings::ConstPtr& effect);
  /// Copies the package and the flag and clones every effect.
  EffectsSettings(const EffectsSettings& other);
  /// Copies the package and the flag, then replaces the effects with clones of `other`'s.
  EffectsSettings& operator=(const EffectsSettings& other);
  ~EffectsSettings() override;

  void AddRef() const override;
  /// Deletes the record when the last reference goes (only for records made with new).
  void Release() const override;
  long GetRefCount() const override;

  const EffectsSettingsPackage& GetPackage() const { return package_; }
  EffectsSettingsPackage& GetPackage() { return package_; }

  /// A const list that shares this record's effect objects, in order.
  IEffectSettings::ConstList EffectsConst() const;
  /// Replaces the effects with clones of `effects`, in order.
  void SetEffectsConst(const IEffectSettings::ConstList& effects);

  /// A flag of the host's, true after construction; copied with the record, never written or
  /// compared.
  bool GetHostFlag() const { return hostFlag_; }
  void SetHostFlag(bool flag) { hostFlag_ = flag; }

  /// True when package name, preset name and package index are equal and the effect lists have
  /// the same length with the left effect IsEqual to the right one at every position (two null
  /// elements match; a null and a non-null do not).
  bool operator==(const EffectsSettings& other) const;
  bool operator!=(const EffectsSettings& other) const { return !(*this == other); }

  /// Writes the package as the child "tagEffectSettingsPackage", then the effects as the
  /// collection "keyEffectsCollection".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the package (an absent node keeps it), then the effects, made with the host's
  /// creators; an effect without one throws CanvaroException "Not implemented" and leaves the
  /// list empty.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  friend class SettingsCore;
  /// SettingsCore's sharing constructor: `effect` itself becomes the only element, even if null.
  struct ShareTag {};
  EffectsSettings(ShareTag, const IEffectSettings::Ptr& effect);

  RefCountImpl refCount_;
  EffectsSettingsPackage package_;
  IEffectSettings::List effects_;
  bool hostFlag_ = true;
};

}  // namespace Kelbra::Canvaro
