#pragma once

#include <chrono>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ipc/TimeLimit.h"
#include "protocol/CorvelProtocol.h"
#include "quenlet/Date.h"
#include "tools/owner/Advice.h"
#include "tools/presentation/Screen.h"

namespace CLI {
class App;
}

namespace quenlet {

// The program's exit status.
enum class ExitCode : int {
  done = 0,
  refused = 1,  // the agent said no, or a file could not be read or written
  usage = 2,
  noAgent = 3,
};

// Somebody waits at the keyboard: an agent that hangs is to be told soon. One that has answered may
// take its time over a large donation.
inline const Patience patienceAtKeyboard(std::chrono::seconds(5), std::chrono::seconds(25));

// The environment in which a word runs. One thread.
struct Session final {
  std::ostream& out;
  std::ostream& err;
  CorvelProtocol& agent;
  // The time at which the program was started.
  Date now;
  // Blocks the calling thread.
  std::function<void(std::chrono::milliseconds)> pause;
  // What `out` is made for.
  Screen screen{};
  // What `err` is made for: one line an error unless a person reads them.
  Screen errorScreen{.width = Screen::unlimitedWidth};

  // Writes sentences to `out`, made safe for a terminal, in lines that fit.
  void say(const std::string& sentences) const;
  // Writes to `out`, behind "do: ", what to do about what was said.
  void advise(const Advice& advice) const;
  // The same as say() to `err`: text before a question, a warning behind "quenlet: ", or advice
  // behind "hint: ".
  void tell(const std::string& sentences, std::size_t indentation = 0) const;
  void warn(const std::string& sentence) const;
  void hint(const Advice& advice) const;

  // Writes `error` to the error stream as "quenlet: <domain> <code>: <sentence>", with its hints,
  // and returns its exit code: noAgent when no answer came, else refused.
  [[nodiscard]] ExitCode failWith(const ErrorPtr& error) const;
  // Writes a line "hint: …" for each hint of Hints.h.
  void hintAt(const Error& error) const;
  // Writes why the word itself refuses, as "quenlet: <domain> 1: <sentence>", and a hint, and
  // returns refused.
  ExitCode refuse(const char* domain, const std::string& sentence, const Advice& hint) const;
  // Writes `sentence` as wrong usage, "quenlet: usage 2: <sentence>", with a line for each of
  // `lines` that tells more and one for a hint if there is any.
  [[nodiscard]] ExitCode failWithUsage(const std::string& sentence,
                                       const std::vector<std::string>& lines = {},
                                       const Advice& hint = "") const;
  // done for null, else as failWith().
  [[nodiscard]] ExitCode finishWith(const ErrorPtr& error) const;

  // Asks the owner to agree to what cannot be taken back: done to go on, refused after a no, usage
  // when nobody can be asked; it has said why not. With `isConfirmed`, the option --yes, it does
  // not ask. Needs a terminal as standard input and error; only a word that begins with "y" agrees.
  [[nodiscard]] ExitCode ask(bool isConfirmed, const std::string& question) const;
  // Writes `data` to a file that the command line names, with mode 0600. Replaces an existing file
  // only with `replaces`; otherwise reports it and suggests --force.
  [[nodiscard]] ExitCode writeFile(const std::string& file, std::string_view data,
                                   bool replaces) const;
};

// The action of the word on the command line; empty until one was parsed.
using ChosenAction = std::function<ExitCode(Session&)>;

// Whether the error means that no agent is running, or that it ended before it answered.
[[nodiscard]] bool isNoAgent(const Error& error);
// Whether isNoAgent(), or an agent is running but did not answer in time.
[[nodiscard]] bool isNoAnswer(const Error& error);

}  // namespace quenlet
