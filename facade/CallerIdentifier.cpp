#include "facade/CallerIdentifier.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <memory>
#include <utility>

#include "facade/SandboxedApp.h"
#include "platform/files/TrustedProgram.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "platform/ipc/PeerIdentity.h"
#include "protocol/ClientEntitlements.h"

namespace quenlet {
namespace {

using Identified = Result<CallerIdentity>;

using Process = Result<pid_t>;

Process unknownCaller(int errorNumber) {
  return Process::failure(makePosixError(errorNumber, "identify a caller"));
}

// Whose a connection is, as the bus says.
Process processIn(const Result<BusValues>& answer) {
  if (!answer.ok()) return Process::failure(answer.error());
  const BusDictionary* known =
      answer.value().empty() ? nullptr : answer.value().front().dictionary();
  if (known == nullptr) return unknownCaller(EBADMSG);
  const BusValue* user = findEntry(*known, "UnixUserID");
  const BusValue* process = findEntry(*known, "ProcessID");
  if (user == nullptr || process == nullptr) return unknownCaller(ESRCH);
  if (user->integer() != std::int64_t{::geteuid()}) return unknownCaller(EPERM);
  const std::int64_t number = process->integer().value_or(0);
  if (number <= 0 || number > std::numeric_limits<pid_t>::max()) return unknownCaller(ESRCH);
  return Process::success(static_cast<pid_t>(number));
}

bool isAlive(int pidfd) {
  pollfd look{pidfd, POLLIN, 0};
  return ::poll(&look, 1, 0) == 0;
}

std::optional<PropertyList> entitlementOf(const PropertyListDictionary& all, const char* name) {
  const PropertyList* found = findEntry(all, name);
  return found == nullptr ? std::nullopt : std::optional(*found);
}

// As the agent reads them. The error is a passing one: then nothing is known.
ErrorPtr readEntitlements(const std::filesystem::path& prefix,
                          const std::filesystem::path& executable, CallerIdentity& caller) {
  const EntitlementTable table =
      EntitlementDatabase::tableFor(prefix, EntitlementDatabase::systemConfiguration);
  if (table.isIncomplete()) return makePosixError(EAGAIN, "read the entitlements");
  const auto held = table.entitlementsOf(executable);
  if (!held || !trustedProgram(executable, prefix).ok()) return nullptr;
  caller.isEntitled = grants(entitlementOf(*held, ContactsEntitlement)) ||
                      grants(entitlementOf(*held, SuggestionsEntitlement));
  if (const auto bundles = entitlementOf(*held, BundlesEntitlement)) {
    caller.bundles = bundlesIn(*bundles);
  }
  return nullptr;
}

}  // namespace

void CallerIdentifier::askBus(const std::string& uniqueName, BusConnection::ReplyHandler handler) {
  bus.call(callOfBus("GetConnectionCredentials", "s", {uniqueName}), std::move(handler));
}

void CallerIdentifier::identify(const std::string& uniqueName, Reply reply) {
  askBus(uniqueName, [this, uniqueName, reply = std::move(reply)](const auto& answer) {
    const Process process = processIn(answer);
    if (!process.ok()) return reply(Identified::failure(process.error()));
    const auto pin = std::make_shared<const FileDescriptor>(
        static_cast<int>(::syscall(SYS_pidfd_open, process.value(), 0)));
    if (!pin->isOpen()) return reply(Identified::failure(makePosixError(ESRCH, "pin a caller")));
    Identified caller = examine(process.value(), pin->get());
    if (!caller.ok()) return reply(std::move(caller));
    askBus(uniqueName, [caller, process, pin, reply](const auto& again) {
      const Process same = processIn(again);
      if (!same.ok()) return reply(Identified::failure(same.error()));
      const bool isSame = same.value() == process.value() && isAlive(pin->get());
      reply(isSame ? caller : Identified::failure(makePosixError(ESRCH, "identify a caller")));
    });
  });
}

Result<CallerIdentity> CallerIdentifier::examine(pid_t process, int pidfd) const {
  const auto app = sandboxedAppOf(process);
  if (!app.ok()) return Identified::failure(app.error());
  CallerIdentity caller{.process = process, .app = app.value()};
  if (!caller.app) {
    const PeerIdentity peer = PeerIdentity::ofProcess(::geteuid(), process, pidfd);
    const ErrorPtr error =
        peer.executable ? readEntitlements(prefix, *peer.executable, caller) : nullptr;
    if (error) return Identified::failure(error);
  }
  // What was read under the number was this process's own.
  if (!isAlive(pidfd)) return Identified::failure(makePosixError(ESRCH, "identify a caller"));
  return Identified::success(std::move(caller));
}

}  // namespace quenlet
