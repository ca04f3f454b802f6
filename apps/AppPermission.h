#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "apps/CardKind.h"

namespace quenlet {

// What an app asks the owner for: the card, or to donate.
enum class AppWish { meCard, donate };

// What the owner said to it. `unknown`: was not asked yet.
enum class OwnersWord { unknown, no, yes };

// What an app may do by the owner's word. A value type.
struct AppPermission final {
  OwnersWord word = OwnersWord::unknown;
  CardKinds kinds = {};  // of a "yes" to the card

  // What an entry of the permission store says: nothing for unknown, "no", or for the card the
  // words of the kinds and for donations "yes". Others may write there, too: "yes" to the card is
  // all usual kinds; anything that is not a plain permission is a no.
  [[nodiscard]] static AppPermission fromTexts(AppWish wish, const std::vector<std::string>& texts);
  [[nodiscard]] std::vector<std::string> texts(AppWish wish) const;

  friend bool operator==(const AppPermission&, const AppPermission&) = default;
};

// Whether the text is an identifier as apps have it: words of ASCII letters, digits, "_" and "-",
// with dots between them.
[[nodiscard]] bool isAppIdentifier(std::string_view text);

}  // namespace quenlet
