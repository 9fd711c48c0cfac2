#include "canvaro/Undo/MaskStatistics.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include <algorithm>
#include <array>
#include <cstring>

namespace Kelbra::Canvaro::detail {

namespace {

constexpr std::uint64_t kEveryByte = 0x0101010101010101ull;

std::uint64_t LoadWord(const std::uint8_t* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// The counts of one region: four interleaved sub-histograms, so that neighbouring bytes of the
// same value do not wait on each other's increment, plus the counts of whole equal runs.
// Counters of value 0 are counted too (that keeps the loops free of branches) and ignored.
// Painted pixels per column go first into one byte per column, which the vector code adds 16 at
// a time; Count moves them into the 32-bit column counters every kPendingRows rows.
struct RegionCounts {
  std::array<std::array<std::uint64_t, 256>, 4> bytes{};
  std::array<std::uint64_t, 256> runs{};
  std::vector<std::uint8_t> pendingColumns;

  std::uint64_t Get(std::size_t value) const {
    return bytes[0][value] + bytes[1][value] + bytes[2][value] + bytes[3][value] + runs[value];
  }
};

constexpr std::int32_t kPendingRows = 255;

// Counts the bytes row[x, end) into `counts`; returns how many are painted.
std::uint32_t CountBytes(const std::uint8_t* row, std::size_t x, std::size_t end,
                         RegionCounts& counts) {
  std::uint8_t* const columns = counts.pendingColumns.data();
  std::uint32_t painted = 0;
  for (; x + 8 <= end; x += 8) {
    const std::uint64_t word = LoadWord(row + x);
    if (word == 0) continue;
    if (word == (word & 0xFF) * kEveryByte) {
      counts.runs[word & 0xFF] += 8;
      painted += 8;
      for (std::size_t i = 0; i < 8; ++i) ++columns[x + i];
      continue;
    }
    for (std::size_t i = 0; i < 8; ++i) {
      const std::uint8_t value = row[x + i];
      ++counts.bytes[i & 3][value];
      painted += value != 0;
      columns[x + i] += value != 0;
    }
  }
  for (; x < end; ++x) {
    const std::uint8_t value = row[x];
    ++counts.bytes[0][value];
    painted += value != 0;
    columns[x] += value != 0;
  }
  return painted;
}

#if defined(__SSE2__)

inline bool IsUnpainted(__m128i bytes) {
  return _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())) == 0xFFFF;
}

inline __m128i Load(const std::uint8_t* at) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

// Whether the 128 bytes from `at` are all zero.
inline bool IsUnpainted128(const std::uint8_t* at) {
  const __m128i low = _mm_or_si128(_mm_or_si128(Load(at), Load(at + 16)),
                                   _mm_or_si128(Load(at + 32), Load(at + 48)));
  const __m128i high = _mm_or_si128(_mm_or_si128(Load(at + 64), Load(at + 80)),
                                    _mm_or_si128(Load(at + 96), Load(at + 112)));
  return IsUnpainted(_mm_or_si128(low, high));
}

// Advances `x` past unpainted bytes of row[x, end), 128 at a time, while a whole 128 fits.
std::size_t SkipUnpainted128(const std::uint8_t* row, std::size_t x, std::size_t end) {
  while (x + 128 <= end && IsUnpainted128(row + x)) x += 128;
  return x;
}

// The same with 32-byte vectors, where the processor has them: an empty mask is then scanned at
// the speed of memchr, which uses them too.
__attribute__((target("avx2"))) std::size_t SkipUnpainted128Avx2(const std::uint8_t* row,
                                                                 std::size_t x, std::size_t end) {
  for (; x + 128 <= end; x += 128) {
    const auto* at = reinterpret_cast<const __m256i*>(row + x);
    const __m256i any =
        _mm256_or_si256(_mm256_or_si256(_mm256_loadu_si256(at), _mm256_loadu_si256(at + 1)),
                        _mm256_or_si256(_mm256_loadu_si256(at + 2), _mm256_loadu_si256(at + 3)));
    if (!_mm256_testz_si256(any, any)) break;
  }
  return x;
}

using SkipFunction = std::size_t (*)(const std::uint8_t*, std::size_t, std::size_t);
SkipFunction ChooseSkip() {
  __builtin_cpu_init();  // this may run before the runtime's own initialisation
  return __builtin_cpu_supports("avx2") ? SkipUnpainted128Avx2 : SkipUnpainted128;
}
const SkipFunction kSkipUnpainted = ChooseSkip();

inline void AddToPending(std::uint8_t* at, __m128i increments) {
  auto* p = reinterpret_cast<__m128i*>(at);
  _mm_storeu_si128(p, _mm_add_epi8(_mm_loadu_si128(p), increments));
}

// CountBytes over whole blocks of 64 bytes, which covers almost all of a mask: an unpainted block
// costs four loads and a test, so that scanning an empty mask runs at the speed of memory; a
// block of one value is counted at once; any other block goes through the sub-histograms.
// Returns the painted count and advances `x` past the blocks.
std::uint32_t CountBlocks(const std::uint8_t* row, std::size_t& x, std::size_t end,
                          RegionCounts& counts) {
  std::uint8_t* const columns = counts.pendingColumns.data();
  const __m128i zero = _mm_setzero_si128();
  const __m128i one = _mm_set1_epi8(1);
  std::uint64_t runPainted = 0;
  __m128i mixedPainted = zero;  // two 64-bit sums
  for (; x + 64 <= end; x += 64) {
    const std::uint8_t* block = row + x;
    const __m128i a = Load(block);
    const __m128i b = Load(block + 16);
    const __m128i c = Load(block + 32);
    const __m128i d = Load(block + 48);
    if (IsUnpainted(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d)))) {
      // Unpainted blocks come in long runs: skip the rest of the run 128 bytes at a time.
      x = kSkipUnpainted(row, x + 64, end) - 64;
      continue;
    }

