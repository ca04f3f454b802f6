#include "bus/BusConnection.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "bus/BusError.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {

// What a connection consists of. Slots outlive it, without effect.
struct BusConnection::State final {
  State(BusLoop& attached, const BusLimits& given) : loop(attached), limits(given) {}
  ~State();
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  BusLoop& loop;
  sd_bus* bus = nullptr;
  const BusLimits limits;
  std::set<std::shared_ptr<Slot>> slots;
};

// A call under way, or a subscription; kept by the connection until it is over.
class BusConnection::Slot final : public Cancelable, public std::enable_shared_from_this<Slot> {
 public:
  using Handler = std::function<void(sd_bus_message* message)>;

  Slot(State& connection, Handler called, bool once)
      : state(&connection), handler(std::move(called)), isOnce(once) {}

  void cancel() override {
    slot = sd_bus_slot_unref(slot);
    handler = nullptr;
    // The last step: it can be the last reference.
    if (state != nullptr) std::exchange(state, nullptr)->slots.erase(shared_from_this());
  }
  void leaveConnection() {
    state = nullptr;
    cancel();
  }
  // The library's callback; `self` is a Slot.
  static int receive(sd_bus_message* message, void* self, sd_bus_error*) {
    const auto kept = static_cast<Slot*>(self)->shared_from_this();
    const Handler called = kept->handler;
    if (kept->isOnce) kept->cancel();
    if (called) runGuarded(called, message);
    return 0;
  }

  sd_bus_slot* slot = nullptr;

 private:
  State* state;
  Handler handler;
  const bool isOnce;
};

BusConnection::State::~State() {
  for (const auto& slot : std::exchange(slots, {})) slot->leaveConnection();
  sd_bus_flush_close_unref(bus);
}

namespace {

Result<BusMessage> makeCall(sd_bus* bus, const BusCall& called) {
  sd_bus_message* created = nullptr;
  const int result =
      sd_bus_message_new_method_call(bus, &created, called.destination.c_str(), called.path.c_str(),
                                     called.interface.c_str(), called.member.c_str());
  if (result < 0) return Result<BusMessage>::failure(makePosixError(-result, "make a call"));
  BusMessage message(created);
  if (called.autoStart == AutoStart::off) sd_bus_message_set_auto_start(created, 0);
  ErrorPtr error = appendArguments(created, called.signature, called.arguments);
  if (error) return Result<BusMessage>::failure(std::move(error));
  return Result<BusMessage>::success(std::move(message));
}

std::string textOrEmpty(const char* text) { return text == nullptr ? "" : text; }

Result<BusValues> answerOfAnother() {
  return Result<BusValues>::failure(makePosixError(EBADMSG, "take an answer from another"));
}

// Throws for what cannot stand between apostrophes: no name or path holds one.
std::string ruleFor(const BusSignalMatch& match) {
  std::string rule = "type='signal'";
  using Part = std::pair<const char*, const std::string*>;
  for (const auto& [key, text] : {Part{"sender", &match.sender},
                                  {"path", &match.path},
                                  {"interface", &match.interface},
                                  {"member", &match.member},
                                  {"arg0", &match.firstArgument}}) {
    if (text->empty()) continue;
    if (text->find_first_of("'\\") != std::string::npos) {
      throw std::system_error(EINVAL, std::generic_category(), "await a signal");
    }
    rule.append(",").append(key).append("='").append(*text).append("'");
  }
  return rule;
}

std::string escapedInAddress(std::string_view path) {
  constexpr std::string_view plain = "-_/.*\\";
  constexpr std::string_view digits = "0123456789abcdef";
  std::string escaped;
  for (const char character : path) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80 && (std::isalnum(byte) != 0 || plain.find(character) != plain.npos)) {
      escaped += character;
    } else {
      escaped += {'%', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return escaped;
}

}  // namespace

BusCall callOfBus(std::string member, std::string signature, BusValues arguments) {
  return {.destination = BusName,
          .path = BusPath,
          .interface = BusName,
          .member = std::move(member),
          .signature = std::move(signature),
          .arguments = std::move(arguments)};
}

// An answer, and who sent it: nobody for what the library says itself, as when the time is up.
struct BusConnection::Reply final {
  std::string sender;
  Result<BusValues> arguments;

