/// \file
/// RenderingTypeBase: the colours that every shape kind has (main colour, outline colour and
/// opacity), and what removing a shape does. The kinds' rendering types derive from it (through
/// RenderingTypeBaseToolIdRemovable) and add their own parameters.
///
/// The constructor gives a white shape with a transparent outline; Reset gives opaque black for
/// both. The two really differ: a new shape and a reset shape look different.
///
///   "TextColor" and "OutlineColor" are stored as packed RGBA integers, "Opacity" as 0-255.
#pragma once

#include <cstdint>

#include "canvaro/shapes/IRenderingType.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Proc/Color.h"

namespace Kelbra::Canvaro {

class ShapeInfoBase;

class RenderingTypeBase : public virtual Drevin::ISerializable, public virtual IRenderingType {
 public:
  RenderingTypeBase() = default;
  RenderingTypeBase(const RenderingTypeBase&) = default;
  RenderingTypeBase& operator=(const RenderingTypeBase&) = default;
  ~RenderingTypeBase() override = default;

  /// Colours and opacity equal.
  bool operator==(const RenderingTypeBase& other) const;

  /// Opaque black colour and outline, full opacity.
  void Reset();

  /// Hides `shape` and marks it unsaved. `resetTool` is for derived kinds.
  virtual void Remove(ShapeInfoBase& shape, bool resetTool) const;
  /// A shape's saved state is its InfoTypeBase flag, passed in as `saved`; kinds whose rendering
  /// parameters can be unsaved on their own would answer otherwise.
  bool IsSaved(bool saved) const { return saved; }

  const Proc::Color& GetColor() const { return color_; }
  void SetColor(const Proc::Color& color) { color_ = color; }
  const Proc::Color& GetOutlineColor() const { return outlineColor_; }
  void SetOutlineColor(const Proc::Color& color) { outlineColor_ = color; }
  std::uint8_t GetOpacity() const { return opacity_; }
  void SetOpacity(std::uint8_t opacity) { opacity_ = opacity; }

  /// Writes "TextColor", "OutlineColor", "Opacity", in this order.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the same keys; an absent key leaves its field as it is.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  Proc::Color color_{255, 255, 255, 255};
  Proc::Color outlineColor_{0, 0, 0, 0};
  std::uint8_t opacity_ = 255;
};

}  // namespace Kelbra::Canvaro
