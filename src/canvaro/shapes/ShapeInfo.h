/// \file
/// ShapeInfo: the value handle through which the library passes shapes around.
///
/// A handle shares an immutable shape record (ShapeInfoBase): copying a handle shares the record,
/// building one from a record stores a clone of it, and the geometric operations return a new
/// handle on a changed clone, leaving the original alone.
///
///   ShapeInfo shape(*record);                        // a clone of *record
///   ShapeInfo copy = shape;                          // the same record
///   ShapeInfo turned = shape.Transpose(frame, t);    // a new record; `shape` is unchanged
///   shape->GetZValue();                              // reads through to the record
///
/// An empty handle (default-constructed) holds no record: it converts to false, compares equal
/// only to another empty handle, writes nothing, and its geometric operations return empty
/// handles. operator-> of an empty handle yields a null pointer; check the handle first.
///
/// Errors: Deserialize throws CanvaroException (InvalidDocument), with a description naming the
/// class id, when the node has no class id or one that is not a registered kind; serializer
/// exceptions pass through.
#pragma once

#include <string>

#include "canvaro/shapes/ShapeInfoBase.h"
#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Canvaro {

class ShapeInfo : public virtual Drevin::ISerializableBase {
 public:
  ShapeInfo() = default;
  ShapeInfo(const ShapeInfo&) = default;
  ShapeInfo& operator=(const ShapeInfo&) = default;
  ShapeInfo(ShapeInfo&&) noexcept = default;
  ShapeInfo& operator=(ShapeInfo&&) noexcept = default;
  ~ShapeInfo() override = default;

  /// Holds a clone of `shape`.
  explicit ShapeInfo(const ShapeInfoBase& shape);
  /// Holds a clone of `*shape`; empty when `shape` is null.
  explicit ShapeInfo(const ShapeInfoBaseConstPtr& shape);

  /// The records are equal (ShapeInfoBase::operator==, which the kinds extend); two empty handles
  /// are equal, an empty and a full one are not.
  bool operator==(const ShapeInfo& other) const;
  bool operator!=(const ShapeInfo& other) const { return !(*this == other); }
  explicit operator bool() const { return impl_ != nullptr; }

  /// The shared record; neither clones.
  ShapeInfoBaseConstPtr operator->() const { return impl_; }
  ShapeInfoBasePtr operator->() { return impl_; }
  const ShapeInfoBase* GetImpl() const { return impl_.get(); }
  ShapeInfoBase* GetImpl() { return impl_.get(); }

  /// The record's class id; empty for an empty handle.
  std::string GetClassId() const override;
  /// The record's entries in this node; nothing for an empty handle.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Replaces the record by a new one of the kind named by the node's class id, read from the
  /// node. A node without a class id (as an empty handle writes it) is refused: a shape record
  /// always names its kind. The handle is unchanged when this throws.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer);

  /// A new handle on a clone that has followed the picture's rotation, resize or crop.
  ShapeInfo Transpose(const Conf::FrameInfo& frame,
                      const Proc::SettingsEffectTranspose& transpose) const;
  ShapeInfo Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to) const;
  ShapeInfo Crop(const Conf::FrameInfo& frame, const ROI& roi) const;

 private:
  explicit ShapeInfo(ShapeInfoBasePtr impl) : impl_(std::move(impl)) {}

  ShapeInfoBasePtr impl_;
};

}  // namespace Kelbra::Canvaro
