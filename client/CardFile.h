#pragma once

#include <string>

#include "platform/contacts/VCard.h"

namespace quenlet {

// Reads files of cards. "-" is the standard input. Stateless.
class CardFile final {
 public:
  CardFile() = delete;

  // The name without its directories.
  [[nodiscard]] static std::string nameOf(const std::string& path);
  // All cards that can be read, and why others cannot. An error when there is none or the file
  // cannot be read. All errors name the file.
  [[nodiscard]] static Result<VCards> read(const std::string& path);
};

}  // namespace quenlet
