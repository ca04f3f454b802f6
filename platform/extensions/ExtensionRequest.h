#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/ipc/WireEncoder.h"
#include "platform/scheduling/Scheduler.h"
#include "quenlet/Result.h"

namespace quenlet {

// One request to an extension, with its completion. Completes exactly once: if it is destroyed
// before, it fails with hostGone. One thread at a time.
class ExtensionRequest final {
 public:
  using Encode = std::function<void(WireEncoder& encoder)>;
  // The encoded, validated reply values, or the error.
  using Completion = std::function<void(Result<std::string> reply)>;

  // `encodeArguments` is called when the request is sent.
  ExtensionRequest(std::string operation, Encode encodeArguments, Completion whenAnswered);
  // Only asks for the program to be started; the reply is empty.
  [[nodiscard]] static std::shared_ptr<ExtensionRequest> toStart(Completion whenStarted);
  ~ExtensionRequest();
  ExtensionRequest(const ExtensionRequest&) = delete;
  ExtensionRequest& operator=(const ExtensionRequest&) = delete;

  [[nodiscard]] bool isToStart() const { return selector.empty(); }
  [[nodiscard]] const std::string& operation() const { return selector; }
  [[nodiscard]] std::string encodedArguments() const;

  // Calls after the first one are ignored.
  void complete(Result<std::string> reply);
  void fail(ErrorPtr error);
  // Fails all of them on `scheduler`, since there may be many.
  static void failAll(std::vector<std::shared_ptr<ExtensionRequest>> requests, ErrorPtr error,
                      Scheduler& scheduler);

 private:
  const std::string selector;
  const Encode encode;
  Completion completion;
};

using ExtensionRequestPtr = std::shared_ptr<ExtensionRequest>;

}  // namespace quenlet
