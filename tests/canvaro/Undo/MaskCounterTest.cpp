#include "canvaro/Undo/MaskCounter.h"

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/settings/ICanvaroBrush.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Errors.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

Core::Property Write(const MaskCounter& counter) {
  Core::Property tree;
  counter.Serialize(Drevin::SerializerProperty::Create(tree));
  return tree;
}

void Read(MaskCounter& counter, const Core::Property& tree) {
  counter.Deserialize(Drevin::SerializerProperty::Create(tree));
}

// A record with `total` and one list element per (value, count) pair.
Core::Property DetailRecord(std::int64_t total,
                            std::initializer_list<std::pair<std::int64_t, std::int64_t>> pairs) {
  Core::Property tree;
  tree.SetInt64("PixelCount", total);
  auto& list = tree.AddCollection("PixelCountDetail");
  for (const auto& [value, count] : pairs) {
    Core::Property& element = list.emplace_back();
    element.SetInt64("PixelCountDetailId", value);
    element.SetInt64("PixelCountDetailVal", count);
  }
  return tree;
}

// Counts 3 pixels of value 7, 2 of value 90 and 1 of value 255.
MaskCounter SomeCounts() {
  MaskCounter counter;
  for (std::uint8_t v : {7, 90, 7, 255, 90, 7}) counter.Add(v);
  return counter;
}

TEST(MaskCounterTest, GetSumsTheListedValuesOrGivesTheTotal) {
  const MaskCounter counter = SomeCounts();
  EXPECT_EQ(counter.Get({}), 6u);
  EXPECT_EQ(counter.Get({7}), 3u);
  EXPECT_EQ(counter.Get({7, 7}), 6u);  // duplicates are not merged
  EXPECT_EQ(counter.Get({90, 255, 1}), 3u);
  EXPECT_EQ(counter.Get({0}), 0u);

  MaskCounter reset = counter;
  reset.Reset();
  EXPECT_EQ(reset, MaskCounter());
}

TEST(MaskCounterTest, WritesTotalAndNonZeroCountersInValueOrder) {
  MaskCounter counter = SomeCounts();
  EXPECT_EQ(Write(counter), DetailRecord(6, {{7, 3}, {90, 2}, {255, 1}}));
  EXPECT_EQ(Write(MaskCounter()), DetailRecord(0, {}));

  // Counts beyond 32 bits, and beyond the signed range of the stored entries, read back.
  counter.Add(1, std::uint64_t{5} << 40);
  counter.Add(2, std::numeric_limits<std::uint64_t>::max() - (std::uint64_t{5} << 40) - 6);
  MaskCounter read;
  Read(read, Write(counter));
  EXPECT_EQ(read, counter);
  EXPECT_EQ(read.Get({}), std::numeric_limits<std::uint64_t>::max());
}

TEST(MaskCounterTest, ReadsOverTheCurrentCounters) {
  // Older records have no detail: everything was painted with the default brush.
  Core::Property legacy;
  legacy.SetInt64("PixelCount", 500);
  MaskCounter old;
  Read(old, legacy);
  EXPECT_EQ(Write(old), DetailRecord(500, {{ICanvaroBrush::INDEX_DEFAULT, 500}}));

  // An empty list keeps every per-value counter; the total is read.
  MaskCounter counter = SomeCounts();
  Read(counter, DetailRecord(40, {}));
  EXPECT_EQ(Write(counter), DetailRecord(40, {{7, 3}, {90, 2}, {255, 1}}));

  // A listed value replaces its counter, the others stay; an absent total stays too.
  Core::Property oneValue = DetailRecord(0, {{90, 11}});
  oneValue.Remove("PixelCount");
  Read(counter, oneValue);
  EXPECT_EQ(Write(counter), DetailRecord(40, {{7, 3}, {90, 11}, {255, 1}}));
}

TEST(MaskCounterTest, BadRecordsThrowAndLeaveTheCounterAlone) {
  const MaskCounter before = SomeCounts();
  MaskCounter counter = before;

  EXPECT_THAT(canvaro_test::ErrorText<CanvaroException>([&] {
                Read(counter, DetailRecord(10, {{7, 1}, {256, 9}}));
              }),
              ::testing::HasSubstr("256"));
  Core::Property wrongType;
  wrongType.SetString("PixelCount", "many");
  EXPECT_THROW(Read(counter, DetailRecord(10, {{-1, 9}})), CanvaroException);
  EXPECT_THROW(Read(counter, wrongType), Core::WrongTypeIsRequested);
  EXPECT_EQ(counter, before);
}

}  // namespace
