/// \file
/// FrameStorage: every full picture that a document's history needs, by frame index, in memory
/// or in a swap file.
///
/// Frames are added in order (the first gets index 0) and fetched by index; a frame that was
/// swapped out is read back from its file, on the calling thread, when it is fetched. Swap and
/// SwapExcept only name the files and queue them: a worker thread owned by the storage writes
/// them, and then drops the in-memory pictures.
///
///   FrameStorage storage("/tmp/doc-swap",
///                        [n = 0]() mutable { return "f" + std::to_string(n++); });
///   Kelbra::Index i = storage.AddFrame(picture);
///   storage.SwapExcept({i});          // all other frames go to disk, in the background
///   storage.WaitForPendingSaves();    // only when the files are needed now
///   auto again = storage.GetFrame(0); // loaded back from its file if it was swapped
///
/// Errors: a failed write on the worker or a failed read sets a sticky "failed" state, after
/// which every GetFrame throws CanvaroException with code CanvaroError::SwapFileFailure. A
/// picture whose write failed stays in memory (GetFrameInMemory), so that it can still be saved
/// elsewhere.
///
/// Threads: all operations are called from one thread (the document's); only the worker runs
/// beside it, and it locks nothing while it writes: the caller never waits for the disk, except
/// in WaitForPendingSaves and when more than the write backlog is queued (SetWriteBacklog). The
/// storage never creates its swap directory; the host does.
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

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Path.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class FrameItem;

class FrameStorage : public virtual Drevin::ISerializable {
 public:
  /// Starts the worker thread. `nameGenerator` gives a new file name, relative to
  /// `swapDirectory`, on every call.
  FrameStorage(const ioPath& swapDirectory, std::function<std::string()> nameGenerator);
  /// Lets the worker write every queued batch, joins it, and removes the swap directory only if
  /// the storage has failed.
  ~FrameStorage() override;
  FrameStorage(const FrameStorage&) = delete;
  FrameStorage& operator=(const FrameStorage&) = delete;

  /// Appends a frame holding `frame` (which may be empty); returns its index.
  Index AddFrame(const Proc::IDataVideoPtr& frame);
  /// The picture of frame `index`, loaded from its swap file when it is not in memory; empty for
  /// a frame without a picture. Throws CanvaroException (SwapFileFailure) when the storage has
  /// failed or the load fails. `index` must be below GetCount().
  Proc::IDataVideoPtr GetFrame(Index index) const;
  /// The geometry of frame `index`, also while it is on disk.
  const Conf::FrameInfo& GetFrameInfo(Index index) const;
  /// Replaces the picture of frame `index` (deleting its swap file) and returns the new picture.
  Proc::IDataVideoPtr Reset(Index index, const Proc::IDataVideoPtr& frame);
  /// Drops every frame at `count` and above, deleting their swap files.
  void Truncate(Index count);
  /// Bytes of picture data held in memory.
  std::uint64_t GetSize() const;
  /// The memory budget of loads. After GetFrame has read a picture back from its file, while the
  /// other pictures in memory and the pool of freed picture buffers (kelbra/Proc/BufferPool.h)
  /// take `bytes` or more, the least recently used ones whose swap file is already written are
  /// let go (they are read back when asked for; nothing is written), never a frame for which
  /// `keep` answers true, never one without a written file. 0 (the default) switches this off.
  /// `keep` is called on the thread that calls GetFrame.
  void SetLoadBudget(std::uint64_t bytes, std::function<bool(Index)> keep);
  /// The write backlog: after queueing, Swap and SwapExcept wait while the pictures queued and
  /// not yet written take more than `bytes`, so that memory stays bounded when the disk is
  /// slower than the edits. They never wait for a batch under way as such. 0 (the default): no
  /// bound.
  void SetWriteBacklog(std::uint64_t bytes);
  /// Queues the listed frames for writing to disk.
  void Swap(const std::vector<Index>& indices) const;
  /// Queues every frame except the listed ones for writing to disk.
  void SwapExcept(const std::vector<Index>& keep) const;

