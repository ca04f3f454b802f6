#pragma once

#include <span>
#include <string_view>

namespace quenlet {

// The one extension that is answered, by what each browser says of the extension that started the
// program. Stateless.
//
//   Chromium   quenlet-browser chrome-extension://<identifier>/
//   Firefox    quenlet-browser <path of the host's manifest> <identifier>
//
// The browser's word is all there is to go by. Another program of the same user could say the same,
// but gains nothing by it: it could run quenlet.
class CallingExtension final {
 public:
  static constexpr std::string_view chromiumOrigin =
      "chrome-extension://flpoaajdecdhnlnjpfjebaoebjjjpdej/";
  static constexpr std::string_view firefoxIdentifier = "browser@quenlet.example";

  CallingExtension() = delete;

  // `arguments` are those behind the program's name.
  [[nodiscard]] static bool isOurs(std::span<const std::string_view> arguments);
};

}  // namespace quenlet
