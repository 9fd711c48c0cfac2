/// \file
/// RenderingTypeLineBase: the stroke of the kinds that draw lines (line, arrow, shaped arrow,
/// rectangle, ellipse): its thickness in pixels, the thickness of its outline and the host's
/// stroke style number. A kind's rendering type derives from it beside
/// RenderingTypeBaseToolIdRemovable and writes its keys after the colours:
///
///   struct RenderingType : RenderingTypeBaseToolIdRemovable, RenderingTypeLineBase { ... };
///   // "TextColor", "OutlineColor", "Opacity", "Thickness", "OutlineThickness", "Style", ...
///
/// The stroke itself does not follow the picture; the kinds scale the thickness through
/// IRenderingType::ResizeImpl.
#pragma once

#include <cstdint>

#include "canvaro/shapes/IRenderingType.h"
#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Canvaro::LineInfoBaseDetails {

class RenderingTypeLineBase : public virtual Drevin::ISerializable, public virtual IRenderingType {
 public:
  RenderingTypeLineBase() = default;
  RenderingTypeLineBase(const RenderingTypeLineBase&) = default;
  RenderingTypeLineBase& operator=(const RenderingTypeLineBase&) = default;
  ~RenderingTypeLineBase() override = default;

  /// Thickness and style exactly, outline thickness within 1e-5.
  bool operator==(const RenderingTypeLineBase& other) const;

  unsigned GetThickness() const { return thickness_; }
  void SetThickness(unsigned thickness) { thickness_ = thickness; }
  double GetOutlineThickness() const { return outlineThickness_; }
  void SetOutlineThickness(double thickness) { outlineThickness_ = thickness; }
  std::int32_t GetStyle() const { return style_; }
  void SetStyle(std::int32_t style) { style_ = style; }

  /// Writes "Thickness", "OutlineThickness", "Style", in this order.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the same keys; an absent key leaves its field as it is.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 protected:
  /// For the kinds' Resize.
  unsigned& Thickness() { return thickness_; }

 private:
  unsigned thickness_ = 1;
  double outlineThickness_ = 0.0;
  std::int32_t style_ = 0;
};

}  // namespace Kelbra::Canvaro::LineInfoBaseDetails
