#include "core/ProductionEnvironment.h"

#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

class ProductionEnvironmentTest : public EnvironmentTest {};

TEST_F(ProductionEnvironmentTest, KeepsWhatItMadeOrWasGiven) {
  ProductionEnvironment first;
  ProductionEnvironment second;
  EXPECT_EQ(first.logger(), environment->logger());
  const auto made = first.feedbackStore();
  EXPECT_EQ(first.feedbackStore(), made);
  EXPECT_NE(second.feedbackStore(), made);
  second.setFeedbackStore(environment->feedback);
  EXPECT_EQ(second.feedbackStore(), environment->feedback);
  second.setSchedulerProvider(nullptr);
  EXPECT_EQ(second.schedulerProvider(), environment->schedulerProvider());
}

}  // namespace
}  // namespace quenlet
