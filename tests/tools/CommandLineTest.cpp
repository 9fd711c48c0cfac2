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
    const ToolRun run = RunTool({command, "--help"});
    EXPECT_EQ(run.status, 0) << command;
    EXPECT_THAT(run.out, StartsWith("Usage: canvaro " + command)) << command;
    EXPECT_EQ(RunTool({"help", command}).out, run.out) << command;
  }
  for (const std::vector<std::string>& args : {std::vector<std::string>{"--help"}, {"help"}}) {
    const ToolRun overview = RunTool(args);
    EXPECT_EQ(overview.status, 0);
    EXPECT_THAT(overview.out, HasSubstr("export"));
  }
  const ToolRun version = RunTool({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out, std::string("canvaro ") + CANVARO_VERSION_STRING + "\n");
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

class BrokenDocumentTest : public DemoOutputTest {
 protected:
  // Every command that reads a document fails on `document` with status 1 and one line that
  // contains `expected`.
  void ExpectEveryReaderFails(const std::filesystem::path& document, const std::string& expected) {
    const std::string doc = document.string();
    for (const auto& args : std::vector<std::vector<std::string>>{
             {"inspect", doc},
             {"inspect", doc, "--json"},
             {"verify", doc},
             {"export", doc, "--out", (document.parent_path() / "out.png").string()}}) {
      EXPECT_TRUE(FailedWith(RunTool(args), 1, expected)) << args[0];
    }
  }
};

TEST_F(BrokenDocumentTest, MissingMalformedOrWronglyTypedDocumentsAreRefused) {
  const auto dir = FreshCopy();
  ExpectEveryReaderFails(dir / "none.json", "no such file");

  std::ofstream(dir / "garbage.json") << "{\"entries\": [ {\"key\": \"Index\", \"int\": ";
  ExpectEveryReaderFails(dir / "garbage.json", "cannot read document");

  std::ofstream(dir / "other.json") << "{\"entries\": []}";
  ExpectEveryReaderFails(dir / "other.json", "not a saved document");

  // A string where the first item's frame index belongs.
  Kelbra::Core::Property tree = ReadTree(dir / "document.json");
  std::get<Kelbra::Core::Property::Collection>(tree.Find("Items")->value)[0].SetString("FrameIndex",
                                                                                       "zero");
  WriteTree(tree, dir / "typed.json");
  ExpectEveryReaderFails(dir / "typed.json",
                         "malformed document: Items[0].FrameIndex: holds string, expected int");
}

}  // namespace
