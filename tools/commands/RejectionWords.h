#pragma once

#include <string>

#include "tools/commands/Session.h"

namespace quenlet {

// "reject", "reject-cluster" and "clear-rejections". Call addTo() and one action once.
class RejectionWords final {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen);

 private:
  // Adds a word that passes its identifier to `operation`.
  using Operation = void (CorvelProtocol::*)(std::string identifier, ErrorReply completionHandler);
  void addRejection(CLI::App& app, ChosenAction& chosen, const char* name, const char* effect,
                    Operation operation);

  std::string identifier;
};

}  // namespace quenlet
