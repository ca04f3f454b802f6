#pragma once

#include <string>

#include "tools/help/HelpPage.h"

namespace quenlet {

// Manual pages of the program, in troff's "man" macros. Stateless.
class ManualPage final {
 public:
  ManualPage() = delete;

  // "quenlet-account-add.1".
  [[nodiscard]] static std::string fileName(const HelpPage& page);
  [[nodiscard]] static std::string render(const HelpPage& page, const std::string& version);
  // Text as troff prints it: nothing in it is a request or an escape, and no hyphen is a dash.
  [[nodiscard]] static std::string escaped(const std::string& text);
};

}  // namespace quenlet