    const __m128i first = _mm_set1_epi8(static_cast<char>(block[0]));
    const __m128i same =
        _mm_and_si128(_mm_and_si128(_mm_cmpeq_epi8(a, first), _mm_cmpeq_epi8(b, first)),
                      _mm_and_si128(_mm_cmpeq_epi8(c, first), _mm_cmpeq_epi8(d, first)));
    if (block[0] != 0 && _mm_movemask_epi8(same) == 0xFFFF) {
      counts.runs[block[0]] += 64;
      runPainted += 64;
      for (std::size_t i = 0; i < 64; i += 16) AddToPending(columns + x + i, one);
      continue;
    }

    // 1 for a painted byte, 0 for an unpainted one.
    const __m128i pa = _mm_andnot_si128(_mm_cmpeq_epi8(a, zero), one);
    const __m128i pb = _mm_andnot_si128(_mm_cmpeq_epi8(b, zero), one);
    const __m128i pc = _mm_andnot_si128(_mm_cmpeq_epi8(c, zero), one);
    const __m128i pd = _mm_andnot_si128(_mm_cmpeq_epi8(d, zero), one);
    AddToPending(columns + x, pa);
    AddToPending(columns + x + 16, pb);
    AddToPending(columns + x + 32, pc);
    AddToPending(columns + x + 48, pd);
    const __m128i sum = _mm_add_epi8(_mm_add_epi8(pa, pb), _mm_add_epi8(pc, pd));
    mixedPainted = _mm_add_epi64(mixedPainted, _mm_sad_epu8(sum, zero));
    for (std::size_t i = 0; i < 64; i += 4) {
      ++counts.bytes[0][block[i]];
      ++counts.bytes[1][block[i + 1]];
      ++counts.bytes[2][block[i + 2]];
      ++counts.bytes[3][block[i + 3]];
    }
  }
  // Most of the row's remainder, when unpainted, needs no byte by byte look either.
  while (x + 16 <= end && IsUnpainted(Load(row + x))) x += 16;
  std::uint64_t sums[2];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(sums), mixedPainted);
  return static_cast<std::uint32_t>(runPainted + sums[0] + sums[1]);
}

#else

