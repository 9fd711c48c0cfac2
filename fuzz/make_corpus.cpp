// Writes the seed corpora of the fuzzers from real saves:
//   <corpus>/document/<session>.json   the sample sessions' saved documents (their swap files
//                                      are rewritten by the fuzzer at start-up)
//   <corpus>/raw_frame/<format>.raw    small pictures of several layouts, written by SaveRawFrame
//   <corpus>/package/<session>         packages of the sample sessions in the package fuzzer's
//                                      sections: document, manifest (with "$SIZE:" and "$XXH3:"
//                                      fields) and the pictures the document names
//   <corpus>/tool_document/<session>.json  the saved documents again (the tool fuzzer's package
//                                      holds the swap files), and one naming a file outside
// Usage: make_fuzz_corpus <corpus directory>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "ScratchArea.h"
#include "canvaro/CoreUtil/RawFrame.h"
#include "kelbra/Core/DataString.h"
#include "support/Pictures.h"
#include "support/SampleDocuments.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
namespace fs = std::filesystem;

std::string RawFrame(const Proc::IDataVideoPtr& picture) {
  std::string bytes;
  Canvaro::CoreUtil::SaveRawFrame(picture, Core::DataOutputString::Create(bytes));
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_fuzz_corpus <corpus directory>\n";
    return 2;
  }
  const fs::path corpus = argv[1];
  fs::create_directories(corpus / "document");
  fs::create_directories(corpus / "raw_frame");
  fs::create_directories(corpus / "package");
  fs::create_directories(corpus / "tool_document");

  canvaro_test::TempDir swap;
  const auto saves = canvaro_test::WriteSampleDocuments(swap.path());
  const canvaro_fuzz::Files swapFiles = canvaro_fuzz::ReadTree(swap.path().native());
  for (const auto& saved : saves) {
    canvaro_fuzz::WriteBytes(corpus / "document" / (saved.name + ".json"), saved.text);
    canvaro_fuzz::WriteBytes(corpus / "tool_document" / (saved.name + ".json"), saved.text);
    if (saved.name == "no_step_list") continue;  // as "session" for the package fuzzer
    canvaro_fuzz::Files named;
    std::string pictures;
    for (const auto& [name, bytes] : swapFiles) {
      if (saved.text.find('"' + name + '"') == std::string::npos) continue;
      named[name] = bytes;
      pictures += "\n=== " + name + "\n" + bytes;
    }
    canvaro_fuzz::WriteBytes(
        corpus / "package" / saved.name,
        saved.text + "\n=== manifest.json\n" + canvaro_fuzz::ManifestTemplate(named) + pictures);
    if (saved.name == "source_only") {
      std::string outside = saved.text;
      const std::string first = '"' + named.begin()->first + '"';
      outside.replace(outside.find(first), first.size(), "\"../../sentinel/a.raw\"");
      canvaro_fuzz::WriteBytes(corpus / "tool_document" / "outside.json", outside);
    }
  }

  struct Sample {
    const char* name;
    Proc::PixFmt format;
    Conf::FrameInfo info;
  };
  const std::vector<Sample> samples = {
      {"rgba_8x6", Proc::PixFmt::RGBA, {8, 6, 1, 1}},
      {"gray8_mask_8x6", Proc::PixFmt::Gray8, {8, 6, 1, 1}},
      {"yuv420p_8x6", Proc::PixFmt::YUV420P, {8, 6, 1, 1}},
      {"bgr24_odd_5x3", Proc::PixFmt::BGR24, {5, 3, 1, 1}},
      {"nv12_4x4", Proc::PixFmt::NV12, {4, 4, 1, 1}},
      {"pal8_4x2", Proc::PixFmt::PAL8, {4, 2, 1, 1}},
      {"p010le_2x2", Proc::PixFmt::P010LE, {2, 2, 1, 1}},
      {"rgba_zero_width", Proc::PixFmt::RGBA, {0, 6, 1, 1}},
  };
  unsigned seed = 1;
  for (const Sample& sample : samples) {
    canvaro_fuzz::WriteBytes(
        corpus / "raw_frame" / (std::string(sample.name) + ".raw"),
        RawFrame(canvaro_test::MakePatternPicture(sample.format, sample.info, seed++)));
  }
  canvaro_fuzz::WriteBytes(corpus / "raw_frame" / "empty.raw", RawFrame(nullptr));
  return EXIT_SUCCESS;
}
