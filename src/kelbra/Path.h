/// \file
/// ioPath: the platform's path type, a thin value wrapper over std::filesystem::path.
///
/// Unlike std::filesystem::path it prints plainly (no quotes), so it can go straight into log
/// lines and messages:
///
///   Kelbra::ioPath dir("/tmp/swap");
///   LOG(INFO) << "writing " << dir / "frame_1.raw";   // writing /tmp/swap/frame_1.raw
#pragma once

#include <filesystem>
#include <ostream>
#include <string>

namespace Kelbra {

class ioPath {
 public:
  ioPath() = default;
  ioPath(std::filesystem::path path) : path_(std::move(path)) {}
  ioPath(const std::string& path) : path_(path) {}
  ioPath(const char* path) : path_(path) {}

  const std::filesystem::path& native() const noexcept { return path_; }
  std::string string() const { return path_.string(); }
  /// The path as UTF-8 text (what documents store).
  std::string utf8() const {
    const auto text = path_.u8string();
    return std::string(text.begin(), text.end());
  }
  bool empty() const noexcept { return path_.empty(); }
  bool has_parent_path() const { return path_.has_parent_path(); }
  /// The last component (the file name), as a path of its own.
  ioPath filename() const { return ioPath(path_.filename()); }
  ioPath parent_path() const { return ioPath(path_.parent_path()); }
  /// True when something exists at this path (no exceptions; an unreadable path counts as absent).
  bool exists() const noexcept {
    std::error_code ignored;
    return std::filesystem::exists(path_, ignored);
  }

  friend ioPath operator/(const ioPath& left, const ioPath& right) {
    return ioPath(left.path_ / right.path_);
  }
  friend bool operator==(const ioPath& left, const ioPath& right) = default;
  friend std::ostream& operator<<(std::ostream& out, const ioPath& path) {
    return out << path.path_.string();
  }

 private:
  std::filesystem::path path_;
};

}  // namespace Kelbra
