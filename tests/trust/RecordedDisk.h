#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quenlet {

// What recorded calls did to the files on the way to a directory and in it, on a file system that
// keeps no more than it has to: the bytes of a file up to its last synchronization, the names in a
// directory up to that of the directory. Later ones it keeps or not: each change of a directory by
// itself; of a file's bytes some at the front, or all but blocks of zeros.
class RecordedDisk final {
 public:
  using path = std::filesystem::path;

  RecordedDisk(path home, path inspected)
      : names{{std::move(home), directory}}, inspectedDirectory(std::move(inspected)) {}

  // `call` is open, mkdir, rename (to `data`), write or synchronize, by its initial. What is
  // removed never matters here.
  void apply(char call, int descriptor, const path& name, const std::string& data) {
    if (call == 'o') opened[descriptor] = name;
    const path& file = name.empty() ? opened[descriptor] : name;
    if (!inspectedDirectory.native().starts_with(file.parent_path().native())) return;
    if (call == 'm') change({{file, directory}});
    if (call == 'r') change({{file, gone}, {data, names.at(file)}});
    if (call == 'o' && !names.contains(file)) {
      change({{file, static_cast<int>(files.size())}});
      files.emplace_back();
    }
    if (call == 'w') files.at(names.at(file)).bytes += data;
    if (call == 's' && names.at(file) >= 0) files[names[file]].makeSafe();
    for (auto& [changed, isSafe] : changes) {
      isSafe = isSafe || (call == 's' && changed.begin()->first.parent_path() == file);
    }
  }
  // In how many ways a power failure may leave it.
  [[nodiscard]] std::size_t countWays() const {
    std::size_t ways = 1;
    for (const auto& [changed, isSafe] : changes) ways *= isSafe ? 1 : 2;
    for (const File& file : files) ways *= file.countWays();
    return ways;
  }
  // Makes what is left after one of them.
  void restore(std::size_t way) const {
    Names left;
    for (const auto& [changed, isSafe] : changes) {
      for (const auto& [name, node] : changed) {
        if (isSafe || way % 2 == 1) left[name] = node;
      }
      if (!isSafe) way /= 2;
    }
    for (const auto& [name, node] : left) {
      if (node == gone || !exists(name.parent_path())) continue;
      if (node == directory) {
        create_directory(name);
      } else {
        std::ofstream(name, std::ios::binary) << files.at(node).afterwards(way);
      }
    }
  }

 private:
  struct File final {
    std::string bytes;
    std::size_t safeSize = 0;

    void makeSafe() { safeSize = bytes.size(); }
    [[nodiscard]] std::size_t unsafeSize() const { return bytes.size() - safeSize; }
    // Those that leave some bytes at the front, and those that zero some of the blocks.
    [[nodiscard]] std::size_t countWays() const {
      return unsafeSize() + (std::size_t{1} << (unsafeSize() + blockSize - 1) / blockSize);
    }
    [[nodiscard]] std::string afterwards(std::size_t way) const {
      if (way < unsafeSize()) return bytes.substr(0, safeSize + way);
      std::string left = bytes;
      for (std::size_t i = safeSize; i < left.size(); ++i) {
        if ((way - unsafeSize()) >> ((i - safeSize) / blockSize) & 1) left[i] = '\0';
      }
      return left;
    }
  };
  using Names = std::map<path, int>;  // places in `files`, or one of these
  static constexpr std::size_t blockSize = 512;
  static constexpr int directory = -1;
  static constexpr int gone = -2;

  void change(const Names& changed) {
    for (const auto& [name, node] : changed) names[name] = node;
    changes.emplace_back(changed, false);
  }

  std::vector<File> files;
  Names names;
  std::vector<std::pair<Names, bool>> changes;  // and whether it is safe
  std::map<int, path> opened;
  path inspectedDirectory;
};

}  // namespace quenlet
