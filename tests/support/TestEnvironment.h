#pragma once

#include <gtest/gtest.h>

#include "platform/PlatformServices.h"
#include "tests/support/FakeDonors.h"
#include "tests/support/FakeServices.h"
#include "tests/support/ManualSchedulers.h"
#include "tests/support/RecordingLog.h"

namespace quenlet {

class TestEnvironment final : public AgentEnvironmentProtocol {
 public:
  const std::shared_ptr<ManualSchedulerProvider> provider =
      std::make_shared<ManualSchedulerProvider>();
  ManualSchedulerProvider& schedulers = *provider;
  Trace& trace = schedulers.trace;
  const std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>(trace);
  const std::shared_ptr<FakeNotificationCenter> center =
      std::make_shared<FakeNotificationCenter>(trace);
  const std::shared_ptr<FakePreferences> preferences = std::make_shared<FakePreferences>();
  const std::shared_ptr<FakeFeedbackStore> feedback = std::make_shared<FakeFeedbackStore>(trace);
  const std::shared_ptr<FakeContactStore> contacts = std::make_shared<FakeContactStore>();
  FakeDonors donors{trace};
  const std::shared_ptr<FakeAccountStore> accounts = std::make_shared<FakeAccountStore>();
  const std::shared_ptr<FakeDeviceInfo> device = std::make_shared<FakeDeviceInfo>();
  const std::shared_ptr<DonationLoggerProvider> loggers = std::make_shared<DonationLoggerProvider>(
      StructuredLog(log, [this] { return schedulers.now(); }));

  // How many transactions keep the process from its end.
  const std::shared_ptr<int> openTransactions = std::make_shared<int>(0);

  std::shared_ptr<SchedulerProvider> schedulerProvider() override { return provider; }
  std::shared_ptr<AgentLogger> logger() override { return loggers->agentLogger(); }
  std::shared_ptr<DataProxy> dataProxy() override { return nullptr; }
  std::shared_ptr<DonationPreferences> donationPreferences() override { return preferences; }
  std::shared_ptr<DistributedNotificationCenter> distributedNotificationCenter() override {
    return center;
  }
  std::shared_ptr<DonationFeedbackStore> feedbackStore() override { return feedback; }

  [[nodiscard]] PlatformServices services() {
    PlatformServices services;
    services.now = [this] { return schedulers.now(); };
    services.defaultLoggerProvider = [this] { return loggers; };
    services.defaultSchedulerProvider = [this] { return provider; };
    services.makeDonationFeedbackStore = [this] { return feedback; };
    services.makeContactStore = [this] { return contacts; };
    services.makeDonorLoader = [this](const auto&) {
      trace.note("make loader");
      return borrowedDonors();
    };
    services.currentExtensionsObservable = [this](const auto&) { return borrowedDonors(); };
    services.makeAccountStore = [this] { return std::make_shared<FakeAccountStore>(*accounts); };
    services.deviceInfo = [this] { return device; };
    services.makeProcessTransaction = [open = openTransactions](const std::string&) {
      ++*open;
      return std::make_shared<ProcessTransaction>(
          std::make_shared<CancelBlock>([open] { --*open; }));
    };
    return services;
  }

 private:
  std::shared_ptr<FakeDonors> borrowedDonors() { return {std::shared_ptr<void>(), &donors}; }
};

class EnvironmentTest : public testing::Test {
 protected:
  ~EnvironmentTest() override {
    environment->schedulers.clear();
    environment->donors.clear();
  }

  const std::shared_ptr<TestEnvironment> environment = std::make_shared<TestEnvironment>();
  const PlatformServices::Scope scope{environment->services()};

  Events takeTrace() { return environment->trace.take(); }
};

}  // namespace quenlet
