#include "ToolEffect.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <sstream>
#include <vector>

#include "ToolError.h"
#include "kelbra/Proc/ImplNames.h"

namespace canvaro_tool {

using Kelbra::Canvaro::EffectsSettingsPackage;
using Kelbra::Canvaro::SettingsCore;
namespace Proc = Kelbra::Proc;

namespace {

struct KindInfo {
  ToolEffectParameters::Kind kind;
  const char* name;      // in drawing tools and saved effects
  std::string typeName;  // of the parameter object
  std::int32_t min;
  std::int32_t max;
};

const std::array<KindInfo, 3>& Kinds() {
  static const std::array<KindInfo, 3> kinds{{
      {ToolEffectParameters::Kind::Brightness, "brightness", "ToolBrightness", -255, 255},
      {ToolEffectParameters::Kind::Blur, "blur", "ToolBlur", 0, 100},
      {ToolEffectParameters::Kind::Invert, "invert", "ToolInvert", 0, 0},
  }};
  return kinds;
}

const KindInfo& InfoOf(ToolEffectParameters::Kind kind) {
  for (const auto& info : Kinds()) {
    if (info.kind == kind) return info;
  }
  throw ToolError("unknown effect kind " + std::to_string(static_cast<int>(kind)));
}

const KindInfo* InfoByName(const std::string& name) {
  for (const auto& info : Kinds()) {
    if (name == info.name) return &info;
  }
  return nullptr;
}

std::uint8_t Clamp(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

// Applies `perPixel` to the colour channels of every pixel of `out`, a copy of the source.
template <class PerChannel>
void ForEachColour(Proc::IDataVideo& out, PerChannel perChannel) {
  auto plane = out.GetPlane(0);
  const std::size_t width = static_cast<std::size_t>(out.GetFrameInfo().width);
  for (std::size_t y = 0; y < plane.GetRowCount(); ++y) {
    std::uint8_t* row = plane.GetOffsetPtr(0, y);
    for (std::size_t x = 0; x < width; ++x) {
      for (std::size_t c = 0; c < 3; ++c) row[x * 4 + c] = perChannel(row[x * 4 + c]);
    }
  }
}

// One pass of a box blur along rows (`horizontal`) or columns, from `in` to `out`, both packed
// RGBA of `width` x `height`. Pixels beyond the edges repeat the edge pixel.
void BoxPass(const std::uint8_t* in, std::uint8_t* out, std::size_t width, std::size_t height,
             int radius, bool horizontal) {
  const std::size_t lines = horizontal ? height : width;
  const std::size_t length = horizontal ? width : height;
  const std::size_t step = horizontal ? 4 : width * 4;
  const int window = 2 * radius + 1;
  for (std::size_t line = 0; line < lines; ++line) {
    const std::uint8_t* src = in + (horizontal ? line * width * 4 : line * 4);
    std::uint8_t* dst = out + (horizontal ? line * width * 4 : line * 4);
    auto at = [&](long i) {
      return src +
             static_cast<std::size_t>(std::clamp(i, 0L, static_cast<long>(length) - 1)) * step;
    };
    std::array<int, 4> sum{};
    for (long i = -radius; i <= radius; ++i) {
      for (std::size_t c = 0; c < 4; ++c) sum[c] += at(i)[c];
    }
    for (std::size_t i = 0; i < length; ++i) {
      for (std::size_t c = 0; c < 4; ++c) {
        dst[i * step + c] = static_cast<std::uint8_t>((sum[c] + window / 2) / window);
      }
      const long index = static_cast<long>(i);
      for (std::size_t c = 0; c < 4; ++c) {
        sum[c] += at(index + radius + 1)[c] - at(index - radius)[c];
      }
    }
  }
}

}  // namespace

ToolEffectParameters::ToolEffectParameters(Kind kind, std::int32_t amount)
    : kind_(kind), amount_(amount) {}

const std::string& ToolEffectParameters::GetTypeName() const { return InfoOf(kind_).typeName; }

const std::string ToolEffect::kPackageName = "canvaro tool effects";

ToolEffect::ToolEffect(const ToolEffectParameters& parameters)
    : EffectSettings(Proc::ImplNames::DEFAULT), parameters_(parameters) {}

ToolEffectPtr ToolEffect::Make(Kind kind, std::int32_t amount) {
  const KindInfo& info = InfoOf(kind);
  if (amount < info.min || amount > info.max) {
    throw ToolError(std::string("the ") + info.name + " amount " + std::to_string(amount) +
                    " is outside " + std::to_string(info.min) + " to " + std::to_string(info.max));
  }
  return ToolEffectPtr(new ToolEffect(ToolEffectParameters(kind, amount)));
}

ToolEffectPtr ToolEffect::FromPackage(const EffectsSettingsPackage& package) {
  if (package.GetName() != kPackageName) return nullptr;
  std::istringstream text(package.GetDrawingTool());
  std::string name;
  std::int32_t amount = 0;
  if (!(text >> name)) return nullptr;
  const KindInfo* info = InfoByName(name);
  if (info == nullptr || !(text >> amount)) return nullptr;
  return Make(info->kind, amount);
}

ToolEffect::Ptr ToolEffect::Clone() const { return Ptr(new ToolEffect(*this)); }

bool ToolEffect::IsEqual(const IEffectSettings& other) const {
  const auto* effect = dynamic_cast<const ToolEffect*>(&other);
  return effect != nullptr && effect->GetKind() == GetKind() &&
         effect->GetAmount() == GetAmount() && effect->GetImplName() == GetImplName();
}

void ToolEffect::Serialize(const Kelbra::Drevin::ISerializerPtr& serializer) const {
  EffectSettings::Serialize(serializer);
  serializer->WriteString("kind", InfoOf(GetKind()).name);
  serializer->WriteInt("amount", GetAmount());
}

void ToolEffect::Deserialize(const Kelbra::Drevin::ISerializerConstPtr& serializer) {
  EffectSettings::Deserialize(serializer);
  const std::string name = serializer->ReadString("kind", InfoOf(GetKind()).name);
  const KindInfo* info = InfoByName(name);
  if (info == nullptr) throw ToolError("unknown tool effect '" + name + "'");
  parameters_ = ToolEffectParameters(info->kind, serializer->ReadInt("amount", GetAmount()));
}

std::string ToolEffect::Describe() const {
  switch (GetKind()) {
    case Kind::Brightness:
      return std::string("Brightness ") + (GetAmount() >= 0 ? "+" : "") +
             std::to_string(GetAmount());
    case Kind::Blur:
      return "Blur " + std::to_string(GetAmount()) + " px";
    case Kind::Invert:
      return "Invert";
  }
  return "?";
}

Proc::IDataVideoPtr ToolEffect::Apply(const Proc::IDataVideo& source) const {
  if (source.GetPixFmt() != Proc::PixFmt::RGBA) {
    throw ToolError("the tool's effects work on RGBA pictures only");
  }
  Proc::IDataVideoPtr out = Proc::CopyDataVideo(source);
  switch (GetKind()) {
    case Kind::Brightness: {
      const int amount = GetAmount();
      std::array<std::uint8_t, 256> table{};
      for (int v = 0; v < 256; ++v) table[static_cast<std::size_t>(v)] = Clamp(v + amount);
      ForEachColour(*out, [&](std::uint8_t v) { return table[v]; });
      break;
    }
    case Kind::Invert:
      ForEachColour(*out, [](std::uint8_t v) { return static_cast<std::uint8_t>(255 - v); });
      break;
    case Kind::Blur: {
      if (GetAmount() == 0) break;
      const std::size_t width = static_cast<std::size_t>(source.GetFrameInfo().width);
      const std::size_t height = static_cast<std::size_t>(source.GetFrameInfo().height);
      std::vector<std::uint8_t> packed(width * height * 4);
      std::vector<std::uint8_t> across(packed.size());
      auto plane = out->GetPlane(0);
      for (std::size_t y = 0; y < height; ++y) {
        std::memcpy(packed.data() + y * width * 4, plane.GetOffsetPtr(0, y), width * 4);
      }
      BoxPass(packed.data(), across.data(), width, height, GetAmount(), true);
      BoxPass(across.data(), packed.data(), width, height, GetAmount(), false);
      for (std::size_t y = 0; y < height; ++y) {
        std::memcpy(plane.GetOffsetPtr(0, y), packed.data() + y * width * 4, width * 4);
      }
      break;
    }
  }
  return out;
}

SettingsCore ToolEffect::MakeStepSettings() const {
  SettingsCore settings;
  EffectsSettingsPackage& package = settings.GetEffectsSettings().GetPackage();
  package.SetName(kPackageName);
  package.SetPackageIndex(static_cast<std::int32_t>(GetKind()));
  package.SetPresetName(Describe());
  package.SetDrawingTool(std::string(InfoOf(GetKind()).name) + " " + std::to_string(GetAmount()));
  package.SetEffectIndex(0);
  return settings;
}

SettingsCore MakeSourceSettings(const std::string& presetName) {
  SettingsCore settings;
  EffectsSettingsPackage& package = settings.GetEffectsSettings().GetPackage();
  package.SetName(ToolEffect::kPackageName);
  package.SetPresetName(presetName);
  return settings;
}

}  // namespace canvaro_tool
