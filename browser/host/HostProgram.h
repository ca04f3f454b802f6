#pragma once

#include <optional>
#include <string_view>

#include "browser/host/BrowserHost.h"
#include "client/CorvelProxy.h"
#include "quenlet/Client.h"

namespace quenlet {

// The program between a browser and the agent: messages come on one descriptor and go on another.
// One thread.
class HostProgram final {
 public:
  HostProgram(int inputDescriptor, int outputDescriptor);
  HostProgram(const HostProgram&) = delete;
  HostProgram& operator=(const HostProgram&) = delete;

  // Serves until the browser closes the input or reads no more: null then. An error for what cannot
  // be a message, and for a failed system call.
  [[nodiscard]] ErrorPtr run();

 private:
  // Waits until something has come; tells where.
  enum class Came { requests, changes };
  [[nodiscard]] std::optional<Came> wait();
  void send(std::string_view message);
  void follow(std::function<void()> changed);
  void fail(ErrorPtr error);

  const int input;
  const int output;
  CorvelProxy agent;
  Client watcher;
  std::optional<int> changesDescriptor;
  BrowserHost host;
  ErrorPtr failure;
  bool isOver = false;
};

}  // namespace quenlet
