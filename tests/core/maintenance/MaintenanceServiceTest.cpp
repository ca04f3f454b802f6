#include "core/maintenance/MaintenanceService.h"

#include <gmock/gmock.h>

#include "platform/PlatformServices.h"
#include "platform/ipc/ServiceClient.h"
#include "platform/ipc/UnixServiceListener.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/logging/StandardErrorLogSink.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// On its real socket, where no process is entitled to anything.
TEST(MaintenanceServiceTest, AnswersEveryProcessFromItsStartToItsEnd) {
  const TemporaryHome runtime;
  const auto sink = std::make_shared<StandardErrorLogSink>();
  PlatformServices services;
  services.defaultLoggerProvider = [loggers = std::make_shared<DonationLoggerProvider>(
                                        StructuredLog(sink, &Date::now))] { return loggers; };
  services.makeServiceListener = [](const std::string& name) {
    return std::make_shared<UnixServiceListener>(name, nullptr);
  };
  const PlatformServices::Scope scope(services);
  const auto connect = [] {
    return ServiceClient::connect(MaintenanceServiceName,
                                  MaintenanceService::makeConfiguredInterface());
  };
  testing::internal::CaptureStderr();
  {
    MaintenanceService service;
    EXPECT_FALSE(connect().ok()) << "it is not started";
    ASSERT_EQ(service.start(), nullptr);
    EXPECT_EQ(connect().value()->callAndWait(MaintenanceSelector::extensionIdentifiers, {}),
              Result<std::string>::success(
                  WireEncoder().list(2).string("hello").string("world").null().bytes()));
    EXPECT_NE(MaintenanceService().start(), nullptr) << "the name is taken";
  }
  EXPECT_FALSE(connect().ok());
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::ContainsRegex(
                  "WillStart.*DidStart.*acceptingConnection.*WillStart.*WillStop.*WillStop"));
}

}  // namespace
}  // namespace quenlet
