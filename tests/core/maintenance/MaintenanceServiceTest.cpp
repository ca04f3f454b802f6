#include "core/maintenance/MaintenanceService.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "core/maintenance/MaintenanceInterface.h"
#include "platform/PlatformServices.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/ServiceClient.h"
#include "platform/ipc/UnixServiceListener.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/logging/StructuredLoggerProvider.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// Keeps the events' names: "maintenanceServiceWillStart ".
class LockedSink final : public LogSink {
 public:
  void write(const std::string& line) override {
    const std::size_t name = line.find("\"event\":\"") + 9;
    MutexLock lock(mutex);
    events += line.substr(name, line.find('"', name) - name) + " ";
  }
  std::string take() {
    MutexLock lock(mutex);
    return std::exchange(events, {});
  }

 private:
  Mutex mutex;
  std::string events GUARDED_BY(mutex);
};

// On its real socket, where no process is entitled to anything.
TEST(MaintenanceServiceTest, AnswersEveryProcessFromItsStartToItsEnd) {
  const TemporaryDirectory runtime;
  ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
  const auto sink = std::make_shared<LockedSink>();
  PlatformServices services;
  services.defaultLoggerProvider = [loggers = std::make_shared<StructuredLoggerProvider>(
                                        StructuredLog(sink, &Date::now))] { return loggers; };
  services.makeServiceListener = [](const std::string& name) {
    return std::make_shared<UnixServiceListener>(name, nullptr);
  };
  const PlatformServices::Scope scope(services);
  const auto connect = [] {
    return ServiceClient::connect(MaintenanceServiceName, makeMaintenanceInterface());
  };
  {
    MaintenanceService service;
    EXPECT_FALSE(connect().isLeft()) << "it is not started";
    ASSERT_EQ(service.start(), nullptr);
    EXPECT_EQ(sink->take(), "maintenanceServiceWillStart maintenanceServiceDidStart ");
    const auto client = connect().left();
    for (int call = 0; call < 2; ++call) {
      EXPECT_EQ(client->callSynchronously(MaintenanceSelector::extensionIdentifiers, {}),
                Result<std::string>::left(
                    WireEncoder().list(2).string("hello").string("world").null().bytes()));
    }
    EXPECT_EQ(sink->take(), "acceptingConnectionFromProcess: ");
    EXPECT_NE(MaintenanceService().start(), nullptr) << "the name is taken";
    EXPECT_EQ(sink->take(), "maintenanceServiceWillStart maintenanceServiceWillStop ");
  }
  EXPECT_EQ(sink->take(), "maintenanceServiceWillStop ");
  EXPECT_FALSE(connect().isLeft());
}

}  // namespace
}  // namespace quenlet
