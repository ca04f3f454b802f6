#include "core/DonationPreferencesMonitor.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/FakeServices.h"
#include "tests/support/ManualSchedulers.h"

namespace quenlet {
namespace {

TEST(DonationPreferencesMonitorTest, TurnsValuesIntoCallbacks) {
  const struct {
    const char* script;
    const char* calls;  // onSuppress with "S", onEnable with "E"
  } rows[] = {
      {"on", "S0 E1 "},
      {"off +29.9", "S1 "},
      {"off +30", "S1 E0 "},
      {"off +20 off +29.9", "S1 S1 "},
      {"off +20 off +60", "S1 S1 E0 "},
      {"off +10 on +60 on", "S1 S0 S0 E1 "},
      {"off +60 on +60 on", "S1 E0 S0 S0 E1 "},
      {"off +60 off +60", "S1 E0 S1 E0 "},
      {"start on", "S0 E1 "},
      {"off stop +60 on", "S1 "},
      {"off stop start on", "S1 S0 E1 "},
      {"deaf on off +60", ""},
      {"off deaf +60", "S1 "},
  };
  for (const auto& row : rows) {
    const auto observable = std::make_shared<FakeObservable>();
    const auto schedulers = std::make_shared<ManualSchedulerProvider>();
    const auto monitor = std::make_shared<DonationPreferencesMonitor>(observable, schedulers);
    std::string calls;
    monitor->setOnSuppress([&calls](bool flag) { calls += flag ? "S1 " : "S0 "; });
    monitor->setOnEnable([&calls](bool flag) { calls += flag ? "E1 " : "E0 "; });
    monitor->startMonitoring();
    std::istringstream words(row.script);
    for (std::string word; words >> word;) {
      if (word.front() == '+') {
        schedulers->advance(std::stod(word));
      } else if (word == "start") {
        monitor->startMonitoring();
      } else if (word == "stop") {
        monitor->stopMonitoring();
      } else if (word == "deaf") {
        monitor->setOnSuppress(nullptr);
        monitor->setOnEnable(nullptr);
      } else {
        observable->emit(word == "on");
      }
    }
    EXPECT_EQ(calls, row.calls) << row.script;
  }
}

}  // namespace
}  // namespace quenlet
