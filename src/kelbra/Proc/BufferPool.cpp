#include "kelbra/Proc/BufferPool.h"

#include <sys/mman.h>

#include <cstdlib>
#include <deque>
#include <mutex>
#include <utility>

namespace Kelbra::Proc {

namespace {

// Row strides and plane starts of pictures are multiples of this.
constexpr std::size_t kAlignment = 64;
// Large buffers start on a huge-page boundary and ask for huge pages where the system has them:
// a fresh 24-megapixel picture then costs a few dozen page faults instead of tens of thousands.
constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kLarge = 2 * kHugePage;
constexpr std::size_t kMaxPooledBuffers = 2;
constexpr std::uint64_t kMaxPooledBytes = std::uint64_t{128} << 20;

std::size_t Rounded(std::size_t bytes) {
  const std::size_t alignment = bytes >= kLarge ? kHugePage : kAlignment;
  return (bytes + alignment - 1) / alignment * alignment;
}

struct Pooled {
  std::uint8_t* buffer;
  std::size_t bytes;  // rounded
};

class Pool {
 public:
  std::uint8_t* Take(std::size_t bytes) {
    std::lock_guard lock(mutex_);
    for (auto it = buffers_.begin(); it != buffers_.end(); ++it) {
      if (it->bytes != bytes) continue;
      std::uint8_t* buffer = it->buffer;
      total_ -= it->bytes;
      buffers_.erase(it);
      return buffer;
    }
    return nullptr;
  }

  // Keeps `buffer` as the newest; returns what no longer fits, oldest first, for freeing.
  std::deque<Pooled> Keep(const Pooled& buffer) {
    std::lock_guard lock(mutex_);
    buffers_.push_front(buffer);
    total_ += buffer.bytes;
    std::deque<Pooled> evicted;
    while (buffers_.size() > kMaxPooledBuffers || total_ > kMaxPooledBytes) {
      evicted.push_back(buffers_.back());
      total_ -= buffers_.back().bytes;
      buffers_.pop_back();
    }
    return evicted;
  }

  std::deque<Pooled> TakeAll() {
    std::lock_guard lock(mutex_);
    total_ = 0;
    return std::exchange(buffers_, {});
  }

  std::uint64_t Total() const {
    std::lock_guard lock(mutex_);
    return total_;
  }

 private:
  mutable std::mutex mutex_;
  std::deque<Pooled> buffers_;  // newest first
  std::uint64_t total_ = 0;
};

// Never destroyed: pictures may be released during static destruction.
Pool& ThePool() {
  static Pool* const pool = new Pool;
  return *pool;
}

void FreeAll(const std::deque<Pooled>& buffers) {
  for (const Pooled& pooled : buffers) std::free(pooled.buffer);
}

}  // namespace

std::uint64_t GetPooledBufferBytes() { return ThePool().Total(); }

void TrimBufferPool() { FreeAll(ThePool().TakeAll()); }

namespace Details {

std::uint8_t* AcquirePictureBuffer(std::size_t bytes) {
  const std::size_t rounded = Rounded(bytes);
  if (bytes >= kLarge) {
    if (std::uint8_t* reused = ThePool().Take(rounded)) return reused;
  }
  void* buffer = nullptr;
  const std::size_t alignment = bytes >= kLarge ? kHugePage : kAlignment;
  if (::posix_memalign(&buffer, alignment, rounded) != 0) {
    // Memory held idle in the pool is better spent here.
    TrimBufferPool();
    if (::posix_memalign(&buffer, alignment, rounded) != 0) return nullptr;
  }
#ifdef MADV_HUGEPAGE
  if (bytes >= kLarge) ::madvise(buffer, rounded, MADV_HUGEPAGE);  // advice only
#endif
  return static_cast<std::uint8_t*>(buffer);
}

void ReleasePictureBuffer(std::uint8_t* buffer, std::size_t bytes) {
  if (buffer == nullptr) return;
  const std::size_t rounded = Rounded(bytes);
  if (bytes < kLarge || rounded > kMaxPooledBytes) {
    std::free(buffer);
    return;
  }
  FreeAll(ThePool().Keep({buffer, rounded}));
}

}  // namespace Details

}  // namespace Kelbra::Proc
