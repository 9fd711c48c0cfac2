/// \file
/// RenderingTypeRectangleBaseT<W, H>: the box size of the kinds drawn in a box (rectangle,
/// ellipse, marker): width and height as fractions of the picture's width and height. W and H
/// are std::ratio values giving the defaults of a new shape; the library's kinds use a quarter of
/// the picture for both (RenderingTypeRectangleBase).
///
///   struct RenderingType : RenderingTypeBaseToolIdRemovable, RenderingTypeRectangleBase { ... };
///   // ..., "Width", "Height"
///
/// Following the picture (quarter turns, resizes, crops) is up to the kind, through the
/// geometry of IRenderingType.
#pragma once

#include <ratio>

#include "canvaro/shapes/IRenderingType.h"
#include "canvaro/shapes/ShapeSerializeNames.h"
#include "canvaro/shapes/Tolerance.h"
#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Canvaro::RectangleInfoDetailsBase {

template <class W, class H>
class RenderingTypeRectangleBaseT : public virtual Drevin::ISerializable,
                                    public virtual IRenderingType {
 public:
  static constexpr double kDefaultWidth = static_cast<double>(W::num) / W::den;
  static constexpr double kDefaultHeight = static_cast<double>(H::num) / H::den;

  RenderingTypeRectangleBaseT() = default;
  RenderingTypeRectangleBaseT(const RenderingTypeRectangleBaseT&) = default;
  RenderingTypeRectangleBaseT& operator=(const RenderingTypeRectangleBaseT&) = default;
  ~RenderingTypeRectangleBaseT() override = default;

  /// Width and height each within 1e-5.
  bool operator==(const RenderingTypeRectangleBaseT& other) const {
    return NearlyEqual(width_, other.width_) && NearlyEqual(height_, other.height_);
  }

  double GetWidth() const { return width_; }
  void SetWidth(double width) { width_ = width; }
  double GetHeight() const { return height_; }
  void SetHeight(double height) { height_ = height; }

  /// Writes "Width", "Height", in this order.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override {
    serializer->WriteDouble(SerializeNames::RenderingTypeBase::WIDTH, width_);
    serializer->WriteDouble(SerializeNames::RenderingTypeBase::HEIGHT, height_);
  }
  /// Reads the same keys; an absent key leaves its field as it is.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override {
    width_ = serializer->ReadDouble(SerializeNames::RenderingTypeBase::WIDTH, width_);
    height_ = serializer->ReadDouble(SerializeNames::RenderingTypeBase::HEIGHT, height_);
  }

 protected:
  /// The box follows a quarter turn of a picture of `frame`'s size: the sides swap their
  /// reference lengths, so the fractions change by the picture's aspect.
  void TransposeBox(const Conf::FrameInfo& frame, const Proc::SettingsEffectTranspose& t) {
    const double aspect = GetTransposeAspect(frame, t);
    if (aspect < 0) return;
    width_ /= aspect;
    height_ *= aspect;
  }
  void CropBox(const Conf::FrameInfo& frame, const ROI& roi) {
    CropImpl(frame, roi, width_, height_);
  }
  double& Width() { return width_; }
  double& Height() { return height_; }

 private:
  double width_ = kDefaultWidth;
  double height_ = kDefaultHeight;
};

/// The box of the library's kinds: a quarter of the picture each way.
using RenderingTypeRectangleBase = RenderingTypeRectangleBaseT<std::ratio<1, 4>, std::ratio<1, 4>>;

}  // namespace Kelbra::Canvaro::RectangleInfoDetailsBase
