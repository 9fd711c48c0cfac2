#include "canvaro/Undo/FrameStorage.h"

#include "canvaro/Undo/FrameItem.h"

#include <algorithm>
#include <numeric>
#include <set>
#include <string>

#include "canvaro/foundation/Log.h"

#include "canvaro/Undo/StorageNames.h"
#include "canvaro/foundation/Throw.h"
#include "kelbra/Core/FileSystem.h"
#include "kelbra/Proc/BufferPool.h"

namespace Kelbra::Canvaro {

namespace Names = SerializeNames::Storage;

FrameStorage::FrameStorage(const ioPath& swapDirectory, std::function<std::string()> nameGenerator)
    : swapDirectory_(swapDirectory), nameGenerator_(std::move(nameGenerator)) {
  // Started here rather than in the member list: the worker uses members declared after it.
  worker_ = std::thread(&FrameStorage::SaveThreadFunction, this);
}

FrameStorage::~FrameStorage() {
  {
    std::lock_guard queue(queueMutex_);
    running_ = false;
  }
  wakeCondition_.notify_one();
  worker_.join();
  // A storage that never failed keeps its files: saved documents refer to them. A folder that
  // cannot be removed (read-only file system, an entry that cannot be deleted) stays.
  if (failed_.load() && !swapDirectory_.empty()) {
    try {
      Core::RemoveDir(swapDirectory_);
    } catch (const std::exception& e) {
      CANVARO_LOG(ERROR) << "Cannot remove the swap directory of a failed storage: " << e.what();
    } catch (...) {
      CANVARO_LOG(ERROR) << "Cannot remove the swap directory of a failed storage: Unknown error";
    }
  }
}

const std::shared_ptr<FrameItem>& FrameStorage::ItemAt(Index index, const char* operation) const {
  if (index >= items_.size() || items_[index] == nullptr) {
    ThrowCoded(CanvaroError::InvalidArgument,
               std::string(operation) + ": frame " + std::to_string(index) +
                   " does not exist (the storage holds " + std::to_string(items_.size()) +
                   " frames)",
               BOOST_CURRENT_LOCATION);
  }
  return items_[index];
}

void FrameStorage::Fail(const std::string& cause) const {
  {
    std::lock_guard lock(failureMutex_);
    if (failure_.empty()) failure_ = cause;
  }
  failed_.exchange(true);
}

std::string FrameStorage::FailureText() const {
  std::lock_guard lock(failureMutex_);
  return failure_;
}

Index FrameStorage::AddFrame(const Proc::IDataVideoPtr& frame) {
  items_.push_back(std::make_shared<FrameItem>(swapDirectory_, frame));
  return static_cast<Index>(items_.size() - 1);
}

Proc::IDataVideoPtr FrameStorage::GetFrame(Index index) const {
  const auto& item = ItemAt(index, "GetFrame");
  if (failed_.load()) {
    ThrowCoded(CanvaroError::SwapFileFailure,
               "The document's swap storage has failed, so its pictures cannot be read (" +
                   FailureText() + ")",
               BOOST_CURRENT_LOCATION);
  }
  const bool onDisk = item->GetMemorySize() == 0;
  Proc::IDataVideoPtr picture;
  try {
    picture = item->Get();
  } catch (const std::exception& e) {
    Fail(e.what());
    throw;
  }
  if (onDisk && picture && loadBudget_ > 0) KeepLoadsInBudget(index);
  return picture;
}

void FrameStorage::SetLoadBudget(std::uint64_t bytes, std::function<bool(Index)> keep) {
  loadBudget_ = bytes;
  keepInMemory_ = std::move(keep);
}

void FrameStorage::KeepLoadsInBudget(Index loaded) const {
  // Freed buffers kept for reuse count as memory in use.
  std::uint64_t others = 0;
  std::vector<std::pair<std::uint64_t, Index>> candidates;  // (last use, frame)
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const auto& item = items_[i];
    if (!item || item->GetMemorySize() == 0 || i == loaded) continue;
    others += item->GetMemorySize();
    if (!keepInMemory_ || !keepInMemory_(static_cast<Index>(i))) {
      candidates.emplace_back(item->GetLastUse(), static_cast<Index>(i));
    }
  }
  const auto over = [&] { return others + Proc::GetPooledBufferBytes() >= loadBudget_; };
  if (!over()) return;
  std::sort(candidates.begin(), candidates.end());
  for (const auto& [lastUse, index] : candidates) {
    if (!over()) return;
    const std::size_t size = items_[index]->GetMemorySize();
    if (items_[index]->ReleaseIfWritten()) others -= size;
  }
  // Still over: pictures that must stay take the budget. The pool is kept all the same; the
  // next load takes its buffer instead of new memory.
}

