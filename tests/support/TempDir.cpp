#include "support/TempDir.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

namespace canvaro_test {

std::string ReadFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "canvaro-test-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = Kelbra::ioPath(pattern);
}

TempDir::~TempDir() {
  std::error_code ignored;
  // Tests may leave read-only directories behind; make them writable so they can go.
  for (auto it = std::filesystem::recursive_directory_iterator(path_.native(), ignored);
       it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
    std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
  }
  std::filesystem::permissions(path_.native(), std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::add, ignored);
  std::filesystem::remove_all(path_.native(), ignored);
}

}  // namespace canvaro_test
