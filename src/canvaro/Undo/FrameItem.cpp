#include "canvaro/Undo/FrameItem.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>
#include <utility>

#include "canvaro/foundation/Log.h"

#include "canvaro/CoreUtil/RawFrame.h"
#include "canvaro/foundation/Throw.h"
#include "kelbra/Conf/IFormatCodecVideo.h"
#include "kelbra/Conf/IFormatFile.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/FileSystem.h"
#include "kelbra/Exception.h"

namespace Kelbra::Canvaro {

namespace {

// The text logged for the exception being handled. Call only inside a catch block.
std::string DescribeCurrentException() {
  try {
    throw;
  } catch (const Kelbra::Exception& e) {
    const std::string* description = boost::get_error_info<TagDescription>(e);
    return description ? *description : "Unknown error";
  } catch (const std::exception& e) {
    return e.what();
  } catch (...) {
    return "Unknown error";
  }
}

boost::exception_ptr CaptureSwapFileFailure(const std::string& description) {
  try {
    ThrowCoded(CanvaroError::SwapFileFailure, description, BOOST_CURRENT_LOCATION);
  } catch (...) {
    return boost::current_exception();
  }
}

// Logs the exception being handled and throws the swap-file failure that reports it. Call only
// inside a catch block.
[[noreturn]] void ThrowSwapFileFailure(const std::string& what, const ioPath& file,
                                       const boost::source_location& where) {
  const std::string cause = DescribeCurrentException();
  CANVARO_LOG(ERROR) << cause;
  ThrowCoded(CanvaroError::SwapFileFailure, what + " '" + file.utf8() + "': " + cause, where);
}

}  // namespace

bool IsPlainFileName(const ioPath& name) {
  const std::string text = name.utf8();
  return !text.empty() && text != "." && text != ".." && text.find('/') == std::string::npos &&
         text.find('\0') == std::string::npos;
}

FrameItem::FrameItem(const ioPath& swapDirectory, const Proc::IDataVideoPtr& frame)
    : swapDirectory_(swapDirectory) {
  if (frame) info_ = frame->GetFrameInfo();
  SetFrameLocked(frame);  // no other thread knows the item yet
}

namespace {
std::atomic<std::uint64_t> useClock{0};
}  // namespace

void FrameItem::SetFrameLocked(const Proc::IDataVideoPtr& frame) const {
  frame_ = frame;
  memorySize_.store(frame_ ? frame_->GetBufferSize() : 0, std::memory_order_relaxed);
  if (frame_) lastUse_.store(++useClock, std::memory_order_relaxed);
}

bool FrameItem::ReleaseIfWritten() const {
  std::lock_guard lock(mutex_);
  if (!frame_ || fileName_.empty() || saving_) return false;
  // A name without a file is a save still queued: the picture is its only copy.
  if (!(swapDirectory_ / fileName_).exists()) return false;
  SetFrameLocked(nullptr);
  return true;
}

void FrameItem::Write(const Proc::IDataVideoConstPtr& picture, const ioPath& name) const {
  const Core::IDataOutputPtr out =
      Core::DataOutputFile::Create(swapDirectory_ / name, Core::DataOutputFile::Mode::Replace);
  CoreUtil::SaveRawFrame(picture, out);
  // Closing explicitly: a full disk or a file size limit shows at the latest here.
  out->Close();
}

void FrameItem::ReleaseFileLocked() {
  ++generation_;
  lost_ = false;
  if (fileName_.empty()) return;
  if (saving_) {
    // The worker is writing the file right now; it removes it when done, unless a saved
    // document names it.
    keepStaleWrite_ = keepStaleWrite_ || published_;
  } else if (published_) {
    if (frame_ && !(swapDirectory_ / fileName_).exists()) {
      try {
        Write(frame_, fileName_);
      } catch (...) {
        ThrowSwapFileFailure("Cannot write swap file", swapDirectory_ / fileName_,
                             BOOST_CURRENT_LOCATION);
      }
    }
  } else {
    Core::RemoveFile(swapDirectory_ / fileName_);
  }
  published_ = false;
  synced_ = false;
  fileName_ = ioPath();
}

bool FrameItem::CheckForSave(const ioPath& candidate) {
  std::lock_guard lock(mutex_);
  if (!frame_) {
    CANVARO_VLOG(30) << "Checking for save" << candidate << ": no frame";
    return false;
  }
  if (!fileName_.empty()) {
    if (!(swapDirectory_ / fileName_).exists()) {
      CANVARO_LOG(WARNING) << "Checking for save" << candidate << ": already queued for save as "
                           << fileName_;
      return false;
    }
    CANVARO_VLOG(30) << "Checking for save" << candidate << ": already saved as " << fileName_;
    SetFrameLocked(nullptr);
    return false;
  }
  CANVARO_VLOG(30) << "Checking for save" << candidate << ": need save";
  fileName_ = candidate;
  return true;
}

boost::exception_ptr FrameItem::Save() const {
  // The file is written without the item's mutex, so that the storage's thread never waits for
  // the disk: it may read, reset or drop the item meanwhile, and the generation tells.
  Proc::IDataVideoConstPtr picture;
  ioPath name;
  std::uint64_t generation = 0;
  {
    std::lock_guard lock(mutex_);
    CANVARO_VLOG(30) << "Trying to save " << fileName_;
    if (!frame_) {
      CANVARO_LOG(ERROR) << "Frame is dead, nothing to save";
      return {};
    }
    // Reset to a new picture after it was queued: the item is in memory only and has no file.
    if (fileName_.empty()) return {};
    picture = frame_;
    name = fileName_;
    generation = generation_;
    saving_ = true;
    keepStaleWrite_ = false;
  }
  std::string cause;
  try {
    Write(picture, name);
  } catch (...) {
    cause = DescribeCurrentException();
    CANVARO_LOG(ERROR) << cause;
  }
  picture.reset();
  std::lock_guard lock(mutex_);
  saving_ = false;
  const ioPath file = swapDirectory_ / name;
  if (generation != generation_) {
    // Reset or dropped while it was written: the file is nobody's, unless a saved document
    // names it.
    if (!keepStaleWrite_) {
      std::error_code ignored;
      std::filesystem::remove(file.native(), ignored);
      return {};
    }
  } else if (cause.empty()) {
    SetFrameLocked(nullptr);
    CANVARO_VLOG(30) << "Saving " << name << " done";
  }
  // A failed write keeps the picture: it is no longer handed out (the storage has failed), but
  // a document package can still rescue it.
  if (cause.empty()) return {};
  return CaptureSwapFileFailure("Cannot write swap file '" + file.utf8() + "': " + cause);
}

void FrameItem::LoadFrame() const {
  try {
    std::lock_guard lock(mutex_);
    if (fileName_.empty()) {
      CANVARO_LOG(WARNING) << "Trying to load nameless file";
      return;
    }
    CANVARO_VLOG(30) << "Trying to load " << fileName_;
    Proc::IDataVideoPtr loaded;
    CoreUtil::LoadRawFrame(loaded, Core::DataInputFile::Create(swapDirectory_ / fileName_));
    // The record's geometry is what queries report while the picture is on disk; a file that
    // disagrees with it is not the picture the record describes.
    const Conf::FrameInfo read = loaded != nullptr ? loaded->GetFrameInfo() : Conf::FrameInfo{};
    if (read.width != info_.width || read.height != info_.height) {
      throw Core::CoreException("the file holds a " + std::to_string(read.width) + " x " +
                                std::to_string(read.height) + " picture where its record says " +
                                std::to_string(info_.width) + " x " + std::to_string(info_.height));
    }
    SetFrameLocked(loaded);
    CANVARO_VLOG(30) << "Loading " << fileName_ << " done";
  } catch (...) {
    ioPath file;
    {
      std::lock_guard lock(mutex_);
      file = std::exchange(fileName_, ioPath());
      lost_ = true;
    }
    ThrowSwapFileFailure("Cannot read swap file", swapDirectory_ / file, BOOST_CURRENT_LOCATION);
  }
}

Proc::IDataVideoPtr FrameItem::Get() const {
  {
    std::lock_guard lock(mutex_);
    if (frame_) lastUse_.store(++useClock, std::memory_order_relaxed);
    if (frame_ || fileName_.empty()) return frame_;
  }
  // Unlocked in between: a save of this item may finish meanwhile, and then its file is what
  // LoadFrame reads.
  LoadFrame();
  std::lock_guard lock(mutex_);
  return frame_;
}

Proc::IDataVideoPtr FrameItem::Reset(const Proc::IDataVideoPtr& frame) {
  std::lock_guard lock(mutex_);
  ReleaseFileLocked();
  if (frame) info_ = frame->GetFrameInfo();
  SetFrameLocked(frame);
  return frame_;
}

void FrameItem::Drop() {
  std::lock_guard lock(mutex_);
  ReleaseFileLocked();
  SetFrameLocked(nullptr);
}

Proc::IDataVideoPtr FrameItem::GetInMemory() const {
  std::lock_guard lock(mutex_);
  return frame_;
}

bool FrameItem::IsLost() const {
  std::lock_guard lock(mutex_);
  return lost_;
}

bool FrameItem::SyncIfPublished() const {
  std::lock_guard lock(mutex_);
  if (!published_ || synced_ || saving_ || fileName_.empty()) return false;
  const ioPath file = swapDirectory_ / fileName_;
  const int fd = ::open(file.native().c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;  // not written yet, or a file the record named that is gone
  const int result = ::fsync(fd);
  const int error = errno;
  ::close(fd);
  if (result != 0) {
    ThrowCoded(CanvaroError::SwapFileFailure,
               "Cannot flush swap file '" + file.utf8() + "': " + std::strerror(error),
               BOOST_CURRENT_LOCATION);
  }
  synced_ = true;
  return true;
}

ioPath FrameItem::GetFileName() const {
  std::lock_guard lock(mutex_);
  return fileName_;
}

void FrameItem::Serialize(const Drevin::ISerializerPtr& serializer) const {
  ioPath name;
  {
    std::lock_guard lock(mutex_);
    name = fileName_;
    if (!name.empty()) published_ = true;
  }
  serializer->WriteString(Conf::IFormatFile::TAG_FILENAME, name.utf8());
  serializer->WriteInt(Conf::IFormatCodecVideo::TAG_WIDTH, info_.width);
  serializer->WriteInt(Conf::IFormatCodecVideo::TAG_HEIGHT, info_.height);
  serializer->WriteInt(Conf::IFormatCodecVideo::TAG_ASPECTX, info_.aspectX);
  serializer->WriteInt(Conf::IFormatCodecVideo::TAG_ASPECTY, info_.aspectY);
}

void FrameItem::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  const std::string stored =
      serializer->ReadString(Conf::IFormatFile::TAG_FILENAME, GetFileName().utf8());
  ioPath name(stored);
  // A record that holds a full path is bound to this storage's directory.
  if (name.has_parent_path() || stored.ends_with('/')) name = name.filename();
  if (!stored.empty() && !IsPlainFileName(name)) {
    ThrowCoded(CanvaroError::InvalidDocument,
               "Frame record names '" + stored + "', which is not the name of a file",
               BOOST_CURRENT_LOCATION);
  }
  Conf::FrameInfo info = info_;
  info.width = serializer->ReadInt(Conf::IFormatCodecVideo::TAG_WIDTH, info.width);
  info.height = serializer->ReadInt(Conf::IFormatCodecVideo::TAG_HEIGHT, info.height);
  info.aspectX = serializer->ReadInt(Conf::IFormatCodecVideo::TAG_ASPECTX, info.aspectX);
  info.aspectY = serializer->ReadInt(Conf::IFormatCodecVideo::TAG_ASPECTY, info.aspectY);
  if (info.width < 0 || info.height < 0) {
    ThrowCoded(CanvaroError::InvalidDocument,
               "Frame record of '" + stored + "' has a negative size " +
                   std::to_string(info.width) + " x " + std::to_string(info.height),
               BOOST_CURRENT_LOCATION);
  }
  info_ = info;
  {
    std::lock_guard lock(mutex_);
    fileName_ = name;
    published_ = !name.empty();
  }
  if (!name.empty() && !(swapDirectory_ / name).exists()) {
    ThrowCoded(CanvaroError::SwapFileFailure,
               "Swap file '" + (swapDirectory_ / name).utf8() +
                   "' named by the saved document does not exist",
               BOOST_CURRENT_LOCATION);
  }
}

}  // namespace Kelbra::Canvaro
