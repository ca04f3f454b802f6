#include "core/DonationPreferencesMonitor.h"

#include <gtest/gtest.h>

#include "tests/support/FakeServices.h"
#include "tests/support/ManualSchedulers.h"

namespace quenlet {
namespace {

TEST(DonationPreferencesMonitorTest, CallsADelayOffBeforeTheNextOneBegins) {
  const auto provider = std::make_shared<ManualSchedulerProvider>();
  provider->noteDelays();
  Trace& trace = provider->trace();
  const auto preferences = std::make_shared<FakePreferences>();
  const auto monitor = std::make_shared<DonationPreferencesMonitor>(preferences, nullptr, provider);
  const auto deliver = [&](bool enabled) {
    static_cast<void>(preferences->setDonationsEnabled(enabled));
    return trace.take();
  };
  using Events = std::vector<std::string>;
  const std::string wait = "caller: wait 30.000000";
  const std::string cancel = "caller: cancel wait";

  monitor->startMonitoring();
  EXPECT_EQ(deliver(false), Events{wait}) << "without callbacks";
  monitor->setOnSuppress([&](bool off) { trace.note(off ? "suppress" : "do not suppress"); });
  monitor->setOnEnable([&](bool on) { trace.note(on ? "enable" : "disable"); });
  EXPECT_EQ(deliver(false), (Events{"caller: suppress", cancel, wait}));
  provider->advance(30);
  EXPECT_EQ(trace.take(), Events{"background: disable"});
  EXPECT_EQ(deliver(true), (Events{"caller: do not suppress", cancel})) << "it is not forgotten";
  EXPECT_EQ(deliver(true), (Events{"caller: do not suppress", "caller: enable"}));
  deliver(false);
  monitor->stopMonitoring();
  EXPECT_EQ(trace.take(), Events{cancel});
  EXPECT_EQ(deliver(true), Events{});
}

}  // namespace
}  // namespace quenlet
