// The scratch area of the fuzzers that give the library files: a root folder holding the folders
// an input may use (`allowed`, made and emptied by the fuzzer) and, beside them, a sentinel folder
// with two files. inotify watches the root and the sentinel folder, so every open, read, write,
// creation, removal and rename there is seen. Check() aborts (libFuzzer then reports the input)
// when, since Arm(), the code touched anything in the root but the allowed folders, when a
// sentinel file changed, or when the root holds anything new. stat() is not seen by inotify: the
// sentinel picture has an odd size (kSentinelSize) that checks can look for in reported sizes.
//
// Also folder trees read and written as a whole (Files), and the package text helpers: picture
// checksums, and a manifest whose "$SIZE:<name>$" and "$XXH3:<name>$" fields are filled in from
// the pictures at hand.
#pragma once

#define XXH_INLINE_ALL
#include <sys/inotify.h>
#include <unistd.h>
#include <xxhash.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "support/TempDir.h"

namespace canvaro_fuzz {

namespace fs = std::filesystem;

inline void WriteBytes(const fs::path& file, std::string_view bytes) {
  std::ofstream out(file, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) throw std::runtime_error("cannot write " + file.string());
}

// The files and folders under a folder: path inside it -> bytes; a folder as "<path>/" with no
// bytes.
using Files = std::map<std::string, std::string>;

inline Files ReadTree(const fs::path& folder) {
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().lexically_relative(folder).string();
    if (entry.is_directory()) {
      files[name + "/"] = "";
    } else {
      files[name] = canvaro_test::ReadFile(entry.path());
    }
  }
  return files;
}

// Writes `files` under `folder`, which must exist; a file's folder comes before it in `files`.
inline void WriteTree(const fs::path& folder, const Files& files) {
  for (const auto& [name, bytes] : files) {
    if (name.ends_with('/')) {
      fs::create_directories(folder / name);
    } else {
      WriteBytes(folder / name, bytes);
    }
  }
}

[[noreturn]] inline void Violation(const std::string& what) {
  std::fprintf(stderr, "==== outside the allowed folders: %s\n", what.c_str());
  std::abort();
}

class ScratchArea {
 public:
  static constexpr std::size_t kSentinelSize = 9973;

  explicit ScratchArea(std::set<std::string> allowed) : allowed_(std::move(allowed)) {
    std::string pattern = (fs::temp_directory_path() / "canvaro-fuzz-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) Violation("cannot make " + pattern);
    root_ = pattern;
    fs::create_directory(root_ / "sentinel");
    WriteBytes(root_ / "sentinel" / "a.raw", std::string(kSentinelSize, 's'));
    WriteBytes(root_ / "sentinel" / "document.json", "{\"entries\":[]}");
    inotify_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    rootWatch_ = ::inotify_add_watch(inotify_, root_.c_str(), IN_ALL_EVENTS);
    if (rootWatch_ < 0 ||
        ::inotify_add_watch(inotify_, (root_ / "sentinel").c_str(), IN_ALL_EVENTS) < 0) {
      Violation("cannot watch " + root_.string());
    }
  }
  ~ScratchArea() {
    ::close(inotify_);
    std::error_code ignored;
    fs::remove_all(root_, ignored);
  }
  ScratchArea(const ScratchArea&) = delete;
  ScratchArea& operator=(const ScratchArea&) = delete;

  fs::path operator/(const std::string& name) const { return root_ / name; }

  // Forgets what was done so far (the fuzzer's own preparations).
  void Arm() { Events(); }

  // Aborts when anything but the allowed folders was touched since Arm().
  void Check() {
    if (const std::string events = Events(); !events.empty()) Violation(events);
    for (const auto& entry : fs::directory_iterator(root_)) {
      const std::string name = entry.path().filename().string();
      if (name != "sentinel" && !allowed_.contains(name)) Violation("new entry " + name);
    }
    const auto files = std::distance(fs::directory_iterator(root_ / "sentinel"), {});
    if (files != 2 ||
        canvaro_test::ReadFile(root_ / "sentinel" / "a.raw") != std::string(kSentinelSize, 's')) {
      Violation("the sentinel folder changed");
    }
    Events();  // the reads of this check
  }

 private:
  // The events since the last call that are not about an allowed folder, one line each.
  std::string Events() {
    std::string found;
    alignas(inotify_event) char buffer[16384];
    for (ssize_t got; (got = ::read(inotify_, buffer, sizeof buffer)) > 0;) {
      for (ssize_t at = 0; at < got;) {
        const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        const std::string name = event->len > 0 ? event->name : "";
        if (event->wd == rootWatch_ && allowed_.contains(name)) continue;
        found += (event->wd == rootWatch_ ? "root/" : "sentinel/") + name + " (inotify mask " +
                 std::to_string(event->mask) + ")\n";
      }
    }
    return found;
  }

  std::set<std::string> allowed_;
  fs::path root_;
  int inotify_ = -1;
  int rootWatch_ = -1;
};

inline std::string Checksum(std::string_view bytes) {
  char hex[17];
  std::snprintf(hex, sizeof hex, "%016llx",
                static_cast<unsigned long long>(XXH3_64bits(bytes.data(), bytes.size())));
  return hex;
}

// A manifest listing the pictures named in `pictures` (name -> bytes), with "$SIZE:<name>$" and
// "$XXH3:<name>$" for their values.
inline std::string ManifestTemplate(const Files& pictures) {
  std::string text = R"({"class":"CanvaroPackage","entries":[{"key":"Version","int":1},)"
                     R"({"key":"Pictures","collection":[)";
  for (const auto& [name, bytes] : pictures) {
    text += std::string(text.back() == '}' ? "," : "") +
            R"({"entries":[{"key":"FileName","string":")" + name +
            R"("},{"key":"Size","int64":$SIZE:)" + name + R"($},{"key":"XXH3","string":"$XXH3:)" +
            name + R"($"}]})";
  }
  return text + "]}]}";
}

// `manifest` with the fields of the pictures in `pictures` (name -> bytes) filled in; fields of
// other names stay.
inline std::string FillIn(std::string manifest, const Files& pictures) {
  for (std::size_t at = manifest.find('$'); at != std::string::npos;
       at = manifest.find('$', at + 1)) {
    const std::size_t end = manifest.find('$', at + 1);
    if (end == std::string::npos) break;
    const std::string field = manifest.substr(at + 1, end - at - 1);
    const bool size = field.starts_with("SIZE:");
    const auto picture = pictures.find(field.substr(std::min<std::size_t>(5, field.size())));
    if ((!size && !field.starts_with("XXH3:")) || picture == pictures.end()) continue;
    const std::string value =
        size ? std::to_string(picture->second.size()) : Checksum(picture->second);
    manifest.replace(at, end + 1 - at, value);
    at += value.size() - 1;
  }
  return manifest;
}

}  // namespace canvaro_fuzz
