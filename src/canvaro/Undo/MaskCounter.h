/// \file
/// MaskCounter: how many pixels of a mask carry each of the 256 mask values (brush indices).
///
/// The mask history refills it whenever its working mask changes, so that the number of pixels
/// painted with a set of brushes is known without scanning the picture:
///
///   MaskCounter counter;
///   for (std::uint8_t v : paintedBytes) counter.Add(v);
///   counter.Get({});                                // every counted pixel
///   counter.Get({ICanvaroBrush::INDEX_DEFAULT, 7}); // pixels of brushes 90 and 7
///
/// The record keeps the total under "PixelCount" and the non-zero counters, in ascending value
/// order, in the list "PixelCountDetail". A record without that list (written before per-value
/// counts existed) is read as the total painted with the default brush.
///
/// Errors: Deserialize throws CanvaroException for a value outside 0..255 and passes the
/// serializer's exceptions through; on any exception the counter is left as it was.
/// Threads: one at a time.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Canvaro {

class MaskCounter : public virtual Drevin::ISerializable {
 public:
  static const std::string SAVE_PROPERTY_PIX_COUNT;             // "PixelCount"
  static const std::string SAVE_PROPERTY_PIX_COUNT_DETAIL;      // "PixelCountDetail"
  static const std::string SAVE_PROPERTY_PIX_COUNT_DETAIL_ID;   // "PixelCountDetailId"
  static const std::string SAVE_PROPERTY_PIX_COUNT_DETAIL_VAL;  // "PixelCountDetailVal"

  /// 256 zero counters and a zero total.
  MaskCounter() = default;
  MaskCounter(const MaskCounter&) = default;
  MaskCounter& operator=(const MaskCounter&) = default;
  ~MaskCounter() override;

  /// Sets every counter and the total to 0.
  void Reset();
  /// Counts one pixel of `value`.
  void Add(std::uint8_t value) {
    ++counts_[value];
    ++total_;
  }
  /// Counts `count` pixels of `value` at once.
  void Add(std::uint8_t value, std::uint64_t count) {
    counts_[value] += count;
    total_ += count;
  }
  /// Takes `count` pixels of `value` out again; they must have been counted.
  void Remove(std::uint8_t value, std::uint64_t count) {
    counts_[value] -= count;
    total_ -= count;
  }
  /// The total for an empty list, else the sum of the counters of the listed values; a value
  /// listed twice counts twice.
  std::uint64_t Get(const std::vector<std::uint8_t>& values) const;

  /// "PixelCount", then "PixelCountDetail" with one element per non-zero counter.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the total and the listed counters over the current ones (counters not listed keep
  /// their values); without the list the total goes to the default brush.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

  /// Same counters and total.
  friend bool operator==(const MaskCounter& a, const MaskCounter& b) {
    return a.total_ == b.total_ && a.counts_ == b.counts_;
  }

 private:
  std::array<std::uint64_t, 256> counts_{};
  std::uint64_t total_ = 0;
};

}  // namespace Kelbra::Canvaro
