#include "platform/foundation/Future.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/Cancelable.h"

namespace quenlet {
namespace {

using Number = Future<int>;
using Text = Future<std::string>;

const ErrorPtr trouble = makeError("test", 7, "trouble");

TEST(FutureTest, FirstCompletionCountsAndReachesEveryBlockOnce) {
  const Promise<int> promise;
  std::vector<int> seen;
  const auto note = [&](const Result<int>& outcome) { seen.push_back(outcome.left()); };
  promise.future().onCompletion(note);
  promise.succeed(1);
  promise.succeed(2);
  promise.fail(trouble);
  promise.future().onCompletion(note);
  EXPECT_EQ(seen, (std::vector{1, 1}));
}

TEST(FutureTest, FlatMapGoesOnFromSuccessAndRecoverFromFailure) {
  const auto spelled = [](int number) { return Text::futureWithResult(std::to_string(number)); };
  const auto failing = [](int) { return Text::futureWithError(trouble); };
  const auto two = [](const ErrorPtr& error) {
    return error == trouble ? Number::futureWithResult(2) : Number::futureWithError(error);
  };
  const Number good = Number::futureWithResult(1), bad = Number::futureWithError(trouble);
  EXPECT_EQ(good.flatMap(spelled).result().left(), "1");
  EXPECT_EQ(good.flatMap(failing).result().right(), trouble);
  EXPECT_EQ(bad.flatMap(spelled).result().right(), trouble);
  EXPECT_EQ(good.recover(two).result().left(), 1);
  EXPECT_EQ(bad.recover(two).result().left(), 2);
}

TEST(FutureTest, BlockMayDropTheLastOwners) {
  for (const bool completedBefore : {false, true}) {
    auto promise = std::make_unique<Promise<std::string>>();
    auto future = std::make_unique<Text>(promise->future());
    if (completedBefore) promise->succeed("long enough to be on the heap");
    std::string seen;
    future->onCompletion([&](const Result<std::string>& outcome) {
      promise.reset();
      future.reset();
      seen = outcome.left();
    });
    if (!completedBefore) promise->succeed("long enough to be on the heap");
    EXPECT_EQ(seen, "long enough to be on the heap");
  }
}

TEST(CancelBlockTest, RunsOnceForgetsItsBlockAndMayCancelItself) {
  auto owned = std::make_shared<int>(0);
  std::shared_ptr<Cancelable> token;
  token = std::make_shared<CancelBlock>([&token, owned] {
    ++*owned;
    token->cancel();
  });
  token->cancel();
  EXPECT_EQ(*owned, 1);
  EXPECT_EQ(owned.use_count(), 1);
}

}  // namespace
}  // namespace quenlet