  [[nodiscard]] static Reply read(sd_bus_message* reply, const BusLimits& limits) {
    const std::string sender = textOrEmpty(sd_bus_message_get_sender(reply));
    if (const sd_bus_error* error = sd_bus_message_get_error(reply)) {
      return {sender, Result<BusValues>::failure(makeBusError(*error))};
    }
    return {sender, readArguments(reply, limits)};
  }
  [[nodiscard]] bool isRefusalOfBus() const {
    return !arguments.ok() && (sender.empty() || sender == BusName);
  }
};

// A call of a name. Its owner is found first, and started if need be, and then called by its unique
// name: who answers is known from the start, also if they leave the bus at once.
class BusConnection::NamedCall final : public Cancelable {
 public:
  explicit NamedCall(BusCall wanted) : called(std::move(wanted)) {}

  void cancel() override {
    if (const auto ended = std::exchange(current, nullptr)) ended->cancel();
  }
  // What is left of the limit for all steps. Never 0: the library would take its own limit.
  [[nodiscard]] std::chrono::milliseconds timeLeft() const {
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - begun);
    return std::max(called.timeLimit - passed, std::chrono::milliseconds(1));
  }

  // A call of the bus within that limit.
  [[nodiscard]] BusCall step(std::string member, std::string signature, BusValues arguments) const {
    BusCall call = callOfBus(std::move(member), std::move(signature), std::move(arguments));
    call.timeLimit = timeLeft();
    return call;
  }

  const BusCall called;
  const std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();
  // The step under way, which alone holds the handler: that may hold this call.
  std::shared_ptr<Cancelable> current;
};

BusConnection::BusConnection(std::unique_ptr<State> opened) : state(std::move(opened)) {}

BusConnection::~BusConnection() = default;

sd_bus* BusConnection::handle() const { return state->bus; }

std::string BusConnection::uniqueName() const {
  const char* name = nullptr;
  return sd_bus_get_unique_name(state->bus, &name) < 0 ? "" : name;
}

BusConnection::Opened BusConnection::attach(BusLoop& loop, sd_bus* opened,
                                            const BusLimits& limits) {
  auto state = std::make_unique<State>(loop, limits);
  state->bus = opened;
  sd_bus_set_exit_on_disconnect(opened, 1);
  const int result = sd_bus_attach_event(opened, loop.handle(), SD_EVENT_PRIORITY_NORMAL);
  if (result < 0) return Opened::failure(makePosixError(-result, "attach a bus to the loop"));
  return Opened::success(std::unique_ptr<BusConnection>(new BusConnection(std::move(state))));
}

BusConnection::Opened BusConnection::toUserBus(BusLoop& loop, const BusLimits& limits) {
  if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS")) {
    return toAddress(loop, address, limits);
  }
  const char* directory = std::getenv("XDG_RUNTIME_DIR");
  if (directory == nullptr) {
    return Opened::failure(makePosixError(ENOMEDIUM, "connect to the user's bus"));
  }
  return toAddress(loop, "unix:path=" + escapedInAddress(directory) + "/bus", limits);
}

BusConnection::Opened BusConnection::toSystemBus(BusLoop& loop, const BusLimits& limits) {
  const char* address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
  return toAddress(loop, address == nullptr ? "unix:path=/run/dbus/system_bus_socket" : address,
                   limits);
}

BusConnection::Opened BusConnection::toAddress(BusLoop& loop, const std::string& address,
                                               const BusLimits& limits) {
  sd_bus* bus = nullptr;
  int result = sd_bus_new(&bus);
  if (result >= 0) result = sd_bus_set_address(bus, address.c_str());
  if (result >= 0) result = sd_bus_set_bus_client(bus, 1);
  if (result >= 0) result = sd_bus_negotiate_fds(bus, 0);
  if (result >= 0) result = sd_bus_start(bus);
  if (result >= 0) return attach(loop, bus, limits);
  sd_bus_unref(bus);
  return Opened::failure(makePosixError(-result, "connect to a bus"));
}

std::shared_ptr<Cancelable> BusConnection::call(const BusCall& called, ReplyHandler handler) {
  if (called.destination == BusName || called.destination.starts_with(':')) {
    return callOwner(called, std::move(handler));
  }
  const auto call = std::make_shared<NamedCall>(called);
  findOwner(call, called.autoStart, handler);
  return call;
}

std::shared_ptr<Cancelable> BusConnection::callOwner(const BusCall& called, ReplyHandler handler) {
  const std::string& name = called.destination;
  return send(called, [name, handler = std::move(handler)](const Reply& reply) {
    const bool isItsOwn = reply.sender == name || reply.isRefusalOfBus();
    handler(isItsOwn ? reply.arguments : answerOfAnother());
  });
}

