#pragma once

#include <chrono>
#include <functional>
#include <ostream>

#include "platform/donations/CorvelProtocol.h"
#include "platform/foundation/Date.h"
#include "tools/commands/ExitCode.h"

namespace CLI {
class App;
}

namespace quenlet {

// What a word works with. One thread.
struct Session final {
  std::ostream& out;
  std::ostream& err;
  CorvelProtocol& agent;
  // The time of the call.
  Date now;
  // Waits on the calling thread.
  std::function<void(std::chrono::milliseconds)> pause;

  // Tells `error` on the error stream as "quenlet: <domain> <code>: <sentence>"; gives back the
  // exit code that stands for it: noAgent when no answer came, else refused.
  [[nodiscard]] ExitCode failWith(const ErrorPtr& error) const;
  // done for null, else as failWith().
  [[nodiscard]] ExitCode finishWith(const ErrorPtr& error) const;
};

// What is to be done once the words have been read; empty while none was.
using ChosenAction = std::function<ExitCode(Session&)>;

// Whether the error says that no agent is there, or none any more.
[[nodiscard]] bool isNoAgent(const Error& error);
// Whether the error says so, or that an agent is there and did not answer in time.
[[nodiscard]] bool isNoAnswer(const Error& error);

}  // namespace quenlet
