#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "bus/BusArguments.h"
#include "bus/BusLoop.h"
#include "bus/BusMessage.h"
#include "platform/foundation/Cancelable.h"
#include "quenlet/Result.h"

namespace quenlet {

// Whether the bus may start a program to have the name that is called. Off for the daemons of
// others: some of them cost more memory than all of ours.
enum class AutoStart { off, on };

// A call of a method. A value type.
struct BusCall final {
  std::string destination = {};
  std::string path = {};
  std::string interface = {};
  std::string member = {};
  std::string signature = {};
  BusValues arguments = {};
  std::chrono::milliseconds timeLimit{5'000};
  AutoStart autoStart = AutoStart::off;
};

// The bus itself, as it calls itself.
inline constexpr char BusName[] = "org.freedesktop.DBus";
inline constexpr char BusPath[] = "/org/freedesktop/DBus";
// A call of the bus itself.
[[nodiscard]] BusCall callOfBus(std::string member, std::string signature, BusValues arguments);

// Which signals; what is empty matches all. A value type.
struct BusSignalMatch final {
  std::string sender = {};
  std::string path = {};
  std::string interface = {};
  std::string member = {};
  std::string firstArgument = {};
};

// What a handler is told of a signal.
struct BusSignal final {
  std::string sender = {};  // the unique name
  std::string path = {};
  std::string member = {};
  BusValues arguments = {};
};

// One connection to a message bus. Nothing waits: replies and signals come on the loop, and when
// the bus ends the connection, the loop's run() returns an error. It takes no file descriptors:
// closing one that a peer has sent may wait for that peer. Use on the loop's thread only.
// The loop must outlive it.
class BusConnection final {
 public:
  using Opened = Result<std::unique_ptr<BusConnection>>;
  using ReplyHandler = std::function<void(Result<BusValues> arguments)>;
  using SignalHandler = std::function<void(const BusSignal& signal)>;

  // An error when there is no such bus. `limits` are for all that peers send.
  [[nodiscard]] static Opened toUserBus(BusLoop& loop, const BusLimits& limits = {});
  [[nodiscard]] static Opened toSystemBus(BusLoop& loop, const BusLimits& limits = {});
  // An address as in "unix:path=/run/user/1000/bus".
  [[nodiscard]] static Opened toAddress(BusLoop& loop, const std::string& address,
                                        const BusLimits& limits = {});
  ~BusConnection();
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  // Calls a method. The handler is called once, never within this operation, with what was
  // answered: an error of BusErrorDomain for an error reply, NoReply after the time limit. Not
  // called after the token was cancelled, or when the connection is destroyed. It is the owner that
  // the name has now, or gets by being started, who is called. An answer of another is an error:
  // neither the library nor a session's usual bus looks who answers, so that any peer could.
  std::shared_ptr<Cancelable> call(const BusCall& called, ReplyHandler handler);
  // Calls the handler for each such signal until the token is cancelled. A signal that is larger
  // than the limits is dropped. Of senders, only unique names and the bus itself are certain: peers
  // can send what looks like another name's. Throws std::system_error for a match that no rule can
  // express.
  std::shared_ptr<Cancelable> onSignal(const BusSignalMatch& match, SignalHandler handler);
  // Calls the handler whenever somebody else, or nobody, has the name; `owner` is the unique name,
  // or empty.
  std::shared_ptr<Cancelable> onOwnerChange(const std::string& name,
                                            std::function<void(const std::string& owner)> handler);

  // Sends a signal to everybody, or to one peer by its unique name.
  [[nodiscard]] ErrorPtr emit(const BusSignal& signal, const std::string& interface,
                              const std::string& signature, const std::string& destination = {});

  // As in ":1.42". Waits for the bus if nothing was received from it yet.
  [[nodiscard]] std::string uniqueName() const;
  // For objects and messages of the caller's own.
  [[nodiscard]] sd_bus* handle() const;

 private:
  struct State;
  class Slot;
  struct Reply;
  class NamedCall;
  explicit BusConnection(std::unique_ptr<State> opened);
  // The handler is also told who answered.
  using AnyReplyHandler = std::function<void(const Reply& reply)>;
  std::shared_ptr<Cancelable> send(const BusCall& called, AnyReplyHandler handler);
  // A call of the bus itself, or of a unique name.
  std::shared_ptr<Cancelable> callOwner(const BusCall& called, ReplyHandler handler);
  void findOwner(const std::shared_ptr<NamedCall>& call, AutoStart start,
                 const ReplyHandler& handler);
  void startOwner(const std::shared_ptr<NamedCall>& call, const ReplyHandler& handler);
  [[nodiscard]] static Opened attach(BusLoop& loop, sd_bus* opened, const BusLimits& limits);

  const std::unique_ptr<State> state;
};

}  // namespace quenlet
