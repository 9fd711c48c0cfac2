#include "canvaro/Undo/FrameItem.h"

#include <exception>
#include <string>

#include <glog/logging.h>

#include "canvaro/CoreUtil/RawFrame.h"
#include "canvaro/foundation/Throw.h"
#include "kelbra/Conf/IFormatCodecVideo.h"
#include "kelbra/Conf/IFormatFile.h"
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

boost::exception_ptr CaptureSwapFileFailure() {
  try {
    ThrowCoded(CanvaroError::SwapFileFailure, BOOST_CURRENT_LOCATION);
  } catch (...) {
    return boost::current_exception();
  }
}

}  // namespace

FrameItem::FrameItem(const ioPath& swapDirectory, const Proc::IDataVideoPtr& frame)
    : swapDirectory_(swapDirectory) {
  if (frame) info_ = frame->GetFrameInfo();
  SetFrameLocked(frame);  // no other thread knows the item yet
}

void FrameItem::SetFrameLocked(const Proc::IDataVideoPtr& frame) const {
  frame_ = frame;
  memorySize_.store(frame_ ? frame_->GetBufferSize() : 0, std::memory_order_relaxed);
}

void FrameItem::WriteLocked() const {
  const Core::IDataOutputPtr out =
      Core::DataOutputFile::Create(swapDirectory_ / fileName_, Core::DataOutputFile::Mode::Atomic);
  {
    const Proc::IDataVideoConstPtr picture = frame_;
    CoreUtil::SaveRawFrame(picture, out);
  }
  // Closing explicitly: a full disk or a file size limit shows at the latest here.
  out->Close();
}

void FrameItem::ReleaseFileLocked() {
  if (fileName_.empty()) return;
  if (published_) {
    if (frame_ && !(swapDirectory_ / fileName_).exists()) {
      try {
        WriteLocked();
      } catch (...) {
        LOG(ERROR) << DescribeCurrentException();
        ThrowCoded(CanvaroError::SwapFileFailure, BOOST_CURRENT_LOCATION);
      }
    }
    published_ = false;
  } else {
    Core::RemoveFile(swapDirectory_ / fileName_);
  }
  fileName_ = ioPath();
}

bool FrameItem::CheckForSave(const ioPath& candidate) {
  std::lock_guard lock(mutex_);
  if (!frame_) {
    VLOG(30) << "Checking for save" << candidate << ": no frame";
    return false;
  }
  if (!fileName_.empty()) {
    if (!(swapDirectory_ / fileName_).exists()) {
      LOG(WARNING) << "Checking for save" << candidate << ": already queued for save as "
                   << fileName_;
      return false;
    }
    VLOG(30) << "Checking for save" << candidate << ": already saved as " << fileName_;
    SetFrameLocked(nullptr);
    return false;
  }
  VLOG(30) << "Checking for save" << candidate << ": need save";
  fileName_ = candidate;
  return true;
}

boost::exception_ptr FrameItem::Save() const {
  // The whole save runs under the item mutex: the storage's thread may reset or drop the item
  // at any time, and it does so under the same mutex.
  std::lock_guard lock(mutex_);
  VLOG(30) << "Trying to save " << fileName_;
  if (!frame_) {
    LOG(ERROR) << "Frame is dead, nothing to save";
    return {};
  }
  // Reset to a new picture after it was queued: the item is in memory only and has no file.
  if (fileName_.empty()) return {};
  try {
    WriteLocked();
    SetFrameLocked(nullptr);
    VLOG(30) << "Saving " << fileName_ << " done";
    return {};
  } catch (...) {
    LOG(ERROR) << DescribeCurrentException();
    SetFrameLocked(nullptr);
    return CaptureSwapFileFailure();
  }
}

void FrameItem::LoadFrame() const {
  try {
    std::lock_guard lock(mutex_);
    if (fileName_.empty()) {
      LOG(WARNING) << "Trying to load nameless file";
      return;
    }
    VLOG(30) << "Trying to load " << fileName_;
    Proc::IDataVideoPtr loaded;
    CoreUtil::LoadRawFrame(loaded, Core::DataInputFile::Create(swapDirectory_ / fileName_));
    SetFrameLocked(loaded);
    VLOG(30) << "Loading " << fileName_ << " done";
  } catch (...) {
    {
      std::lock_guard lock(mutex_);
      fileName_ = ioPath();
    }
    LOG(ERROR) << DescribeCurrentException();
    ThrowCoded(CanvaroError::SwapFileFailure, BOOST_CURRENT_LOCATION);
  }
}

Proc::IDataVideoPtr FrameItem::Get() const {
  {
    std::lock_guard lock(mutex_);
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
  ioPath name(serializer->ReadString(Conf::IFormatFile::TAG_FILENAME, GetFileName().utf8()));
  // A record that holds a full path is bound to this storage's directory.
  if (name.has_parent_path()) name = name.filename();
  info_.width = serializer->ReadInt(Conf::IFormatCodecVideo::TAG_WIDTH, info_.width);
  info_.height = serializer->ReadInt(Conf::IFormatCodecVideo::TAG_HEIGHT, info_.height);
  info_.aspectX = serializer->ReadInt(Conf::IFormatCodecVideo::TAG_ASPECTX, info_.aspectX);
  info_.aspectY = serializer->ReadInt(Conf::IFormatCodecVideo::TAG_ASPECTY, info_.aspectY);
  {
    std::lock_guard lock(mutex_);
    fileName_ = name;
    published_ = !name.empty();
  }
  if (!name.empty() && !(swapDirectory_ / name).exists()) {
    ThrowCoded(CanvaroError::SwapFileFailure, BOOST_CURRENT_LOCATION);
  }
}

}  // namespace Kelbra::Canvaro
