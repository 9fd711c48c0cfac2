// The document's memory budget: the swap at exactly 250 MiB of pictures in memory, the picture in
// force kept, swapped pictures read back on undo.
//
// The large picture wraps a buffer that is allocated but never written: the document only counts
// its bytes and keeps it in memory (it is the picture in force), so the test costs no real
// memory.
#include <algorithm>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/DocumentTest.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using namespace canvaro_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint64_t kThreshold = 262144000;  // 250 MiB
constexpr std::int32_t kLargeWidth = 16000;
constexpr std::int32_t kLargeHeight = 16383;  // 16000 x 16383 one-byte pixels = kThreshold - 16000

// A one-byte-per-pixel picture over `buffer` (rows without padding): GetBufferSize is exactly
// width x height.
Proc::IDataVideoPtr External(std::uint8_t* buffer, std::int32_t width, std::int32_t height) {
  return Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, {width, height, 1, 1}, buffer);
}

class CanvaroUndoMemoryTest : public DocumentTest {
 protected:
  CanvaroUndoMemoryTest()
      : large_(new std::uint8_t[static_cast<std::size_t>(kLargeWidth) * kLargeHeight]) {}
  ~CanvaroUndoMemoryTest() override { doc.reset(); }

  // The source (a small picture of `sourceWidth` one-byte pixels) and then the large picture in
  // `document`, so that the pictures in memory add up to kThreshold - 16000 + sourceWidth.
  void AddSourceAndLarge(ICanvaroUndo& document, std::int32_t sourceWidth) {
    source_ = std::make_unique<std::uint8_t[]>(static_cast<std::size_t>(sourceWidth));
    std::fill_n(source_.get(), sourceWidth, std::uint8_t{0x5A});
    document.Add(Settings("Source"), External(source_.get(), sourceWidth, 1), nullptr, NoMask());
    document.Add(Settings("Large"), External(large_.get(), kLargeWidth, kLargeHeight), nullptr,
                 NoMask());
  }

  std::vector<std::string> MemoryWarnings() const { return log.Messages(google::GLOG_WARNING); }

  std::unique_ptr<std::uint8_t[]> large_;
  std::unique_ptr<std::uint8_t[]> source_;
};

TEST_F(CanvaroUndoMemoryTest, AtTheBudgetEverythingButThePictureInForceIsSwapped) {
  AddSourceAndLarge(*doc, 16000);
  EXPECT_THAT(MemoryWarnings(), ElementsAre("Memory usage: 262144000. Swap required"));
  doc->WaitForPendingSaves();

  EXPECT_TRUE(
      std::filesystem::is_regular_file((dir / doc->GetFrameStorage().GetFileName(0)).native()));
  // Only the picture in force is left in memory.
  EXPECT_EQ(doc->GetCoreSize(), kThreshold - 16000);
  EXPECT_TRUE(doc->GetFrameStorage().GetFileName(doc->GetUsedFrameIndexList()[0]).empty());

  // Undo reads the source back and swaps nothing, though the budget is reached again.
  log.Clear();
  doc->Undo();
  EXPECT_EQ(doc->GetCurrentIndex(), 0u);
  EXPECT_EQ(Pixels(doc->GetVideo(ICanvaroUndo::kCurrentItem)), std::string(16000, '\x5A'));
  EXPECT_EQ(doc->GetCoreSize(), kThreshold);
  EXPECT_THAT(MemoryWarnings(), IsEmpty());

  // Redo makes the large picture current again and checks the budget.
  doc->Redo();
  EXPECT_THAT(MemoryWarnings(), ElementsAre("Memory usage: 262144000. Swap required"));
  doc->WaitForPendingSaves();
  EXPECT_EQ(doc->GetCoreSize(), kThreshold - 16000);
}

// One byte below the budget nothing is swapped; without a swap directory nothing is at any size.
TEST_F(CanvaroUndoMemoryTest, BelowTheBudgetOrWithoutASwapDirectoryNothingIsSwapped) {
  for (const bool swapDirectory : {true, false}) {
    const ICanvaroUndoPtr document =
        swapDirectory ? MakeDocument("below")
                      : ICanvaroUndo::Create(ioPath(), [] { return std::string("unused.raw"); });
    AddSourceAndLarge(*document, swapDirectory ? 15999 : 16000);
    document->WaitForPendingSaves();
    EXPECT_EQ(document->GetCoreSize(), swapDirectory ? kThreshold - 1 : kThreshold);
    EXPECT_TRUE(document->GetFrameStorage().GetFileName(0).empty());
  }
  EXPECT_THAT(MemoryWarnings(), IsEmpty());
}

}  // namespace
