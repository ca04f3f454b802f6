#include <gmock/gmock.h>

#include "bus/BusArguments.h"
#include "bus/BusError.h"
#include "bus/BusMessage.h"
#include "tests/platform/ipc/RawPeer.h"

namespace quenlet {
namespace {

// A connection that nobody reads: what messages are made for.
class BusMessagesTest : public testing::Test {
 protected:
  void SetUp() override {
    const int end = ends.first.release();
    ASSERT_GE(sd_bus_new(&bus), 0);
    ASSERT_GE(sd_bus_set_fd(bus, end, end), 0);
    ASSERT_GE(sd_bus_start(bus), 0);
  }
  void TearDown() override { sd_bus_close_unref(bus); }

  BusMessage message() const {
    sd_bus_message* created = nullptr;
    EXPECT_GE(sd_bus_message_new_signal(bus, &created, "/a", "org.example.A", "B"), 0);
    return BusMessage(created);
  }
  // What a peer reads of the arguments.
  Result<BusValues> sent(const std::string& signature, const BusValues& arguments,
                         const BusLimits& limits = {}) const {
    const BusMessage written = message();
    if (ErrorPtr error = appendArguments(written.get(), signature, arguments)) {
      return Result<BusValues>::failure(std::move(error));
    }
    sd_bus_message_seal(written.get(), 1, 0);
    return readArguments(written.get(), limits);
  }

  std::pair<FileDescriptor, FileDescriptor> ends = connectedPair();
  sd_bus* bus = nullptr;
};

BusDictionary sampleDictionary() {
  return {{"active", true},
          {"bytes", BusBytes{std::string("\0\xFF", 2)}},
          {"inner", BusDictionary{{"deep", makeDictionaries({{{"x", std::int64_t{-5}}}, {}})}}},
          {"names", makeTexts({"Ann", "B\xC3\xA9la"})},
          {"none", makeTexts({})},
          {"path", BusObjectPath{"/org/example/7"}},
          {"ratio", 0.25},
          {"size", std::numeric_limits<std::uint64_t>::max()}};
}

TEST_F(BusMessagesTest, ReadsWhatWasWritten) {
  const std::tuple<const char*, const char*, BusValues> rows[] = {
      {"nothing", "", {}},
      {"numbers", "iuxtdb", {std::int32_t{-1}, 2u, std::int64_t{-3}, std::uint64_t{4}, 5.5, false}},
      {"dictionary", "a{sv}", {sampleDictionary()}},
      {"dictionaries", "aa{sv}s", {makeDictionaries({sampleDictionary(), {}}), "end"}},
      {"lists of texts by name", "a{sas}", {BusDictionary{{"org.example", makeTexts({"yes"})}}}},
      {"structs", "a(ssa(ss))",
       BusValues{BusList{"(ssa(ss))", {BusStruct{{"a", "b", BusList{"(ss)", {}}}}}}}},
      {"variant", "vv", {makeTexts({"x"}), std::uint32_t{9}}},
  };
  for (const auto& [name, signature, arguments] : rows) {
    const auto read = sent(signature, arguments);
    ASSERT_TRUE(read.ok()) << name << read.error()->description();
    EXPECT_EQ(read.value(), arguments) << name;
  }
}

TEST_F(BusMessagesTest, WritesNoMessageThatIsNotWhatItsSignatureSays) {
  const std::tuple<const char*, const char*, BusValues> rows[] = {
      {"too few", "ss", {"a"}},
      {"too many", "s", {"a", "b"}},
      {"another type", "u", {"a"}},
      {"another element", "as", {BusList{"s", {7u}}}},
      {"text for a struct", "(s)", {"a"}},
      {"not UTF-8", "s", {"\xC3"}},
      {"zero byte", "s", {std::string("a\0b", 3)}},
      {"key that is not UTF-8", "a{sv}", {BusDictionary{{"\xFF", 1u}}}},
      {"bytes for texts", "as", {BusBytes{"a"}}},
      {"not a path", "o", {BusObjectPath{"org"}}},
  };
  for (const auto& [name, signature, arguments] : rows) {
    const auto read = sent(signature, arguments);
    ASSERT_FALSE(read.ok()) << name;
    EXPECT_TRUE(read.error()->domain() == PosixErrorDomain && read.error()->code() == EINVAL)
        << name;
  }
}

TEST_F(BusMessagesTest, StopsReadingAtTheLimits) {
  BusDictionary nested{{"end", 1u}};
  for (int level = 0; level < 4; ++level) nested = {{"in", nested}};
  const BusLimits limits{.depth = 9, .values = 12, .bytes = 20};
  const std::tuple<const char*, const char*, BusValues, bool> rows[] = {
      {"as deep as allowed", "a{sv}", {BusDictionary{{"in", BusDictionary{{"in", 1u}}}}}, true},
      {"too deep", "a{sv}", {nested}, false},
      {"as many as allowed", "as", {BusList{"s", BusValues(11, "")}}, true},
      {"too many", "as", {BusList{"s", BusValues(12, "")}}, false},
      {"too many empty containers", "aas", {BusList{"as", BusValues(12, makeTexts({}))}}, false},
      {"as long as allowed", "ss", {std::string(15, 'a'), std::string(5, 'b')}, true},
      {"too long", "ss", {std::string(15, 'a'), std::string(6, 'b')}, false},
      {"too many bytes", "ay", {BusBytes{std::string(21, 'c')}}, false},
  };
  for (const auto& [name, signature, arguments, isRead] : rows) {
    const auto read = sent(signature, arguments, limits);
    const std::string error = read.ok() ? "" : busErrorName(*read.error());
    EXPECT_EQ(error, isRead ? "" : BusLimitsExceeded) << name;
  }
}

// As daemons of others send them.
TEST_F(BusMessagesTest, ReadsDictionariesWithOtherKeys) {
  const BusMessage written = message();
  ASSERT_GE(
      sd_bus_message_append(written.get(), "a{uy}a{oa{sv}}", 1, 3u, 7, 1, "/a/b", 1, "n", "q", 500),
      0);
  sd_bus_message_seal(written.get(), 1, 0);
  const auto read = readArguments(written.get());
  ASSERT_TRUE(read.ok());
  EXPECT_EQ(read.value(), (BusValues{BusList{"{uy}", {BusStruct{{3u, 7u}}}},
                                     BusDictionary{{"/a/b", BusDictionary{{"n", 500u}}}}}));
}

}  // namespace
}  // namespace quenlet
