// Keeps the file of the SIM cards' numbers in step with the daemons that drive modems, on a phone.
// On other devices it has nothing to do and ends.

#include <sysexits.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "bus/BusConnection.h"
#include "modems/DaemonFollower.h"
#include "modems/ModemManagerDaemon.h"
#include "modems/NumbersFile.h"
#include "modems/OfonoDaemon.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"
#include "platform/telephony/PropertyListDeviceInfo.h"

namespace quenlet {
namespace {

// A later start may work: the service manager tries again.
int giveUp(const Error& error) {
  std::fprintf(stderr, "quenlet-sim-numbers: %s\n", error.description().c_str());
  return EX_TEMPFAIL;
}

int followModems(BusLoop& loop, NumbersFile& file) {
  // A daemon's answer is some kilobytes long.
  const auto opened = BusConnection::toSystemBus(loop, {.values = 16'384, .bytes = 1 << 20});
  if (!opened.ok()) return giveUp(*opened.error());
  ErrorPtr failure;
  const auto follow = [&](std::unique_ptr<ModemDaemonProtocol> daemon) {
    const std::string name = daemon->name();
    const auto after = [&loop](double delaySeconds, Block block) {
      return loop.after(delaySeconds, std::move(block));
    };
    return std::make_unique<DaemonFollower>(after, *opened.value(), std::move(daemon),
                                            [&, name](const std::vector<Modem>& modems) {
                                              if (failure) return;
                                              failure = file.takeModems(name, modems);
                                              if (failure) loop.stop();
                                            });
  };
  const auto modemManager = follow(std::make_unique<ModemManagerDaemon>());
  const auto ofono = follow(std::make_unique<OfonoDaemon>());
  const ErrorPtr ended = loop.run();
  if (failure) return giveUp(*failure);
  return ended ? giveUp(*ended) : EXIT_SUCCESS;
}

int runSIMNumbers() {
  BusLoop loop;
  // Before there is another thread.
  for (const int signal : {SIGTERM, SIGINT}) loop.onSignal(signal, [&loop] { loop.stop(); });
  const Result<std::filesystem::path> home = UserDirectories::homeDirectory();
  if (!home.ok()) return giveUp(*home.error());
  const auto dataProxy = std::make_shared<PosixDataProxy>();
  PropertyListDeviceInfo device(home.value() / DevicePath, ChassisFiles(), dataProxy);
  if (device.integerAnswer(DeviceClassNumberKey, -1) != handsetClass) {
    std::fputs("quenlet-sim-numbers: this device is not a phone, so there is nothing to do\n",
               stderr);
    return EXIT_SUCCESS;
  }
  NumbersFile file(home.value() / SIMCardsPath, dataProxy);
  return followModems(loop, file);
}

}  // namespace
}  // namespace quenlet

int main(int argc, char*[]) {
  if (argc > 1) {
    std::fputs("quenlet-sim-numbers: takes no arguments\n", stderr);
    return 2;
  }
  try {
    return quenlet::runSIMNumbers();
  } catch (const std::system_error& failure) {
    return quenlet::giveUp(*quenlet::makePosixError(failure.code().value(), "start"));
  }
}
