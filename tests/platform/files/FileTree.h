#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {

// The files of a test, in a temporary directory, by short names.
class FileTree final {
 public:
  [[nodiscard]] const std::filesystem::path& root() const { return directory.path(); }
  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
    return root() / name;
  }
  void write(const std::string& name, const std::string& content) const {
    std::ofstream(root() / name, std::ios::binary) << content;
  }
  [[nodiscard]] std::string read(const std::string& name) const { return readFile(root() / name); }
  // The names in the root, sorted.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(root())) {
      found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

 private:
  TemporaryDirectory directory;
};

}  // namespace quenlet
