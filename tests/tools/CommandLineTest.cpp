// The tool's command line as a user meets it: help for every command, usage errors with status 2,
// input errors with status 1, always one line on stderr and never a crash.
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DemoOutput.h"
#include "ToolRunner.h"
#include "canvaro/version.h"

namespace {

using namespace canvaro_test;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(CommandLineTest, EveryCommandExplainsItself) {
  for (const std::string command : {"demo", "inspect", "verify", "export"}) {
    const ToolRun run = RunToolOk({command, "--help"});
    EXPECT_THAT(run.out, StartsWith("Usage: canvaro " + command)) << command;
    EXPECT_EQ(RunTool({"help", command}).out, run.out) << command;
  }
  for (const std::vector<std::string>& args : {std::vector<std::string>{"--help"}, {"help"}}) {
    EXPECT_THAT(RunToolOk(args).out, HasSubstr("export"));
  }
  EXPECT_EQ(RunToolOk({"--version"}).out, std::string("canvaro ") + CANVARO_VERSION_STRING + "\n");
}

TEST(CommandLineTest, UsageErrorsExitWithTwoAndOneLine) {
  EXPECT_EQ(RunTool({}).status, 2);  // the overview, on stderr
  // Command lines, split at spaces.
  for (const std::string line :
       {"paint", "demo --steps 0", "demo --steps many", "demo --size 48",
        "demo --size 48x36 --picture a.png", "demo --colour red", "demo --steps", "inspect",
        "inspect a b", "verify --json doc", "export doc", "export doc --out x.png --item -1",
        "export doc --out x.png --step 1", "export doc --out x.png --out y.png",
        "inspect doc --json --json", "demo --verbose --verbose", "inspect -- doc --json",
        "help paint"}) {
    std::vector<std::string> args;
    std::istringstream words(line);
    for (std::string word; words >> word;) args.push_back(word);
    EXPECT_TRUE(FailedWith(RunTool(args), 2, "")) << line;
  }
}

class BrokenDocumentTest : public DemoOutputTest {};

// Every command that reads a document fails on each broken one with status 1 and one line that
// names the cause.
TEST_F(BrokenDocumentTest, MissingMalformedOrWronglyTypedDocumentsAreRefused) {
  const auto dir = FreshCopy();
  std::ofstream(dir / "garbage.json") << "{\"entries\": [ {\"key\": \"Index\", \"int\": ";
  std::ofstream(dir / "other.json") << "{\"entries\": []}";
  // A string where the first item's frame index belongs.
  EditDocument(dir, [](Kelbra::Core::Property& tree) {
    Collection(tree, "Items")[0].SetString("FrameIndex", "zero");
  });
  const std::pair<std::string, std::string> cases[] = {
      {"none.json", "no such file"},
      {"garbage.json", "cannot read document"},
      {"other.json", "not a saved document"},
      {"document.json", "malformed document: Items[0].FrameIndex: holds string, expected int"}};
  for (const auto& [name, expected] : cases) {
    const std::string doc = (dir / name).string();
    for (const auto& args : std::vector<std::vector<std::string>>{
             {"inspect", doc},
             {"inspect", doc, "--json"},
             {"verify", doc},
             {"export", doc, "--out", (dir / "out.png").string()}}) {
      EXPECT_TRUE(FailedWith(RunTool(args), 1, expected)) << args[0] << " " << name;
    }
  }
}

}  // namespace
