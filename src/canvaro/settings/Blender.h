/// \file
/// Blender settings: how a mask is blended into the picture.
///
/// The blending itself is the host's (IBlender is its interface); the library only stores,
/// compares and serializes the Initializer that configures it, as part of every mask step:
///
///   Blender::IBlender::Initializer blender(Initializer::DEFAULT, Proc::Color::Black());
///   blender.SetOpacity(128).SetRangeMin(10).SetRangeMax(200);
///
/// Every field is written as a 32-bit integer (the colour in its packed RGBA form). On reading, a
/// missing key keeps the field, and the 8-bit fields take the low 8 bits of what is stored
/// (256 reads as 0). No relation between the range bounds is checked.
#pragma once

#include <cstdint>
#include <string>

#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Proc/Color.h"

namespace Kelbra::Canvaro::Blender {

/// The host's blender. The library uses only its settings record.
class IBlender {
 public:
  class Initializer;

  virtual ~IBlender() = default;
};

class IBlender::Initializer : public virtual Drevin::ISerializable {
 public:
  /// The kind of mask. The kinds are the host's; the library keeps the number.
  enum MaskType : std::int32_t {
    DEFAULT = 0,
  };

  static const std::string MASK_TYPE;  // "keyBlenderSettingsMaskType"
  static const std::string COLOR;      // "keyBlenderSettingsMaskColor"
  static const std::string OPACITY;    // "keyBlenderSettingsMaskOpacity"
  static const std::string RANGE_MIN;  // "keyBlenderSettingsMaskRangeMin"
  static const std::string RANGE_MAX;  // "keyBlenderSettingsMaskRangeMax"

  /// Opacity 255 and the full range 0 to 255.
  Initializer(MaskType type, const Proc::Color& color);
  Initializer(const Initializer&) = default;
  Initializer& operator=(const Initializer&) = default;
  ~Initializer() override;

  MaskType GetMaskType() const { return maskType_; }
  const Proc::Color& GetColor() const { return color_; }
  std::uint8_t GetOpacity() const { return opacity_; }
  std::uint8_t GetRangeMin() const { return rangeMin_; }
  std::uint8_t GetRangeMax() const { return rangeMax_; }

  /// The setters return the object, so calls chain.
  Initializer& SetOpacity(std::uint8_t opacity);
  Initializer& SetRangeMin(std::uint8_t rangeMin);
  Initializer& SetRangeMax(std::uint8_t rangeMax);

  /// All five fields equal.
  bool operator==(const Initializer& other) const;
  bool operator!=(const Initializer& other) const { return !(*this == other); }

  /// Writes the five fields in the order of the key constants above.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads them in the same order; each absent key keeps its field.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  MaskType maskType_;
  Proc::Color color_;
  std::uint8_t opacity_ = 255;
  std::uint8_t rangeMin_ = 0;
  std::uint8_t rangeMax_ = 255;
};

}  // namespace Kelbra::Canvaro::Blender
