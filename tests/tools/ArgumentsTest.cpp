// The command-line parser: option forms, values, positional arguments and what it refuses.
#include <gtest/gtest.h>

#include "tools/canvaro/Arguments.h"
#include "tools/canvaro/ToolError.h"

namespace {

using canvaro_tool::Arguments;
using canvaro_tool::UsageError;

const std::vector<canvaro_tool::OptionSpec> kOptions = {{"steps", true}, {"json", false}};

TEST(ArgumentsTest, ReadsBothOptionFormsFlagsAndPositionals) {
  const Arguments args({"doc", "--steps", "7", "--json", "--", "--not-an-option"}, kOptions);
  EXPECT_EQ(args.GetInt("steps", 1, 1, 10), 7);
  EXPECT_TRUE(args.Has("json"));
  EXPECT_EQ(args.Positional(), (std::vector<std::string>{"doc", "--not-an-option"}));
  EXPECT_EQ(Arguments({"--steps=3"}, kOptions).GetInt("steps", 1, 1, 10), 3);
  EXPECT_EQ(Arguments({}, kOptions).GetInt("steps", 5, 1, 10), 5);
  EXPECT_TRUE(Arguments({"-h"}, kOptions).Has("help"));
}

TEST(ArgumentsTest, RefusesWhatItDoesNotKnow) {
  EXPECT_THROW(Arguments({"--colour"}, kOptions), UsageError);
  EXPECT_THROW(Arguments({"-x"}, kOptions), UsageError);
  EXPECT_THROW(Arguments({"--steps"}, kOptions), UsageError);
  EXPECT_THROW(Arguments({"--json=yes"}, kOptions), UsageError);
  for (const std::string bad : {"", "x", "3x", "11", "0", "99999999999999999999"}) {
    EXPECT_THROW(Arguments({"--steps", bad}, kOptions).GetInt("steps", 1, 1, 10), UsageError)
        << bad;
  }
  EXPECT_THROW(Arguments({"a", "b"}, kOptions).ExpectPositional(1, 1, "a document"), UsageError);
  EXPECT_THROW(Arguments({}, kOptions).ExpectPositional(1, 1, "a document"), UsageError);
}

}  // namespace
