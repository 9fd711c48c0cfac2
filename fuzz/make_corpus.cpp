// Writes the seed corpora of the document and raw frame fuzzers from real saves:
//   <corpus>/document/<session>.json   the sample sessions' saved documents (their swap files
//                                      are rewritten by the fuzzer at start-up)
//   <corpus>/raw_frame/<format>.raw    small pictures of several layouts, written by SaveRawFrame
// Usage: make_fuzz_corpus <corpus directory>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "canvaro/CoreUtil/RawFrame.h"
#include "kelbra/Core/DataString.h"
#include "support/Pictures.h"
#include "support/SampleDocuments.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
namespace fs = std::filesystem;

void WriteFile(const fs::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) throw std::runtime_error("cannot write " + path.string());
}

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

  canvaro_test::TempDir swap;
  for (const auto& saved : canvaro_test::WriteSampleDocuments(swap.path())) {
    WriteFile(corpus / "document" / (saved.name + ".json"), saved.text);
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
    WriteFile(corpus / "raw_frame" / (std::string(sample.name) + ".raw"),
              RawFrame(canvaro_test::MakePatternPicture(sample.format, sample.info, seed++)));
  }
  WriteFile(corpus / "raw_frame" / "empty.raw", RawFrame(nullptr));
  return EXIT_SUCCESS;
}
