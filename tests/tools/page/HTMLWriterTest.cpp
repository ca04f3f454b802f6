#include "tools/page/HTMLWriter.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

constexpr char documentType[] = "<!doctype html>\n";

TEST(HTMLWriterTest, EscapesTextsAndValuesOfAttributesAlike) {
  const std::tuple<const char*, std::string, const char*> rows[] = {
      {"markup", "<script>&amp;</p>", "&lt;script&gt;&amp;amp;&lt;/p&gt;"},
      {"both quotes", R"(a" onclick='b')", "a&quot; onclick=&#39;b&#39;"},
      {"not ASCII", "Åsa 李", "Åsa 李"},
      {"characters that reorder", "\u202Egpj.\u2066exe", "\uFFFDgpj.\uFFFDexe"},
      {"line breaks and NUL", std::string("a\r\n\0\u2028b", 8), "a\uFFFD\uFFFD\uFFFD\uFFFDb"},
      {"invalid and overlong UTF-8", "\xFF\xC0\xBC", "\uFFFD\uFFFD\uFFFD"},
  };
  for (const auto& [name, given, expected] : rows) {
    HTMLWriter html;
    html.element("p", {{"title", given}}, given);
    const std::string written = expected;
    EXPECT_EQ(std::move(html).take(),
              documentType + ("<p title=\"" + written + "\">" + written + "</p>\n"))
        << name;
  }
}

TEST(HTMLWriterTest, ClosesElementsInsideOutAndKeepsAnImageInThePage) {
  HTMLWriter html;
  {
    const auto list = html.open("ul");
    const auto item = html.open("li", {{"class", "own"}});
    const auto link = html.openLinkTo("donors");
    html.text("1 < 2");
    html.image({"GIF", "image/gif"}, "GIF89a", "\"me\"");
  }
  html.styleSheet("p > b { color: red }");
  EXPECT_EQ(std::move(html).take(),
            std::string(documentType) +
                "<ul><li class=\"own\"><a href=\"#donors\">1 &lt; 2<img "
                "src=\"data:image/gif;base64,R0lGODlh\" alt=\"&quot;me&quot;\"></a></li>\n</ul>\n"
                "<style>p > b { color: red }</style>\n");
}

TEST(ImageTypeTest, IsToldByTheFirstBytesAlone) {
  using namespace std::string_view_literals;
  const std::tuple<const char*, std::string_view, std::string> rows[] = {
      {"JPEG", "\xFF\xD8\xFF\xE0"sv, "JPEG image/jpeg"},
      {"PNG", "\x89PNG\r\n\x1A\n0"sv, "PNG image/png"},
      {"GIF of 1987", "GIF87a"sv, "GIF image/gif"},
      {"GIF of 1989", "GIF89a;"sv, "GIF image/gif"},
      {"WebP", "RIFF\x10\0\0\0WEBPVP8 "sv, "WebP image/webp"},
      {"another RIFF file", "RIFF\x10\0\0\0WAVEWEBP"sv, ""},
      {"a PNG through a text channel", "\x89PNG\n\x1A\n"sv, ""},
      {"behind a blank", " GIF89a"sv, ""},
      {"an image with scripts", "<svg xmlns='http://www.w3.org/2000/svg'>"sv, ""},
      {"too short", "GIF8"sv, ""},
  };
  for (const auto& [name, bytes, expected] : rows) {
    const auto type = ImageType::of(bytes);
    EXPECT_EQ(type ? std::string(type->name) + " " + type->mediaType : "", expected) << name;
  }
}

}  // namespace
}  // namespace quenlet
