#include "kelbra/Core/FileSystem.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "kelbra/Core/CoreException.h"

namespace Kelbra::Core {

namespace {
[[noreturn]] void ThrowRemoveError(const char* what, const ioPath& path,
                                   const std::error_code& ec) {
  throw FileException(std::string("Cannot remove ") + what + " '" + path.string() +
                      "': " + ec.message());
}
}  // namespace

bool RemoveFile(const ioPath& file) {
  std::error_code ec;
  const auto status = std::filesystem::symlink_status(file.native(), ec);
  if (ec || !std::filesystem::exists(status)) return false;
  if (std::filesystem::is_directory(status)) {
    ThrowRemoveError("file", file, std::make_error_code(std::errc::is_a_directory));
  }
  const bool removed = std::filesystem::remove(file.native(), ec);
  if (ec) ThrowRemoveError("file", file, ec);
  return removed;
}

bool RemoveDir(const ioPath& directory) {
  std::error_code ec;
  if (!std::filesystem::exists(std::filesystem::symlink_status(directory.native(), ec))) {
    return false;
  }
  std::filesystem::remove_all(directory.native(), ec);
  if (ec) ThrowRemoveError("directory", directory, ec);
  return true;
}

void SyncDir(const ioPath& directory) {
  const int fd = ::open(directory.empty() ? "." : directory.native().c_str(),
                        O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const int result = fd < 0 ? -1 : ::fsync(fd);
  const int error = errno;
  if (fd >= 0) ::close(fd);
  if (result != 0) {
    throw FileException("Cannot flush the folder '" + directory.string() +
                        "': " + std::strerror(error));
  }
}

}  // namespace Kelbra::Core
