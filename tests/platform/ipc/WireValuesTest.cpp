#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/ServiceInterface.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"

namespace quenlet {
namespace {

using namespace std::string_literals;

std::int64_t codeOf(const ErrorPtr& error) { return error ? error->code() : 0; }
constexpr auto malformed = static_cast<std::int64_t>(ServiceErrorCode::malformedMessage);
constexpr auto invalid = static_cast<std::int64_t>(ServiceErrorCode::invalidArguments);

PropertyList sampleTree() {
  return PropertyListDictionary{
      {"yes", true},
      {"least", std::numeric_limits<std::int64_t>::min()},
      {"minusZero", -0.0},
      {"long", std::string(300, 'x')},
      {"text", "\u00e9\U0001F600"},
      {"raw", Data{"\0\xff"s}},
      {"when", Date(1.5)},
      {"list", PropertyListArray{1, PropertyListArray{}, PropertyListDictionary{}}}};
}

std::string lists(int depth) {
  WireEncoder encoder;
  for (int i = 1; i < depth; ++i) encoder.list(1);
  return std::move(encoder.list(0)).take();
}

TEST(WireValuesTest, RoundTripsPropertyListsAndSkipsWhatWasNotAskedFor) {
  WireEncoder encoder;
  encoder.propertyList(sampleTree()).object("Thing").list(1).null().string("end");
  WireReader reader(encoder.bytes());
  EXPECT_EQ(reader.propertyList(), sampleTree());
  EXPECT_EQ(reader.integer(), std::nullopt);
  EXPECT_EQ(reader.string(), "end");
  EXPECT_TRUE(reader.atEnd());
  EXPECT_EQ(reader.string(), std::nullopt);

  WireReader again(encoder.bytes());
  again.skip();
  EXPECT_EQ(again.propertyList(), std::nullopt) << "an object is no property list";
  EXPECT_EQ(again.string(), "end");
}

TEST(WireValuesTest, RefusesEveryTruncationAndSurvivesEveryFlippedBit) {
  WireEncoder encoder;
  encoder.object("Thing").propertyList(sampleTree());
  const std::vector<WireParameter> parameters{{WireType::object, false, {"Thing"}}};
  ASSERT_EQ(validateWireValues(encoder.bytes(), parameters), nullptr);
  for (std::size_t size = 0; size < encoder.bytes().size(); ++size) {
    const std::string cut = encoder.bytes().substr(0, size);
    EXPECT_EQ(codeOf(validateWireValues(cut, parameters)), size == 0 ? invalid : malformed) << size;
  }
  for (std::size_t bit = 0; bit < encoder.bytes().size() * 8; ++bit) {
    std::string bytes = encoder.bytes();
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
    if (validateWireValues(bytes, parameters)) continue;
    WireReader reader(bytes);
    EXPECT_EQ(reader.object(), "Thing");
    EXPECT_TRUE(reader.propertyList()) << "bit " << bit;
    EXPECT_TRUE(reader.atEnd()) << "bit " << bit;
  }
}

TEST(WireValuesTest, ChecksWhatAPeerSends) {
  const WireParameter text{WireType::string, false, {}};
  const WireParameter maybe{WireType::string, true, {}};
  const WireParameter list{WireType::list, false, {"Donation"}};
  const WireParameter entries{WireType::dictionary, false, {}};
  const struct {
    const char* name;
    std::string bytes;
    std::vector<WireParameter> parameters;
    std::int64_t code;
  } rows[] = {
      {"nothing for nothing", "", {}, 0},
      {"null where allowed", "\0"s, {maybe}, 0},
      {"two values", "\5\1a\0"s, {text, maybe}, 0},
      {"object inside",
       "\7\1\x9\x8"
       "Donation\0"s,
       {list},
       0},
      {"nesting at the limit", lists(maximumWireNesting), {list}, 0},
      {"nesting beyond the limit", lists(maximumWireNesting + 1), {list}, malformed},
      {"nesting of a million", std::string(2000000, '\7'), {list}, malformed},
      {"too few", "\5\1a"s, {text, text}, invalid},
      {"too many", "\5\1a\0"s, {text}, invalid},
      {"null where not allowed", "\0"s, {text}, invalid},
      {"wrong type", "\6\1a"s, {text}, invalid},
      {"wrong class",
       "\7\1\x9\x5"
       "Other\0"s,
       {list},
       invalid},
      {"class deep inside",
       "\7\1\x9\x8"
       "Donation\7\1\x9\x5"
       "Other\0"s,
       {list},
       invalid},
      {"unknown type", "\7\1\xa"s, {list}, malformed},
      {"boolean of two", "\7\1\1\2"s, {list}, malformed},
      {"list longer than the message", "\7\5\0\0\0\0"s, {list}, malformed},
      {"dictionary longer than the message", "\x8\2\5\1a"s, {entries}, malformed},
      {"list of 2^63", "\7\x80\x80\x80\x80\x80\x80\x80\x80\x80\1\0"s, {list}, malformed},
      {"list of 2^64", "\7\x80\x80\x80\x80\x80\x80\x80\x80\x80\2\0"s, {list}, malformed},
      {"dictionary of 2^63",
       "\x8\x80\x80\x80\x80\x80\x80\x80\x80\x80\1\0\0"s,
       {entries},
       malformed},
      {"text of 2^64-1", "\5\xff\xff\xff\xff\xff\xff\xff\xff\xff\1"s, {text}, malformed},
      {"endless size", "\5" + std::string(20, '\x80'), {text}, malformed},
      {"size not in its shortest form", "\5\x81\0a"s, {text}, malformed},
      {"invalid UTF-8", "\5\2\xc3\x28"s, {text}, malformed},
      {"invalid UTF-8 in a key", "\x8\1\5\1\xff\0"s, {entries}, malformed},
      {"key that is no text", "\x8\1\0\0"s, {entries}, malformed},
      {"date that is not a number", "\7\1\4\0\0\0\0\0\0\xf8\x7f"s, {list}, malformed},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(codeOf(validateWireValues(row.bytes, row.parameters)), row.code) << row.name;
  }
}

TEST(WireValuesTest, ErrorsTravelUnchangedAndRubbishIsNeverSuccess) {
  const Error original("domain", -7, {{"DebugDescription", "why"}, {"other", ""}});
  WireEncoder encoder;
  ErrorWire::encode(encoder, std::make_shared<const Error>(original));
  ErrorWire::encode(encoder, nullptr);
  WireReader reader(encoder.bytes());
  EXPECT_EQ(*ErrorWire::decode(reader), original);
  EXPECT_EQ(ErrorWire::decode(reader), nullptr);

  WireEncoder rubbish;
  rubbish.object("Error").null().object("Other").dictionary(0).string("x");
  WireReader bad(rubbish.bytes());
  // The last decoding finds nothing at all.
  for (int i = 0; i < 4; ++i) EXPECT_EQ(codeOf(ErrorWire::decode(bad)), malformed) << i;
}

}  // namespace
}  // namespace quenlet
