// The pool of freed large picture buffers: a buffer comes back for the next picture of its size
// only, small pictures never enter it, and it keeps at most two buffers.
#include "kelbra/Proc/BufferPool.h"

#include <gtest/gtest.h>

#include "kelbra/Proc/IDataVideo.h"

namespace {

using namespace Kelbra;

const std::uint8_t* PixelsOf(const Proc::IDataVideoPtr& picture) {
  return std::as_const(*picture).GetPlane(0).GetOffsetPtr(0, 0);
}

TEST(BufferPoolTest, FreedLargeBuffersComeBackForTheSameSizeOnly) {
  const auto make = [](std::int32_t height) {
    return Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {1024, height, 1, 1});
  };
  constexpr std::uint64_t k4MiB = 4 << 20;  // 1024 x 1024 RGBA
  Proc::TrimBufferPool();
  Proc::IDataVideoPtr first = make(1024);
  const std::uint8_t* freed = PixelsOf(first);
  first.reset();
  EXPECT_EQ(Proc::GetPooledBufferBytes(), k4MiB);
  const Proc::IDataVideoPtr other = make(1536);  // 6 MiB: a buffer of its own
  EXPECT_NE(PixelsOf(other), freed);
  EXPECT_EQ(Proc::GetPooledBufferBytes(), k4MiB);
  EXPECT_EQ(PixelsOf(make(1024)), freed);  // and back into the pool at once
  { const Proc::IDataVideoPtr pictures[] = {make(1024), make(1024), make(1024), make(16)}; }
  EXPECT_EQ(Proc::GetPooledBufferBytes(), 2 * k4MiB);
  Proc::TrimBufferPool();
  EXPECT_EQ(Proc::GetPooledBufferBytes(), 0u);
}

}  // namespace
