#include "canvaro/Undo/FrameStorageImpl.h"

#include <algorithm>
#include <numeric>

#include <glog/logging.h>

#include "canvaro/Undo/StorageNames.h"
#include "canvaro/foundation/Throw.h"
#include "kelbra/Core/FileSystem.h"

namespace Kelbra::Canvaro {

namespace Names = SerializeNames::Storage;

FrameStorage::Impl::Impl(const ioPath& swapDirectory, std::function<std::string()> nameGenerator)
    : swapDirectory_(swapDirectory), nameGenerator_(std::move(nameGenerator)) {
  // Started here rather than in the member list: the worker uses members declared after it.
  worker_ = std::thread(&Impl::SaveThreadFunction, this);
}

FrameStorage::Impl::~Impl() {
  running_.exchange(false);
  {
    std::lock_guard wake(wakeMutex_);
    wakeCondition_.notify_one();
  }
  worker_.join();
  // A storage that never failed keeps its files: saved documents refer to them.
  if (failed_.load()) Core::RemoveDir(swapDirectory_);
}

Index FrameStorage::Impl::AddFrame(const Proc::IDataVideoPtr& frame) {
  items_.push_back(std::make_shared<FrameItem>(swapDirectory_, frame));
  return static_cast<Index>(items_.size() - 1);
}

Proc::IDataVideoPtr FrameStorage::Impl::GetFrame(Index index) const {
  if (failed_.load()) ThrowCoded(CanvaroError::SwapFileFailure, BOOST_CURRENT_LOCATION);
  try {
    return items_[index]->Get();
  } catch (...) {
    failed_.exchange(true);
    throw;
  }
}

const Conf::FrameInfo& FrameStorage::Impl::GetFrameInfo(Index index) const {
  return items_[index]->GetInfo();
}

Proc::IDataVideoPtr FrameStorage::Impl::Reset(Index index, const Proc::IDataVideoPtr& frame) {
  return items_[index]->Reset(frame);
}

void FrameStorage::Impl::Truncate(Index count) {
  // Never grows the list: a count beyond the end drops nothing.
  if (count >= items_.size()) return;
  for (std::size_t i = count; i < items_.size(); ++i) {
    if (items_[i]) items_[i]->Drop();
  }
  // Dropped items live on while a queued batch holds them; the worker finds them dead.
  items_.resize(count);
}

std::uint64_t FrameStorage::Impl::GetSize() const {
  std::uint64_t size = 0;
  for (const auto& item : items_) {
    if (item) size += item->GetMemorySize();
  }
  return size;
}

void FrameStorage::Impl::Swap(const std::vector<Index>& indices) const {
  std::vector<Index> swapped = indices;
  std::sort(swapped.begin(), swapped.end());
  std::vector<Index> all(items_.size());
  std::iota(all.begin(), all.end(), Index{0});
  std::vector<Index> keep;
  std::set_difference(all.begin(), all.end(), swapped.begin(), swapped.end(),
                      std::back_inserter(keep));
  SwapExcept(keep);
}

void FrameStorage::Impl::SwapExcept(const std::vector<Index>& keep) const {
  Batch batch;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (std::find(keep.begin(), keep.end(), static_cast<Index>(i)) != keep.end()) continue;
    // One name per candidate, used or not: the generator sees every frame that was considered.
    const ioPath candidate(nameGenerator_());
    if (items_[i] && items_[i]->CheckForSave(candidate)) batch.push_back(items_[i]);
  }
  {
    std::lock_guard queue(queueMutex_);
    saveQueue_.push_back(std::move(batch));
    ++queuedBatches_;
  }
  std::lock_guard wake(wakeMutex_);
  wakeCondition_.notify_one();
}

void FrameStorage::Impl::Serialize(const Drevin::ISerializerPtr& serializer) const {
  SwapExcept({});
  const auto list = serializer->CreateCollection(Names::STORAGE_ITEMS);
  for (const auto& item : items_) {
    if (item) list->WriteObject(Names::STORAGE_ITEM, *item);
  }
}

void FrameStorage::Impl::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  const auto list = serializer->GetCollection(Names::STORAGE_ITEMS);
  if (!list) return;
  for (std::size_t i = 0; i < list->GetCount(); ++i) {
    auto item = std::make_shared<FrameItem>(swapDirectory_, Proc::IDataVideoPtr());
    list->GetItem(i)->ReadObject(Names::STORAGE_ITEM, *item);
    items_.push_back(std::move(item));
  }
}

Index FrameStorage::Impl::DeserializeItem(const Drevin::ISerializerConstPtr& serializer) {
  const Index index = AddFrame(Proc::IDataVideoPtr());
  items_.back()->Deserialize(serializer);
  return index;
}

void FrameStorage::Impl::SerializeItem(Index index,
                                       const Drevin::ISerializerPtr& serializer) const {
  const auto& item = items_[index];
  // Only a picture without a file needs queueing; anything else would just log a second time.
  if (item->GetFileName().empty() && item->GetMemorySize() > 0) Swap({index});
  item->Serialize(serializer);
}

Index FrameStorage::Impl::GetCount() const { return static_cast<Index>(items_.size()); }

void FrameStorage::Impl::WaitForPendingSaves() const {
  std::uint64_t queued = 0;
  {
    std::lock_guard queue(queueMutex_);
    queued = queuedBatches_;
  }
  std::unique_lock done(doneMutex_);
  doneCondition_.wait(done, [&] { return finishedBatches_ >= queued; });
}

bool FrameStorage::Impl::IsFailed() const { return failed_.load(); }

const ioPath& FrameStorage::Impl::GetSwapDirectory() const { return swapDirectory_; }

ioPath FrameStorage::Impl::GetFileName(Index index) const {
  return items_[index] ? items_[index]->GetFileName() : ioPath();
}

void FrameStorage::Impl::SaveThreadFunction() {
  for (;;) {
    // Held for the whole pass (released only while waiting), so that queueing work or
    // destroying the storage waits for the batch being saved.
    std::unique_lock wake(wakeMutex_);
    while (running_.load()) {
      bool empty = true;
      {
        std::lock_guard queue(queueMutex_);
        empty = saveQueue_.empty();
      }
      if (!empty) break;
      wakeCondition_.wait(wake);
      if (!running_.load()) break;
    }

    Batch batch;
    {
      std::lock_guard queue(queueMutex_);
      if (saveQueue_.empty()) {
        // The exit test comes only with an empty queue: every queued batch is written first.
        if (!running_.load()) return;
        continue;
      }
      batch = std::move(saveQueue_.front());
      saveQueue_.pop_front();
    }

    LOG(INFO) << "Swap started";
    boost::exception_ptr firstError;
    for (const auto& item : batch) {
      boost::exception_ptr error = item->Save();
      if (error && !firstError) firstError = error;
    }
    // The error itself goes no further: the flag is what callers see, at their next GetFrame.
    if (firstError) failed_.exchange(true);
    LOG(INFO) << "Swap done";
    batch.clear();

    {
      std::lock_guard done(doneMutex_);
      ++finishedBatches_;
    }
    doneCondition_.notify_all();
  }
}

}  // namespace Kelbra::Canvaro