const Conf::FrameInfo& FrameStorage::GetFrameInfo(Index index) const {
  return ItemAt(index, "GetFrameInfo")->GetInfo();
}

Proc::IDataVideoPtr FrameStorage::Reset(Index index, const Proc::IDataVideoPtr& frame) {
  return ItemAt(index, "Reset")->Reset(frame);
}

void FrameStorage::Truncate(Index count) {
  // Never grows the list: a count beyond the end drops nothing.
  if (count >= items_.size()) return;
  for (std::size_t i = count; i < items_.size(); ++i) {
    if (items_[i]) items_[i]->Drop();
  }
  // Dropped items live on while a queued batch holds them; the worker finds them dead.
  items_.resize(count);
}

std::uint64_t FrameStorage::GetSize() const {
  std::uint64_t size = 0;
  for (const auto& item : items_) {
    if (item) size += item->GetMemorySize();
  }
  return size;
}

void FrameStorage::Swap(const std::vector<Index>& indices) const {
  std::vector<Index> swapped = indices;
  std::sort(swapped.begin(), swapped.end());
  std::vector<Index> all(items_.size());
  std::iota(all.begin(), all.end(), Index{0});
  std::vector<Index> keep;
  std::set_difference(all.begin(), all.end(), swapped.begin(), swapped.end(),
                      std::back_inserter(keep));
  SwapExcept(keep);
}

void FrameStorage::SwapExcept(const std::vector<Index>& keep) const {
  std::vector<Index> candidates;
  // Which candidates will take a name: a picture in memory without a file. Only this thread
  // gives names, so the answer holds until CheckForSave.
  std::vector<bool> needsName;
  bool needsFile = false;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (std::find(keep.begin(), keep.end(), static_cast<Index>(i)) != keep.end()) continue;
    candidates.push_back(static_cast<Index>(i));
    const auto& item = items_[i];
    needsName.push_back(item && item->GetMemorySize() > 0 && item->GetFileName().empty());
    needsFile = needsFile || needsName.back();
  }
  if (needsFile && swapDirectory_.empty()) {
    ThrowCoded(CanvaroError::InvalidState,
               "Pictures cannot be written to swap files: the document was made without a swap "
               "directory",
               BOOST_CURRENT_LOCATION);
  }
  // All names are drawn before any is assigned, so that a generator that throws leaves every
  // frame as it was.
  const std::vector<ioPath> names = DrawNames(needsName);
  Batch batch;
  std::uint64_t bytes = 0;
  for (std::size_t k = 0; k < candidates.size(); ++k) {
    const auto& item = items_[candidates[k]];
    if (item && item->CheckForSave(names[k])) {
      batch.push_back({item, item->GetMemorySize()});
      bytes += batch.back().bytes;
    }
  }
  std::unique_lock queue(queueMutex_);
  saveQueue_.push_back(std::move(batch));
  ++queuedBatches_;
  unwrittenBytes_ += bytes;
  wakeCondition_.notify_one();
  // Back-pressure: the caller waits only while more than the backlog is queued and unwritten,
  // never for the batch under way as such.
  if (writeBacklog_ > 0) {
    doneCondition_.wait(queue, [this] { return unwrittenBytes_ <= writeBacklog_; });
  }
}

