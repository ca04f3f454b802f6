#include "tools/commands/Session.h"

#include "platform/ipc/ServiceInterface.h"
#include "tools/commands/TerminalText.h"

namespace quenlet {

namespace {

bool isServiceError(const Error& error, ServiceErrorCode code) {
  return error.domain() == ServiceErrorDomain && error.code() == static_cast<std::int64_t>(code);
}

}  // namespace

bool isNoAgent(const Error& error) {
  return isServiceError(error, ServiceErrorCode::noService) ||
         isServiceError(error, ServiceErrorCode::connectionBroken);
}

bool isNoAnswer(const Error& error) {
  return isNoAgent(error) || isServiceError(error, ServiceErrorCode::timedOut);
}

ExitCode Session::failWith(const ErrorPtr& error) const {
  err << "quenlet: " << printable(error->description()) << "\n" << std::flush;
  return isNoAnswer(*error) ? ExitCode::noAgent : ExitCode::refused;
}

ExitCode Session::finishWith(const ErrorPtr& error) const {
  return error ? failWith(error) : ExitCode::done;
}

}  // namespace quenlet
