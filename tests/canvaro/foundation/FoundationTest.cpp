// The foundation's small pieces: the library's exception, which carries a code, a call stack and
// where it was thrown, and the tool ids, stored by name.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <boost/exception/diagnostic_information.hpp>

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/SerializeNames.h"
#include "canvaro/foundation/Throw.h"
#include "canvaro/foundation/ToolsId.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using ::testing::HasSubstr;
using ::testing::Pointee;

// (That a coded failure keeps its code on the way from the swap worker to the caller is checked
// with the storage; the uncoded "Not implemented" failure with the factories that throw it.)
TEST(CanvaroExceptionTest, CodedFailureCarriesCodeStackAndThrowSite) {
  try {
    ThrowCoded(CanvaroError::SwapFileFailure, BOOST_CURRENT_LOCATION);
    FAIL() << "no exception";
  } catch (const CanvaroException& e) {
    EXPECT_THAT(boost::get_error_info<TagCanvaroErrorCode>(e),
                Pointee(CanvaroError::SwapFileFailure));
    EXPECT_NE(boost::get_error_info<Kelbra::TagCallStack>(e), nullptr);
    EXPECT_THAT(boost::get_error_info<boost::throw_file>(e),
                Pointee(HasSubstr("FoundationTest.cpp")));
    // The code has no name table: diagnostics show it as raw bytes.
    EXPECT_THAT(boost::diagnostic_information(e), HasSubstr("size: 4, dump: 01 00 00 00 ]"));
    EXPECT_STREQ(e.what(), "Kelbra::Canvaro::CanvaroException");
  }
}

TEST(ToolsIdTest, NamesAreLookedUpExactlyAndAnUnknownStoredNameReadsAsNoTool) {
  const std::pair<IToolsId::Value, const char*> table[] = {{IToolsId::NONE, "NONE"},
                                                           {IToolsId::TEXT, "TEXT"},
                                                           {IToolsId::SHAPE_ARROW, "SHAPE_ARROW"},
                                                           {IToolsId::SHAPE_LINE, "SHAPE_LINE"},
                                                           {IToolsId::SHAPE_MARKER, "SHAPE_MARKER"},
                                                           {IToolsId::SHAPE_FRAME, "SHAPE_FRAME"},
                                                           {IToolsId::STUB, "STUB"}};
  for (const auto& [value, name] : table) {
    EXPECT_EQ(IToolsId::GetToolID(name), value) << name;
    EXPECT_EQ(IToolsId::GetToolName(value), name);
  }
  EXPECT_EQ(IToolsId::GetToolID("SHAPE_LINE"), 2);
  for (const char* name : {"shape_line", "", "SHAPE_LINE "}) {
    EXPECT_EQ(IToolsId::GetToolID(name), IToolsId::NONE) << '"' << name << '"';
  }
  EXPECT_EQ(&IToolsId::GetToolName(IToolsId::SHAPE_LINE), &SerializeNames::ToolsName::SHAPE_LINE);
  EXPECT_THROW(IToolsId::GetToolName(static_cast<IToolsId::Value>(42)), CanvaroException);

  // The tool is stored by name (its round trip, and a missing name read as no tool, are checked
  // with the records that hold a tool); an unknown stored name reads as no tool too.
  Core::Property misspelt;
  misspelt.SetString("ToolName", "SHAPE_ARROWS");
  ToolsId read(IToolsId::TEXT);
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(misspelt)));
  EXPECT_EQ(read.GetCurrentToolID(), IToolsId::NONE);
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
}

}  // namespace
