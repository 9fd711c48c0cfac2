#include "canvaro/Undo/MaskUndo.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "canvaro/foundation/Log.h"

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/Throw.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/CoreManager.h"
#include "kelbra/Proc/PixFmtInfo.h"

namespace Kelbra::Canvaro {

namespace {

using Proc::PixFmt;

[[noreturn]] void ThrowBadMask(const std::string& what,
                               CanvaroError code = CanvaroError::InvalidArgument) {
  ThrowCoded(code, what, BOOST_CURRENT_LOCATION);
}

bool IsEmptyRect(const MaskInfo& info) {
  return info.GetLeft() >= info.GetRight() || info.GetTop() >= info.GetBottom();
}

bool IsEmpty(const ROI& region) { return region.width <= 0 || region.height <= 0; }

ROI ToROI(const Proc::CropInfo& box) {
  if (box.IsEmpty()) return {};
  return {static_cast<std::int32_t>(box.left), static_cast<std::int32_t>(box.top),
          static_cast<std::int32_t>(box.Width()), static_cast<std::int32_t>(box.Height())};
}

// The smallest region holding both; an empty one counts as none.
ROI Union(const ROI& a, const ROI& b) {
  if (IsEmpty(a)) return b;
  if (IsEmpty(b)) return a;
  const std::int32_t left = std::min(a.left, b.left);
  const std::int32_t top = std::min(a.top, b.top);
  return {left, top, std::max(a.left + a.width, b.left + b.width) - left,
          std::max(a.top + a.height, b.top + b.height) - top};
}

// Copies an equally sized pixel region row by row.
void CopyRows(const Proc::Details::PlaneTemplate<true>& from,
              const Proc::Details::PlaneTemplate<false>& to, std::size_t width,
              std::size_t height) {
  for (std::size_t y = 0; y < height; ++y) {
    std::memcpy(to.GetOffsetPtr(0, y), from.GetOffsetPtr(0, y), width);
  }
}

// The smallest region of `after` holding every pixel that differs from `before` (from zero when
// there is no `before`); empty when none does. Both are masks of the same size.
ROI ChangedRegion(const Proc::IDataVideo* before, const Proc::IDataVideo& after) {
  const Conf::FrameInfo& geometry = after.GetFrameInfo();
  const std::size_t width = static_cast<std::size_t>(std::max(geometry.width, 0));
  const auto newPlane = after.GetPlane(0);
  std::int64_t top = -1, bottom = -1;
  std::size_t left = width, right = 0;
  for (std::int32_t y = 0; y < geometry.height; ++y) {
    const std::uint8_t* row = newPlane.GetOffsetPtr(0, static_cast<std::size_t>(y));
    const std::uint8_t* old = before != nullptr
                                  ? before->GetPlane(0).GetOffsetPtr(0, static_cast<std::size_t>(y))
                                  : nullptr;
    const auto same = [&](std::size_t x) { return row[x] == (old != nullptr ? old[x] : 0); };
    if (old != nullptr ? std::memcmp(row, old, width) == 0
                       : std::all_of(row, row + width, [](std::uint8_t v) { return v == 0; })) {
      continue;
    }
    if (top < 0) top = y;
    bottom = y + 1;
    std::size_t l = 0;
    while (l < width && same(l)) ++l;
    std::size_t r = width;
    while (r > l && same(r - 1)) --r;
    left = std::min(left, l);
    right = std::max(right, r);
  }
  if (top < 0) return {};
  return {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
          static_cast<std::int32_t>(right - left), static_cast<std::int32_t>(bottom - top)};
}

}  // namespace

const std::string MaskUndo::SAVE_PROPERTY_IS_SAVED = "IsSaved";
const std::string MaskUndo::SAVE_PROPERTY_MASK_COUNTER = "MaskCounter";
const std::string MaskUndo::SAVE_PROPERTY_MASK_INFO = "MaskInfo";

MaskUndo::MaskUndo(FrameStorage* storage) : History(storage), TUndoImplBottom(storage) {}

MaskUndo::MaskUndo(FrameStorage* storage, unsigned width, unsigned height,
                   const Proc::IDataVideoPtr& mask, const MaskInfo& info)
    : History(storage), TUndoImplBottom(storage), width_(width), height_(height) {
  if (mask && mask->GetPixFmt() != PixFmt::Gray8) {
    ThrowBadMask("A mask picture must have one byte per pixel (Gray8)");
  }
  const Index index = storage->AddFrame(mask);
  Push(info);
  Get(0).SetFrameIndex(index);
  // Whatever the first mask holds is counted, inside the rectangle or not.
  CheckInfo(info);
}

MaskUndo::~MaskUndo() = default;

bool MaskUndo::CanPush(const MaskInfo& info, const Proc::IDataVideoPtr& mask) {
  if (IsEmptyRect(info) || GetItemCount() == 0) return false;
  FrameStorage& storage = *GetStorage();
  const Index working = GetWorkingIndex();
  if (mask) {
    if (mask->GetPixFmt() != PixFmt::Gray8) {
      ThrowBadMask("A mask picture must have one byte per pixel (Gray8)");
    }
    const Conf::FrameInfo& known = storage.GetFrameInfo(working);
    const Conf::FrameInfo& given = mask->GetFrameInfo();
    if (known.width != 0 && (known.width != given.width || known.height != given.height)) {
      ThrowBadMask("A mask of " + std::to_string(given.width) + "x" + std::to_string(given.height) +
                   " does not fit a mask of " + std::to_string(known.width) + "x" +
                   std::to_string(known.height));
    }
    // The old pixels would be gone already: the stroke must come as a new picture.
    if (known.width != 0 && mask == GetWorkingMask()) {
      ThrowBadMask("PushMask needs a new picture, not the working mask");
    }
    return !IsEmpty(Clip(info, given));
  }
  const Proc::IDataVideoPtr current = GetWorkingMask();
  if (!current) return false;
  EnsureCounted();
  return !stats_.GetBox().IsEmpty();
}

bool MaskUndo::PushMask(const MaskInfo& info, const Proc::IDataVideoPtr& mask) {
  if (!CanPush(info, mask)) return false;
  FrameStorage& storage = *GetStorage();
  const Index working = GetWorkingIndex();
  Proc::IDataVideoPtr current = GetWorkingMask();
  EnsureCounted();
  // The region whose old pixels the new item keeps: the stroke's rectangle widened to every
  // pixel the new mask changes (a host may paint past its rectangle's edge), or for a clear
  // everything painted.
  MaskInfo itemInfo = info;
  ROI region;
  if (mask) {
    region = Union(Clip(info, mask->GetFrameInfo()), ChangedRegion(current.get(), *mask));
    itemInfo.SetRect(region.left, region.left + region.width, region.top,
                     region.top + region.height);
  } else {
    const Proc::CropInfo& box = stats_.GetBox();
    itemInfo.SetRect(static_cast<std::int32_t>(box.left), static_cast<std::int32_t>(box.right),
                     static_cast<std::int32_t>(box.top), static_cast<std::int32_t>(box.bottom));
    region = Clip(itemInfo, current->GetFrameInfo());
  }
  if (IsEmpty(region)) return false;
  const Proc::IDataVideoPtr oldPixels =
      current ? Proc::CopyDataVideo(*std::as_const(*current).GetView(region))
              : MakeBlank(region.width, region.height);
  if (mask) {
    // Nothing painted yet: the counts take the new mask's geometry.
    if (!current) {
      const Conf::FrameInfo& size = mask->GetFrameInfo();
      stats_.Reset(static_cast<std::uint32_t>(size.width), static_cast<std::uint32_t>(size.height));
    }
    stats_.Remove(std::as_const(*oldPixels).GetPlane(0), region);
    storage.Reset(working, mask);
    stats_.Add(std::as_const(*mask).GetView(region)->GetPlane(0), region);
    info_ = itemInfo;
    FinishCount();
  } else {
    stats_.Reset(stats_.GetWidth(), stats_.GetHeight());
    storage.Reset(working, nullptr);
    info_.GetInfoEx() = info.GetInfoEx();
  }
  TruncateImpl();
  Push(itemInfo);
  Get(GetCurrentIndexImpl()).SetFrameIndex(storage.AddFrame(oldPixels));
  return true;
}

void MaskUndo::CheckInfo(const MaskInfo& info) {
  info_ = info;
  const Proc::IDataVideoPtr current = GetWorkingMask();
  if (!current) {
    stats_.Reset(stats_.GetWidth(), stats_.GetHeight());
    counted_ = true;
  } else {
    const Conf::FrameInfo& geometry = current->GetFrameInfo();
    ROI region{0, 0, geometry.width, geometry.height};
    if (counted_ && static_cast<std::int32_t>(stats_.GetWidth()) == geometry.width &&
        static_cast<std::int32_t>(stats_.GetHeight()) == geometry.height) {
      // Counted before: nothing is painted outside the box, nothing changed outside the
      // rectangle.
      region = Union(ToROI(stats_.GetBox()), Clip(info, geometry));
    }
    stats_.Reset(static_cast<std::uint32_t>(geometry.width),
                 static_cast<std::uint32_t>(geometry.height));
    if (!IsEmpty(region)) {
      stats_.Add(std::as_const(*current).GetView(region)->GetPlane(0), region);
    }
    counted_ = true;
  }
  FinishCount();
}

std::uint64_t MaskUndo::GetPixelCount(const std::vector<std::uint8_t>& brushIndices) const {
  return stats_.GetCounter().Get(brushIndices);
}

void MaskUndo::UndoImpl() {
  if (!IsUndoEnabledImpl() || GetItemCount() == 0) return;
  UndoRedoImpl();
  History::UndoImpl();
  info_ = Get(GetCurrentIndexImpl()).GetInfo();
}

void MaskUndo::RedoImpl() {
  if (!IsRedoEnabledImpl()) return;
  History::RedoImpl();
  try {
    UndoRedoImpl();
  } catch (...) {
    // The exchange loads both pictures before it changes anything: a stroke that cannot be
    // loaded stays undone.
    History::UndoImpl();
    throw;
  }
  info_ = Get(GetCurrentIndexImpl()).GetInfo();
}

void MaskUndo::TruncateImpl() {
  for (Index i = GetCurrentIndexImpl() + 1; i < GetItemCount(); ++i) {
    const Index frame = Get(i).GetFrameIndex();
    if (frame != kNoIndex) GetStorage()->Reset(frame, nullptr);
  }
  History::TruncateImpl();
}

void MaskUndo::UndoRedoImpl() {
  FrameStorage& storage = *GetStorage();
  EnsureCounted();
  const Item& item = Get(GetCurrentIndexImpl());
  const Proc::IDataVideoPtr kept =
      item.GetFrameIndex() != kNoIndex ? storage.GetFrame(item.GetFrameIndex()) : nullptr;
  if (!kept)
    ThrowBadMask("A stroke of the mask history has lost its pixels", CanvaroError::InvalidDocument);
  const Proc::IDataVideoPtr current = GetWorkingMask();
  const Conf::FrameInfo geometry = current ? current->GetFrameInfo() : GetMaskGeometry();
  const ROI region = Clip(item.GetInfo(), geometry);
  const Conf::FrameInfo& keptSize = kept->GetFrameInfo();
  if (region.width != keptSize.width || region.height != keptSize.height) {
    ThrowBadMask("The pixels of a stroke do not fit its rectangle in the mask",
                 CanvaroError::InvalidDocument);
  }
  // New pictures for both sides: the working mask may be a host's picture (the one it painted,
  // or one it received from the document), and neither is ever written in place.
  const Proc::IDataVideoPtr next =
      current ? Proc::CopyDataVideo(*current) : MakeBlank(geometry.width, geometry.height);
  if (!current) {
    stats_.Reset(static_cast<std::uint32_t>(geometry.width),
                 static_cast<std::uint32_t>(geometry.height));
  }
  auto working = next->GetView(region);
  const Proc::IDataVideoPtr replaced = Proc::CopyDataVideo(std::as_const(*working));
  stats_.Remove(std::as_const(*replaced).GetPlane(0), region);
  CopyRows(std::as_const(*kept).GetPlane(0), working->GetPlane(0),
           static_cast<std::size_t>(region.width), static_cast<std::size_t>(region.height));
  stats_.Add(std::as_const(*working).GetPlane(0), region);
  // Both frames leave their swap files (which would be stale); that also waits for a save of
  // them that is under way.
  storage.Reset(GetWorkingIndex(), next);
  storage.Reset(item.GetFrameIndex(), replaced);
  FinishCount();
}

void MaskUndo::EnsureCounted() {
  if (counted_) return;
  const Proc::IDataVideoPtr current = GetWorkingMask();
  const Conf::FrameInfo geometry = current ? current->GetFrameInfo() : GetMaskGeometry();
  stats_.Reset(static_cast<std::uint32_t>(std::max(geometry.width, 0)),
               static_cast<std::uint32_t>(std::max(geometry.height, 0)));
  if (current) {
    stats_.Add(std::as_const(*current).GetPlane(0), {0, 0, geometry.width, geometry.height});
  }
  counted_ = true;
}

void MaskUndo::FinishCount() {
  const std::uint64_t total = stats_.GetCounter().Get({});
  if (total == 0 && GetItemCount() != 0 && GetWorkingIndex() != kNoIndex) {
    GetStorage()->Reset(GetWorkingIndex(), nullptr);
  }
  CANVARO_LOG(INFO) << "Mask size: " << stats_.GetBox();
  CANVARO_LOG(INFO) << "Mask pixel count: " << total;
}

void MaskUndo::CopyFrom(const MaskUndo& other) {
  FrameStorage& storage = *GetStorage();
  const FrameStorage& source = *other.GetStorage();
  // Duplicated first: `other` may be this history.
  std::vector<std::pair<MaskInfo, Proc::IDataVideoPtr>> copies;
  const Index last = other.GetCurrentIndexImpl();
  for (Index i = 0; last != kNoIndex && i <= last; ++i) {
    const Item& item = other.Get(i);
    Proc::IDataVideoPtr picture =
        item.GetFrameIndex() != kNoIndex ? source.GetFrame(item.GetFrameIndex()) : nullptr;
    copies.emplace_back(item.GetInfo(), picture ? Proc::CopyDataVideo(*picture) : nullptr);
  }

  for (Index i = 0; i < GetItemCount(); ++i) {
    if (Get(i).GetFrameIndex() != kNoIndex) storage.Reset(Get(i).GetFrameIndex(), nullptr);
  }
  Clear();
  for (auto& [info, picture] : copies) {
    Push(info);
    Get(GetCurrentIndexImpl()).SetFrameIndex(storage.AddFrame(picture));
  }

  isSaved_ = other.isSaved_;
  info_ = other.info_;
  if (&other != this) {
    width_ = other.width_;
    height_ = other.height_;
    stats_ = other.stats_;
    counted_ = other.counted_;
  }
}

void MaskUndo::Serialize(const Drevin::ISerializerPtr& serializer) const {
  History::Serialize(serializer);
  serializer->WriteBool(SAVE_PROPERTY_IS_SAVED, isSaved_);
  serializer->WriteObject(SAVE_PROPERTY_MASK_COUNTER, stats_.GetCounter());
  serializer->WriteObject(SAVE_PROPERTY_MASK_INFO, info_);
  // Written twice on purpose: readers of the format expect the second copy.
  serializer->WriteObject(SAVE_PROPERTY_MASK_COUNTER, stats_.GetCounter());
}

void MaskUndo::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  if (serializer->Has(SAVE_PROPERTY_MASK_INFO)) {
    serializer->ReadObject(SAVE_PROPERTY_MASK_INFO, info_);
  }
  if (serializer->Has(SAVE_PROPERTY_MASK_COUNTER)) {
    serializer->ReadObject(SAVE_PROPERTY_MASK_COUNTER, stats_.GetCounter());
  }
  isSaved_ = serializer->ReadBool(SAVE_PROPERTY_IS_SAVED, isSaved_);
  History::Deserialize(serializer);
  // The counts come from the record; the box is found when the mask is next counted.
  counted_ = false;
}