void BusConnection::findOwner(const std::shared_ptr<NamedCall>& call, AutoStart start,
                              const ReplyHandler& handler) {
  call->current = callOwner(
      call->step("GetNameOwner", "s", {call->called.destination}),
      [this, call, start, handler](const Result<BusValues>& answer) {
        if (start == AutoStart::on && !answer.ok() && isAbsence(*answer.error())) {
          return startOwner(call, handler);
        }
        const auto* owner =
            !answer.ok() || answer.value().empty() ? nullptr : answer.value().front().text();
        if (owner == nullptr) {
          return handler(answer.ok() ? answerOfAnother() : answer);
        }
        BusCall direct = call->called;
        direct.destination = *owner;
        direct.timeLimit = call->timeLeft();
        call->current = callOwner(direct, handler);
      });
}

void BusConnection::startOwner(const std::shared_ptr<NamedCall>& call,
                               const ReplyHandler& handler) {
  constexpr std::uint32_t noFlags = 0;
  call->current =
      callOwner(call->step("StartServiceByName", "su", {call->called.destination, noFlags}),
                [this, call, handler](const Result<BusValues>& answer) {
                  if (!answer.ok()) return handler(answer);
                  findOwner(call, AutoStart::off, handler);
                });
}

std::shared_ptr<Cancelable> BusConnection::send(const BusCall& called, AnyReplyHandler handler) {
  const auto failLater = [&](ErrorPtr error) {
    return state->loop.after(0, [handler, error = std::move(error)] {
      handler({{}, Result<BusValues>::failure(error)});
    });
  };
  const Result<BusMessage> message = makeCall(state->bus, called);
  if (!message.ok()) return failLater(message.error());
  const auto slot = std::make_shared<Slot>(
      *state,
      [limits = state->limits, handler](sd_bus_message* reply) {
        handler(Reply::read(reply, limits));
      },
      true);
  const auto limit = std::chrono::duration_cast<std::chrono::microseconds>(called.timeLimit);
  const int result =
      sd_bus_call_async(state->bus, &slot->slot, message.value().get(), &Slot::receive, slot.get(),
                        static_cast<std::uint64_t>(limit.count()));
  if (result < 0) return failLater(makePosixError(-result, "call a method"));
  state->slots.insert(slot);
  return slot;
}

std::shared_ptr<Cancelable> BusConnection::onSignal(const BusSignalMatch& match,
                                                    SignalHandler handler) {
  const auto slot = std::make_shared<Slot>(
      *state,
      [limits = state->limits, isOfBus = match.sender == BusName,
       handler = std::move(handler)](sd_bus_message* signal) {
        const std::string sender = textOrEmpty(sd_bus_message_get_sender(signal));
        // To the library, anybody may have the name.
        if (isOfBus && sender != BusName) return;
        auto arguments = readArguments(signal, limits);
        if (!arguments.ok()) return;
        handler({sender, textOrEmpty(sd_bus_message_get_path(signal)),
                 textOrEmpty(sd_bus_message_get_member(signal)), std::move(arguments).takeValue()});
      },
      false);
  const int result = sd_bus_add_match_async(state->bus, &slot->slot, ruleFor(match).c_str(),
                                            &Slot::receive, nullptr, slot.get());
  if (result < 0) throw std::system_error(-result, std::generic_category(), "await a signal");
  state->slots.insert(slot);
  return slot;
}

std::shared_ptr<Cancelable> BusConnection::onOwnerChange(
    const std::string& name, std::function<void(const std::string& owner)> handler) {
  return onSignal({.sender = BusName,
                   .path = BusPath,
                   .interface = BusName,
                   .member = "NameOwnerChanged",
                   .firstArgument = name},
                  [handler = std::move(handler)](const BusSignal& signal) {
                    if (signal.arguments.size() != 3) return;
                    const std::string* owner = signal.arguments.back().text();
                    if (owner != nullptr) handler(*owner);
                  });
}

ErrorPtr BusConnection::emit(const BusSignal& signal, const std::string& interface,
                             const std::string& signature, const std::string& destination) {
  sd_bus_message* created = nullptr;
  int result = sd_bus_message_new_signal(state->bus, &created, signal.path.c_str(),
                                         interface.c_str(), signal.member.c_str());
  const BusMessage message(created);
  if (result >= 0) {
    if (ErrorPtr error = appendArguments(created, signature, signal.arguments)) return error;
    if (!destination.empty()) sd_bus_message_set_destination(created, destination.c_str());
    result = sd_bus_send(state->bus, created, nullptr);
  }
  return result < 0 ? makePosixError(-result, "send a signal") : nullptr;
}

}  // namespace quenlet
