/// \file
/// ShapeInfoT<R>: a concrete shape kind, made from the common shape record (ShapeInfoBase) and
/// the kind's rendering parameters R. The seven kinds of the library are instantiations of it
/// (LineInfo, ArrowInfo, ShapedArrowInfo, RectangleInfo, EllipseInfo, MarkerInfo, TextInfo).
///
///   ShapeInfoBasePtr line = LineInfo::Create(IToolsId::SHAPE_LINE);
///   auto& stroke = static_cast<LineInfo&>(*line).GetRendering();
///   stroke.SetLength(0.5);
///   ShapeInfo handle(*line);   // the library passes shapes on as handles
///
/// R derives from RenderingTypeBaseToolIdRemovable and provides:
///   static constexpr ShapeType kShapeType;              // the kind's bit
///   bool operator==(const R&) const;                    // every field, doubles within 1e-5
///   Serialize / Deserialize, Transpose / Resize / Crop  // ISerializable and IRenderingType
///
/// Records are reference-counted (held by boost::intrusive_ptr) and not guarded: see
/// ShapeInfoBase for the threading and immutability rules.
#pragma once

#include "canvaro/shapes/ShapeInfoBase.h"

namespace Kelbra::Canvaro {

template <class R>
class ShapeInfoT final : public ShapeInfoBase {
 public:
  using RenderingType = R;

  /// The common record's defaults made with `tool`, and R's defaults.
  explicit ShapeInfoT(IToolsId::Value tool) : ToolsId(IToolsId::NONE), ShapeInfoBase(tool) {}
  /// A member-wise copy with a reference count of its own.
  ShapeInfoT(const ShapeInfoT& other) = default;
  ShapeInfoT& operator=(const ShapeInfoT&) = delete;

  /// A new record of this kind; the creator of the kind's registry row.
  static ShapeInfoBasePtr Create(IToolsId::Value tool) {
    return ShapeInfoBasePtr(new ShapeInfoT(tool));
  }

  /// The common parts first (so records of other kinds compare unequal without a cast), then
  /// the rendering parameters.
  bool operator==(const ShapeInfoBase& other) const override {
    if (!ShapeInfoBase::operator==(other)) return false;
    /// A host kind could share this kind's bit; such a record is simply not equal.
    const auto* same = dynamic_cast<const ShapeInfoT*>(&other);
    return same != nullptr && rendering_ == same->rendering_;
  }
  /// The same comparison for two records known to be of this kind (without it, a == b on two
  /// such records would be ambiguous with its reversed form b == a).
  bool operator==(const ShapeInfoT& other) const {
    return *this == static_cast<const ShapeInfoBase&>(other);
  }

  ShapeType GetShapeType() const override { return R::kShapeType; }
  ShapeInfoBasePtr Clone() const override { return ShapeInfoBasePtr(new ShapeInfoT(*this)); }
  const IRenderingType& RenderingSettings() const override { return rendering_; }
  IRenderingType& RenderingSettings() override { return rendering_; }
  /// The kind's own parameters, with their concrete type.
  const R& GetRendering() const { return rendering_; }
  R& GetRendering() { return rendering_; }

  bool IsSaved() const override { return rendering_.IsSaved(GetSaved()); }
  void Remove(bool resetTool) override { rendering_.Remove(*this, resetTool); }
  /// Colours to opaque black (the kind's own parameters stay), then the common record.
  void Reset() override {
    rendering_.RenderingTypeBase::Reset();
    ShapeInfoBase::Reset();
  }

  /// The common keys, then the kind's, all in this node.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override {
    ShapeInfoBase::Serialize(serializer);
    rendering_.Serialize(serializer);
  }
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override {
    ShapeInfoBase::Deserialize(serializer);
    rendering_.Deserialize(serializer);
  }

 private:
  ~ShapeInfoT() override = default;

  R rendering_;
};

}  // namespace Kelbra::Canvaro
