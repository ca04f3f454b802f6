#pragma once

#include <string>

#include "platform/contacts/VCard.h"

namespace quenlet {

// Reads files of cards. "-" is the standard input. Stateless.
class CardFile final {
 public:
  CardFile() = delete;

  [[nodiscard]] static std::string nameOf(const std::string& path);
  // The cards that can be read, if any, and the errors for those that cannot. An error if the file
  // cannot be read. All errors name the file.
  [[nodiscard]] static Result<VCards> read(const std::string& path);
};

}  // namespace quenlet
