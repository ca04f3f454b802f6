#include <fcntl.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "facade/BusProgram.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "platform/preferences/UserPreferences.h"

namespace {

int complain(const quenlet::Error& error) {
  std::fprintf(stderr, "quenlet-bus: %s\n", error.description().c_str());
  return EXIT_FAILURE;
}

// A core file would keep values that passed through.
void forbidCoreFiles() {
  const rlimit none{0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
}

int serve() {
  quenlet::BusLoop loop;
  quenlet::BusProgram* running = nullptr;
  // Before there is another thread: the signal would end the process there.
  loop.onSignal(SIGTERM, [&running] { running->leave(); });
  const auto preferences = quenlet::UserPreferences::open();
  if (!preferences.ok()) return complain(*preferences.error());
  const auto bus = quenlet::BusConnection::toUserBus(loop);
  if (!bus.ok()) return complain(*bus.error());
  // Installed in libexec/quenlet below the prefix.
  const auto prefix = quenlet::EntitlementDatabase::prefixOfRunningProgram().parent_path();
  quenlet::BusProgram program(loop, *bus.value(), preferences.value()->preferences(), prefix);
  running = &program;
  const quenlet::ErrorPtr error = program.run();
  return error ? complain(*error) : EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char*[]) {
  if (argc > 1) {
    std::fputs("quenlet-bus: takes no arguments; the message bus starts it\n", stderr);
    return 2;
  }
  forbidCoreFiles();
  try {
    return serve();
  } catch (const std::system_error& failure) {
    std::fprintf(stderr, "quenlet-bus: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
