// canvaro verify: a whole demo document passes; each kind of damage to its swap files or frame
// references gives one line and status 1.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DemoOutput.h"

namespace {

using namespace canvaro_test;
using Kelbra::Core::Property;
using ::testing::HasSubstr;
using ::testing::StartsWith;
namespace fs = std::filesystem;

class VerifyCommandTest : public DemoOutputTest {};

TEST_F(VerifyCommandTest, AWholeDocumentPasses) {
  EXPECT_THAT(RunToolOk({"verify", Demo().string()}).out, StartsWith("OK: "));
  // The document file itself may be named, and the swap directory given.
  RunToolOk(
      {"verify", (Demo() / "document.json").string(), "--swap", (Demo() / "pictures").string()});
  // --load: the library opens the package and walks every step.
  RunToolOk({"verify", Demo().string(), "--load"});
  // A step index of -1 (a document without a step saves it) leaves undo enabled with nothing
  // to undo: the walk still ends.
  const fs::path dir = FreshCopy();
  EditDocument(dir, [](Property& tree) { tree.GetChild("UndoManager").SetInt("Index", -1); });
  RunToolOk({"verify", dir.string(), "--load"});
}

TEST_F(VerifyCommandTest, EachDamageGivesOneLine) {
  const fs::path dir = FreshCopy();
  const fs::path swap = dir / "pictures";
  const std::string missing = PictureFile(dir, 1);
  const std::string truncated = PictureFile(dir, 2);
  const std::string oversized = PictureFile(dir, 3);
  const std::string header = PictureFile(dir, 4);
  const std::string flipped = InspectJson(dir)["items"]["list"][1]["mask"]["frame"]["file"];
  fs::remove(swap / missing);
  fs::resize_file(swap / truncated, fs::file_size(swap / truncated) - 7);
  std::ofstream(swap / oversized, std::ios::binary | std::ios::app) << "tail";
  fs::resize_file(swap / header, 12);
  {  // a byte of item 1's mask changed, the size kept: only the checksum can tell
    std::fstream file(swap / flipped, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(-3, std::ios::end);
    file.put('\x7f');
  }
  // Item 0's picture file replaced by a whole raw frame of another size.
  {
    std::ofstream out(swap / PictureFile(dir, 0), std::ios::binary | std::ios::trunc);
    const std::int32_t rgba10x10[5] = {26, 10, 10, 1, 1};
    out.write(reinterpret_cast<const char*>(rgba10x10), sizeof rgba10x10);
    out << std::string(10 * 10 * 4, '\x7f');
  }
  EditDocument(dir, [](Property& tree) { Collection(tree, "Items")[3].SetInt("FrameIndex", 999); });

  const ToolRun run = RunTool({"verify", dir.string()});
  EXPECT_TRUE(FailedWith(run, 1, "canvaro: 7 problem(s)"));
  ASSERT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 7) << run.out;
  EXPECT_THAT(run.out, HasSubstr("missing swap file " + missing + " (frame "));
  EXPECT_THAT(run.out, HasSubstr("truncated swap file " + truncated));
  EXPECT_THAT(run.out, HasSubstr("oversized swap file " + oversized));
  EXPECT_THAT(run.out, HasSubstr("truncated swap file " + header + " (frame"));
  EXPECT_THAT(run.out, HasSubstr("shorter than the raw frame header"));
  EXPECT_THAT(run.out, HasSubstr(flipped + "' is damaged (checksum"));
  EXPECT_THAT(run.out, HasSubstr("item 3 refers to frame 999, but the document has"));
  EXPECT_THAT(run.out, HasSubstr("holds a 10x10 picture, the document expects 48x36"));
  EXPECT_EQ(RunTool({"verify", dir.string(), "--load"}).status, 1);
}

}  // namespace
