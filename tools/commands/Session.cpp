#include "tools/commands/Session.h"

#include "platform/ipc/ServiceInterface.h"
#include "tools/commands/TerminalText.h"

namespace quenlet {

bool isNoAgent(const Error& error) {
  if (error.domain() != ServiceErrorDomain) return false;
  const auto code = static_cast<ServiceErrorCode>(error.code());
  return code == ServiceErrorCode::noService || code == ServiceErrorCode::connectionBroken;
}

ExitCode Session::failWith(const ErrorPtr& error) const {
  err << "quenlet: " << printable(error->description()) << "\n" << std::flush;
  return isNoAgent(*error) ? ExitCode::noAgent : ExitCode::refused;
}

ExitCode Session::finishWith(const ErrorPtr& error) const {
  return error ? failWith(error) : ExitCode::done;
}

}  // namespace quenlet
