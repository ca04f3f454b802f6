#include "platform/foundation/PropertyListSerializer.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/PropertyListWriter.h"

namespace quenlet {
namespace {

using enum PropertyListErrorCode;

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

std::string document(const std::string& object) {
  return "<plist version=\"1.0\">" + object + "</plist>";
}

std::string nestedArrays(int count) {
  return document(repeated("<array>", count) + repeated("</array>", count));
}

PropertyList nested(int arrays, PropertyList innermost) {
  for (int i = 0; i < arrays; ++i) {
    PropertyListArray around;
    around.push_back(std::move(innermost));
    innermost = std::move(around);
  }
  return innermost;
}

// The code of a failed outcome, 0 for a success.
template <typename T>
std::int64_t codeOf(const Result<T>& outcome) {
  if (outcome.isLeft()) return 0;
  EXPECT_EQ(outcome.right()->domain(), PropertyListErrorDomain);
  EXPECT_FALSE(outcome.right()->debugDescription().empty());
  return outcome.right()->code();
}

TEST(PropertyListSerializerTest, ReadsBackWhatItWrites) {
  const std::vector<PropertyList> objects = {
      "",
      " ",
      " \t\n ",
      " both ends ",
      "\r\nCR LF\rCR\n",
      "a<b>&amp;'\"]]>&#13;",
      "Zo\u00eb \u4e2d\u6587 \U0001F600 \x7f \u0085 \ufffd",
      std::string(100, '<') + std::string(9, 'x') + "\u00e9&",
      true,
      false,
      0,
      std::numeric_limits<std::int64_t>::min(),
      std::numeric_limits<std::int64_t>::max(),
      Date(0),
      Date(-62135596800.0),
      Date::distantFuture(),
      Data{""},
      Data{std::string("\0", 1)},
      Data{std::string("\xff\xfe\x00", 3)},
      Data{"four"},
      PropertyListArray{},
      PropertyListDictionary{},
      PropertyListDictionary{{"", ""}, {" <k>\r", PropertyListArray{1, 1.0, "1", true}}},
      nested(PropertyListSerializer::maximumNesting, {"deep"}),
  };
  for (const PropertyList& object : objects) {
    const Result<std::string> text = PropertyListSerializer::dataWithObject(object);
    ASSERT_TRUE(text.isLeft()) << text.right()->description();
    const auto back = PropertyListSerializer::objectWithData(text.left());
    ASSERT_TRUE(back.isLeft()) << back.right()->description() << text.left();
    EXPECT_TRUE(back.left() == object) << text.left();
  }
}

TEST(PropertyListSerializerTest, RealsReadBackBitForBit) {
  using Limits = std::numeric_limits<double>;
  for (const double real : {0.0, -0.0, 1.0, 0.1, 1.0 / 3, 1e22, 1e-7, 123456789.123456789,
                            Limits::max(), Limits::min(), Limits::denorm_min(), Limits::lowest()}) {
    const auto text = PropertyListSerializer::dataWithObject(real);
    const auto back = PropertyListSerializer::objectWithData(text.left());
    ASSERT_TRUE(back.isLeft() && back.left().real()) << text.left();
    EXPECT_EQ(std::bit_cast<std::uint64_t>(*back.left().real()), std::bit_cast<std::uint64_t>(real))
        << text.left();
  }
}

TEST(PropertyListSerializerTest, WritesReadableLinesInKeyOrder) {
  const PropertyList object = PropertyListDictionary{
      {"b", PropertyListArray{1, -0.5}}, {"a", Date(1777636800.9)}, {"c", Data{"abcd"}}};
  EXPECT_EQ(PropertyListSerializer::dataWithObject(object).left(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
            "<key>a</key><date>2026-05-01T12:00:00Z</date>\n"
            "<key>b</key><array>\n<integer>1</integer>\n<real>-0.5</real>\n</array>\n"
            "<key>c</key><data>YWJjZA==</data>\n</dict>\n</plist>\n");
}

TEST(PropertyListSerializerTest, RefusesToWriteWhatTheFormCannotHold) {
  const struct {
    const char* name;
    PropertyList object;
    PropertyListErrorCode code;
  } cases[] = {
      {"bad UTF-8", "ann \xC3\x28", invalidText},
      {"half a character", "12345678\xE4\xB8", invalidText},
      {"surrogate", "\xED\xA0\x80", invalidText},
      {"zero", std::string("a\0b", 3), invalidText},
      {"escape character", "12345678\x1B", invalidText},
      {"U+FFFE", "\uFFFE", invalidText},
      {"key", PropertyListDictionary{{"\x01", true}}, invalidText},
      {"infinity", std::numeric_limits<double>::infinity(), nonFiniteNumber},
      {"not a number", std::numeric_limits<double>::quiet_NaN(), nonFiniteNumber},
      {"endless date", Date(std::numeric_limits<double>::infinity()), nonFiniteNumber},
      {"too deep", nested(PropertyListSerializer::maximumNesting + 1, {1}), nestingTooDeep},
      {"too deep by far", nested(1000, {1}), nestingTooDeep},
      {"the first of two offences",
       PropertyListArray{std::numeric_limits<double>::infinity(), "\x01"}, nonFiniteNumber},
  };
  for (const auto& [name, object, code] : cases) {
    EXPECT_EQ(codeOf(PropertyListSerializer::dataWithObject(object)),
              static_cast<std::int64_t>(code))
        << name;
  }
}

TEST(PropertyListSerializerTest, ReadsWhatOthersWrite) {
  const struct {
    std::string text;
    PropertyList object;
  } cases[] = {
      {"\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\n"
       "<!DOCTYPE plist PUBLIC \"-//a//b [1]>\" \"http://example.org/a.dtd\">\n"
       "<!-- <array> --><plist version=\"1.0\">\n\t<true />\r\n</plist>\n<!-- end --><?pi ?>\n",
       true},
      {"<plist><true></true></plist>", true},
      {document("<string>a<!-- no -->b <![CDATA[ <&amp;> ]]> &#x41;&#66;&lt;\r\nc\rd</string>"),
       "ab  <&amp;>  AB<\nc\nd"},
      {document("<string> <![CDATA[]]> </string>"), "  "},
      {document("<string/>"), ""},
      {document("<dict> <key>k</key>\n<!-- x --> <false/> <key>k</key> <true/> </dict>"),
       PropertyListDictionary{{"k", true}}},
      {document("<array> <integer> +12 </integer><integer>0x1f</integer><integer>-0</integer>"
                "</array>"),
       PropertyListArray{12, 31, 0}},
      {document("<array><real> 1 </real><real>+1e+16</real></array>"),
       PropertyListArray{1.0, 1e16}},
      {document("<data>\n\tYW Jj\r\nZA==\n</data>"), Data{"abcd"}},
      {nestedArrays(PropertyListSerializer::maximumNesting),
       nested(PropertyListSerializer::maximumNesting - 1, PropertyListArray{})},
  };
  for (const auto& [text, object] : cases) {
    const auto read = PropertyListSerializer::objectWithData(text);
    ASSERT_TRUE(read.isLeft()) << read.right()->description() << '\n' << text;
    EXPECT_TRUE(read.left() == object) << text;
  }
}

TEST(PropertyListSerializerTest, RefusesBadInput) {
  const std::string billion =
      "<!DOCTYPE plist [<!ENTITY a \"b\">]>" + document("<string>&a;</string>");
  const struct {
    std::string text;
    PropertyListErrorCode code;
  } cases[] = {
      {"", malformedMarkup},
      {"{\"json\": 1}", unexpectedContent},
      {"<plist", malformedMarkup},
      {"<plist><true/>", malformedMarkup},
      {"<plist><array></dict></plist>", malformedMarkup},
      {"</plist><plist>", malformedMarkup},
      {document("<string><!-- </string>"), malformedMarkup},
      {document("<string><![CDATA[ </string>"), malformedMarkup},
      {document("<string a=\"</string>"), malformedMarkup},
      {"<!DOCTYPE plist", malformedMarkup},
      {document("<string>\xFF</string>"), invalidText},
      {document(std::string("<string>\0</string>", 18)), invalidText},
      {document("<string>\x02</string>"), invalidText},
      {document("<string>\uFFFF</string>"), invalidText},
      {std::string("\xFF\xFE<\0p\0", 6), unsupportedEncoding},
      {std::string("\0<\0p", 4), unsupportedEncoding},
      {"<?xml version='1.0' encoding='latin1'?>" + document("<true/>"), unsupportedEncoding},
      {billion, documentTypeWithContent},
      {"<!DOCTYPE plist <!ENTITY a \"b\"> >" + document("<true/>"), documentTypeWithContent},
      {nestedArrays(PropertyListSerializer::maximumNesting + 1), nestingTooDeep},
      {nestedArrays(100'000), nestingTooDeep},
      {repeated("<x>", 100'000), nestingTooDeep},
      {document("<string>&foo;</string>"), invalidReference},
      {document("<string>a & b</string>"), invalidReference},
      {document("<string>&amp</string>"), invalidReference},
      {document("<string>&#0;</string>"), invalidReference},
      {document("<string>&#xD800;</string>"), invalidReference},
      {document("<string>&#x110000;</string>"), invalidReference},
      {document("<string>&#4294967361;</string>"), invalidReference},
      {document("<string>&#-65;</string>"), invalidReference},
      {document("<dict><key>&foo;</key><true/></dict>"), invalidReference},
      {document("<array>&#32;</array>"), unexpectedContent},
      {document(""), unexpectedContent},
      {document("<true/><true/>"), unexpectedContent},
      {document("<true/>x"), unexpectedContent},
      {document("<true/>") + document("<true/>"), unexpectedContent},
      {document("<true/>") + "x", unexpectedContent},
      {" <?xml version='1.0'?>" + document("<true/>"), unexpectedContent},
      {document("<true/>") + "<!DOCTYPE plist>", unexpectedContent},
      {"<dict></dict>", unexpectedContent},
      {"<plist version='2.0'><true/></plist>", unexpectedContent},
      {"<plist id='1.0'><true/></plist>", unexpectedContent},
      {document("<set/>"), unexpectedContent},
      {document("<true a='b'/>"), unexpectedContent},
      {document("<dict><key>a</key></dict>"), unexpectedContent},
      {document("<dict><true/></dict>"), unexpectedContent},
      {document("<dict><key>a</key><key>b</key></dict>"), unexpectedContent},
      {document("<dict><key a='b'>a</key><true/></dict>"), unexpectedContent},
      {document("<dict><key>a</key>x<true/></dict>"), unexpectedContent},
      {document("<dict>x<key>a</key><true/></dict>"), unexpectedContent},
      {document("<array><true/><![CDATA[x]]></array>"), unexpectedContent},
      {document("<string>a<true/></string>"), unexpectedContent},
      {document("<true>1</true>"), invalidValue},
      {document("<integer></integer>"), invalidValue},
      {document("<integer>9223372036854775808</integer>"), invalidValue},
      {document("<integer>18446744073709551615</integer>"), invalidValue},
      {document("<integer>0x-1</integer>"), invalidValue},
      {document("<integer>+-1</integer>"), invalidValue},
      {document("<integer>1.0</integer>"), invalidValue},
      {document("<real>1,5</real>"), invalidValue},
      {document("<real>nan</real>"), invalidValue},
      {document("<real>-inf</real>"), invalidValue},
      {document("<real>1e999</real>"), invalidValue},
      {document("<date>2026-05-01T12:00:00.5Z</date>"), invalidValue},
      {document("<date>2026-02-30T12:00:00Z</date>"), invalidValue},
      {document("<data>YWJ</data>"), invalidValue},
      {document("<data>YWJ=ZA==</data>"), invalidValue},
      {document("<data>Y===</data>"), invalidValue},
      {document("<data>YW-j</data>"), invalidValue},
  };
  for (const auto& [text, code] : cases) {
    EXPECT_EQ(codeOf(PropertyListSerializer::objectWithData(text)), static_cast<std::int64_t>(code))
        << text.substr(0, 200);
  }
}

TEST(PropertyListSerializerTest, ErrorsNeverQuoteTheContent) {
  for (const char* object : {"<string>&secret;</string>", "<secret/>", "<true secret='secret'/>",
                             "<integer>secret</integer>", "<dict>secret</dict>"}) {
    const auto read = PropertyListSerializer::objectWithData(document(object));
    ASSERT_FALSE(read.isLeft()) << object;
    EXPECT_EQ(read.right()->description().find("secret"), std::string::npos) << object;
  }
}

TEST(PropertyListWriterTest, FragmentsReadTheSameWithinADocument) {
  const PropertyList record = PropertyListDictionary{{"list", PropertyListArray{"a&b"}}};
  PropertyListWriter part;
  part.value(record);
  const auto fragment = std::move(part).takeFragment();
  ASSERT_TRUE(fragment.isLeft());
  const auto documentWithRecordAt = [&](int depth) {
    PropertyListWriter whole;
    whole.beginDocument();
    for (int i = 0; i < depth; ++i) whole.beginArray();
    whole.fragment(fragment.left());
    for (int i = 0; i < depth; ++i) whole.endArray();
    whole.endDocument();
    return std::move(whole).takeText();
  };
  constexpr int deepest = PropertyListSerializer::maximumNesting - 2;
  for (const int depth : {0, 1, deepest}) {
    const auto read = PropertyListSerializer::objectWithData(documentWithRecordAt(depth).left());
    ASSERT_TRUE(read.isLeft()) << read.right()->description();
    EXPECT_TRUE(read.left() == nested(depth, record));
  }
  EXPECT_EQ(codeOf(documentWithRecordAt(deepest + 1)), static_cast<std::int64_t>(nestingTooDeep));
}

}  // namespace
}  // namespace quenlet
