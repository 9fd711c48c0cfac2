/// \file
/// Tool identifiers: which editor tool made a shape or an effects package.
///
/// IToolsId::Value is a small enumeration that is stored by name ("SHAPE_LINE"), never by number,
/// so that saved documents survive a renumbering. IToolsId is the interface of an object with a
/// current tool; ToolsId implements it and writes the tool as the entry "ToolName":
///
///   ToolsId tool(IToolsId::SHAPE_FRAME);
///   tool.Serialize(s);                                  // "ToolName" = "SHAPE_FRAME"
///   IToolsId::GetToolID("SHAPE_LINE") == IToolsId::SHAPE_LINE;
///   IToolsId::GetToolID("shape_line") == IToolsId::NONE;   // unknown names read as NONE
///
/// Classes that carry a current tool derive from ToolsId virtually, so each object has one.
#pragma once

#include <cstdint>
#include <string>

#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Canvaro {

class IToolsId : public virtual Drevin::ISerializable {
 public:
  enum Value : std::int32_t {
    NONE = -1,
    TEXT = 0,
    SHAPE_ARROW = 1,
    SHAPE_LINE = 2,
    SHAPE_MARKER = 3,
    SHAPE_FRAME = 4,
    STUB = 5,
  };

  /// The value stored under `name` (exact, case-sensitive); NONE for a name not in the table.
  static Value GetToolID(const std::string& name);
  /// The stored name of `value`. Throws CanvaroException for a value that is not in the table.
  static const std::string& GetToolName(Value value);

  ~IToolsId() override = default;

  /// This object seen as its tool.
  virtual const IToolsId& GetCurrentTool() const = 0;
  virtual Value GetCurrentToolID() const = 0;
  /// Takes over other.GetCurrentToolID().
  virtual void SetCurrentTool(const IToolsId& other) = 0;
  /// Routes through SetCurrentTool(const IToolsId&), so an override of that one sees both.
  virtual void SetCurrentTool(Value value) = 0;
};

class ToolsId : public virtual IToolsId {
 public:
  explicit ToolsId(Value value) : value_(value) {}
  ToolsId(const ToolsId&) = default;
  ToolsId& operator=(const ToolsId&) = default;

  const IToolsId& GetCurrentTool() const override { return *this; }
  Value GetCurrentToolID() const override { return value_; }
  void SetCurrentTool(const IToolsId& other) override { value_ = other.GetCurrentToolID(); }
  void SetCurrentTool(Value value) override;

  /// Writes "ToolName" = the stored name of the current tool.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads "ToolName" (absent reads as the empty name) and sets the tool to its value, so a
  /// missing or unknown name gives NONE.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  Value value_;
};

}  // namespace Kelbra::Canvaro
