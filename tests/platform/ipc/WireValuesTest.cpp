#include <gtest/gtest.h>

#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

using namespace std::string_literals;

std::int64_t codeOf(const ErrorPtr& error) { return error ? error->code() : 0; }
constexpr auto malformed = static_cast<std::int64_t>(ServiceErrorCode::malformedMessage);
constexpr auto invalid = static_cast<std::int64_t>(ServiceErrorCode::invalidArguments);

const PropertyList tree = PropertyListDictionary{
    {"yes", true},
    {"least", std::numeric_limits<std::int64_t>::min()},
    {"minusZero", -0.0},
    {"long", std::string(300, 'x')},
    {"text", "\u00e9\U0001F600"},
    {"raw", Data{"\0\xff"s}},
    {"when", Date(1.5)},
    {"list", PropertyListArray{1, PropertyListArray{}, PropertyListDictionary{}}}};

std::string lists(int depth) {
  std::string bytes = "\7\0"s;
  while (--depth > 0) bytes.insert(0, "\7\1");
  return bytes;
}

TEST(WireValuesTest, RoundTripsPropertyListsAndSkipsWhatWasNotAskedFor) {
  WireEncoder encoder;
  encoder.propertyList(tree).object("Thing").list(1).null().string("end");
  WireReader reader(encoder.bytes());
  EXPECT_EQ(reader.propertyList(), tree);
  EXPECT_EQ(WireReader(reader).propertyList(), std::nullopt) << "an object is not a property list";
  EXPECT_EQ(reader.integer(), std::nullopt);
  EXPECT_EQ(reader.string(), "end");
  EXPECT_EQ(reader.string(), std::nullopt);
}

TEST(WireValuesTest, BuildsNoTreeLargerThanTheReaderWants) {
  WireEncoder encoder;
  encoder.list(3).list(1).integer(0).dictionary(1).string("k").integer(1).integer(2).string("end");
  for (const std::size_t bound : {0, 1, 2, 5, 6}) {
    WireReader reader(encoder.bytes());
    EXPECT_EQ(reader.propertyList(bound).has_value(), bound == 6) << bound;
    EXPECT_EQ(reader.string(), "end") << bound;
  }
}

TEST(WireValuesTest, RefusesEveryTruncationAndSurvivesEveryFlippedBit) {
  const std::string whole = std::move(WireEncoder().object("Thing").propertyList(tree)).take();
  const std::vector<WireParameter> parameters{{WireType::object, false, {"Thing"}}};
  ASSERT_EQ(validateWireValues(whole, parameters), nullptr);
  for (std::size_t size = 1; size < whole.size(); ++size) {
    EXPECT_EQ(codeOf(validateWireValues(whole.substr(0, size), parameters)), malformed) << size;
  }
  for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
    std::string bytes = whole;
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
    if (validateWireValues(bytes, parameters)) continue;
    WireReader reader(bytes);
    EXPECT_EQ(reader.object(), "Thing");
    EXPECT_TRUE(reader.propertyList()) << "bit " << bit;
    EXPECT_TRUE(reader.atEnd()) << "bit " << bit;
  }
}

TEST(WireValuesTest, ChecksWhatAPeerSends) {
  using Parameters = std::vector<WireParameter>;
  const Parameters text{{WireType::string}};
  const Parameters texts{{WireType::string}, {WireType::string, true}};
  const Parameters list{{WireType::list, false, {"Thing"}}};
  const Parameters entries{{WireType::dictionary}};
  const std::string power63 = "\x80\x80\x80\x80\x80\x80\x80\x80\x80\1"s;
  const std::tuple<const char*, std::string, Parameters, std::int64_t> rows[] = {
      {"null where allowed", "\5\1a\0"s, texts, 0},
      {"object inside", "\7\1\x9\5Thing\0"s, list, 0},
      {"nesting at the limit", lists(maximumWireNesting), list, 0},
      {"nesting beyond the limit", lists(maximumWireNesting + 1), list, malformed},
      {"too few", "\5\1a"s, texts, invalid},
      {"too many", "\5\1a\0"s, text, invalid},
      {"null where not allowed", "\0"s, text, invalid},
      {"wrong type", "\6\1a"s, text, invalid},
      {"class deep inside", "\7\1\x9\5Thing\7\1\x9\5Other\0"s, list, invalid},
      {"unknown type", "\7\1\xa"s, list, malformed},
      {"boolean of two", "\7\1\1\2"s, list, malformed},
      {"list longer than the message", "\7\5\0\0\0\0"s, list, malformed},
      {"dictionary longer than the message", "\x8\2\5\1a"s, entries, malformed},
      {"list of 2^63", "\7" + power63 + "\0"s, list, malformed},
      {"list of 2^64", "\7\x80\x80\x80\x80\x80\x80\x80\x80\x80\2\0"s, list, malformed},
      {"dictionary of 2^63", "\x8" + power63 + "\0\0"s, entries, malformed},
      {"text of 2^64-1", "\5\xff\xff\xff\xff\xff\xff\xff\xff\xff\1"s, text, malformed},
      {"endless size", "\5" + std::string(20, '\x80'), text, malformed},
      {"size not in its shortest form", "\5\x81\0a"s, text, malformed},
      {"invalid UTF-8", "\5\2\xc3\x28"s, text, malformed},
      {"invalid UTF-8 in a key", "\x8\1\5\1\xff\0"s, entries, malformed},
      {"key that is not a text", "\x8\1\0\0"s, entries, malformed},
      {"date that is not a number", "\7\1\4\0\0\0\0\0\0\xf8\x7f"s, list, malformed},
  };
  for (const auto& [name, bytes, parameters, code] : rows) {
    EXPECT_EQ(codeOf(validateWireValues(bytes, parameters)), code) << name;
  }
}

TEST(WireValuesTest, ErrorsTravelUnchangedAndRubbishIsNeverSuccess) {
  const Error original("domain", -7, {{"DebugDescription", "why"}, {"other", ""}});
  WireEncoder encoder;
  ErrorWire::encode(encoder, std::make_shared<const Error>(original));
  encoder.null().object("Error").null().object("Other").dictionary(0).string("x");
  WireReader reader(encoder.bytes());
  EXPECT_EQ(*ErrorWire::decode(reader), original);
  EXPECT_EQ(ErrorWire::decode(reader), nullptr);
  // The last decoding finds nothing at all.
  for (int i = 0; i < 4; ++i) EXPECT_EQ(codeOf(ErrorWire::decode(reader)), malformed) << i;
}

}  // namespace
}  // namespace quenlet
