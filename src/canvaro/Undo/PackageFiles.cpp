#include "canvaro/Undo/PackageFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "canvaro/CoreUtil/RawFrame.h"
#include "canvaro/foundation/Throw.h"
#include "kelbra/Conf/IFormatFile.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/PropertySerializer.h"

namespace Kelbra::Canvaro::Package {

namespace {

constexpr std::size_t kChunk = std::size_t{4} << 20;

// An open file descriptor that closes itself.
class Fd {
 public:
  explicit Fd(int fd) : fd_(fd) {}
  ~Fd() {
    if (fd_ >= 0) ::close(fd_);
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  int get() const { return fd_; }
  int release() { return std::exchange(fd_, -1); }

 private:
  int fd_;
};

void FlushFile(const ioPath& file) {
  const Fd fd(::open(file.native().c_str(), O_RDONLY | O_CLOEXEC));
  if (fd.get() < 0) ThrowFileError(1, "Cannot open", file, errno);
  if (::fsync(fd.get()) != 0) ThrowFileError(1, "Cannot flush", file, errno);
}

void Copy(const ioPath& from, const ioPath& to) {
  const Fd in(::open(from.native().c_str(), O_RDONLY | O_CLOEXEC));
  if (in.get() < 0) ThrowFileError(1, "Cannot open", from, errno);
  Fd out(::open(to.native().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
  if (out.get() < 0) ThrowFileError(1, "Cannot create", to, errno);
  try {
    std::unique_ptr<char[]> buffer(new char[kChunk]);
    for (;;) {
      const ssize_t got = ::read(in.get(), buffer.get(), kChunk);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) ThrowFileError(1, "Cannot read", from, errno);
      if (got == 0) break;
      for (ssize_t done = 0; done < got;) {
        const ssize_t put =
            ::write(out.get(), buffer.get() + done, static_cast<std::size_t>(got - done));
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) ThrowFileError(1, "Cannot write", to, errno);
        done += put;
      }
    }
    if (::fsync(out.get()) != 0) ThrowFileError(1, "Cannot flush", to, errno);
    if (::close(out.release()) != 0) ThrowFileError(1, "Cannot close", to, errno);
  } catch (...) {
    ::unlink(to.native().c_str());
    throw;
  }
}

void Visit(Core::Property& node, const std::function<void(std::string&)>& visit) {
  for (Core::Property::Entry& entry : node.Entries()) {
    if (auto* text = std::get_if<std::string>(&entry.value)) {
      if (entry.key == Conf::IFormatFile::TAG_FILENAME && !text->empty()) visit(*text);
    } else if (auto* child = std::get_if<std::unique_ptr<Core::Property>>(&entry.value)) {
      if (*child) Visit(**child, visit);
    } else if (auto* list = std::get_if<Core::Property::Collection>(&entry.value)) {
      for (std::size_t i = 0; i < list->size(); ++i) Visit((*list)[i], visit);
    }
  }
}

const char* const kManifestClass = "CanvaroPackage";
const char* const kVersion = "Version";
const char* const kPictures = "Pictures";
const char* const kSize = "Size";
const char* const kChecksum = "XXH3";

[[noreturn]] void ThrowBadManifest(const ioPath& folder, const std::string& why) {
  ThrowCoded(CanvaroError::InvalidDocument,
             "'" + folder.utf8() + "' is not a readable document package: " + why,
             BOOST_CURRENT_LOCATION);
}

}  // namespace

std::string DescriptionOf(const std::exception& error) {
  if (const auto* boostError = dynamic_cast<const boost::exception*>(&error)) {
    if (const std::string* text = boost::get_error_info<TagDescription>(*boostError)) return *text;
  }
  return error.what();
}

void ThrowFileError(int code, const std::string& what, const ioPath& file, int error) {
  ThrowCoded(static_cast<CanvaroError>(code),
             what + " '" + file.utf8() + "': " + std::strerror(error), BOOST_CURRENT_LOCATION);
}

Manifest ReadManifest(const ioPath& folder) {
  Core::Property tree;
  try {
    Core::PropertySerializer::Deserialize(tree,
                                          Core::DataInputFile::Create(folder / kManifestFile));
  } catch (const Core::CoreException& e) {
    ThrowBadManifest(folder, DescriptionOf(e));
  }
  if (tree.GetClassId() != kManifestClass) ThrowBadManifest(folder, "its manifest is not one");
  Manifest manifest;
  try {
    if (tree.GetInt(kVersion) != 1) ThrowBadManifest(folder, "unknown manifest version");
    const Core::Property::Collection& pictures = tree.GetCollection(kPictures);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
      const Core::Property& item = pictures[i];
      const std::int64_t size = item.GetInt64(kSize);
      const std::string& name = item.GetString(Conf::IFormatFile::TAG_FILENAME);
      if (size < 0 || name.empty() || ioPath(name).filename().string() != name || name == "." ||
          name == "..") {
        ThrowBadManifest(folder, "a picture record is malformed");
      }
      manifest[name] = {static_cast<std::uint64_t>(size), item.GetString(kChecksum)};
    }
  } catch (const Core::CoreException& e) {
    ThrowBadManifest(folder, DescriptionOf(e));
  }
  return manifest;
}

void WriteManifest(const ioPath& folder, const Manifest& manifest) {
  Core::Property tree(kManifestClass);
  tree.SetInt(kVersion, 1);
  Core::Property::Collection& pictures = tree.AddCollection(kPictures);
  for (const auto& [name, record] : manifest) {
    Core::Property& item = pictures.emplace_back();
    item.SetString(Conf::IFormatFile::TAG_FILENAME, name);
    item.SetInt64(kSize, static_cast<std::int64_t>(record.size));
    item.SetString(kChecksum, record.checksum);
  }
  try {
    auto out =
        Core::DataOutputFile::Create(folder / kManifestFile, Core::DataOutputFile::Mode::Atomic);
    Core::PropertySerializer::Serialize(tree, out, /*pretty=*/true);
    out->Close();
  } catch (const Core::CoreException& e) {
    ThrowCoded(CanvaroError::SwapFileFailure, DescriptionOf(e), BOOST_CURRENT_LOCATION);
  }
}

PictureRecord Describe(const ioPath& file) {
  const Fd in(::open(file.native().c_str(), O_RDONLY | O_CLOEXEC));
  if (in.get() < 0) ThrowFileError(1, "Cannot open", file, errno);
  const std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state(XXH3_createState(),
                                                                       &XXH3_freeState);
  if (!state) throw std::bad_alloc();
  XXH3_64bits_reset(state.get());
  std::unique_ptr<char[]> buffer(new char[kChunk]);
  PictureRecord record;
  for (;;) {
    const ssize_t got = ::read(in.get(), buffer.get(), kChunk);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) ThrowFileError(1, "Cannot read", file, errno);
    if (got == 0) break;
    XXH3_64bits_update(state.get(), buffer.get(), static_cast<std::size_t>(got));
    record.size += static_cast<std::uint64_t>(got);
  }
  char hex[17];
  std::snprintf(hex, sizeof hex, "%016llx",
                static_cast<unsigned long long>(XXH3_64bits_digest(state.get())));
  record.checksum = hex;
  return record;
}

