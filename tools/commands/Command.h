#pragma once

#include <memory>

#include "tools/commands/Session.h"

namespace quenlet {

// One word of the program, or a few that belong together, with the options that were given to them.
class Command {
 public:
  virtual ~Command() = default;
  // Declares the words. Choosing one of them sets `chosen` to what it does; the command must then
  // live until that has been run, once.
  virtual void addTo(CLI::App& app, ChosenAction& chosen) = 0;
};
using CommandPtr = std::unique_ptr<Command>;

// In the order in which the help shows them.
[[nodiscard]] CommandPtr makeDonateWord();
[[nodiscard]] CommandPtr makeUndoWord();
[[nodiscard]] CommandPtr makeCardWord();
[[nodiscard]] CommandPtr makeMeWord();
[[nodiscard]] CommandPtr makeListWord();
[[nodiscard]] CommandPtr makeWhyWord();
[[nodiscard]] CommandPtr makeShowWord();
[[nodiscard]] CommandPtr makeRemovalWords();
[[nodiscard]] CommandPtr makeRejectionWords();
[[nodiscard]] CommandPtr makeUnrejectWords();
[[nodiscard]] CommandPtr makeBackupWords();
[[nodiscard]] CommandPtr makeAccountWord();
[[nodiscard]] CommandPtr makeExtensionWord();
[[nodiscard]] CommandPtr makeCollectWord();
[[nodiscard]] CommandPtr makePreferenceWords();
[[nodiscard]] CommandPtr makeFileWords();
[[nodiscard]] CommandPtr makeStatusWord();
[[nodiscard]] CommandPtr makeClientsWord();
[[nodiscard]] CommandPtr makeAllowWord();
[[nodiscard]] CommandPtr makeDoctorWord();
[[nodiscard]] CommandPtr makeStatsWord();
[[nodiscard]] CommandPtr makeWatchWord();
[[nodiscard]] CommandPtr makeCompleteWord();

}  // namespace quenlet
