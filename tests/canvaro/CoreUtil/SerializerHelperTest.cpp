#include "canvaro/CoreUtil/SerializerHelper.h"

#include <gtest/gtest.h>

#include "canvaro/foundation/ToolsId.h"
#include "kelbra/Core/PropertySerializer.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

TEST(SerializerHelperTest, RendersARecordAsTextThatReadsBack) {
  const std::string text =
      CoreUtil::SerializerHelper::SerializeToString(ToolsId(IToolsId::SHAPE_LINE));
  EXPECT_EQ(text,
            "{\n"
            "  \"entries\": [\n"
            "    {\"key\": \"ToolName\", \"string\": \"SHAPE_LINE\"}\n"
            "  ]\n"
            "}\n");
  EXPECT_EQ(Core::PropertySerializer::FromString(text).GetString("ToolName"), "SHAPE_LINE");
}

}  // namespace
