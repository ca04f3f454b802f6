#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace quenlet {

// A directory of the test's own (mode 0700), gone with everything in it when the test ends.
class TemporaryDirectory final {
 public:
  TemporaryDirectory() {
    std::string pattern = std::filesystem::temp_directory_path() / "quenlet-test-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "cannot create " << pattern;
    directory = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return directory; }

 private:
  std::filesystem::path directory;
};

// The content of a file; empty when there is none.
[[nodiscard]] inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace quenlet
