#include "kelbra/Core/DataFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <vector>

#include <glog/logging.h>

#include "kelbra/Core/CoreException.h"

namespace Kelbra::Core {

namespace {

// The buffers start small and double up to their largest size as small requests keep coming,
// so that a small file, or one read or written in a few large pieces, never allocates much.
constexpr std::size_t kFirstBufferSize = std::size_t{4} << 10;
constexpr std::size_t kBufferSize = std::size_t{1} << 20;
// Writes of at least this size bypass the buffer: a system call costs less than copying them.
constexpr std::size_t kDirectWriteSize = std::size_t{64} << 10;

std::size_t NextBufferSize(std::size_t current) {
  return current == 0 ? kFirstBufferSize : std::min(current * 2, kBufferSize);
}

[[noreturn]] void ThrowFileError(const std::string& action, const std::string& file, int error) {
  throw FileException("Cannot " + action + " file '" + file + "': " + std::strerror(error));
}

// A name beside `target` that no other stream of this process uses at the same time.
std::string TemporaryNameFor(const ioPath& target) {
  static std::atomic<unsigned> counter{0};
  const ioPath name = "." + target.filename().string() + ".tmp-" + std::to_string(::getpid()) +
                      "-" + std::to_string(counter.fetch_add(1));
  return (target.parent_path() / name).string();
}

// Makes a rename or a new link in `directory` durable.
void SyncDirectory(const std::string& directory, const std::string& file) {
  const int fd =
      ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) ThrowFileError("flush the folder of", file, errno);
  const int result = ::fsync(fd);
  const int error = errno;
  ::close(fd);
  if (result != 0) ThrowFileError("flush the folder of", file, error);
}

class OutputFile final : public RefCounted<IDataOutput> {
 public:
  OutputFile(const ioPath& target, DataOutputFile::Mode mode)
      : target_(target.string()),
        writePath_(mode != DataOutputFile::Mode::Direct ? TemporaryNameFor(target) : target_),
        atomic_(mode != DataOutputFile::Mode::Direct),
        durable_(mode == DataOutputFile::Mode::Atomic),
        uncaught_(std::uncaught_exceptions()) {
    fd_ = ::open(writePath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd_ < 0) ThrowFileError("create", target_, errno);
  }

  ~OutputFile() override {
    if (fd_ < 0) return;
    if (std::uncaught_exceptions() > uncaught_) {
      // Dropped by an exception: the writer did not finish, so an atomic target must not appear.
      Abandon();
      return;
    }
    // Dropped after successful writes: complete the file as Close would. Destructors do not
    // throw, so a failure is logged; callers that need it as an error call Close themselves.
    try {
      Close();
    } catch (const std::exception& e) {
      if (google::IsGoogleLoggingInitialized()) LOG(ERROR) << e.what();
    }
  }

  void Write(const void* data, std::size_t size) override {
    CheckOpen();
    const char* bytes = static_cast<const char*>(data);
    if (size >= kDirectWriteSize) {
      // Whatever is buffered goes out in the same system call.
      WriteAll(buffer_.data(), buffer_.size(), bytes, size);
      buffer_.clear();
      return;
    }
    if (buffer_.size() + size > kBufferSize) FlushBuffer();
    if (buffer_.size() + size > buffer_.capacity()) {
      std::size_t capacity = NextBufferSize(buffer_.capacity());
      while (capacity < buffer_.size() + size) capacity = NextBufferSize(capacity);
      buffer_.reserve(capacity);
    }
    buffer_.insert(buffer_.end(), bytes, bytes + size);
  }

  void Flush() override {
    CheckOpen();
    FlushBuffer();
  }

  void Close() override {
    if (fd_ < 0) return;
    try {
      FlushBuffer();
    } catch (...) {
      Abandon();
      throw;
    }
    // An atomic file is flushed to the disk before it replaces the target, and the folder after,
    // so that after a crash the target is the old file or the new one, whole.
    if (durable_ && ::fsync(fd_) != 0) {
      const int error = errno;
      Abandon();
      ThrowFileError("flush", target_, error);
    }
    const int fd = fd_;
    fd_ = -1;
    if (::close(fd) != 0) {
      const int error = errno;
      if (atomic_) ::unlink(writePath_.c_str());
      ThrowFileError("close", target_, error);
    }
    if (atomic_ && ::rename(writePath_.c_str(), target_.c_str()) != 0) {
      const int error = errno;
      ::unlink(writePath_.c_str());
      ThrowFileError("rename into place", target_, error);
    }
    if (durable_) SyncDirectory(ioPath(target_).parent_path().string(), target_);
  }

  std::string GetName() const override { return target_; }

 private:
  void CheckOpen() const {
    if (fd_ < 0) throw FileException("Cannot write file '" + target_ + "': stream is closed");
  }

