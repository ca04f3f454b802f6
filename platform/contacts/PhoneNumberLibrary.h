#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/contacts/matching/NumberReading.h"

namespace quenlet {

// Asks the telephone library, which stands in a module that is loaded into the process and stays
// there. Immutable, thread-safe.
class PhoneNumberLibrary final {
 public:
  // Loads the module; when it cannot be loaded, says so in one line on standard error.
  explicit PhoneNumberLibrary(const std::filesystem::path& module);

  // The process's own: of the module in the running program's prefix, loaded at the first call.
  [[nodiscard]] static const PhoneNumberLibrary& shared();

  // Takes '+' and ASCII digits apart; nothing when that is no number of any country, and without
  // the module.
  [[nodiscard]] std::optional<QuenletInternationalNumber> read(const std::string& text) const;

 private:
  QuenletReadNumber* readNumber = nullptr;
};

}  // namespace quenlet
