#include "tools/owner/CollectedDonor.h"

#include <gtest/gtest.h>

#include "tests/support/KeepingAgent.h"

namespace quenlet {
namespace {

class CollectedDonorTest : public testing::Test {
 protected:
  static DonationValuePtr value(const std::string& bundle, const std::string& identifier,
                                double date) {
    return email(identifier + "@example.org",
                 DonationOrigin{bundle, identifier, {}, Date(date), Date(1000)});
  }
  // "donated leftOut removed", or "!" and the error's code; then what is held and its dates.
  std::string replace(const DonationValues& values) {
    const auto collected = CollectedDonor::replace(agent, "donor", values, before);
    std::string text = collected.ok() ? std::to_string(collected.value().donated) + " " +
                                            std::to_string(collected.value().leftOut) + " " +
                                            std::to_string(collected.value().removed)
                                      : "!" + std::to_string(collected.error()->code());
    for (const DonationValuePtr& held : agent.held) {
      const DonationOrigin origin = held->decoded().origin;
      text += " " + origin.donationIdentifier +
              std::to_string(static_cast<int>(origin.donationDate.secondsSince1970()));
    }
    return text;
  }

  KeepingAgent agent;
  std::shared_ptr<const DonationValues> before = std::make_shared<const DonationValues>(
      DonationValues{value("donor", "a", 1), value("donor", "b", 1), value("other", "c", 1)});
};

TEST_F(CollectedDonorTest, TakesThePlaceOfAllThatTheDonorHadGivenBefore) {
  agent.held = *before;
  EXPECT_EQ(replace({value("donor", "b", 5), value("donor", "d", 5)}), "2 0 1 b5 c1 d5");
  agent.held.push_back(value("donor", "e", 3));
  EXPECT_EQ(replace({}), "0 0 0 b5 c1 d5 e3") << "what came since the list stays";
  before = std::make_shared<const DonationValues>(agent.held);
  EXPECT_EQ(replace({}), "0 0 3 c1") << "nothing any more";
}

TEST_F(CollectedDonorTest, RemovesWhatARejectedValueWasToReplace) {
  agent.held = *before;
  agent.rejectedIdentifiers = {"b"};
  EXPECT_EQ(replace({value("donor", "a", 5), value("donor", "b", 5)}), "1 1 1 a5 c1");
}

TEST_F(CollectedDonorTest, RemovesNothingUnlessTheDonationSucceeded) {
  agent.held = *before;
  agent.failure = makeError("domain", 7);
  agent.failing = 1;
  EXPECT_EQ(replace({value("donor", "d", 5)}), "!7 a1 b1 c1");
  agent.failing = 3;
  EXPECT_EQ(replace({value("donor", "d", 5)}), "!7 a1 b1 c1 d5") << "told when it does not finish";
}

}  // namespace
}  // namespace quenlet
