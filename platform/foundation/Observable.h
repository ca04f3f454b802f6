#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/foundation/Cancelable.h"
#include "quenlet/Error.h"

namespace quenlet {

// A subscriber's callbacks. An absent block is not called.
template <typename T>
struct Observer final {
  std::function<void(const T&)> resultBlock;
  std::function<void()> completionBlock;
  std::function<void(const ErrorPtr&)> failureBlock;

  [[nodiscard]] static Observer observerWithResultBlock(std::function<void(const T&)> result) {
    return {std::move(result), nullptr, nullptr};
  }
  [[nodiscard]] static Observer observerWithResultBlock(
      std::function<void(const T&)> result, std::function<void()> completionBlock,
      std::function<void(const ErrorPtr&)> failureBlock) {
    return {std::move(result), std::move(completionBlock), std::move(failureBlock)};
  }
};

// A sequence of values for its subscribers: any number of results, then at most one completion or
// failure. Each implementation states the thread on which it delivers, and whether it delivers
// during subscribe().
template <typename T>
class Observable {
 public:
  virtual ~Observable() = default;
  // Starts delivery to `observer`, until the returned token is cancelled.
  [[nodiscard]] virtual std::shared_ptr<Cancelable> subscribe(Observer<T> observer) = 0;
};

}  // namespace quenlet
