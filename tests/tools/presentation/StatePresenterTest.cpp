#include "tools/presentation/StatePresenter.h"

#include <gtest/gtest.h>

#include "tests/support/DonationFactory.h"
#include "tests/support/GoldenFile.h"
#include "tools/presentation/ReasonPresenter.h"

namespace quenlet {
namespace {

using Names = PersonNameComponents;

constexpr double aDay = 86400;

DonationOrigin until(const char* bundle, const char* identifier, int onDay,
                     std::optional<std::string> cluster = {}) {
  return {bundle, identifier, std::move(cluster), Date(1.5 * aDay), Date(onDay * aDay)};
}

class StatePresenterTest : public testing::Test {
 protected:
  const StatedDonations stated =
      statesOf(listOf({
                   phone("+1 202 555 0100", until("org.shop", "s:tel", 40, "c")),
                   named({.givenName = "Jo"}, until("org.shop", "s:n", 50)),
                   email("rob@x.org", until("org.mail", "m:1", 20)),
                   email("Rob@x.org", until("org.bank", "b:1", 60)),
                   email("eve@x.org", until("org.bank", "b:2\n", 60)),
               }),
               {.name = Names{.givenName = "Rob"}});
  const std::vector<UnlistedValue> unlisted = {
      {DonationState::rejected, "You rejected it", Value::phoneNumber("+1 202 555 0109", "")},
      {DonationState::skipped, "Line 3", {}, nullptr, "org.file"},
      {DonationState::expired, "It expired", Value::imageData(std::make_shared<std::string>()),
       image("", until("org.file", "f:1", 10)), "org.file"},
  };
  std::ostringstream out;

  static std::string golden(const std::string& name) {
    return goldenFile("tests/tools/presentation/" + name);
  }
};

TEST_F(StatePresenterTest, ListsWithANumberAndAStateInFront) {
  StatePresenter::writeTable(out, {.width = 80}, stated);
  EXPECT_EQ(out.str(), golden("list.txt"));
}

TEST_F(StatePresenterTest, TellsProgramsOfTheStateAndTheOtherDonation) {
  StatePresenter::writeJSON(out, {stated[3]}, unlisted);
  EXPECT_EQ(out.str(), goldenLine("tests/tools/presentation/list.json"));
}

TEST_F(StatePresenterTest, GroupsByStateAndReason) {
  ReasonPresenter::writeGrouped(out, {.width = 60}, stated, unlisted);
  EXPECT_EQ(out.str(), golden("why.txt"));
}

TEST_F(StatePresenterTest, TellsOfEachValueByItself) {
  ReasonPresenter::writeEach(out, {.width = 66}, Date(30 * aDay), {stated[2], stated[0]}, unlisted);
  EXPECT_EQ(out.str(), golden("why-each.txt"));
}

}  // namespace
}  // namespace quenlet
