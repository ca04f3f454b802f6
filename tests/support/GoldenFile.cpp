#include "tests/support/GoldenFile.h"

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {

std::string goldenFile(const std::string& path) {
  std::string text = readFile(std::filesystem::path(QUENLET_SOURCES) / path);
  EXPECT_NE(text, "") << path;
  return text;
}

std::string goldenLine(const std::string& path) {
  std::istringstream lines(goldenFile(path));
  std::string joined;
  for (std::string line; std::getline(lines >> std::ws, line);) joined += line;
  return joined + "\n";
}

std::vector<std::pair<std::string, std::string>> goldenPairs(const std::string& path) {
  std::vector<std::pair<std::string, std::string>> pairs;
  std::istringstream lines(goldenFile(path));
  for (std::string line; std::getline(lines, line);) {
    const std::size_t arrow = line.find(" => ");
    pairs.emplace_back(line.substr(0, arrow), line.substr(arrow + 4));
  }
  return pairs;
}

GoldenParts::GoldenParts(const std::string& path) {
  std::istringstream lines(goldenFile(path));
  std::string* part = nullptr;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("## ")) {
      part = &parts[line.substr(3)];
    } else if (part != nullptr) {
      *part += line + "\n";
    }
  }
}

GoldenParts::~GoldenParts() {
  for (const auto& [title, text] : parts) ADD_FAILURE() << "no row for the part " << title;
}

std::string GoldenParts::take(const std::string& title) {
  const auto part = parts.extract(title);
  EXPECT_FALSE(part.empty()) << "no part " << title;
  return part.empty() ? "" : part.mapped();
}

}  // namespace quenlet
