// FrameItem: one frame of a FrameStorage: its geometry, its picture while it is in memory, and
// the name of its swap file once it has one. Internal to the frame storage.
//
// States, from the fields (there is no state variable):
//
//   state                 picture  file name  file on disk
//   in memory only        set      empty      none
//   queued for save       set      set        not yet
//   saved, swapped out    empty    set        yes
//   saved, loaded back    set      set        yes
//   dead                  empty    empty      none
//
// CheckForSave (storage thread) queues an item or drops a picture that is safe on disk; Save
// (worker thread) writes a queued picture and releases it; LoadFrame (storage thread) reads it
// back; Reset and Drop move an item to "in memory only" or "dead", deleting its file.
//
// Threads: the picture and the file name are guarded by the item's mutex, which every
// operation takes alone (never while holding another lock of the storage). The geometry is
// read and written on the storage's thread only. The item refers to the storage's swap
// directory, which must outlive it.
#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>

#include <boost/exception_ptr.hpp>

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Path.h"
#include "kelbra/Proc/IDataVideo.h"

namespace Kelbra::Canvaro {

// Whether `name` can name a file inside a folder: not empty, not "." or "..", no separator.
bool IsPlainFileName(const ioPath& name);

class FrameItem : public Drevin::ISerializable {
 public:
  // An item holding `frame` (may be empty) and, when present, a copy of its geometry.
  FrameItem(const ioPath& swapDirectory, const Proc::IDataVideoPtr& frame);
  FrameItem(const FrameItem&) = delete;
  FrameItem& operator=(const FrameItem&) = delete;

  // Decides whether the item joins a save batch, with `candidate` as its new file name. True
  // only for an item in memory without a file name (the name is then assigned). An item whose
  // file is already on disk releases its picture instead.
  bool CheckForSave(const ioPath& candidate);
  // Worker only: writes the picture to its file (under a temporary name, renamed when complete,
  // not flushed to the disk: SyncIfPublished does that for files a saved document names) and
  // releases it. The item's mutex is not held during the write: a Reset or
  // Drop meanwhile makes the written file stale, and it is removed (kept when a saved document
  // names it). Never throws: returns the failure (a CanvaroException with SwapFileFailure) or an
  // empty pointer. A failed save keeps the picture in memory (see GetInMemory).
  boost::exception_ptr Save() const;
  // Reads the picture back from its file and keeps it (and the file name). Throws
  // CanvaroException (SwapFileFailure, naming the file and the cause) on failure, also when the
  // file's picture is not of the recorded size, after clearing the file name.
  void LoadFrame() const;
  // The picture, loaded from the file when it is on disk only; empty for a dead item. Throws as
  // LoadFrame.
  Proc::IDataVideoPtr Get() const;

  // Replaces the picture (deleting the swap file) and returns it; an empty `frame` keeps the
  // geometry. Throws Core::FileException when the file cannot be removed.
  //
  // A file that a saved document names (the item was written to or read from a record) is never
  // deleted: the item only forgets it. If such a file is still waiting for the worker, it is
  // written here first, so the saved document stays whole; that write throws CanvaroException
  // (SwapFileFailure) when it fails.
  Proc::IDataVideoPtr Reset(const Proc::IDataVideoPtr& frame);
  // Deletes the swap file (with the same exception for files of saved documents) and releases
  // the picture: the item becomes dead.
  void Drop();

  // If the picture is in memory and its swap file is written, lets go of the picture (it is read
  // back when asked for): no disk traffic. False, and nothing changes, for a picture without a
  // written file or an item busy with a save.
  bool ReleaseIfWritten() const;
  // When the picture was last set or asked for, on a clock shared by all items (larger is more
  // recent).
  std::uint64_t GetLastUse() const { return lastUse_.load(std::memory_order_relaxed); }

  // Flushes the swap file to the disk if a saved document names it (Serialize) and it is
  // written but not flushed yet; true when it did. Throws CanvaroException (SwapFileFailure)
  // when the flush fails.
  bool SyncIfPublished() const;
  // The picture if it is in memory, without loading it; empty otherwise. Also a picture whose
  // save failed.
  Proc::IDataVideoPtr GetInMemory() const;
  // True after a failed load: the picture is neither in memory nor in a file any more.
  bool IsLost() const;

  const Conf::FrameInfo& GetInfo() const { return info_; }
  ioPath GetFileName() const;
  // Bytes of the picture's buffer while it is in memory, else 0. Takes no lock, so it never
  // waits for a save of this item that is under way.
  std::size_t GetMemorySize() const { return memorySize_.load(std::memory_order_relaxed); }

  // The file name and the four geometry values.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  // Reads them back, keeping only the last component of the name. Throws CanvaroException:
  // InvalidDocument for a name that is not a plain file name ("." or "..") or a negative size
  // (the item is then unchanged), SwapFileFailure when the named file does not exist.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  // With the mutex held: sets the picture and its size.
  void SetFrameLocked(const Proc::IDataVideoPtr& frame) const;
  // Writes `picture` to the swap file `name`; throws on failure. Needs no lock.
  void Write(const Proc::IDataVideoConstPtr& picture, const ioPath& name) const;
  // With the mutex held: lets go of the file, deleting it unless a saved document names it.
  void ReleaseFileLocked();

  const ioPath& swapDirectory_;
  Conf::FrameInfo info_;
  mutable std::mutex mutex_;
  mutable Proc::IDataVideoPtr frame_;
  mutable ioPath fileName_;
  // The file is named by a saved document (written to or read from a record).
  mutable bool published_ = false;
  // The worker is writing the picture, without the mutex.
  mutable bool saving_ = false;
  // Counts resets and drops, so that a save in progress knows its file became stale.
  mutable std::uint64_t generation_ = 0;
  // A stale write whose file a saved document names: the worker keeps it.
  mutable bool keepStaleWrite_ = false;
  // The file was flushed to the disk since it was named.
  mutable bool synced_ = false;
  // A load failed: the picture is gone.
  mutable bool lost_ = false;
  mutable std::atomic<std::size_t> memorySize_{0};
  mutable std::atomic<std::uint64_t> lastUse_{0};
};

}  // namespace Kelbra::Canvaro
