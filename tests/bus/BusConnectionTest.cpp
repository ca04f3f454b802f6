#include "bus/BusConnection.h"

#include <gmock/gmock.h>

#include "bus/BusError.h"
#include "tests/support/FakeBus.h"

namespace quenlet {
namespace {

TEST(BusConnectionTest, TakesAnswersOnlyFromWhomItAsked) {
  constexpr char daemon[] = "org.freedesktop.DBus";
  const std::tuple<const char*, const char*, std::string, bool> rows[] = {
      {"the bus", daemon, daemon, true},
      {"another than the bus", daemon, ":1.3", false},
      {"a connection", ":1.3", ":1.3", true},
      {"another connection", ":1.3", ":1.4", false},
      {"the bus for a connection", ":1.3", daemon, false},
      {"the owner of a name", "org.example.Name", ":2.0", true},
      {"another than the owner", "org.example.Name", ":1.4", false},
      {"the bus for a name", "org.example.Name", daemon, false},
  };
  BusLoop loop;
  FakeBus bus(loop);
  for (const auto& [name, called, sender, isTaken] : rows) {
    SCOPED_TRACE(name);
    std::string heard;
    const auto call = [&](const char* destination) {
      bus.connection->call(
          {.destination = destination, .path = "/a", .interface = "org.example.A", .member = "B"},
          [&](const auto& answer) {
            heard = answer.ok() ? "ok" : busErrorName(*answer.error());
            if (heard.empty()) heard = std::to_string(answer.error()->code());
          });
      return bus.take("B");
    };
    bus.answer(call(called), "u", {7u}, sender);
    EXPECT_EQ(heard, isTaken ? "ok" : std::to_string(EBADMSG));
    bus.fail(call(called), BusNameHasNoOwner, sender);
    const bool isKnown = isTaken || sender == daemon;
    EXPECT_EQ(heard, isKnown ? BusNameHasNoOwner : std::to_string(EBADMSG));
  }
}

TEST(BusConnectionTest, CallsTheOwnerThatANameHasOrGets) {
  BusLoop loop;
  FakeBus bus(loop);
  std::string heard;
  const auto call = [&](AutoStart start) {
    heard.clear();
    return bus.connection->call(
        {.destination = "org.example.Name",
         .path = "/a",
         .interface = "org.example.A",
         .member = "B",
         .autoStart = start},
        [&](const auto& answer) { heard = answer.ok() ? "ok" : busErrorName(*answer.error()); });
  };
  call(AutoStart::off);
  const FakeBus::Call called = bus.take("B");
  bus.absent = {"org.example.Name"};
  bus.answer(called, "", {});
  EXPECT_EQ(heard, "ok") << "it has left since";

  call(AutoStart::off);
  bus.settle();
  EXPECT_EQ(heard, BusNameHasNoOwner);
  call(AutoStart::on);
  bus.fail(bus.take("StartServiceByName"), BusServiceUnknown);
  EXPECT_EQ(heard, BusServiceUnknown);
  call(AutoStart::on);
  const FakeBus::Call start = bus.take("StartServiceByName");
  bus.absent.clear();
  bus.answer(start, "u", {1u});
  bus.answer(bus.take("B"), "", {});
  EXPECT_EQ(heard, "ok");
  call(AutoStart::on)->cancel();
  bus.settle();
  EXPECT_TRUE(bus.calls.empty()) << "cancelled before the owner was known";
}

TEST(BusConnectionTest, BelievesTheBusAloneWhoHasLeft) {
  BusLoop loop;
  FakeBus bus(loop);
  std::vector<std::string> owners;
  const auto watch = bus.connection->onOwnerChange(
      "org.example.Name", [&](const std::string& owner) { owners.push_back(owner); });
  bus.settle();
  for (const char* sender : {":1.4", "org.freedesktop.DBus"}) {
    bus.signal(sender, "org.freedesktop.DBus", "NameOwnerChanged", "sss",
               {"org.example.Name", "", sender});
  }
  EXPECT_THAT(owners, testing::ElementsAre("org.freedesktop.DBus"));
  watch->cancel();
}

}  // namespace
}  // namespace quenlet
