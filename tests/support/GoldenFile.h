#pragma once

#include <map>
#include <string>
#include <vector>

namespace quenlet {

// The bytes of a file of this repository; fails the test when there is none.
[[nodiscard]] std::string goldenFile(const std::string& path);
// The same as one line: no line ends but the last, and none of the blanks that lines begin with.
[[nodiscard]] std::string goldenLine(const std::string& path);

// Its lines, each "given => expected".
[[nodiscard]] std::vector<std::pair<std::string, std::string>> goldenPairs(const std::string& path);

// The parts of such a file, each below a line "## " and its title. One part stands for one row of a
// test, which fails when a part is not there or is left over at the end. One thread only.
class GoldenParts final {
 public:
  explicit GoldenParts(const std::string& path);
  ~GoldenParts();
  GoldenParts(const GoldenParts&) = delete;
  GoldenParts& operator=(const GoldenParts&) = delete;

  [[nodiscard]] std::string take(const std::string& title);

 private:
  std::map<std::string, std::string> parts;
};

}  // namespace quenlet
