#pragma once

#include "tools/commands/Session.h"

namespace quenlet {

// "enable" and "disable": write the preference, which a running agent notices. Stateless.
class PreferenceWords final {
 public:
  PreferenceWords() = delete;

  static void addTo(CLI::App& app, ChosenAction& chosen);
};

}  // namespace quenlet
