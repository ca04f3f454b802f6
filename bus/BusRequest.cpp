#include "bus/BusRequest.h"

#include "bus/BusError.h"

namespace quenlet {

BusRequest::BusRequest(sd_bus_message* call) : message(keepMessage(call)) {}

BusRequest::~BusRequest() {
  if (message) fail(BusNoReply, "the request was dropped");
}

std::string BusRequest::sender() const {
  const char* name = message ? sd_bus_message_get_sender(message.get()) : nullptr;
  return name == nullptr ? "" : name;
}

std::string BusRequest::member() const {
  const char* name = message ? sd_bus_message_get_member(message.get()) : nullptr;
  return name == nullptr ? "" : name;
}

Result<BusValues> BusRequest::arguments(const BusLimits& limits) const {
  return readArguments(message.get(), limits);
}

void BusRequest::reply(const std::string& signature, const BusValues& values) {
  if (!message) return;
  sd_bus_message* created = nullptr;
  int result = sd_bus_message_new_method_return(message.get(), &created);
  const BusMessage answer(created);
  if (result >= 0 && !appendArguments(created, signature, values)) {
    result = sd_bus_send(nullptr, created, nullptr);
    if (result >= 0) return message.reset();
  }
  fail(BusLimitsExceeded, "the answer cannot be sent as one message");
}

void BusRequest::fail(const std::string& errorName, const std::string& text) {
  if (!message) return;
  // Nobody is left to tell when this fails, too: the connection has ended.
  static_cast<void>(
      sd_bus_reply_method_errorf(message.get(), errorName.c_str(), "%s", text.c_str()));
  message.reset();
}

}  // namespace quenlet
