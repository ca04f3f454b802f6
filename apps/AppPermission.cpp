#include "apps/AppPermission.h"

#include <algorithm>
#include <cstddef>

namespace quenlet {
namespace {

constexpr char yes[] = "yes";
constexpr char no[] = "no";

bool isAppWord(std::string_view word) {
  const auto isAllowed = [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
           (letter >= '0' && letter <= '9') || letter == '_' || letter == '-';
  };
  return !word.empty() && std::all_of(word.begin(), word.end(), isAllowed);
}

}  // namespace

AppPermission AppPermission::fromTexts(AppWish wish, const std::vector<std::string>& texts) {
  if (texts.empty()) return {};
  AppPermission permission{OwnersWord::yes};
  for (const std::string& text : texts) {
    const auto kind = wish == AppWish::meCard ? cardKindFor(text) : std::nullopt;
    if (kind) {
      permission.kinds.insert(*kind);
    } else if (text == yes) {
      if (wish == AppWish::meCard) permission.kinds.merge(usualCardKinds());
    } else {
      return {OwnersWord::no};
    }
  }
  return permission;
}

std::vector<std::string> AppPermission::texts(AppWish wish) const {
  if (word == OwnersWord::unknown) return {};
  if (word == OwnersWord::no || (wish == AppWish::meCard && kinds.empty())) return {no};
  if (wish == AppWish::donate) return {yes};
  std::vector<std::string> texts;
  for (const CardKind kind : kinds) texts.emplace_back(wordFor(kind));
  return texts;
}

bool isAppIdentifier(std::string_view text) {
  constexpr std::size_t longest = 255;
  if (text.size() > longest) return false;
  std::size_t words = 0;
  for (std::size_t begin = 0; begin <= text.size(); ++words) {
    const std::size_t end = std::min(text.find('.', begin), text.size());
    if (!isAppWord(text.substr(begin, end - begin))) return false;
    begin = end + 1;
  }
  return words >= 2;
}

}  // namespace quenlet
