#include "platform/foundation/JSONWriter.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace quenlet {
namespace {

TEST(JSONWriterTest, PutsCommasInByItself) {
  JSONWriter json;
  json.beginArray().beginObject().endObject().beginArray().value(1).value(true).null().endArray();
  json.beginObject().key("a").value("b").key("c").beginArray().endArray().key("d").value(false);
  json.endObject().value("end").endArray();
  EXPECT_EQ(json.text(), R"([{},[1,true,null],{"a":"b","c":[],"d":false},"end"])");
}

TEST(JSONWriterTest, EscapesTextAndWritesNumbers) {
  using namespace std::string_literals;
  using Limits = std::numeric_limits<double>;
  JSONWriter json;
  json.beginObject()
      .key("\"k\\\n")
      .value("\b\f\r\t\0\x1f\x7f/\u00e9\u4e2d\u2028\u202e\u2069\xc2\x9b"s)
      .key("bad");
  json.value("a\xFF\xE4\xB8z").key("numbers").beginArray();
  json.value(std::numeric_limits<std::int64_t>::min()).value(0.1).value(1e300).value(-0.0);
  json.value(Limits::infinity()).value(Limits::quiet_NaN()).endArray().endObject();
  EXPECT_EQ(std::move(json).take(),
            "{\"\\\"k\\\\\\n\":\"\\b\\f\\r\\t\\u0000\\u001f\\u007f/"
            "\u00e9\u4e2d\\u2028\\u202e\\u2069\\u009b\","
            "\"bad\":\"a\uFFFD\uFFFDz\","
            "\"numbers\":[-9223372036854775808,0.1,1e+300,-0,null,null]}");
}

}  // namespace
}  // namespace quenlet
