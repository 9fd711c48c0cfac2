/// \file
/// InfoTypeBase: the bookkeeping part of every shape record: where the shape stands in its
/// document's shape set, whether it is shown, which tool and preset made it, its stacking order,
/// a host-defined change tag and whether this state is the one on disk.
///
///   shape.SetZValue(InfoTypeBase::ZValueMin);
///   shape.Serialize(s);   // "Index", "Visible", "Saved", "InfoTypeBaseToolName", ...
///
/// Equality looks only at what the host sees: visibility, preset and z value (within 1e-5). The
/// tool kept here is the record's own, stored under its own key; a shape's current tool is the
/// ToolsId part of ShapeInfoBase.
///
/// Errors: reading passes the serializer's exceptions through, except for a z value stored as an
/// integer by older writers, which is read as one and converted.
#pragma once

#include <cstdint>
#include <string>

#include "canvaro/foundation/ToolsId.h"
#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Canvaro {

class InfoTypeBase : public virtual Drevin::ISerializable {
 public:
  /// The range of z values that the shape set hands out.
  static constexpr double ZValueMin = 100.0;
  static constexpr double ZValueMax = 2147483547.0;  // the largest int32 less 100

  InfoTypeBase() = default;
  InfoTypeBase(const InfoTypeBase&) = default;
  InfoTypeBase& operator=(const InfoTypeBase&) = default;
  ~InfoTypeBase() override = default;

  /// Visible flags and preset ids equal, z values within 1e-5.
  bool operator==(const InfoTypeBase& other) const;

  /// Back to the defaults, except the change type, which belongs to the host.
  void Reset();

  std::int32_t GetIndex() const { return index_; }
  void SetIndex(std::int32_t index) { index_ = index; }
  bool IsVisible() const { return visible_; }
  void SetVisible(bool visible) { visible_ = visible; }
  /// The tool stored with the record (not the ToolsId current tool of a shape).
  IToolsId::Value GetTool() const { return tool_; }
  void SetTool(IToolsId::Value tool) { tool_ = tool; }
  const std::string& GetPresetId() const { return presetId_; }
  void SetPresetId(const std::string& presetId) { presetId_ = presetId; }
  double GetZValue() const { return zValue_; }
  void SetZValue(double zValue) { zValue_ = zValue; }
  std::int32_t GetChangeType() const { return changeType_; }
  void SetChangeType(std::int32_t changeType) { changeType_ = changeType; }
  /// The flag itself; a shape answers IsSaved() through its kind.
  bool GetSaved() const { return saved_; }
  virtual void SetSaved(bool saved) { saved_ = saved; }

  /// Writes "Index", "Visible", "Saved", "InfoTypeBaseToolName", "PresetID", "ZValue",
  /// "ChangeType", in this order.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the same keys; an absent key leaves its field as it is.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  std::int32_t index_ = -1;
  bool visible_ = true;
  IToolsId::Value tool_ = IToolsId::NONE;
  std::string presetId_;
  double zValue_ = 0.0;
  std::int32_t changeType_ = 0;
  bool saved_ = false;
};

}  // namespace Kelbra::Canvaro