std::uint32_t CountBlocks(const std::uint8_t*, std::size_t&, std::size_t, RegionCounts&) {
  return 0;
}

#endif

// Moves the pending column counts into `columns`, adding or (kSign < 0) subtracting them.
template <int kSign>
void FlushColumns(RegionCounts& counts, std::uint32_t* columns) {
  std::uint8_t* const pending = counts.pendingColumns.data();
  for (std::size_t x = 0; x < counts.pendingColumns.size(); ++x) {
    columns[x] += static_cast<std::uint32_t>(kSign) * pending[x];
    pending[x] = 0;
  }
}

}  // namespace

void MaskStatistics::Reset(std::uint32_t width, std::uint32_t height) {
  counter_.Reset();
  rows_.assign(height, 0);
  columns_.assign(width, 0);
  box_ = Proc::CropInfo::Empty();
}

void MaskStatistics::Add(const Proc::Details::PlaneTemplate<true>& pixels, const ROI& region) {
  Count<1>(pixels, region);
}

void MaskStatistics::Remove(const Proc::Details::PlaneTemplate<true>& pixels, const ROI& region) {
  Count<-1>(pixels, region);
}

template <int kSign>
void MaskStatistics::Count(const Proc::Details::PlaneTemplate<true>& pixels, const ROI& region) {
  if (region.width <= 0 || region.height <= 0) return;
  // Counted locally first: one chain of increments per value is much cheaper than two (value
  // and total) in the counter for every pixel.
  const auto width = static_cast<std::size_t>(region.width);
  RegionCounts counts;
  counts.pendingColumns.assign(width, 0);
  std::uint32_t* const columns = columns_.data() + region.left;
  for (std::int32_t y = 0; y < region.height; ++y) {
    const std::uint8_t* row = pixels.GetOffsetPtr(0, static_cast<std::size_t>(y));
    std::size_t x = 0;
    std::uint32_t painted = CountBlocks(row, x, width, counts);
    painted += CountBytes(row, x, width, counts);
    rows_[static_cast<std::size_t>(region.top + y)] += static_cast<std::uint32_t>(kSign) * painted;
    if ((y + 1) % kPendingRows == 0) FlushColumns<kSign>(counts, columns);
  }
  FlushColumns<kSign>(counts, columns);
  for (std::size_t value = 1; value < 256; ++value) {
    const std::uint64_t count = counts.Get(value);
    if (count == 0) continue;
    if constexpr (kSign > 0) {
      counter_.Add(static_cast<std::uint8_t>(value), count);
    } else {
      counter_.Remove(static_cast<std::uint8_t>(value), count);
    }
  }
  UpdateBox(region);
}

void MaskStatistics::UpdateBox(const ROI& region) {
  // Painted rows and columns of the region can only widen the box ...
  const auto top = static_cast<std::uint32_t>(region.top);
  const auto left = static_cast<std::uint32_t>(region.left);
  for (std::uint32_t y = top; y < top + static_cast<std::uint32_t>(region.height); ++y) {
    if (rows_[y] == 0) continue;
    box_.top = std::min(box_.top, y);
    box_.bottom = std::max(box_.bottom, y + 1);
  }
  for (std::uint32_t x = left; x < left + static_cast<std::uint32_t>(region.width); ++x) {
    if (columns_[x] == 0) continue;
    box_.left = std::min(box_.left, x);
    box_.right = std::max(box_.right, x + 1);
  }
  // ... and erased pixels can only narrow it from an edge inwards; rows outside the region did
  // not change, so the walk stops at the first row still painted.
  while (box_.top < box_.bottom && rows_[box_.top] == 0) ++box_.top;
  while (box_.bottom > box_.top && rows_[box_.bottom - 1] == 0) --box_.bottom;
  while (box_.left < box_.right && columns_[box_.left] == 0) ++box_.left;
  while (box_.right > box_.left && columns_[box_.right - 1] == 0) --box_.right;
  if (box_.IsEmpty()) box_ = Proc::CropInfo::Empty();
}

}  // namespace Kelbra::Canvaro::detail
