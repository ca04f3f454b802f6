#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/foundation/Mutex.h"
#include "quenlet/Result.h"

namespace quenlet {

// A result that may still be under way. Thread-safe. Copies share one result, which never changes
// once it is set. A Future whose Promise is dropped without an answer never completes.
//
// Blocks given to onCompletion(), flatMap() and recover() run on the thread that completes the
// future, or at once on the calling thread when it is already complete; no lock is held.
template <typename T>
class Future final {
 public:
  using Value = T;
  using CompletionBlock = std::function<void(const Result<T>&)>;

  [[nodiscard]] static Future futureWithResult(T result) {
    return completed(Result<T>::success(std::move(result)));
  }
  [[nodiscard]] static Future futureWithError(ErrorPtr error) {
    return completed(Result<T>::failure(std::move(error)));
  }

  // Waits until the future is complete. Deadlocks on a thread that has to complete it.
  [[nodiscard]] const Result<T>& result() const& {
    State& shared = *state;
    MutexLock lock(shared.mutex);
    while (!shared.outcome) shared.changed.wait(shared.mutex);
    return *shared.outcome;
  }
  // A temporary may be the last owner of its result, so it returns a copy.
  [[nodiscard]] Result<T> result() && { return std::as_const(*this).result(); }

  void onCompletion(CompletionBlock block) const {
    // The block may drop this future while it still reads the outcome.
    const std::shared_ptr<State> shared = state;
    if (shared->addWaiting(block)) return;
    block(shared->settled());
  }

  // On success, the future returned by `next` (const T& -> Future<U>); a failure is passed on.
  template <typename Next>
  [[nodiscard]] auto flatMap(Next next) const -> decltype(next(std::declval<const T&>()));

  // On failure, the future returned by `replacement` (const ErrorPtr& -> Future<T>).
  [[nodiscard]] Future recover(std::function<Future(const ErrorPtr&)> replacement) const;

 private:
  template <typename U>
  friend class Future;
  template <typename U>
  friend class Promise;

  struct State {
    Mutex mutex;
    ConditionVariable changed;
    std::optional<Result<T>> outcome GUARDED_BY(mutex);
    std::vector<CompletionBlock> waiting GUARDED_BY(mutex);

    // Keeps `block` for later; false, leaving it alone, when the outcome is already there.
    bool addWaiting(CompletionBlock& block) {
      MutexLock lock(mutex);
      if (outcome) return false;
      waiting.push_back(std::move(block));
      return true;
    }

    void complete(Result<T> result) {
      std::vector<CompletionBlock> blocks;
      {
        MutexLock lock(mutex);
        if (outcome) return;
        outcome.emplace(std::move(result));
        blocks.swap(waiting);
        changed.notifyAll();
      }
      for (const CompletionBlock& block : blocks) block(settled());
    }

    // Once set, the outcome never changes, so reading it needs no lock.
    const Result<T>& settled() const QUENLET_ATTRIBUTE(no_thread_safety_analysis) {
      return *outcome;
    }
  };

  explicit Future(std::shared_ptr<State> shared) : state(std::move(shared)) {}

  static Future completed(Result<T> result) {
    Future future(std::make_shared<State>());
    future.state->complete(std::move(result));
    return future;
  }

  std::shared_ptr<State> state;
};

// The side of a Future that completes it. Thread-safe; only the first completion has an effect.
template <typename T>
class Promise final {
 public:
  Promise() : state(std::make_shared<typename Future<T>::State>()) {}

  [[nodiscard]] Future<T> future() const { return Future<T>(state); }
  void complete(Result<T> result) const {
    // A block may drop this promise while the others still wait for their turn.
    const std::shared_ptr<typename Future<T>::State> shared = state;
    shared->complete(std::move(result));
  }
  void succeed(T result) const { complete(Result<T>::success(std::move(result))); }
  void fail(ErrorPtr error) const { complete(Result<T>::failure(std::move(error))); }

 private:
  std::shared_ptr<typename Future<T>::State> state;
};

template <typename T>
template <typename Next>
auto Future<T>::flatMap(Next next) const -> decltype(next(std::declval<const T&>())) {
  using Chained = decltype(next(std::declval<const T&>()));
  auto chained = std::make_shared<typename Chained::State>();
  onCompletion([chained, next = std::move(next)](const Result<T>& outcome) {
    if (!outcome.ok()) {
      chained->complete(Result<typename Chained::Value>::failure(outcome.error()));
      return;
    }
    next(outcome.value()).onCompletion([chained](const auto& result) {
      chained->complete(result);
    });
  });
  return Chained(chained);
}

template <typename T>
Future<T> Future<T>::recover(std::function<Future(const ErrorPtr&)> replacement) const {
  auto recovered = std::make_shared<State>();
  onCompletion([recovered, replacement = std::move(replacement)](const Result<T>& outcome) {
    if (outcome.ok()) {
      recovered->complete(outcome);
      return;
    }
    replacement(outcome.error()).onCompletion([recovered](const Result<T>& result) {
      recovered->complete(result);
    });
  });
  return Future(recovered);
}

}  // namespace quenlet
