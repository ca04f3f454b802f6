#pragma once

#include <array>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace quenlet {

// The kinds of values on the card, as the owner allows them to an app.
enum class CardKind { name, emailAddress, phoneNumber, postalAddress, imageData };
using CardKinds = std::set<CardKind>;

// Each with its word on the bus, in the permission store and on the command line.
inline constexpr std::array<std::pair<CardKind, std::string_view>, 5> cardKindWords = {
    {{CardKind::name, "name"},
     {CardKind::emailAddress, "emailAddress"},
     {CardKind::phoneNumber, "phoneNumber"},
     {CardKind::postalAddress, "postalAddress"},
     {CardKind::imageData, "imageData"}}};

[[nodiscard]] constexpr std::string_view wordFor(CardKind kind) {
  return cardKindWords[static_cast<std::size_t>(kind)].second;
}

[[nodiscard]] constexpr std::optional<CardKind> cardKindFor(std::string_view word) {
  for (const auto& [kind, known] : cardKindWords) {
    if (known == word) return kind;
  }
  return std::nullopt;
}

// What is given when nothing is asked for in particular: all but the image, which is large.
[[nodiscard]] inline CardKinds usualCardKinds() {
  return {CardKind::name, CardKind::emailAddress, CardKind::phoneNumber, CardKind::postalAddress};
}

}  // namespace quenlet
