#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace quenlet {

[[nodiscard]] inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::filesystem::path& at, const std::string& text,
                      mode_t mode = 0644) {
  std::filesystem::create_directories(at.parent_path());
  std::ofstream(at, std::ios::binary) << text;
  EXPECT_EQ(::chmod(at.c_str(), mode), 0) << at;
}

[[nodiscard]] inline mode_t modeOf(const std::filesystem::path& path) {
  return static_cast<mode_t>(std::filesystem::status(path).permissions());
}

// A directory of the test's own (mode 0700), gone with everything in it when the test ends. What
// the test creates is not open to the group under any umask: the agent would not trust it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    ::umask(0022);
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
  [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& name) const {
    return directory / name;
  }
  void write(const std::filesystem::path& at, const std::string& text, mode_t mode = 0644) const {
    writeFile(directory / at, text, mode);
  }
  [[nodiscard]] std::string read(const std::string& at) const { return readFile(directory / at); }
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
      found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

 private:
  std::filesystem::path directory;
};

// One where this process keeps its files and makes its sockets from now on, as a user without any.
class TemporaryHome final : public TemporaryDirectory {
 public:
  TemporaryHome() {
    for (const char* name : {"HOME", "XDG_RUNTIME_DIR"}) ::setenv(name, path().c_str(), 1);
    ::unsetenv("XDG_CONFIG_HOME");
  }
};

}  // namespace quenlet
