#include <gtest/gtest.h>

#include <cstring>

#include "browser/host/BrowserRequest.h"
#include "browser/host/CallingExtension.h"
#include "browser/host/MessageReader.h"

namespace quenlet {
namespace {

std::string framed(const std::string& text, std::uint32_t length) {
  std::string bytes(sizeof length, '\0');
  std::memcpy(bytes.data(), &length, sizeof length);
  return bytes + text;
}
std::string framed(const std::string& text) {
  return framed(text, static_cast<std::uint32_t>(text.size()));
}

TEST(MessageReaderTest, CutsWhatComesIntoMessagesHoweverItComes) {
  const std::string longest(MessageReader::mostBytes, 'a');
  const std::tuple<std::string, std::string> rows[] = {
      {"", ""},
      {framed("a") + framed("bc"), "[a][bc]"},
      {framed(longest), "[" + longest + "]"},
      {framed("abc", 4), ""},
      {framed("", 0), "!"},
      {framed("a") + framed(longest, MessageReader::mostBytes + 1) + framed("b"), "[a]!"},
      {framed("{", 1U << 30), "!"},
      {framed("{", UINT32_MAX), "!"},
  };
  for (const auto& [bytes, messages] : rows) {
    for (const std::size_t size : {1, 3, 5000}) {
      MessageReader reader;
      std::string found;  // in brackets, and "!" after a fault
      for (std::size_t at = 0; at < bytes.size(); at += size) {
        reader.add(std::string_view(bytes).substr(at, size));
        while (const auto message = reader.next()) found += "[" + *message + "]";
      }
      EXPECT_EQ(found + (reader.hasFault() ? "!" : ""), messages) << messages.size() << " " << size;
    }
  }
}

TEST(BrowserRequestTest, TakesFlatObjectsWithOneNumberAndOneWord) {
  using Word = BrowserRequest::Word;
  const std::tuple<std::string, Word, std::int64_t> rows[] = {
      {R"({"id": 7, "ask": "card"})", Word::card, 7},
      {R"({"ask":"changes","id":0,"later":true,"more":null,"size":1.5})", Word::changes, 0},
      {R"({"id": 9223372036854775807, "ask": "cards"})", Word::unknown, INT64_MAX},

      {R"({"id": 9223372036854775808, "ask": "card"})", Word::malformed, 0},
      {R"({"id": -1, "ask": "card"})", Word::malformed, 0},
      {R"({"id": -1, "id": 2, "ask": "card"})", Word::malformed, 0},
      {R"({"id": 1.0, "ask": "card"})", Word::malformed, 0},
      {R"({"id": "1", "ask": "card"})", Word::malformed, 0},
      {R"({"id": 1, "id": 2, "ask": "card"})", Word::malformed, 0},
      {R"({"id": 1, "ask": "card", "ask": "card"})", Word::malformed, 0},
      {R"({"id": 1, "ask": ["card"]})", Word::malformed, 0},
      {R"({"id": 1, "ask": "card", "x": {}})", Word::malformed, 0},
      {R"({"id": 1})", Word::malformed, 0},
      {R"({"ask": "card"})", Word::malformed, 0},
      {R"({"id": 1, "ask": "card"} {})", Word::malformed, 0},
      {R"([{"id": 1, "ask": "card"}])", Word::malformed, 0},
      {R"("card")", Word::malformed, 0},
      {"{\"id\": 1, \"ask\": \"\xFF\"}", Word::malformed, 0},
      {std::string(4000, '['), Word::malformed, 0},
      {"", Word::malformed, 0},
  };
  for (const auto& [text, word, id] : rows) {
    const BrowserRequest request = BrowserRequest::parse(text);
    EXPECT_EQ(request.word, word) << text;
    EXPECT_EQ(request.id, id) << text;
  }
}

TEST(CallingExtensionTest, KnowsOneExtensionOfEachBrowser) {
  const std::string_view origin = CallingExtension::chromiumOrigin;
  const std::string_view identifier = CallingExtension::firefoxIdentifier;
  const std::string longer = std::string(origin) + "x";
  const std::pair<std::vector<std::string_view>, bool> rows[] = {
      {{origin}, true},
      {{origin, "--parent-window=0"}, true},
      {{"/usr/lib/mozilla/native-messaging-hosts/x.json", identifier}, true},
      {{}, false},
      {{origin.substr(0, origin.size() - 1)}, false},
      {{longer}, false},
      {{identifier}, false},
      {{"x.json", identifier}, false},
      {{"/x.json", "other@quenlet.example"}, false},
      {{"/x.json", "more", identifier}, false},
  };
  for (const auto& [arguments, isOurs] : rows) {
    EXPECT_EQ(CallingExtension::isOurs(arguments), isOurs) << testing::PrintToString(arguments);
  }
}

}  // namespace
}  // namespace quenlet
