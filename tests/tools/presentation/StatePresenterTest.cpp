#include "tools/presentation/StatePresenter.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/DonationFactory.h"
#include "tests/support/TemporaryDirectory.h"
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
      statesOf(std::make_shared<const DonationValues>(DonationValues{
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

  // What a file beside this one holds.
  static std::string golden(const std::string& name) {
    return readFile(QUENLET_SOURCES "/tests/tools/presentation/" + name);
  }
};

TEST_F(StatePresenterTest, ListsWithANumberAndAStateInFront) {
  StatePresenter::writeTable(out, {.width = 80}, stated);
  EXPECT_EQ(
      out.str(),
      "#  VALUE            STATE         BUNDLE    EXPIRES     KIND    LABEL  DONATION\n"
      "1  +1 202 555 0100  silenced      org.shop  1970-02-10  phone   home   s:tel\n"
      "2  Jo               silenced      org.shop  1970-02-20  name           s:n\n"
      "3  rob@x.org        shown         org.mail  1970-01-21  e-mail  home   m:1\n"
      "4  Rob@x.org        given before  org.bank  1970-03-02  e-mail  home   b:1\n"
      "5  eve@x.org        shown         org.bank  1970-03-02  e-mail  home   b:2\xEF\xBF\xBD\n");
}

TEST_F(StatePresenterTest, TellsProgramsOfTheStateAndTheOtherDonation) {
  StatePresenter::writeJSON(out, {stated[3]}, unlisted);
  EXPECT_EQ(out.str(),
            R"([{"kind":"emailAddress","value":"Rob@x.org","label":"home","origin":{)"
            R"("bundleIdentifier":"org.bank","donationIdentifier":"b:1",)"
            R"("donationDate":"1970-01-02T12:00:00Z","expirationDate":"1970-03-02T00:00:00Z"},)"
            R"("number":4,"state":"givenBefore","because":"org.mail gave it first","other":"m:1"},)"
            R"({"kind":"phoneNumber","value":"+1 202 555 0109","state":"rejected",)"
            R"("because":"You rejected it"},)"
            R"({"origin":{"bundleIdentifier":"org.file"},"state":"skipped","because":"Line 3"},)"
            R"({"kind":"imageData","origin":{"bundleIdentifier":"org.file",)"
            R"("donationIdentifier":"f:1","donationDate":"1970-01-02T12:00:00Z",)"
            R"("expirationDate":"1970-01-11T00:00:00Z"},"state":"expired","because":"It expired"}])"
            "\n");
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
