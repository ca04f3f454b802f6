#include "platform/foundation/PropertyListSerializer.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quenlet {
namespace {

using enum PropertyListErrorCode;
using Array = PropertyListArray;
using Dictionary = PropertyListDictionary;

constexpr int limit = PropertyListSerializer::maximumNesting;

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

std::string document(const std::string& object) {
  return "<plist version=\"1.0\">" + object + "</plist>";
}

std::string arrays(int n) { return repeated("<array>", n) + repeated("</array>", n); }

PropertyList nested(int levels, PropertyList innermost) {
  while (levels-- > 0) innermost = Array(1, innermost);
  return innermost;
}

// The code of a failed outcome, 0 for a success. No error tells what it met.
template <typename T>
PropertyListErrorCode codeOf(const Result<T>& outcome) {
  if (outcome.ok()) return {};
  EXPECT_EQ(outcome.error()->domain(), PropertyListErrorDomain);
  EXPECT_FALSE(outcome.error()->debugDescription().empty());
  EXPECT_EQ(outcome.error()->description().find("secret"), std::string::npos);
  return static_cast<PropertyListErrorCode>(outcome.error()->code());
}

void expectReadAs(const PropertyList& object, const std::string& text) {
  const auto read = PropertyListSerializer::objectWithData(text);
  ASSERT_TRUE(read.ok()) << read.error()->description() << '\n' << text;
  EXPECT_TRUE(read.value() == object) << text;
  EXPECT_EQ(PropertyListSerializer::dataWithObject(read.value()).value(),
            PropertyListSerializer::dataWithObject(object).value());
}

TEST(PropertyListSerializerTest, ReadsBackWhatItWrites) {
  using Integers = std::numeric_limits<std::int64_t>;
  using Reals = std::numeric_limits<double>;
  const std::vector<PropertyList> objects = {
      "text",
      Array{"", " ", " \t\n ", " both ends ", "a<b>&amp;'\"]]>&#13;",
            "Zo\u00eb \U0001F600 \x7f \u0085 \ufffd", repeated("<", 100) + "123456789\u00e9&"},
      Array{true, false, 0, Integers::min(), Integers::max()},
      Array{Date(0), Date(-62135596800.0), Date::distantFuture(), Array{}, Dictionary{}},
      Array{Data{""}, Data{std::string("\xff\0\xfe", 3)}, Data{"four"}},
      Dictionary{{"", ""}, {" <k> ", Array{1, 1.0, "1", true}}},
      Array{0.0, -0.0, 0.1, 1.0 / 3, 1e22, 1e-7, 123456789.123456789, Reals::max(), Reals::min(),
            Reals::denorm_min(), Reals::lowest()},
      nested(limit - 1, {"deep"}),
      Dictionary{{"line ends\r", "\r\nCR LF\rCR\n"}}};
  for (const PropertyList& object : objects) {
    expectReadAs(object, PropertyListSerializer::dataWithObject(object).value());
  }
}

TEST(PropertyListSerializerTest, RefusesToWriteWhatTheFormCannotHold) {
  const std::pair<PropertyListErrorCode, std::vector<PropertyList>> cases[] = {
      {invalidText,
       {"secret \xC3\x28", "12345678\xE4\xB8", "\xED\xA0\x80", std::string("a\0b", 3),
        "12345678\x1B", "\uFFFE", Dictionary{{"\x01", true}}}},
      {nonFiniteNumber, {HUGE_VAL, std::nan(""), Date(HUGE_VAL), Array{HUGE_VAL, "\x01"}}},
      {nestingTooDeep, {nested(limit + 1, {1}), nested(1000, {1})}}};
  for (const auto& [code, objects] : cases) {
    for (const PropertyList& object : objects) {
      EXPECT_EQ(codeOf(PropertyListSerializer::dataWithObject(object)), code)
          << &object - objects.data();
    }
  }
}

TEST(PropertyListSerializerTest, ReadsWhatOthersWrite) {
  const std::pair<std::string, PropertyList> cases[] = {
      {"\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\n"
       "<!DOCTYPE plist PUBLIC \"-//a//b [1]>\" \"http://example.org/a.dtd\">\n"
       "<!-- <array> --><plist version=\"1.0\">\n\t<true />\r\n</plist>\n<!-- end --><?pi ?>\n",
       true},
      {"<plist><true></true></plist>", true},
      {document("<string>a<!-- no -->b <![CDATA[ <&amp;> ]]> &#x41;&#66;&lt;\r\nc\rd</string>"),
       "ab  <&amp;>  AB<\nc\nd"},
      {document("<dict> <key>k</key>\n<!-- x --> <false/> <key>k</key> <true/> </dict>"),
       Dictionary{{"k", true}}},
      {document("<array>" + repeated("<true/>", 20'000) + "</array>"), Array(20'000, true)},
      {document("<array> <string> </string>\n<string>\n<!-- x --> </string> </array>"),
       Array{" ", "\n "}},
      {document("<array> <string> <![CDATA[a]]> </string> </array>"), Array{" a "}},
      {document("<string> <?pi?>x</string>"), " x"},
      {document("<array> <integer> +12 </integer><integer>0x1f</integer><integer>-0</integer>"
                "<real> 1 </real><real>+1e+16</real><string/></array>"),
       Array{12, 31, 0, 1.0, 1e16, ""}},
      {document("<data>\n\tYW Jj\r\nZA==\n</data>"), Data{"abcd"}},
      {document(arrays(limit)), nested(limit - 1, Array{})}};
  for (const auto& [text, object] : cases) expectReadAs(object, text);
}

TEST(PropertyListSerializerTest, RefusesBadInputWithoutQuotingIt) {
  const std::string good = document("<true/>");
  const struct {
    PropertyListErrorCode code;
    std::vector<std::string> objects;  // within a document
    std::vector<std::string> texts = {};
  } cases[] = {
      {malformedMarkup,
       {"<array></dict>", "<string><!-- </string>", "<string><![CDATA[ </string>",
        "<string a=\"</string>"},
       {"", "<plist", "<plist><true/>", "</plist><plist>", "<!DOCTYPE plist"}},
      {invalidText,
       {"<string>\xFF</string>", std::string("<string>\0</string>", 18), "<string>\x02</string>"}},
      {unsupportedEncoding,
       {},
       {std::string("\xFF\xFE<\0p\0", 6), std::string("\0<\0p", 4),
        "<?xml version='1.0' encoding='latin1'?>" + good}},
      {documentTypeWithContent,
       {},
       {"<!DOCTYPE plist [<!ENTITY a \"b\">]>" + document("<string>&a;</string>"),
        "<!DOCTYPE plist <!ENTITY a \"b\"> >" + good}},
      {nestingTooDeep, {arrays(limit + 1), arrays(100'000)}, {repeated("<x>", 100'000)}},
      {tooLarge,
       {"<array>" + repeated("<true/>", 60'000) + "</array>",
        "<dict>" + repeated("<key/><dict/>", 20'000) + "</dict>",
        "<array>" + repeated("<string><![CDATA[]]></string>", 30'000) + "</array>",
        "<string>" + repeated("x<?a?>", 200'000) + "</string>",
        "<string>" + repeated("x<!---->", 200'000) + "</string>"},
       {"<plist" + repeated(" a=''", 1'000'000) + "></plist>"}},
      {invalidReference,
       {"<string>&secret;</string>", "<string>a & b</string>", "<string>&#0;</string>",
        "<string>&#xD800;</string>", "<string>&#x110000;</string>",
        "<string>&#4294967361;</string>", "<string>&#-65;</string>"}},
      {unexpectedContent,
       {"", "<true/><true/>", "<true/>x", "<array>&#32;</array>", "<secret/>",
        "<true secret='secret'/>", "<dict><key>a</key></dict>", "<dict><true/></dict>",
        "<dict><key>a</key>secret<true/></dict>", "<string>a<true/></string>"},
       {"{\"secret\": 1}", good + good, good + "x", " <?xml version='1.0'?>" + good,
        good + "<!DOCTYPE plist>", "<dict></dict>", "<plist version='2.0'><true/></plist>"}},
      {invalidValue,
       {"<true>1</true>", "<integer></integer>", "<integer>9223372036854775808</integer>",
        "<integer>secret</integer>", "<integer>0x-1</integer>", "<real>1,5</real>",
        "<real>nan</real>", "<real>1e999</real>", "<date>2026-02-30T12:00:00Z</date>",
        "<data>YWJ</data>", "<data>YWJ=ZA==</data>", "<data>Y===</data>", "<data>YW-j</data>"}}};
  for (auto [code, objects, texts] : cases) {
    for (const std::string& object : objects) texts.push_back(document(object));
    for (const std::string& text : texts) {
      EXPECT_EQ(codeOf(PropertyListSerializer::objectWithData(text)), code) << text.substr(0, 200);
    }
  }
}

}  // namespace
}  // namespace quenlet
