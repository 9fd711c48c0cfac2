#include "kelbra/Core/DataFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <numeric>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataString.h"
#include "kelbra/Core/FileSystem.h"
#include "support/Errors.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using canvaro_test::ErrorText;
using Core::FileException;
using Mode = Core::DataOutputFile::Mode;
using ::testing::AllOf;
using ::testing::HasSubstr;

std::vector<char> Pattern(std::size_t size) {
  std::vector<char> bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 131 + i / 977);
  return bytes;
}

TEST(DataFileTest, ManySmallAndSomeLargeWritesReadBackExactly) {
  canvaro_test::TempDir dir;
  const ioPath file = dir / "data.bin";
  const std::vector<char> bytes = Pattern(5'000'000);
  // Sizes mixing tiny rows, rows at the first buffer size and the direct write size, rows near
  // the largest buffer size, and blocks larger than it.
  const std::size_t sizes[] = {1,  7,       4096,          24000, 65535,    65536,
                               20, 1 << 20, (1 << 20) + 3, 3,     2'000'000};
  // Calls step(offset, length) on pieces that cover the bytes, of the sizes above from `first` on.
  const auto inPieces = [&](std::size_t first, const auto& step) {
    for (std::size_t i = first, at = 0, n = 0; at < bytes.size(); at += n, ++i) {
      n = std::min(sizes[i % std::size(sizes)], bytes.size() - at);
      step(at, n);
    }
  };
  auto out = Core::DataOutputFile::Create(file);
  inPieces(0, [&](std::size_t at, std::size_t n) { out->Write(bytes.data() + at, n); });
  out->Close();
  out->Close();  // a second close does nothing
  EXPECT_THROW(out->Write("x", 1), FileException);
  ASSERT_EQ(std::filesystem::file_size(file.native()), bytes.size());

  auto in = Core::DataInputFile::Create(file);
  EXPECT_EQ(in->GetRemaining(), bytes.size());
  std::vector<char> back(bytes.size());
  inPieces(3, [&](std::size_t at, std::size_t n) { in->Read(back.data() + at, n); });
  EXPECT_EQ(back, bytes);
  EXPECT_EQ(in->GetRemaining(), 0u);
  char extra[2];
  EXPECT_EQ(in->ReadSome(extra, 1), 0u);
  EXPECT_THAT(ErrorText<FileException>([&] { in->Read(extra, 2); }),
              AllOf(HasSubstr(file.string()), HasSubstr("unexpected end of data")));
}

TEST(DataFileTest, OpenFailuresNameTheFileAndTheReason) {
  canvaro_test::TempDir dir;
  EXPECT_THAT(ErrorText<FileException>([&] { Core::DataInputFile::Create(dir / "missing.bin"); }),
              AllOf(HasSubstr("missing.bin"), HasSubstr("No such file or directory")));
  EXPECT_THROW(Core::DataOutputFile::Create(dir / "no-dir" / "x.bin"), FileException);
  EXPECT_THROW(Core::DataInputFile::Create(dir.path()), FileException);  // a directory
}

TEST(DataFileTest, FullDiskIsReportedNotSwallowed) {
  if (!ioPath("/dev/full").exists()) GTEST_SKIP() << "no /dev/full";
  auto out = Core::DataOutputFile::Create("/dev/full");
  const std::vector<char> bytes = Pattern(4096);
  // Small writes are buffered; the failure must surface by Close at the latest.
  EXPECT_THAT(ErrorText<FileException>([&] {
                out->Write(bytes.data(), bytes.size());
                out->Close();
              }),
              AllOf(HasSubstr("/dev/full"), HasSubstr("No space left on device")));
}

TEST(DataFileTest, AtomicFileAppearsOnlyWhenClosed) {
  canvaro_test::TempDir dir;
  const ioPath file = dir / "frame.raw";
  {
    auto out = Core::DataOutputFile::Create(file, Mode::Atomic);
    out->Write("whole", 5);
    out->Flush();
    EXPECT_FALSE(file.exists());
    out->Close();
    EXPECT_EQ(canvaro_test::ReadFile(file.native()), "whole");
  }
  try {
    // Dropped by an exception before Close: neither the target nor a temporary file stays.
    auto out = Core::DataOutputFile::Create(dir / "abandoned.raw", Mode::Atomic);
    out->Write("part", 4);
    throw std::runtime_error("the writer failed");
  } catch (const std::runtime_error&) {
  }
  // Dropped after successful writes without Close: the file is completed, not lost.
  for (const auto mode : {Mode::Atomic, Mode::Direct}) {
    const ioPath dropped = dir / (mode == Mode::Atomic ? "dropped.raw" : "direct.raw");
    Core::DataOutputFile::Create(dropped, mode)->Write("kept", 4);
    EXPECT_EQ(canvaro_test::ReadFile(dropped.native()), "kept");
  }
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(dir.path().native())) {
    names.push_back(entry.path().filename().string());
  }
  EXPECT_THAT(names, ::testing::UnorderedElementsAre("frame.raw", "dropped.raw", "direct.raw"));
}

TEST(DataFileTest, RemoveFileAndRemoveDir) {
  canvaro_test::TempDir dir;
  const ioPath sub = dir / "sub";
  std::filesystem::create_directories((sub / "deeper").native());
  Core::DataOutputFile::Create(sub / "deeper" / "a.bin")->Close();
  EXPECT_TRUE(Core::RemoveFile(sub / "deeper" / "a.bin"));
  EXPECT_FALSE(Core::RemoveFile(sub / "deeper" / "a.bin"));
  EXPECT_THROW(Core::RemoveFile(sub), FileException);  // a directory is not a file
  Core::DataOutputFile::Create(sub / "b.bin")->Close();
  EXPECT_TRUE(Core::RemoveDir(sub));
  EXPECT_FALSE(sub.exists());
  EXPECT_FALSE(Core::RemoveDir(sub));
}

TEST(DataStringTest, StringStreamsAppendAndReadExactly) {
  std::string target = "head:";
  auto out = Core::DataOutputString::Create(target);
  out->Write("abc", 3);
  EXPECT_EQ(target, "head:abc");
  auto in = Core::DataInputString::Create("xyz");
  char two[2];
  in->Read(two, 2);
  EXPECT_EQ(in->GetRemaining(), 1u);
  EXPECT_THROW(in->Read(two, 2), FileException);
}

}  // namespace
