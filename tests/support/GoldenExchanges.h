#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/GoldenFile.h"

namespace quenlet {

inline const std::string goldenFolder = "tests/protocol/golden/";

// A request and its answer, as bytes.
struct GoldenExchange final {
  std::string name;
  std::string request = {};
  std::string answer = {};
};

// Each two hexadecimal digits are a byte, quoted text is its own.
inline std::string goldenBytes(const std::string& notation) {
  std::string bytes;
  std::istringstream words(notation);
  for (char first = 0; words >> first;) {
    std::string word(1, first);
    if (first == '"') {
      std::getline(words, word, '"');
      bytes += word;
    } else {
      word += static_cast<char>(words.get());
      bytes += static_cast<char>(std::stoi(word, nullptr, 16));
    }
  }
  return bytes;
}

// The exchanges in a file of this repository. A request is the indented lines that begin with a
// byte, under its name; its answer is those under "Its …". What follows `remark` in a line is none.
inline std::vector<GoldenExchange> goldenExchanges(const std::string& file,
                                                   const std::string& remark = "#") {
  std::vector<GoldenExchange> exchanges(1);
  std::string* message = &exchanges.back().request;
  std::istringstream lines(goldenFile(file));
  for (std::string line; std::getline(lines, line);) {
    const auto begin = std::min(line.find_first_not_of(' '), line.size());
    const std::string word = line.substr(begin, line.find(' ', begin) - begin);
    const bool isByte = word.size() == 2 && word.find_first_not_of("0123456789abcdef") == word.npos;
    if (begin >= 4 && isByte) {
      *message += goldenBytes(line.substr(begin, line.find(remark, begin) - begin));
    } else if (line.starts_with("Its ")) {
      message = &exchanges.back().answer;
    } else if (!line.empty()) {
      message = &exchanges.emplace_back(GoldenExchange{line}).request;
    }
  }
  std::erase_if(exchanges, [](const GoldenExchange& each) { return each.answer.empty(); });
  EXPECT_GE(exchanges.size(), 3u) << file;
  return exchanges;
}

}  // namespace quenlet