bool LinkOrCopy(const ioPath& from, const ioPath& to) {
  if (::link(from.native().c_str(), to.native().c_str()) == 0) {
    FlushFile(to);
    return true;
  }
  const int error = errno;
  if (error == EEXIST) return false;
  if (error != EXDEV && error != EPERM && error != EMLINK && error != ENOTSUP) {
    ThrowFileError(1, "Cannot link '" + from.utf8() + "' as", to, error);
  }
  struct stat info {};
  if (::stat(to.native().c_str(), &info) == 0) return false;
  Copy(from, to);
  return true;
}

bool WritePicture(const Proc::IDataVideoConstPtr& picture, const ioPath& to) {
  if (to.exists()) return false;
  try {
    const Core::IDataOutputPtr out =
        Core::DataOutputFile::Create(to, Core::DataOutputFile::Mode::Atomic);
    CoreUtil::SaveRawFrame(picture, out);
    out->Close();
  } catch (const Core::CoreException& e) {
    ThrowCoded(CanvaroError::SwapFileFailure,
               "Cannot write the picture '" + to.utf8() + "': " + DescriptionOf(e),
               BOOST_CURRENT_LOCATION);
  }
  return true;
}

void SyncFolder(const ioPath& folder) {
  const Fd fd(::open(folder.native().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd.get() < 0) ThrowFileError(1, "Cannot open folder", folder, errno);
  if (::fsync(fd.get()) != 0) ThrowFileError(1, "Cannot flush folder", folder, errno);
}

bool SameFile(const ioPath& a, const ioPath& b) {
  struct stat first {};
  struct stat second {};
  return ::stat(a.native().c_str(), &first) == 0 && ::stat(b.native().c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

void ForEachPictureName(Core::Property& tree, const std::function<void(std::string&)>& visit) {
  Visit(tree, visit);
}

}  // namespace Kelbra::Canvaro::Package
