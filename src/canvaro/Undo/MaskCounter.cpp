#include "canvaro/Undo/MaskCounter.h"

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/Throw.h"
#include "canvaro/settings/ICanvaroBrush.h"
#include "kelbra/Core/CoreException.h"

namespace Kelbra::Canvaro {

namespace {

// Counts are written as 64-bit integers; records written through the 32-bit integer of the
// serializer contract hold them as int, which reads as well.
std::int64_t ReadCount(const Drevin::ISerializerConstPtr& serializer, const std::string& key,
                       std::int64_t fallback) {
  try {
    return serializer->ReadInt64(key, fallback);
  } catch (const Core::WrongTypeIsRequested&) {
    return serializer->ReadInt(key, 0);
  }
}

}  // namespace

const std::string MaskCounter::SAVE_PROPERTY_PIX_COUNT = "PixelCount";
const std::string MaskCounter::SAVE_PROPERTY_PIX_COUNT_DETAIL = "PixelCountDetail";
const std::string MaskCounter::SAVE_PROPERTY_PIX_COUNT_DETAIL_ID = "PixelCountDetailId";
const std::string MaskCounter::SAVE_PROPERTY_PIX_COUNT_DETAIL_VAL = "PixelCountDetailVal";

MaskCounter::~MaskCounter() = default;

void MaskCounter::Reset() {
  counts_.fill(0);
  total_ = 0;
}

std::uint64_t MaskCounter::Get(const std::vector<std::uint8_t>& values) const {
  if (values.empty()) return total_;
  std::uint64_t sum = 0;
  for (const std::uint8_t v : values) sum += counts_[v];
  return sum;
}

void MaskCounter::Serialize(const Drevin::ISerializerPtr& serializer) const {
  // The entries are signed 64-bit; the bits of the unsigned counts are stored unchanged.
  serializer->WriteInt64(SAVE_PROPERTY_PIX_COUNT, static_cast<std::int64_t>(total_));
  const auto list = serializer->CreateCollection(SAVE_PROPERTY_PIX_COUNT_DETAIL);
  for (std::size_t value = 0; value < counts_.size(); ++value) {
    if (counts_[value] == 0) continue;
    const auto element = list->AddItem();
    element->WriteInt64(SAVE_PROPERTY_PIX_COUNT_DETAIL_ID, static_cast<std::int64_t>(value));
    element->WriteInt64(SAVE_PROPERTY_PIX_COUNT_DETAIL_VAL,
                        static_cast<std::int64_t>(counts_[value]));
  }
}

void MaskCounter::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  MaskCounter read(*this);
  read.total_ = static_cast<std::uint64_t>(
      ReadCount(serializer, SAVE_PROPERTY_PIX_COUNT, static_cast<std::int64_t>(total_)));
  if (const auto list = serializer->GetCollection(SAVE_PROPERTY_PIX_COUNT_DETAIL)) {
    for (std::size_t i = 0; i < list->GetCount(); ++i) {
      const auto element = list->GetItem(i);
      const std::int64_t value = ReadCount(element, SAVE_PROPERTY_PIX_COUNT_DETAIL_ID, 0);
      if (value < 0 || value >= static_cast<std::int64_t>(read.counts_.size())) {
        ThrowCoded(CanvaroError::InvalidDocument,
                   "Mask value " + std::to_string(value) + " in element " + std::to_string(i) +
                       " of \"" + SAVE_PROPERTY_PIX_COUNT_DETAIL + "\" is outside 0..255",
                   BOOST_CURRENT_LOCATION);
      }
      read.counts_[static_cast<std::size_t>(value)] =
          static_cast<std::uint64_t>(ReadCount(element, SAVE_PROPERTY_PIX_COUNT_DETAIL_VAL, 0));
    }
  } else {
    // Records from before per-value counts: everything was painted with the default brush.
    read.counts_[ICanvaroBrush::INDEX_DEFAULT] = read.total_;
  }
  *this = read;
}

}  // namespace Kelbra::Canvaro
