#include "platform/foundation/Future.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/foundation/Cancelable.h"

namespace quenlet {
namespace {

using Number = Future<int>;

const ErrorPtr trouble = makeError("test", 7, "trouble");

Future<std::string> spelled(const int& number) {
  return Future<std::string>::futureWithResult(std::to_string(number));
}

TEST(FutureTest, FirstCompletionCountsAndReachesEveryBlockOnce) {
  const Promise<int> promise;
  std::vector<int> seen;
  const auto note = [&](const Result<int>& outcome) { seen.push_back(outcome.left()); };
  promise.future().onCompletion(note);
  promise.future().onCompletion(note);
  EXPECT_TRUE(seen.empty());
  promise.succeed(1);
  promise.succeed(2);
  promise.fail(trouble);
  promise.future().onCompletion(note);
  EXPECT_EQ(seen, (std::vector{1, 1, 1}));
}

TEST(FutureTest, WaitsForAnotherThread) {
  for (int round = 0; round < 50; ++round) {
    const Promise<std::string> promise;
    std::thread completer([&] { promise.succeed("done"); });
    EXPECT_EQ(promise.future().result().left(), "done");
    completer.join();
  }
}

TEST(FutureTest, FlatMapGoesOnFromSuccessOnly) {
  const Promise<int> promise;
  const Future<std::string> text = promise.future().flatMap(spelled);
  promise.succeed(12);
  EXPECT_EQ(text.result().left(), "12");
  EXPECT_EQ(Number::futureWithError(trouble).flatMap(spelled).result().right(), trouble);
  const auto failing = [](int) { return Future<std::string>::futureWithError(trouble); };
  EXPECT_EQ(Number::futureWithResult(1).flatMap(failing).result().right(), trouble);
}

TEST(FutureTest, RecoverReplacesFailureOnly) {
  std::vector<ErrorPtr> errors;
  const auto replacement = [&](const ErrorPtr& error) {
    errors.push_back(error);
    return Number::futureWithResult(2);
  };
  EXPECT_EQ(Number::futureWithResult(1).recover(replacement).result().left(), 1);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(Number::futureWithError(trouble).recover(replacement).result().left(), 2);
  EXPECT_EQ(errors, std::vector{trouble});
}

TEST(FutureTest, BlockMayDropTheLastOwners) {
  auto promise = std::make_unique<Promise<std::string>>();
  std::string seen;
  promise->future().onCompletion([&](const Result<std::string>& outcome) {
    promise.reset();
    seen = outcome.left();
  });
  promise->succeed("long enough to be on the heap");
  EXPECT_EQ(seen, "long enough to be on the heap");

  auto future = std::make_unique<Number>(Number::futureWithResult(3));
  int number = 0;
  future->onCompletion([&](const Result<int>& outcome) {
    future.reset();
    number = outcome.left();
  });
  EXPECT_EQ(number, 3);
}

TEST(CancelBlockTest, RunsOnceForgetsItsBlockAndMayCancelItself) {
  auto owned = std::make_shared<int>(0);
  std::shared_ptr<Cancelable> token;
  token = std::make_shared<CancelBlock>([&token, owned] {
    ++*owned;
    token->cancel();
  });
  token->cancel();
  token->cancel();
  EXPECT_EQ(*owned, 1);
  EXPECT_EQ(owned.use_count(), 1);
}

}  // namespace
}  // namespace quenlet
