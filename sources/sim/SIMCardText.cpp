#include "sources/sim/SIMCardText.h"

#include "platform/foundation/Text.h"

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
  return error ? onOneLine(error->description()) : nothing;
}

}  // namespace quenlet
