#include "canvaro/Undo/MaskStatistics.h"

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

// Calls paintedByte(x, value) for every non-zero byte of row[0, length), and paintedWord(x,
// value) instead for eight equal non-zero bytes from x on (the inside of a filled area). Zero
// runs cost one test per 32 bytes.
template <class PaintedByte, class PaintedWord>
inline void ForEachPainted(const std::uint8_t* row, std::size_t length, PaintedByte&& paintedByte,
                           PaintedWord&& paintedWord) {
  const auto word = [&](std::size_t x, std::uint64_t bytes) {
    if (bytes == 0) return;
    if (bytes == (bytes & 0xFF) * kEveryByte) {
      paintedWord(x, static_cast<std::uint8_t>(bytes));
      return;
    }
    for (std::size_t i = 0; i < 8; ++i) {
      if (row[x + i] != 0) paintedByte(x + i, row[x + i]);
    }
  };
  std::size_t x = 0;
  for (; x + 32 <= length; x += 32) {
    const std::uint64_t a = LoadWord(row + x);
    const std::uint64_t b = LoadWord(row + x + 8);
    const std::uint64_t c = LoadWord(row + x + 16);
    const std::uint64_t d = LoadWord(row + x + 24);
    if ((a | b | c | d) == 0) continue;
    word(x, a);
    word(x + 8, b);
    word(x + 16, c);
    word(x + 24, d);
  }
  for (; x + 8 <= length; x += 8) word(x, LoadWord(row + x));
  for (; x < length; ++x) {
    if (row[x] != 0) paintedByte(x, row[x]);
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
  std::array<std::uint64_t, 256> perValue{};
  std::uint32_t* const columns = columns_.data() + region.left;
  for (std::int32_t y = 0; y < region.height; ++y) {
    std::uint32_t painted = 0;
    ForEachPainted(
        pixels.GetOffsetPtr(0, static_cast<std::size_t>(y)), static_cast<std::size_t>(region.width),
        [&](std::size_t x, std::uint8_t value) {
          ++perValue[value];
          ++painted;
          columns[x] += static_cast<std::uint32_t>(kSign);
        },
        [&](std::size_t x, std::uint8_t value) {
          perValue[value] += 8;
          painted += 8;
          for (std::size_t i = 0; i < 8; ++i) columns[x + i] += static_cast<std::uint32_t>(kSign);
        });
    rows_[static_cast<std::size_t>(region.top + y)] += static_cast<std::uint32_t>(kSign) * painted;
  }
  for (std::size_t value = 0; value < perValue.size(); ++value) {
    if (perValue[value] == 0) continue;
    if constexpr (kSign > 0) {
      counter_.Add(static_cast<std::uint8_t>(value), perValue[value]);
    } else {
      counter_.Remove(static_cast<std::uint8_t>(value), perValue[value]);
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