void MaskUndo::SerializeMask(const Item& item, const Drevin::ISerializerPtr& serializer) const {
  if (item.GetFrameIndex() != kNoIndex)
    GetStorage()->SerializeItem(item.GetFrameIndex(), serializer);
}

void MaskUndo::DeserializeMask(Item& item, const Drevin::ISerializerConstPtr& serializer) {
  item.SetFrameIndex(GetStorage()->DeserializeItem(serializer));
}

Proc::IDataVideoPtr MaskUndo::GetWorkingMask() const {
  const Index index = GetItemCount() != 0 ? GetWorkingIndex() : kNoIndex;
  return index != kNoIndex ? GetStorage()->GetFrame(index) : nullptr;
}

Index MaskUndo::GetWorkingIndex() const { return Get(0).GetFrameIndex(); }

Conf::FrameInfo MaskUndo::GetMaskGeometry() const {
  Conf::FrameInfo geometry{};
  const Conf::FrameInfo* stored = nullptr;
  if (GetItemCount() != 0 && GetWorkingIndex() != kNoIndex) {
    stored = &GetStorage()->GetFrameInfo(GetWorkingIndex());
  }
  if (stored != nullptr && stored->width > 0 && stored->height > 0) {
    geometry = *stored;
  } else if (width_ > 0 && height_ > 0) {
    geometry = {static_cast<std::int32_t>(width_), static_cast<std::int32_t>(height_), 1, 1};
  } else if (GetItemCount() != 0) {
    // Loaded rectangles hold any values: their extent is computed wide and clamped.
    const auto extent = [](std::int32_t from, std::int32_t to) {
      return static_cast<std::int32_t>(std::clamp<std::int64_t>(
          std::int64_t{to} - from, 0, std::numeric_limits<std::int32_t>::max()));
    };
    const MaskInfo& first = Get(0).GetInfo();
    geometry = {extent(first.GetLeft(), first.GetRight()),
                extent(first.GetTop(), first.GetBottom()), 1, 1};
  }
  // A loaded record may claim any size, and the counts and a blank mask are allocated by it:
  // only a size that a mask picture can have will do.
  try {
    Proc::GetPlaneLayouts(PixFmt::Gray8, geometry);
  } catch (const Core::CoreException&) {
    ThrowBadMask("A mask of " + std::to_string(geometry.width) + "x" +
                     std::to_string(geometry.height) + " is larger than any picture can be",
                 CanvaroError::InvalidDocument);
  }
  return geometry;
}

ROI MaskUndo::Clip(const MaskInfo& rect, const Conf::FrameInfo& geometry) const {
  const std::int32_t left = std::clamp(rect.GetLeft(), 0, std::max(geometry.width, 0));
  const std::int32_t right = std::clamp(rect.GetRight(), left, std::max(geometry.width, 0));
  const std::int32_t top = std::clamp(rect.GetTop(), 0, std::max(geometry.height, 0));
  const std::int32_t bottom = std::clamp(rect.GetBottom(), top, std::max(geometry.height, 0));
  return {left, top, right - left, bottom - top};
}

Proc::IDataVideoPtr MaskUndo::MakeBlank(std::int32_t width, std::int32_t height) {
  Proc::IDataVideoPtr blank =
      Core::CoreManager::GetDataVideoFFFactory()->Create(PixFmt::Gray8, {width, height, 1, 1});
  blank->Fill(Proc::Color::Black());
  return blank;
}

}  // namespace Kelbra::Canvaro
