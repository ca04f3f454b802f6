#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "quenlet/Result.h"

namespace quenlet {

// The postal addresses that Firefox fills into forms, from its autofill-profiles.json:
//
//   {"version": 1, "addresses": [{"guid": "…", "given-name": "Ann", "tel": "…", …}, …],
//    "creditCards": […]}
//
// Only texts of the addresses are kept while reading; nothing of the cards is. Stateless.
class FirefoxAddresses final {
 public:
  // The fields that are texts, by their names.
  using Record = std::map<std::string, std::string, std::less<>>;

  FirefoxAddresses() = delete;

  // Without those that were deleted. An error, which quotes nothing, when the text is not JSON, or
  // not of that form.
  [[nodiscard]] static Result<std::vector<Record>> parse(std::string_view text);
};

}  // namespace quenlet
