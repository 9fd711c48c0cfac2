// canvaro verify: a whole demo document passes; each kind of damage to its swap files or frame
// references gives one line and status 1.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "DemoOutput.h"

namespace {

using namespace canvaro_test;
using ::testing::HasSubstr;
using ::testing::StartsWith;
namespace fs = std::filesystem;

class VerifyCommandTest : public DemoOutputTest {
 protected:
  // The swap file of item `item`'s picture.
  static std::string PictureFile(const fs::path& dir, int item) {
    const auto json = nlohmann::json::parse(RunTool({"inspect", dir.string(), "--json"}).out);
    return json["items"]["list"][item]["frame"]["file"];
  }
  // One line a problem.
  static std::size_t Problems(const ToolRun& run) {
    return static_cast<std::size_t>(std::count(run.out.begin(), run.out.end(), '\n'));
  }
};

TEST_F(VerifyCommandTest, AWholeDocumentPasses) {
  const ToolRun run = RunTool({"verify", Demo().string()});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(run.out, StartsWith("OK: "));
  // The document file itself may be named, and the swap directory given.
  const ToolRun named = RunTool(
      {"verify", (Demo() / "document.json").string(), "--swap", (Demo() / "pictures").string()});
  EXPECT_EQ(named.status, 0) << named.out;
  // --load: the library opens the package and walks every step.
  const ToolRun loaded = RunTool({"verify", Demo().string(), "--load"});
  EXPECT_EQ(loaded.status, 0) << loaded.out << loaded.err;
  // A step index of -1 (a document without a step saves it) leaves undo enabled with nothing
  // to undo: the walk still ends.
  const fs::path dir = FreshCopy();
  Kelbra::Core::Property tree = ReadTree(dir / "document.json");
  tree.GetChild("UndoManager").SetInt("Index", -1);
  WriteTree(tree, dir / "document.json");
  const ToolRun unstarted = RunTool({"verify", dir.string(), "--load"});
  EXPECT_EQ(unstarted.status, 0) << unstarted.out << unstarted.err;
}

TEST_F(VerifyCommandTest, AFlippedByteInAPictureIsFoundByItsChecksum) {
  const fs::path dir = FreshCopy();
  const std::string flipped = PictureFile(dir, 2);
  {
    std::fstream file(dir / "pictures" / flipped, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(-3, std::ios::end);
    file.put('\x7f');
  }
  const ToolRun run = RunTool({"verify", dir.string()});
  EXPECT_EQ(run.status, 1);
  ASSERT_EQ(Problems(run), 1u) << run.out;
  EXPECT_THAT(run.out, HasSubstr(flipped + "' is damaged (checksum"));
  const ToolRun loaded = RunTool({"verify", dir.string(), "--load"});
  EXPECT_EQ(loaded.status, 1);
}

TEST_F(VerifyCommandTest, EachDamageGivesOneLine) {
  const fs::path dir = FreshCopy();
  const fs::path swap = dir / "pictures";
  const std::string missing = PictureFile(dir, 1);
  const std::string truncated = PictureFile(dir, 2);
  const std::string oversized = PictureFile(dir, 3);
  const std::string header = PictureFile(dir, 4);
  fs::remove(swap / missing);
  fs::resize_file(swap / truncated, fs::file_size(swap / truncated) - 7);
  std::ofstream(swap / oversized, std::ios::binary | std::ios::app) << "tail";
  fs::resize_file(swap / header, 12);
  // Item 0's picture file replaced by a whole raw frame of another size.
  {
    std::ofstream out(swap / PictureFile(dir, 0), std::ios::binary | std::ios::trunc);
    const std::int32_t rgba10x10[5] = {26, 10, 10, 1, 1};
    out.write(reinterpret_cast<const char*>(rgba10x10), sizeof rgba10x10);
    out << std::string(10 * 10 * 4, '\x7f');
  }
  Kelbra::Core::Property tree = ReadTree(dir / "document.json");
  std::get<Kelbra::Core::Property::Collection>(tree.Find("Items")->value)[3].SetInt("FrameIndex",
                                                                                    999);
  WriteTree(tree, dir / "document.json");

  const ToolRun run = RunTool({"verify", dir.string()});
  EXPECT_EQ(run.status, 1);
  ASSERT_EQ(Problems(run), 6u) << run.out;
  EXPECT_THAT(run.out, HasSubstr("missing swap file " + missing + " (frame "));
  EXPECT_THAT(run.out, HasSubstr("truncated swap file " + truncated));
  EXPECT_THAT(run.out, HasSubstr("oversized swap file " + oversized));
  EXPECT_THAT(run.out, HasSubstr("truncated swap file " + header + " (frame"));
  EXPECT_THAT(run.out, HasSubstr("shorter than the raw frame header"));
  EXPECT_THAT(run.out, HasSubstr("item 3 refers to frame 999, but the document has"));
  EXPECT_THAT(run.out, HasSubstr("holds a 10x10 picture, the document expects 48x36"));
  EXPECT_THAT(run.err, StartsWith("canvaro: 6 problem(s)"));
}

}  // namespace