  /// Writes the record of every frame (file name and geometry), after queueing every frame
  /// that has no file yet.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Appends the frames of a record; throws CanvaroException (SwapFileFailure) when a named file
  /// does not exist.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;
  /// Reads a single frame record and returns its index: the frame already holding the same file
  /// with the same geometry (a saved document names its mask pictures twice), or else a new frame
  /// appended. Throws as Deserialize.
  Index DeserializeItem(const Drevin::ISerializerConstPtr& serializer);
  /// Writes the record of frame `index` alone, as DeserializeItem reads it, after queueing the
  /// frame for writing when it has a picture but no file yet.
  void SerializeItem(Index index, const Drevin::ISerializerPtr& serializer) const;

  // ---- beyond the document's needs: for hosts, tools and tests ----

  /// Number of frames.
  Index GetCount() const;
  /// Blocks until the worker has written every batch queued so far, then flushes to the disk the
  /// swap files that a record names (Serialize, SerializeItem), so that a saved document
  /// survives a power loss. Other swap files are scratch and never flushed. A failed flush fails
  /// the storage (IsFailed).
  void WaitForPendingSaves() const;
  /// True once a save or a load has failed.
  bool IsFailed() const;
  const ioPath& GetSwapDirectory() const;
  /// The picture of frame `index` if it is in memory, without loading it and also when the
  /// storage has failed (a picture whose swap write failed stays in memory); empty otherwise.
  /// For rescuing a failed session's pictures.
  Proc::IDataVideoPtr GetFrameInMemory(Index index) const;
  /// True when the picture of frame `index` is gone: its file could not be read back.
  bool IsFrameLost(Index index) const;
  /// The swap file name of frame `index` (relative to the swap directory), empty when none.
  ioPath GetFileName(Index index) const;

 private:
  // Locks: each item's mutex, held only for moments (never while a file is written); queueMutex_,
  // which guards the queue and the counters below, with wakeCondition_ (the worker waits for
  // work) and doneCondition_ (callers wait for batches or for the backlog to shrink). No item
  // mutex is held while queueMutex_ is taken, and the other way round.
  struct Queued {
    std::shared_ptr<FrameItem> item;
    std::uint64_t bytes;  // of its picture when queued
  };
  using Batch = std::vector<Queued>;

  // The item of frame `index`; throws CanvaroException (InvalidArgument) naming `operation`
  // when there is none.
  const std::shared_ptr<FrameItem>& ItemAt(Index index, const char* operation) const;
  // Sets the sticky failed state, keeping the first cause for the errors that follow.
  void Fail(const std::string& cause) const;
  std::string FailureText() const;
  // One swap file name per candidate; those whose `needsName` is true are usable: plain names
  // that are neither files in the swap directory nor held by a frame. Throws whatever the
  // generator throws, before anything is assigned.
  std::vector<ioPath> DrawNames(const std::vector<bool>& needsName) const;
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
  std::thread worker_;
  mutable std::mutex queueMutex_;
  mutable std::condition_variable wakeCondition_;
  mutable std::condition_variable doneCondition_;
  bool running_ = true;                       // guarded by queueMutex_
  mutable std::deque<Batch> saveQueue_;       // guarded by queueMutex_
  mutable std::uint64_t queuedBatches_ = 0;   // guarded by queueMutex_
  std::uint64_t finishedBatches_ = 0;         // guarded by queueMutex_
  mutable std::uint64_t unwrittenBytes_ = 0;  // guarded by queueMutex_
  std::uint64_t writeBacklog_ = 0;
  mutable std::atomic<bool> failed_{false};
  mutable std::mutex failureMutex_;
  mutable std::string failure_;  // guarded by failureMutex_
};

}  // namespace Kelbra::Canvaro
