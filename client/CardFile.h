#pragma once

#include <string>
#include <vector>

#include "platform/contacts/VCard.h"

namespace quenlet {

// Reads files of cards. "-" is the standard input. Stateless.
class CardFile final {
 public:
  CardFile() = delete;

  // The name without its directories.
  [[nodiscard]] static std::string nameOf(const std::string& path);
  // All cards; the error names the file.
  [[nodiscard]] static Result<std::vector<VCard>> read(const std::string& path);
};

}  // namespace quenlet
