#include "platform/foundation/JSONWriter.h"

#include <gtest/gtest.h>

#include <cmath>
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
  JSONWriter json;
  json.beginArray().value(std::string("\"\\\b\f\n\r\t\0\x1f/\u4e2d", 13)).value("a\xFF\xE4\xB8z");
  json.value("\x7f\xC2\x9B\u2028\u202E\u2069").value(std::numeric_limits<std::int64_t>::min());
  json.value(0.1).value(1e300).value(-0.0).value(HUGE_VAL).value(std::nan("")).endArray();
  EXPECT_EQ(json.text(),
            "[\"\\\"\\\\\\b\\f\\n\\r\\t\\u0000\\u001f/\u4e2d\",\"a\uFFFD\uFFFDz\","
            "\"\\u007f\\u009b\\u2028\\u202e\\u2069\",-9223372036854775808,"
            "0.1,1e+300,-0,null,null]");
}

}  // namespace
}  // namespace quenlet
