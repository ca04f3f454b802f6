#include "bus/BusConnection.h"

#include "tests/support/FakeBus.h"

namespace quenlet {
namespace {

class BusConnectionTest : public testing::Test {
 protected:
  // What comes of it is in `heard`: "ok", the bus's name of an error, or else its code.
  std::shared_ptr<Cancelable> call(const char* destination, AutoStart start = AutoStart::off) {
    heard.clear();
    return bus.connection->call({.destination = destination,
                                 .path = "/a",
                                 .interface = "org.example.A",
                                 .member = "B",
                                 .autoStart = start},
                                [this](const auto& answer) {
                                  heard = answer.ok() ? "ok" : busErrorName(*answer.error());
                                  if (heard.empty()) heard = std::to_string(answer.error()->code());
                                });
  }

  BusLoop loop;
  FakeBus bus{loop};
  std::string heard;
};

TEST_F(BusConnectionTest, TakesAnswersOnlyFromWhomItAsked) {
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
  for (const auto& [name, called, sender, isTaken] : rows) {
    SCOPED_TRACE(name);
    call(called);
    bus.answer(bus.take("B"), "u", {7u}, sender);
    EXPECT_EQ(heard, isTaken ? "ok" : std::to_string(EBADMSG));
    call(called);
    bus.fail(bus.take("B"), BusNameHasNoOwner, sender);
    const bool isKnown = isTaken || sender == daemon;
    EXPECT_EQ(heard, isKnown ? BusNameHasNoOwner : std::to_string(EBADMSG));
  }
}

TEST_F(BusConnectionTest, CallsTheOwnerThatANameHasOrGets) {
  constexpr char name[] = "org.example.Name";
  call(name);
  const FakeBus::Call called = bus.take("B");
  bus.absent = {"org.example.Name"};
  bus.answer(called, "", {});
  EXPECT_EQ(heard, "ok") << "it has left since";

  call(name);
  bus.settle();
  EXPECT_EQ(heard, BusNameHasNoOwner);
  call(name, AutoStart::on);
  bus.fail(bus.take("StartServiceByName"), BusServiceUnknown);
  EXPECT_EQ(heard, BusServiceUnknown);
  call(name, AutoStart::on);
  const FakeBus::Call start = bus.take("StartServiceByName");
  bus.absent.clear();
  bus.answer(start, "u", {1u});
  bus.answer(bus.take("B"), "", {});
  EXPECT_EQ(heard, "ok");
  call(name, AutoStart::on)->cancel();
  bus.settle();
  EXPECT_TRUE(bus.calls.empty()) << "cancelled before the owner was known";
}

TEST_F(BusConnectionTest, KnowsItsNameAndLetsNobodySendDescriptors) {
  EXPECT_EQ(bus.connection->uniqueName(), ":1.7");
  EXPECT_EQ(sd_bus_can_send(bus.connection->handle(), SD_BUS_TYPE_UNIX_FD), 0);
}

TEST_F(BusConnectionTest, BelievesTheBusAloneWhoHasLeft) {
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
