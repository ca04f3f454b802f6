#include "core/maintenance/MaintenanceService.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <unistd.h>

#include "core/maintenance/MaintenanceInterface.h"
#include "platform/PlatformServices.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/ServiceClient.h"
#include "platform/ipc/UnixServiceListener.h"
#include "platform/logging/StructuredLoggerProvider.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class LockedSink final : public LogSink {
 public:
  void write(const std::string& line) override {
    MutexLock lock(mutex);
    lines.push_back(line);
  }
  std::vector<std::string> take() {
    MutexLock lock(mutex);
    return std::exchange(lines, {});
  }

 private:
  Mutex mutex;
  std::vector<std::string> lines GUARDED_BY(mutex);
};

// The service on its real socket; no entitlements are there.
class MaintenanceServiceTest : public testing::Test {
 protected:
  MaintenanceServiceTest() { ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1); }

  [[nodiscard]] PlatformServices services() const {
    PlatformServices services;
    services.defaultLoggerProvider = [loggers = loggers] { return loggers; };
    services.makeServiceListener = [](const std::string& name) {
      return std::make_shared<UnixServiceListener>(name, nullptr);
    };
    return services;
  }
  static std::string ask(const std::shared_ptr<ServiceClient>& client) {
    const auto reply = client->callSynchronously(MaintenanceSelector::extensionIdentifiers, "");
    if (!reply.isLeft()) return reply.right()->description();
    WireReader reader(reply.left());
    const auto count = reader.list();
    std::string identifiers;
    for (std::size_t i = 0; i < count.value_or(0); ++i) {
      identifiers.append(*reader.string()).append(" ");
    }
    EXPECT_EQ(ErrorWire::decode(reader), nullptr);
    return identifiers;
  }
  static auto connect() {
    return ServiceClient::connect(MaintenanceServiceName, makeMaintenanceInterface());
  }

  TemporaryDirectory runtime;
  const std::shared_ptr<LockedSink> sink = std::make_shared<LockedSink>();
  const std::shared_ptr<StructuredLoggerProvider> loggers =
      std::make_shared<StructuredLoggerProvider>(StructuredLog(sink, &Date::now));
  const PlatformServices::Scope scope{services()};
};

TEST_F(MaintenanceServiceTest, AnswersEveryProcessFromItsStartToItsEnd) {
  {
    MaintenanceService service;
    EXPECT_EQ(service.listenerDelegate(), nullptr);
    EXPECT_FALSE(connect().isLeft()) << "it is not started";
    ASSERT_EQ(service.start(), nullptr);
    EXPECT_NE(service.listenerDelegate(), nullptr);
    EXPECT_THAT(sink->take(), ElementsAre(HasSubstr("\"maintenanceServiceWillStart\""),
                                          HasSubstr("\"maintenanceServiceDidStart\"")));
    const auto client = connect().left();
    EXPECT_EQ(ask(client), "hello world ");
    EXPECT_EQ(ask(client), "hello world ");
    EXPECT_THAT(sink->take(), ElementsAre(HasSubstr("\"acceptingConnectionFromProcess:\","
                                                    "\"arguments\":[" +
                                                    std::to_string(::getpid()) + "]")));
  }
  EXPECT_THAT(sink->take(), ElementsAre(HasSubstr("\"maintenanceServiceWillStop\"")));
  EXPECT_FALSE(connect().isLeft());
}

TEST_F(MaintenanceServiceTest, DoesNotStartUnderATakenName) {
  MaintenanceService first;
  ASSERT_EQ(first.start(), nullptr);
  sink->take();
  MaintenanceService second;
  const ErrorPtr error = second.start();
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), static_cast<int>(ServiceErrorCode::nameTaken));
  EXPECT_THAT(sink->take(), ElementsAre(HasSubstr("\"maintenanceServiceWillStart\"")));
}

}  // namespace
}  // namespace quenlet
