// A fresh directory under the system's temporary directory, removed with everything in it when
// the object goes; and the whole bytes of a file, for tests that look at what was written.
#pragma once

#include <filesystem>
#include <string>

#include "kelbra/Path.h"

namespace canvaro_test {

// Every byte of `file`; empty when it cannot be read.
std::string ReadFile(const std::filesystem::path& file);

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const Kelbra::ioPath& path() const { return path_; }
  Kelbra::ioPath operator/(const Kelbra::ioPath& name) const { return path_ / name; }

 private:
  Kelbra::ioPath path_;
};

}  // namespace canvaro_test
