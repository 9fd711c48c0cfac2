// FrameStorage::Impl: the frames, the save queue and the worker thread behind FrameStorage.
// Internal; FrameStorage documents the operations.
//
// Locks: each item's mutex; queueMutex_ (the queue and its batch counter); wakeMutex_ with
// wakeCondition_, on which the worker sleeps and which it holds while it saves a batch;
// doneMutex_ with doneCondition_ for WaitForPendingSaves. No item mutex is held while
// queueMutex_ or wakeMutex_ is taken; the storage's thread never nests queueMutex_ and
// wakeMutex_; the worker takes queueMutex_ and doneMutex_ only briefly inside wakeMutex_.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "canvaro/Undo/FrameItem.h"
#include "canvaro/Undo/FrameStorage.h"

namespace Kelbra::Canvaro {

class FrameStorage::Impl : public Drevin::ISerializable {
 public:
  // Starts the worker; std::system_error propagates when it cannot be started.
  Impl(const ioPath& swapDirectory, std::function<std::string()> nameGenerator);
  // Lets the worker drain the queue, joins it, and removes the swap directory if failed.
  ~Impl() override;
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  Index AddFrame(const Proc::IDataVideoPtr& frame);
  Proc::IDataVideoPtr GetFrame(Index index) const;
  const Conf::FrameInfo& GetFrameInfo(Index index) const;
  Proc::IDataVideoPtr Reset(Index index, const Proc::IDataVideoPtr& frame);
  void Truncate(Index count);
  std::uint64_t GetSize() const;
  void Swap(const std::vector<Index>& indices) const;
  void SwapExcept(const std::vector<Index>& keep) const;
  void SetLoadBudget(std::uint64_t bytes, std::function<bool(Index)> keep);

  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;
  Index DeserializeItem(const Drevin::ISerializerConstPtr& serializer);
  void SerializeItem(Index index, const Drevin::ISerializerPtr& serializer) const;

  Index GetCount() const;
  void WaitForPendingSaves() const;
  bool IsFailed() const;
  const ioPath& GetSwapDirectory() const;
  ioPath GetFileName(Index index) const;

 private:
  using Batch = std::vector<std::shared_ptr<FrameItem>>;

  // The item of frame `index`; throws CanvaroException (InvalidArgument) naming `operation`
  // when there is none.
  const std::shared_ptr<FrameItem>& ItemAt(Index index, const char* operation) const;
  // Sets the sticky failed state, keeping the first cause for the errors that follow.
  void Fail(const std::string& cause) const;
  std::string FailureText() const;
  // `count` usable swap file names: plain names that are neither files in the swap directory
  // nor held by a frame. Throws whatever the generator throws, before anything is assigned.
  std::vector<ioPath> DrawNames(std::size_t count) const;
  // After frame `loaded` was read back: lets go of the least recently used written pictures
  // until the others are below the load budget.
  void KeepLoadsInBudget(Index loaded) const;
  // The worker's body: saves queued batches in order until the storage is destroyed and the
  // queue is empty.
  void SaveThreadFunction();

  std::vector<std::shared_ptr<FrameItem>> items_;
  // Frames without a picture or file that the last Deserialize read and no DeserializeItem has
  // taken yet (a saved mask names its empty pictures again; each is taken once).
  std::vector<Index> loadedEmpty_;
  std::uint64_t loadBudget_ = 0;
  std::function<bool(Index)> keepInMemory_;
  const ioPath swapDirectory_;
  const std::function<std::string()> nameGenerator_;
  std::atomic<bool> running_{true};
  std::thread worker_;
  mutable std::mutex queueMutex_;
  mutable std::deque<Batch> saveQueue_;
  mutable std::uint64_t queuedBatches_ = 0;  // guarded by queueMutex_
  mutable std::mutex wakeMutex_;
  mutable std::condition_variable wakeCondition_;
  mutable std::atomic<bool> failed_{false};
  mutable std::mutex failureMutex_;
  mutable std::string failure_;  // guarded by failureMutex_
  mutable std::mutex doneMutex_;
  mutable std::condition_variable doneCondition_;
  std::uint64_t finishedBatches_ = 0;  // guarded by doneMutex_
};

}  // namespace Kelbra::Canvaro
