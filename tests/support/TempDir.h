// A fresh directory under the system's temporary directory, removed with everything in it when
// the object goes.
#pragma once

#include "kelbra/Path.h"

namespace canvaro_test {

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