void FrameStorage::SetWriteBacklog(std::uint64_t bytes) { writeBacklog_ = bytes; }

std::vector<ioPath> FrameStorage::DrawNames(const std::vector<bool>& needsName) const {
  // One name per candidate, used or not: the generator sees every frame that was considered.
  // Only the names that will be given out are checked, so that an edit costs no file system
  // call per frame of the history: a name that is already a file (another document's, an earlier
  // save's) or that another frame holds is passed over; a generator that keeps repeating itself
  // is given up on.
  constexpr int kMaxSkipped = 10000;
  int skipped = 0;
  std::set<std::string> taken;
  bool takenKnown = false;
  std::vector<ioPath> names;
  names.reserve(needsName.size());
  for (const bool needed : needsName) {
    ioPath name(nameGenerator_());
    if (!needed) {
      names.push_back(name);
      continue;
    }
    if (!takenKnown) {
      for (const auto& item : items_) {
        if (item) taken.insert(item->GetFileName().utf8());
      }
      takenKnown = true;
    }
    while (!IsPlainFileName(name) || taken.contains(name.utf8()) ||
           (swapDirectory_ / name).exists()) {
      CANVARO_LOG(WARNING) << "Swap file name '" << name.utf8()
                           << "' is already in use or not a file name; drawing another";
      if (++skipped > kMaxSkipped) {
        ThrowCoded(CanvaroError::InvalidState,
                   "The swap file name generator gave " + std::to_string(kMaxSkipped) +
                       " names in a row that are in use or not file names (last: '" + name.utf8() +
                       "')",
                   BOOST_CURRENT_LOCATION);
      }
      name = ioPath(nameGenerator_());
    }
    taken.insert(name.utf8());
    names.push_back(name);
  }
  return names;
}

void FrameStorage::Serialize(const Drevin::ISerializerPtr& serializer) const {
  SwapExcept({});
  const auto list = serializer->CreateCollection(Names::STORAGE_ITEMS);
  for (const auto& item : items_) {
    if (item) list->WriteObject(Names::STORAGE_ITEM, *item);
  }
}

void FrameStorage::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  const auto list = serializer->GetCollection(Names::STORAGE_ITEMS);
  if (!list) return;
  loadedEmpty_.clear();
  for (std::size_t i = 0; i < list->GetCount(); ++i) {
    auto item = std::make_shared<FrameItem>(swapDirectory_, Proc::IDataVideoPtr());
    list->GetItem(i)->ReadObject(Names::STORAGE_ITEM, *item);
    if (item->GetFileName().empty()) loadedEmpty_.push_back(static_cast<Index>(items_.size()));
    items_.push_back(std::move(item));
  }
}

Index FrameStorage::DeserializeItem(const Drevin::ISerializerConstPtr& serializer) {
  // A saved document lists every picture under its frames and names the mask pictures again in
  // the masks. A record naming a file that a loaded frame already holds is that frame: taking it
  // again would give one file two owners and grow the frame list on every save and load.
  auto probe = std::make_shared<FrameItem>(swapDirectory_, Proc::IDataVideoPtr());
  probe->Deserialize(serializer);
  const ioPath name = probe->GetFileName();
  if (!name.empty()) {
    for (std::size_t i = 0; i < items_.size(); ++i) {
      if (items_[i] && items_[i]->GetFileName() == name &&
          items_[i]->GetInfo() == probe->GetInfo()) {
        return static_cast<Index>(i);
      }
    }
  } else {
    for (auto it = loadedEmpty_.begin(); it != loadedEmpty_.end(); ++it) {
      if (*it >= items_.size()) continue;
      const auto& item = items_[*it];
      if (item && item->GetFileName().empty() && item->GetMemorySize() == 0 &&
          item->GetInfo() == probe->GetInfo()) {
        const Index index = *it;
        loadedEmpty_.erase(it);
        return index;
      }
    }
  }
  items_.push_back(std::move(probe));
  return static_cast<Index>(items_.size() - 1);
}

