#include "canvaro/foundation/ToolsId.h"

#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/SerializeNames.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

TEST(ToolsIdTest, NameTableLooksUpExactNamesOnly) {
  const std::pair<IToolsId::Value, const char*> table[] = {
      {IToolsId::NONE, "NONE"},           {IToolsId::TEXT, "TEXT"},
      {IToolsId::SHAPE_ARROW, "SHAPE_ARROW"}, {IToolsId::SHAPE_LINE, "SHAPE_LINE"},
      {IToolsId::SHAPE_MARKER, "SHAPE_MARKER"}, {IToolsId::SHAPE_FRAME, "SHAPE_FRAME"},
      {IToolsId::STUB, "STUB"}};
  for (const auto& [value, name] : table) {
    EXPECT_EQ(IToolsId::GetToolID(name), value) << name;
    EXPECT_EQ(IToolsId::GetToolName(value), name);
  }
  EXPECT_EQ(IToolsId::GetToolID("SHAPE_LINE"), 2);
  EXPECT_EQ(IToolsId::GetToolID("shape_line"), -1);
  EXPECT_EQ(IToolsId::GetToolID(""), -1);
  EXPECT_EQ(IToolsId::GetToolID("SHAPE_LINE "), -1);
  EXPECT_EQ(&IToolsId::GetToolName(IToolsId::SHAPE_LINE), &SerializeNames::ToolsName::SHAPE_LINE);
  EXPECT_THROW(IToolsId::GetToolName(static_cast<IToolsId::Value>(42)), CanvaroException);
}

// The tool is stored by name; a missing or unknown name reads as no tool.
TEST(ToolsIdTest, StoresTheToolByNameAndReadsUnknownNamesAsNone) {
  Core::Property tree;
  ToolsId(IToolsId::SHAPE_FRAME).Serialize(Drevin::SerializerProperty::Create(tree));
  EXPECT_EQ(tree.GetString("ToolName"), "SHAPE_FRAME");
  Core::Property misspelt;
  misspelt.SetString("ToolName", "SHAPE_ARROWS");
  const Core::Property empty;
  using Case = std::pair<const Core::Property*, IToolsId::Value>;
  for (const auto& [node, expected] :
       {Case{&tree, IToolsId::SHAPE_FRAME}, Case{&misspelt, IToolsId::NONE},
        Case{&empty, IToolsId::NONE}}) {
    ToolsId read(IToolsId::TEXT);
    read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(*node)));
    EXPECT_EQ(read.GetCurrentToolID(), expected);
  }
}

// An owner that watches tool changes sees changes by value too.
class WatchedTool : public ToolsId {
 public:
  WatchedTool() : ToolsId(IToolsId::NONE) {}
  using ToolsId::SetCurrentTool;
  void SetCurrentTool(const IToolsId& other) override {
    ++changes;
    ToolsId::SetCurrentTool(other);
  }
  int changes = 0;
};

TEST(ToolsIdTest, SettingByValueRoutesThroughTheObjectOverload) {
  WatchedTool tool;
  tool.SetCurrentTool(IToolsId::SHAPE_MARKER);
  EXPECT_EQ(tool.changes, 1);
  EXPECT_EQ(tool.GetCurrentToolID(), IToolsId::SHAPE_MARKER);
  ToolsId other(IToolsId::STUB);
  tool.SetCurrentTool(other.GetCurrentTool());
  EXPECT_EQ(tool.changes, 2);
  EXPECT_EQ(tool.GetCurrentToolID(), IToolsId::STUB);
}

}  // namespace
