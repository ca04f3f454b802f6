#include "tools/commands/Session.h"

#include <filesystem>
#include <system_error>

#include "platform/ipc/ServiceInterface.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {

namespace {

bool isServiceError(const Error& error, ServiceErrorCode code) {
  return error.domain() == ServiceErrorDomain && error.code() == static_cast<std::int64_t>(code);
}

bool isMissingEntitlement(const Error& error) {
  constexpr std::int64_t missingEntitlement = 4097;
  return error.domain() == GeneralErrorDomain && error.code() == missingEntitlement;
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
  if (isMissingEntitlement(*error)) {
    std::error_code failure;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
    err << "quenlet: no entitlements file names " << printable(program.native())
        << ", or it is not trusted; the agent says which on its standard error\n"
        << std::flush;
  }
  return isNoAnswer(*error) ? ExitCode::noAgent : ExitCode::refused;
}

ExitCode Session::finishWith(const ErrorPtr& error) const {
  return error ? failWith(error) : ExitCode::done;
}

}  // namespace quenlet
