#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/contacts/matching/NumberReading.h"

namespace quenlet {

// Access to the telephone library, in a module that is loaded into the process and stays there.
// Immutable; thread-safe.
class PhoneNumberLibrary final {
 public:
  // Loads the module. Failure is one line on standard error; read() then gives nothing.
  explicit PhoneNumberLibrary(const std::filesystem::path& module);

  // The instance of the process, for the module in the running program's prefix; loaded at the
  // first call.
  [[nodiscard]] static const PhoneNumberLibrary& shared();

  // Splits '+' and ASCII digits into country code and national number. Nothing when it is not a
  // number of any country, or the module is missing.
  [[nodiscard]] std::optional<QuenletInternationalNumber> read(const std::string& text) const;
  // The forms of such a number for people to read, or to fill into forms.
  [[nodiscard]] std::optional<QuenletWrittenNumber> write(const std::string& text) const;

 private:
  // Both or none.
  QuenletReadNumber* readNumber = nullptr;
  QuenletWriteNumber* writeNumber = nullptr;
};

}  // namespace quenlet