void FrameStorage::SerializeItem(Index index, const Drevin::ISerializerPtr& serializer) const {
  const auto& item = ItemAt(index, "SerializeItem");
  if (swapDirectory_.empty() && item->GetFileName().empty() && item->GetMemorySize() > 0) {
    ThrowCoded(CanvaroError::InvalidState,
               "Frame " + std::to_string(index) +
                   " cannot be saved: the document was made without a swap directory",
               BOOST_CURRENT_LOCATION);
  }
  // Only a picture without a file needs queueing; anything else would just log a second time.
  if (item->GetFileName().empty() && item->GetMemorySize() > 0) Swap({index});
  item->Serialize(serializer);
}

Index FrameStorage::GetCount() const { return static_cast<Index>(items_.size()); }

void FrameStorage::WaitForPendingSaves() const {
  {
    std::unique_lock queue(queueMutex_);
    const std::uint64_t queued = queuedBatches_;
    doneCondition_.wait(queue, [&] { return finishedBatches_ >= queued; });
  }
  // Swap files are written without flushing them to the disk; the ones a saved document names
  // are flushed now, so that the document survives a power loss.
  try {
    bool synced = false;
    for (const auto& item : items_) {
      if (item && item->SyncIfPublished()) synced = true;
    }
    if (synced) Core::SyncDir(swapDirectory_);
  } catch (const std::exception& e) {
    CANVARO_LOG(ERROR) << e.what();
    Fail(e.what());
  }
}

bool FrameStorage::IsFailed() const { return failed_.load(); }

const ioPath& FrameStorage::GetSwapDirectory() const { return swapDirectory_; }

Proc::IDataVideoPtr FrameStorage::GetFrameInMemory(Index index) const {
  return ItemAt(index, "GetFrameInMemory")->GetInMemory();
}

bool FrameStorage::IsFrameLost(Index index) const { return ItemAt(index, "IsFrameLost")->IsLost(); }

ioPath FrameStorage::GetFileName(Index index) const {
  return ItemAt(index, "GetFileName")->GetFileName();
}

void FrameStorage::SaveThreadFunction() {
  for (;;) {
    Batch batch;
    {
      std::unique_lock queue(queueMutex_);
      wakeCondition_.wait(queue, [this] { return !saveQueue_.empty() || !running_; });
      // The exit test comes only with an empty queue: every queued batch is written first.
      if (saveQueue_.empty()) return;
      batch = std::move(saveQueue_.front());
      saveQueue_.pop_front();
    }

    // Nothing is locked while the pictures are written, but each picture's own mutex for a
    // moment before and after: queueing more work, reading pictures and resetting them go on.
    CANVARO_LOG(INFO) << "Swap started";
    boost::exception_ptr firstError;
    for (const Queued& queued : batch) {
      boost::exception_ptr error = queued.item->Save();
      if (error && !firstError) firstError = error;
      {
        std::lock_guard queue(queueMutex_);
        unwrittenBytes_ -= queued.bytes;
      }
      doneCondition_.notify_all();
    }
    // The error itself goes no further: the flag is what callers see, at their next GetFrame,
    // together with the first failure's description.
    if (firstError) {
      try {
        boost::rethrow_exception(firstError);
      } catch (const std::exception& e) {
        Fail(e.what());
      } catch (...) {
        Fail("Unknown error");
      }
    }
    CANVARO_LOG(INFO) << "Swap done";
    batch.clear();

    {
      std::lock_guard queue(queueMutex_);
      ++finishedBatches_;
    }
    doneCondition_.notify_all();
  }
}

}  // namespace Kelbra::Canvaro
