// The tool's own picture effects (brightness, blur, invert), written as a host writes its
// effects: a concrete EffectSettings with a Proc::Settings parameter object, plus the rendering
// that the library leaves to the host.
//
//   auto blur = ToolEffect::Make(ToolEffect::Kind::Blur, 3);   // a 7 x 7 box blur
//   Proc::IDataVideoPtr out = blur->Apply(*picture);            // a new RGBA picture
//   SettingsCore step = blur->MakeStepSettings();               // what a step records
//
// Saved steps. The library reads effect lists only through IEffectSettings::CreateEffectSettings,
// which has no hook for a host and refuses every effect ("Not implemented"). So a step records
// the effect in its package description instead, with an empty effect list: package name
// kPackageName, package index the kind, preset name for people ("Blur 3 px") and drawing tool
// for the tool ("blur 3"). FromPackage makes the effect back from such a package.
//
// Pictures: Apply takes and gives PixFmt::RGBA (the tool's pictures are all RGBA) and throws
// ToolError for any other format. Effects are not thread-safe; Apply only reads the effect.
#pragma once

#include <cstdint>
#include <string>

#include <boost/intrusive_ptr.hpp>

#include "canvaro/settings/EffectSettings.h"
#include "canvaro/settings/EffectsSettings.h"
#include "canvaro/settings/SettingsCore.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/Proc/Settings.h"

namespace canvaro_tool {

class ToolEffect;
using ToolEffectPtr = boost::intrusive_ptr<ToolEffect>;

// The parameter object: the kind of effect (which is also its type name) and one amount.
class ToolEffectParameters final : public Kelbra::Proc::Settings {
 public:
  enum class Kind : std::int32_t { Brightness = 0, Blur = 1, Invert = 2 };

  ToolEffectParameters(Kind kind, std::int32_t amount);

  // "ToolBrightness", "ToolBlur" or "ToolInvert".
  const std::string& GetTypeName() const override;
  Kind GetKind() const { return kind_; }
  // Brightness: added to each colour channel (-255 to 255). Blur: the box radius in pixels
  // (0 to 100). Invert: unused (0).
  std::int32_t GetAmount() const { return amount_; }

 private:
  Kind kind_;
  std::int32_t amount_;
};

class ToolEffect final : public Kelbra::Canvaro::EffectSettings {
 public:
  using Kind = ToolEffectParameters::Kind;

  // The package name of the steps the tool records.
  static const std::string kPackageName;  // "canvaro tool effects"

  // Throws ToolError for an amount outside the kind's range.
  static ToolEffectPtr Make(Kind kind, std::int32_t amount);
  // The effect recorded in `package` by MakeStepSettings; null when the package is not one of
  // the tool's or its drawing tool does not name an effect (the source step has none).
  static ToolEffectPtr FromPackage(const Kelbra::Canvaro::EffectsSettingsPackage& package);

  Ptr Clone() const override;
  const Kelbra::Proc::Settings& GetSettings() const override { return parameters_; }
  bool IsEqual(const IEffectSettings& other) const override;
  // "implName", then "kind" (the kind's name) and "amount".
  void Serialize(const Kelbra::Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Kelbra::Drevin::ISerializerConstPtr& serializer) override;
  std::string GetClassId() const override { return "CanvaroToolEffect"; }

  Kind GetKind() const { return parameters_.GetKind(); }
  std::int32_t GetAmount() const { return parameters_.GetAmount(); }
  // For people: "Brightness +40", "Blur 3 px", "Invert".
  std::string Describe() const;

  // A new picture: this effect applied to `source` (RGBA).
  Kelbra::Proc::IDataVideoPtr Apply(const Kelbra::Proc::IDataVideo& source) const;

  // The settings of a step made with this effect: the package describes the effect (see the
  // header comment) and the effect list is empty, so that a saved document loads.
  Kelbra::Canvaro::SettingsCore MakeStepSettings() const;

 private:
  explicit ToolEffect(const ToolEffectParameters& parameters);
  ToolEffect(const ToolEffect&) = default;

  ToolEffectParameters parameters_;
};

// The settings of a step that shows a picture as it came (the source picture): the tool's
// package with no effect.
Kelbra::Canvaro::SettingsCore MakeSourceSettings(const std::string& presetName);

}  // namespace canvaro_tool
