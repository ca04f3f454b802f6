#pragma once

#include <gmock/gmock.h>

#include "bus/BusConnection.h"
#include "bus/BusError.h"
#include "tests/platform/ipc/RawPeer.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {

// A message bus for one connection, ":1.7", on the loop of that. Calls are kept until the test
// answers them. Each name that is not absent has an owner, who answers unless the test says
// otherwise: ":2.0" the first one that is asked for, ":2.1" the next.
class FakeBus final {
 public:
  struct Call final {
    std::string destination;  // the name that the owner was asked for
    std::string path;
    std::string member;
    BusValues arguments;
    BusMessage message;
  };

  explicit FakeBus(BusLoop& runs) : loop(runs) {
    const std::string path = directory / "bus";
    listener = boundSocket(path);
    EXPECT_EQ(::listen(listener.get(), 1), 0);
    accepting = loop.watch(listener.get(), [this] { accept(); });
    auto opened = BusConnection::toAddress(loop, "unix:path=" + path);
    EXPECT_TRUE(opened.ok());
    connection = std::move(opened).takeValue();
    settle();
  }
  ~FakeBus() {
    accepting->cancel();
    connection.reset();
    calls.clear();
    sd_bus_close_unref(bus);
  }
  FakeBus(const FakeBus&) = delete;
  FakeBus& operator=(const FakeBus&) = delete;

  // Until neither side has anything left to do at once.
  void settle() {
    while (sd_event_run(loop.handle(), 0) > 0) continue;
  }
  // The oldest call that was not answered; fails the test for another member's.
  Call take(const std::string& member) {
    settle();
    if (calls.empty() || calls.front().member != member) {
      ADD_FAILURE() << "no call of " << member;
      return {};
    }
    Call taken = std::move(calls.front());
    calls.erase(calls.begin());
    return taken;
  }
  void answer(const Call& call, const std::string& signature, const BusValues& values,
              const std::string& sender = {}) {
    sd_bus_message* reply = nullptr;
    ASSERT_GE(sd_bus_message_new_method_return(call.message.get(), &reply), 0);
    ASSERT_EQ(appendArguments(reply, signature, values), nullptr);
    send(BusMessage(reply), sender.empty() ? ownerOf(call.destination) : sender);
  }
  void fail(const Call& call, const std::string& name, const std::string& sender = {}) {
    sd_bus_message* reply = nullptr;
    ASSERT_GE(sd_bus_message_new_method_errorf(call.message.get(), &reply, name.c_str(), "no"), 0);
    send(BusMessage(reply), sender.empty() ? ownerOf(call.destination) : sender);
  }

  // Has ":1.9" call the object: "ok" or its error's name; nothing when it calls somebody first.
  std::string ask(const std::string& path, const std::string& interface, const std::string& member,
                  const std::string& signature, const BusValues& arguments) {
    answered.clear();
    sd_bus_message* call = nullptr;
    EXPECT_GE(sd_bus_message_new_method_call(bus, &call, ":1.7", path.c_str(), interface.c_str(),
                                             member.c_str()),
              0);
    EXPECT_EQ(appendArguments(call, signature, arguments), nullptr);
    send(BusMessage(call), ":1.9");
    return answerOfObject();
  }
  std::string answerOfObject() {
    constexpr std::uint64_t mostMicroseconds = 5'000'000;
    while (answered.empty() && calls.empty() && sd_event_run(loop.handle(), mostMicroseconds) > 0) {
      continue;
    }
    return answered;
  }
  void signal(const std::string& sender, const std::string& interface, const std::string& member,
              const std::string& signature, const BusValues& values) {
    sd_bus_message* signal = nullptr;
    ASSERT_GE(sd_bus_message_new_signal(bus, &signal, "/org/freedesktop/DBus", interface.c_str(),
                                        member.c_str()),
              0);
    ASSERT_EQ(appendArguments(signal, signature, values), nullptr);
    send(BusMessage(signal), sender);
  }

  std::unique_ptr<BusConnection> connection;
  std::vector<Call> calls;
  // Of the last answer of the object.
  BusValues results;
  std::set<std::string> absent;

 private:
  void accept() {
    const int peer = ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC);
    ASSERT_GE(sd_bus_new(&bus), 0);
    ASSERT_GE(sd_bus_set_fd(bus, peer, peer), 0);
    ASSERT_GE(sd_bus_set_server(bus, 1, {}), 0);
    ASSERT_GE(sd_bus_add_filter(bus, nullptr, receive, this), 0);
    ASSERT_GE(sd_bus_start(bus), 0);
    ASSERT_GE(sd_bus_attach_event(bus, loop.handle(), 0), 0);
  }
  std::string ownerOf(const std::string& name) {
    if (name.starts_with(':') || name == "org.freedesktop.DBus") return name;
    const auto found = std::find(names.begin(), names.end(), name);
    const std::string owner = ":2." + std::to_string(found - names.begin());
    if (found == names.end()) names.push_back(name);
    return owner;
  }
  std::string nameOf(const std::string& owner) {
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const auto& name) { return ownerOf(name) == owner; });
    return found == names.end() ? owner : *found;
  }
  static int receive(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    static_cast<FakeBus*>(self)->receive(message);
    return 1;
  }
  void receive(sd_bus_message* message) {
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) {
      const sd_bus_error* error = sd_bus_message_get_error(message);
      answered = error == nullptr ? "ok" : error->name;
      results = readArguments(message).value();
      return;
    }
    Call call{nameOf(sd_bus_message_get_destination(message)), sd_bus_message_get_path(message),
              sd_bus_message_get_member(message), readArguments(message).value(),
              keepMessage(message)};
    if (call.member == "Hello") return answer(call, "s", {":1.7"});
    if (call.member == "AddMatch") return answer(call, "", {});
    if (call.member == "GetNameOwner") {
      const std::string& name = *call.arguments.front().text();
      return absent.contains(name) ? fail(call, BusNameHasNoOwner)
                                   : answer(call, "s", {ownerOf(name)});
    }
    calls.push_back(std::move(call));
  }
  void send(const BusMessage& message, const std::string& sender) {
    ASSERT_GE(sd_bus_message_set_sender(message.get(), sender.c_str()), 0);
    // Without a place for it, the library says that no answer is expected.
    std::uint64_t number = 0;
    ASSERT_GE(sd_bus_send(bus, message.get(), &number), 0);
    settle();
  }

  BusLoop& loop;
  const TemporaryDirectory directory;
  std::vector<std::string> names;
  FileDescriptor listener;
  std::shared_ptr<Cancelable> accepting;
  sd_bus* bus = nullptr;
  std::string answered;
};

}  // namespace quenlet
