#pragma once

#include <algorithm>
#include <array>
#include <string_view>

// Names that HTMLWriter takes: only those that stand in the program's source, checked while it is
// compiled. No text that comes from outside can become one.
namespace quenlet {

// Never defined or constant: using it where a constant is needed does not compile.
void thisNameIsNotAllowed();

// An identifier or an element or attribute without further demands.
class HTMLName {
 public:
  consteval HTMLName(const char* name) : spelling(name) {
    for (const char letter : spelling) {
      const bool isAllowed = (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') ||
                             letter == '-' || (letter >= 'A' && letter <= 'Z');
      if (!isAllowed) thisNameIsNotAllowed();
    }
    if (spelling.empty()) thisNameIsNotAllowed();
  }
  [[nodiscard]] constexpr std::string_view text() const { return spelling; }

 private:
  std::string_view spelling;
};

// An element that neither runs nor loads nor sends anything, and whose text is escaped as usual.
class HTMLElementName final : public HTMLName {
 public:
  consteval HTMLElementName(const char* name) : HTMLName(name) {
    constexpr std::array refused = {"a",     "applet",   "audio",    "base",      "button",
                                    "embed", "form",     "iframe",   "img",       "input",
                                    "link",  "math",     "object",   "plaintext", "script",
                                    "style", "template", "textarea", "video",     "xmp"};
    for (const std::string_view word : refused) {
      if (text() == word) thisNameIsNotAllowed();
    }
  }
};

// An attribute whose value is neither an address nor a style nor a script.
class HTMLAttributeName final : public HTMLName {
 public:
  consteval HTMLAttributeName(const char* name) : HTMLName(name) {
    constexpr std::array refused = {"action",     "background", "cite",   "data",
                                    "formaction", "href",       "ping",   "poster",
                                    "src",        "srcdoc",     "srcset", "style"};
    for (const std::string_view word : refused) {
      if (text() == word) thisNameIsNotAllowed();
    }
    if (text().starts_with("on")) thisNameIsNotAllowed();
  }
};

}  // namespace quenlet
