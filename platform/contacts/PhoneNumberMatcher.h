#pragma once

#include <filesystem>
#include <string>

#include "platform/contacts/matching/NumberMatch.h"

namespace quenlet {

// Asks the telephone library, which stands in a module that is loaded into the process and stays
// there. Immutable, thread-safe.
class PhoneNumberMatcher final {
 public:
  // Loads the module; when it cannot be loaded, says so in one line on standard error.
  explicit PhoneNumberMatcher(const std::filesystem::path& module);

  // The process's own: of the module in the running program's prefix, loaded at the first call.
  [[nodiscard]] static const PhoneNumberMatcher& shared();

  // Whether two texts of ASCII digits, with or without a leading '+', are the same number in the
  // library's eyes. Symmetric. Without the module, only equal texts are.
  [[nodiscard]] bool areSameNumber(const std::string& a, const std::string& b) const;

 private:
  QuenletNumberMatch* match = nullptr;
};

}  // namespace quenlet