  void FlushBuffer() {
    if (buffer_.empty()) return;
    WriteAll(buffer_.data(), buffer_.size(), nullptr, 0);
    buffer_.clear();
  }

  // Writes `first` and then `second` completely, together where the system takes both at once.
  void WriteAll(const char* first, std::size_t firstSize, const char* second,
                std::size_t secondSize) {
    iovec pieces[2] = {{const_cast<char*>(first), firstSize},
                       {const_cast<char*>(second), secondSize}};
    iovec* next = firstSize > 0 ? pieces : pieces + 1;
    int count = firstSize > 0 && secondSize > 0 ? 2 : 1;
    while (count > 0 && next->iov_len > 0) {
      const ssize_t written = ::writev(fd_, next, count);
      if (written < 0) {
        if (errno == EINTR) continue;
        const int error = errno;
        buffer_.clear();
        ThrowFileError("write", target_, error);
      }
      auto done = static_cast<std::size_t>(written);
      while (count > 0 && done >= next->iov_len) {
        done -= next->iov_len;
        ++next;
        --count;
      }
      if (count > 0) {
        next->iov_base = static_cast<char*>(next->iov_base) + done;
        next->iov_len -= done;
      }
    }
  }

  // After a failed write of an atomic stream the temporary file is useless: remove it now.
  void Abandon() {
    if (fd_ < 0) return;
    ::close(fd_);
    fd_ = -1;
    if (atomic_) ::unlink(writePath_.c_str());
  }

  std::string target_;
  std::string writePath_;
  bool atomic_;
  bool durable_;
  int uncaught_;
  int fd_ = -1;
  std::vector<char> buffer_;
};

class InputFile final : public RefCounted<IDataInput> {
 public:
  explicit InputFile(const ioPath& file) : name_(file.string()) {
    fd_ = ::open(name_.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) ThrowFileError("open", name_, errno);
    struct stat info {};
    if (::fstat(fd_, &info) != 0) {
      const int error = errno;
      ::close(fd_);
      ThrowFileError("read", name_, error);
    }
    if (S_ISDIR(info.st_mode)) {
      ::close(fd_);
      ThrowFileError("read", name_, EISDIR);
    }
    size_ = S_ISREG(info.st_mode) ? static_cast<std::uint64_t>(info.st_size) : 0;
  }

  ~InputFile() override { ::close(fd_); }

  void Read(void* data, std::size_t size) override {
    const std::size_t got = ReadSome(data, size);
    if (got == size) return;
    // ReadSome stops early only at the end of the file or on a short system read; keep going.
    std::size_t total = got;
    while (total < size) {
      const std::size_t more = ReadSome(static_cast<char*>(data) + total, size - total);
      if (more == 0) {
        throw FileException("Cannot read file '" + name_ + "': unexpected end of data (wanted " +
                            std::to_string(size) + " bytes at offset " +
                            std::to_string(position_ - total) + ", " + std::to_string(total) +
                            " left)");
      }
      total += more;
    }
  }

  std::size_t ReadSome(void* data, std::size_t size) override {
    char* out = static_cast<char*>(data);
    std::size_t total = 0;
    while (total < size) {
      if (begin_ == end_) {
        // A request at least as large as the next buffer goes straight into the caller's memory.
        const std::size_t next = NextBufferSize(capacity_);
        if (size - total >= next) {
          const std::size_t got = ReadRaw(out + total, size - total);
          if (got == 0) break;
          total += got;
          position_ += got;
          continue;
        }
        if (capacity_ < next) {
          buffer_.reset(new char[next]);
          capacity_ = next;
        }
        begin_ = 0;
        end_ = ReadRaw(buffer_.get(), capacity_);
        if (end_ == 0) break;
      }
      const std::size_t take = std::min(size - total, end_ - begin_);
      std::memcpy(out + total, buffer_.get() + begin_, take);
      begin_ += take;
      total += take;
      position_ += take;
    }
    return total;
  }

  std::uint64_t GetRemaining() const override { return size_ > position_ ? size_ - position_ : 0; }

  std::string GetName() const override { return name_; }

 private:
  std::size_t ReadRaw(char* data, std::size_t size) {
    for (;;) {
      const ssize_t got = ::read(fd_, data, size);
      if (got >= 0) return static_cast<std::size_t>(got);
      if (errno != EINTR) ThrowFileError("read", name_, errno);
    }
  }

  std::string name_;
  int fd_ = -1;
  std::uint64_t size_ = 0;
  std::uint64_t position_ = 0;
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_ = 0;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace

IDataOutputPtr DataOutputFile::Create(const ioPath& file, Mode mode) {
  return IDataOutputPtr(new OutputFile(file, mode));
}

IDataInputPtr DataInputFile::Create(const ioPath& file) {
  return IDataInputPtr(new InputFile(file));
}

}  // namespace Kelbra::Core
