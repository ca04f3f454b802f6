#include "sources/sim/SIMCardText.h"

#include <algorithm>

namespace quenlet {
namespace {

constexpr char nothing[] = "nothing";

}  // namespace

std::string SIMCardText::of(const std::optional<SIMCardItems>& items) {
  if (!items) return nothing;
  std::string text;
  for (const SIMCardItem& item : *items) {
    if (!text.empty()) text += ", ";
    text += onOneLine(item.identifier) + " " + onOneLine(item.value);
  }
  return "[" + text + "]";
}

std::string SIMCardText::of(const ErrorPtr& error) {
  return error ? error->description() : nothing;
}

std::string SIMCardText::onOneLine(std::string_view text) {
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  return line;
}

}  // namespace quenlet
