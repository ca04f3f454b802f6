#include <fcntl.h>
#include <gtest/gtest.h>

#include <cmath>
#include <thread>

#include "platform/foundation/Cancelable.h"
#include "platform/foundation/DetachedStreams.h"
#include "platform/foundation/Future.h"
#include "platform/foundation/JSONWriter.h"
#include "platform/foundation/KeyedHash.h"
#include "platform/foundation/Text.h"
#include "quenlet/Date.h"

namespace quenlet {
namespace {

TEST(DateTest, ReadsAndWritesISO8601) {
  const std::pair<const char*, double> good[] = {{"1970-01-01T00:00:00Z", 0},
                                                 {"2024-02-29T23:59:59Z", 1709251199},
                                                 {"0001-01-01T00:00:00Z", -62135596800},
                                                 {"4001-01-01T00:00:00Z", 64092211200}};
  for (const auto& [text, seconds] : good) {
    EXPECT_EQ(Date::fromISO8601(text), Date(seconds)) << text;
    EXPECT_EQ(Date(seconds).iso8601(), text);
  }
  EXPECT_EQ(Date::fromISO8601("1969-12-31T23:59:59.5Z"), Date(-0.5));
  EXPECT_EQ(Date(-0.25).iso8601(), "1969-12-31T23:59:59Z");
  EXPECT_EQ(Date(HUGE_VAL).iso8601(), "9999-12-31T23:59:59Z");
  EXPECT_EQ(Date(std::nan("")).iso8601(), "0001-01-01T00:00:00Z");
  for (const char* bad :
       {"", "2026-05-01", "2026-05-01T12:00:00", "2026-05-01T12:00:00Z ", "2026-5-1T12:00:00Z",
        "2026-05-01T12:00:00.Z", "2026-05-01T12:00:00+00:00", "2023-02-29T00:00:00Z",
        "2026-13-01T00:00:00Z", "2026-01-01T24:00:00Z", "0000-01-01T00:00:00Z"}) {
    EXPECT_EQ(Date::fromISO8601(bad), std::nullopt) << bad;
  }
}

const ErrorPtr trouble = makeError("test", 7, "trouble");

TEST(FutureTest, FirstCompletionCountsAndReachesEveryBlockOnce) {
  const Promise<int> promise;
  std::vector<int> seen;
  const auto note = [&](const Result<int>& outcome) { seen.push_back(outcome.value()); };
  promise.future().onCompletion(note);
  promise.succeed(1);
  promise.succeed(2);
  promise.fail(trouble);
  promise.future().onCompletion(note);
  EXPECT_EQ(seen, (std::vector{1, 1}));
}

TEST(FutureTest, BlockMayDropTheLastOwners) {
  for (const bool completedBefore : {false, true}) {
    auto promise = std::make_unique<Promise<std::string>>();
    auto future = std::make_unique<Future<std::string>>(promise->future());
    if (completedBefore) promise->succeed("long enough to be on the heap");
    std::string seen;
    future->onCompletion([&](const Result<std::string>& outcome) {
      promise.reset();
      future.reset();
      seen = outcome.value();
    });
    if (!completedBefore) promise->succeed("long enough to be on the heap");
    EXPECT_EQ(seen, "long enough to be on the heap");
  }
}

TEST(CancelBlockTest, RunsOnceForgetsItsBlockAndMayCancelItself) {
  auto owned = std::make_shared<int>(0);
  std::shared_ptr<Cancelable> token;
  token = std::make_shared<CancelBlock>([&token, owned] {
    ++*owned;
    token->cancel();
  });
  token->cancel();
  EXPECT_EQ(*owned, 1);
  EXPECT_EQ(owned.use_count(), 1);
}

// The values that its authors publish for the key 00 01 … 0f and the text 00 01 … of each size.
TEST(KeyedHashTest, IsSipHashUnderAKeyThatNobodyKnows) {
  const KeyedHash hash(0x0706050403020100, 0x0f0e0d0c0b0a0908);
  std::string text;
  for (const auto& [size, expected] : std::map<std::size_t, std::uint64_t>{
           {0, 0x726fdb47dd0e0e31}, {1, 0x74f839c593dc67fd}, {15, 0xa129ca6149be45e5}}) {
    while (text.size() < size) text.push_back(static_cast<char>(text.size()));
    EXPECT_EQ((hash.hash<2, 4>(text)), expected) << size;
  }
  const Fingerprint empty{0xe6a825ba047f81a3, 0x930255c71472f66d};
  const Fingerprint zero{0x44af996bd8c187da, 0x45fc229b11597634};
  EXPECT_TRUE((hash.fingerprint<2, 4>("")) == empty);
  EXPECT_TRUE((hash.fingerprint<2, 4>(std::string_view("\0", 1))) == zero);
  EXPECT_TRUE(Fingerprint::of("") && Fingerprint::of("a") != Fingerprint::of("b"));
  EXPECT_NE(KeyedHash::of("a"), (KeyedHash(0, 0).hash<1, 3>("a")));
  EXPECT_EQ(KeyedHash::of("a"), KeyedHash::of("a"));
}

TEST(JSONWriterTest, EscapesTextAndWritesNumbers) {
  JSONWriter json;
  json.beginArray().value(std::string("\"\\\b\f\n\r\t\0\x1f/\u4e2d", 13)).value("a\xFF\xE4\xB8z");
  json.value("\x7f\xC2\x9B\u2028\u202E\u2069\u200F\u061C")
      .value(std::numeric_limits<std::int64_t>::min());
  json.value(0.1).value(1e300).value(-0.0).value(HUGE_VAL).value(std::nan("")).endArray();
  EXPECT_EQ(json.text(),
            "[\"\\\"\\\\\\b\\f\\n\\r\\t\\u0000\\u001f/\u4e2d\",\"a\uFFFD\uFFFDz\","
            "\"\\u007f\\u009b\\u2028\\u202e\\u2069\\u200f\\u061c\",-9223372036854775808,"
            "0.1,1e+300,-0,null,null]");
}

std::string marks(int count) {
  std::string text;
  while (count-- > 0) text += count % 2 == 0 ? "\u0301" : "\u0323";
  return text;
}

TEST(TextTest, EqualityIsCanonicalEquivalence) {
  const std::tuple<std::string, std::string, bool> cases[] = {
      {"Zo\u00eb", "Zoe\u0308", true},
      {"a\u0323\u0302", "a\u0302\u0323", true},
      {"a\u0301\u0302", "a\u0302\u0301", false},  // marks of one class keep their order
      {"\uD55C", "\u1112\u1161\u11AB", true},
      {"\uFB01", "fi", false},  // compatibility is not equivalence
      {"e\u0308\xFF", "e\u0308\xFF", true},
      {"e\u0308\xFF", "\u00eb\xFF", false},
      {"\xFF", "\uFFFD", false},
      // 30 marks in a row are composed, 31 compared as they stand; so are 4,096 bytes and one more.
      {"o\u0302" + marks(29), "\u00f4" + marks(29), true},
      {"o\u0302" + marks(30), "\u00f4" + marks(30), false},
      {"o" + marks(30) + "o\u0302", "o" + marks(30) + "\u00f4", true},
      {marks(30) + "o\u0302", marks(30) + "\u00f4", true},
      {std::string(4093, 'x') + "e\u0308", std::string(4093, 'x') + "\u00eb", true},
      {std::string(4094, 'x') + "e\u0308", std::string(4094, 'x') + "\u00eb", false},
      // What grows over the bound by composing equals its form, which is compared as it stands.
      {std::string(4093, 'x') + "\u0958", std::string(4093, 'x') + "\u0915\u093c", true},
  };
  for (const auto& [a, b, equal] : cases) {
    EXPECT_EQ(canonicallyEqual(a, b), equal) << a << " " << b;
    EXPECT_EQ(canonicallyEqual(b, a), equal) << a << " " << b;
    EXPECT_EQ(canonicalKey(a) == canonicalKey(b), equal) << a << " " << b;
  }
}

TEST(TextTest, ComparesManyMarksInTimeInProportionToTheirNumber) {
  const std::string text = "a" + marks(1 << 16);
  const auto begun = std::chrono::steady_clock::now();
  EXPECT_EQ(canonicalKey(text), text);
  EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(1))
      << "the square of it takes four";
}

TEST(TextTest, LowercasesIndependentlyOfTheLocaleAndTrimsBlanks) {
  EXPECT_EQ(lowercased("Ann@EXAMPLE.org [Z`{"), "ann@example.org [z`{");
  EXPECT_EQ(lowercased("\u00c9COLE I \U00010400"), "\u00e9cole i \U00010428");
  EXPECT_EQ(lowercased("\u039F\u03A3 \u03A3"), "\u03BF\u03C2 \u03C3") << "final sigma";
  EXPECT_EQ(lowercased("A\u00c9\xFF"), "A\u00c9\xFF") << "no UTF-8";
  EXPECT_EQ(trimmed(" \t\r\n a b \n"), "a b");
  EXPECT_EQ(trimmed(" \n"), "");
}

TEST(TextTest, PutsTextOnOneLineOfABoundedSize) {
  EXPECT_EQ(onOneLine("a\x1b\n\x7f\u0085\u2028\u2029\xFF\u00e9"), "a       \u00e9");
  EXPECT_EQ(onOneLine("a\u00e9\u00e9", 4), "a\u00e9");
}

// A pipe that nobody reads at first: the line that was under way, those that there was room for,
// and how many are missing come when somebody does.
TEST(DetachedStreamsTest, WaitForNobodyAndCountWhatTheyDrop) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const auto streams = DetachedStreams::make();
  constexpr int count = 30'000;
  for (int line = 1; line <= count; ++line) {
    streams->writeLine(ends[1], std::to_string(line) + std::string(100, '.'));
  }
  EXPECT_FALSE(streams->drain(std::chrono::milliseconds(1)));
  std::thread later([&] {
    EXPECT_TRUE(streams->drain(std::chrono::minutes(1)));
    streams->writeLine(ends[1], "last");
    EXPECT_TRUE(streams->drain(std::chrono::minutes(1)));
    ::close(ends[1]);
  });
  std::string text;
  std::array<char, 65536> buffer;
  for (ssize_t size = 0; (size = ::read(ends[0], buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(size));
  }
  later.join();
  ::close(ends[0]);
  EXPECT_TRUE(text.ends_with("\nlast\n"));

  int next = 1;
  int dropped = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line) && line != "last";) {
    if (!line.starts_with("quenlet: dropped ")) {
      ASSERT_EQ(std::stoi(line), next++);
      continue;
    }
    std::erase(line, ',');
    const int missing = std::stoi(line.substr(17));
    EXPECT_EQ(line, "quenlet: dropped " + std::to_string(missing) + " lines");
    dropped += missing;
    next += missing;
  }
  EXPECT_EQ(next, count + 1);
  EXPECT_TRUE(dropped > 5'000 && dropped < 21'000) << dropped;
}

}  // namespace
}  // namespace quenlet
