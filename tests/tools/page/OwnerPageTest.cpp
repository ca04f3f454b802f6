#include "tools/page/OwnerPage.h"

#include <gmock/gmock.h>

#include "platform/foundation/Base64.h"
#include "platform/foundation/SHA256.h"
#include "tests/support/DonationFactory.h"
#include "tools/page/CardValues.h"
#include "tools/page/DonationGroups.h"

namespace quenlet {
namespace {

using namespace testing;

Date noonOf(const std::string& text) { return *Date::fromISO8601(text + "T12:00:00Z"); }

DonationOrigin given(const std::string& bundle, const std::string& identifier,
                     const std::string& expires, std::optional<std::string> cluster = {}) {
  return {bundle, identifier, std::move(cluster), noonOf("2026-11-02"), noonOf(expires)};
}

std::shared_ptr<Contact> ownCard() {
  ContactFields fields;
  fields.givenName = "Ann";
  fields.familyName = "Berg";
  fields.emailAddresses.append(std::make_shared<const LabeledValue<std::string>>(
      LabeledValue<std::string>{"work", "Ann@example.org", {}}));
  fields.phoneNumbers.append(std::make_shared<const LabeledValue<PhoneNumber>>(
      LabeledValue<PhoneNumber>{"home", *PhoneNumber::withStringValue("+49 30 1234567"), {}}));
  return std::make_shared<Contact>(std::move(fields));
}

// The page's own account of who gave what, in short.
std::string summaryOf(const SomeDonations& donations) {
  std::string text;
  for (const PageDonation* donation : donations) {
    if (!text.empty()) text += ' ';
    text += donation->origin.donationIdentifier;
  }
  return text;
}

// With an own card when `ownContact` is not null.
PageContent contentOf(DonationValues values, ContactPtr ownContact = nullptr) {
  OwnCard own;
  own.contact = std::move(ownContact);
  if (own.contact) {
    own.name = PersonNameComponents::componentsForContact(*own.contact);
    own.emailAddresses = {"ann@example.org"};
  }
  const auto list = listOf(std::move(values));
  return {noonOf("2026-11-26"), {.own = own, .listed = statesOf(list, own)}};
}

TEST(OwnerPageTest, PolicyNamesTheDigestOfTheOneStyleSheet) {
  const std::string page = OwnerPage::of(contentOf({}));
  constexpr std::string_view begin = "<style>";
  const std::size_t start = page.find(begin) + begin.size();
  const std::size_t end = page.find("</style>");
  ASSERT_LT(start, end);
  std::string policy = "default-src 'none'; img-src data:; style-src 'sha256-";
  appendBase64(policy, sha256(std::string_view(page).substr(start, end - start)));
  // The apostrophes of the policy are escaped as those of any value.
  for (std::size_t at = 0; (at = policy.find('\'', at)) != std::string::npos; at += 5) {
    policy.replace(at, 1, "&#39;");
  }
  EXPECT_THAT(page, HasSubstr("content=\"" + policy + "&#39;; base-uri"));
  EXPECT_EQ(page.find("<style", end), std::string::npos);
  EXPECT_THAT(page, HasSubstr("Your card is empty"));
}

TEST(OwnerPageTest, ListsOwnValuesFirstAndEachValueOnceWithAllItsSources) {
  const PageContent content =
      contentOf({email("b@example.org", given("shop", "1", "2027-01-05")),
                 email("ann@example.org", given("mail", "2", "2027-01-06")),
                 email("B@Example.org", given("club", "3", "2027-01-07")),
                 named({.givenName = "Bo"}, given("stranger", "4", "2027-01-08")),
                 email("b@example.org", given("stranger", "5", "2027-01-09")),
                 phone("+49 30 1234567", given("shop", "6", "2027-01-10"))},
                ownCard());
  const std::vector<CardValue> values = cardValuesOf(DonationKind::emailAddress, content);
  ASSERT_EQ(values.size(), 2U);
  EXPECT_TRUE(values[0].isOwn);
  EXPECT_THAT(values[0].lines, ElementsAre("Ann@example.org"));
  EXPECT_EQ(summaryOf(values[0].sources), "2");
  EXPECT_FALSE(values[1].isOwn);
  EXPECT_THAT(values[1].lines, ElementsAre("b@example.org"));
  EXPECT_EQ(summaryOf(values[1].sources), "1 3");
  const std::vector<CardValue> numbers = cardValuesOf(DonationKind::phoneNumber, content);
  ASSERT_EQ(numbers.size(), 1U);
  EXPECT_EQ(summaryOf(numbers[0].sources), "6");
}

TEST(OwnerPageTest, GroupsByReasonMonthAndDonor) {
  const PageContent content = contentOf(
      {named({.givenName = "Bo", .familyName = "Ek"}, given("stranger", "1", "2027-02-28", "c7")),
       email("bo@example.org", given("stranger", "2", "2027-03-01", "c7")),
       email("ann@example.org", given("mail", "3", "2027-02-01", "c2")),
       email("ann2@example.org", {"mail", "4", noonOf("2026-11-09"), Date::distantFuture()}),
       email("ANN2@example.org", given("mail", "5", "2027-03-31", "c1"))},
      ownCard());
  std::string groups;
  for (const ReasonGroup& group : leftOutByReason(content)) {
    groups += "\n" + std::string(wordFor(group.state)) + ":";
    for (const LeftOutValue& value : group.values) groups += " " + std::to_string(value.number);
  }
  EXPECT_EQ(groups, "\nsilenced: 1 2\nownCardHasIt: 3\ngivenBefore: 5");
  std::string months;
  for (const ExpiryMonth& month : expiryByMonth(content)) {
    months += month.month + ": " + summaryOf(month.donations) + "\n";
  }
  EXPECT_EQ(months, "2027-02: 1 3\n2027-03: 2 5\n: 4\n");
  const std::vector<DonorGroup>& donors = content.donorGroups;
  ASSERT_EQ(donors.size(), 2U);
  EXPECT_EQ(donors[0].bundleIdentifier, "mail");
  EXPECT_THAT(donors[0].clusters, ElementsAre("c1", "c2"));
  EXPECT_EQ(donors[0].shown, 1U);
  EXPECT_EQ(donors[0].leftOut, 2U);
  EXPECT_EQ(donors[0].lastDonation, noonOf("2026-11-09"));
  EXPECT_EQ(donors[0].nextExpiration, noonOf("2027-02-01"));
}

TEST(OwnerPageTest, TellsOfValuesThatTheAgentNoLongerLists) {
  using enum DonationState;
  const OwnersValues values{
      .unlisted = {{rejected, "You said so", email("bo@example.org")->value(), nullptr, "club"},
                   {absent, "Taken back", email("jo@example.org")->value(), nullptr, "attic"},
                   {expired, "It is over", image("")->value(), nullptr, "shop"},
                   {skipped, "Line 4 has no value", {}, nullptr, "bank"},
                   {skipped, "Line 7 has no value", {}, nullptr, "bank"}}};
  const std::string page = OwnerPage::of({noonOf("2026-11-26"), values});
  for (const char* shown :
       {"Rejected – 1 value<",
        "<td class=\"number\"></td>\n<th scope=\"row\" class=\"value\"><bdi>bo@",
        "<bdi>an image</bdi></th>\n<td class=\"donor\"><bdi>shop<", "<bdi>an entry<",
        "Left out when a file was read – 2 values<", "<bdi>Line 7 has no value<",
        "<a href=\"#left-out\"><strong>4</strong> left out", "The reasons are below."}) {
    EXPECT_THAT(page, HasSubstr(shown));
  }
  EXPECT_THAT(page, Not(AnyOf(HasSubstr("attic"), HasSubstr("#donors"), HasSubstr("enable"))));
  EXPECT_THAT(page, HasSubstr("<details open=\"\"><summary>Rejected"));
  const OwnersValues many{.unlisted = {13, values.unlisted.front()}};
  EXPECT_THAT(OwnerPage::of({noonOf("2026-11-26"), many}),
              HasSubstr("<details><summary>Rejected – 13 values"));
  const std::string off = OwnerPage::of({noonOf("2026-11-26"), {.donationsEnabled = false}});
  EXPECT_THAT(off, HasSubstr("shows none: <code>quenlet enable</code>"));
}

TEST(OwnerPageTest, ShowsAPictureOnlyIfItsBytesAreThoseOfAnImage) {
  const std::tuple<const char*, std::string, const char*> rows[] = {
      {"an image", "GIF89a", "<img src=\"data:image/gif;base64,R0lGODlh\""},
      {"text", "<svg onload='alert(1)'/>", "It is not of a type that this page can show."},
      {"too large", "GIF89a" + std::string(std::size_t{4} << 20, '0'), "It is too large for"},
  };
  for (const auto& [name, bytes, shown] : rows) {
    const std::string page =
        OwnerPage::of(contentOf({image(bytes, given("pics", "1", "2027-01-05"))}));
    EXPECT_THAT(page, HasSubstr(shown)) << name;
    EXPECT_EQ(page.find("<img") != std::string::npos, bytes == "GIF89a") << name;
    EXPECT_THAT(page, HasSubstr("Picture: from <bdi>pics</bdi>")) << name;
  }
}

TEST(OwnerPageTest, TellsWhatHasExpiredFromWhatWillAndKeepsWhatNeverDoes) {
  DonationValues values = {email("a@x", given("shop", "a", "2026-11-26")),
                           email("b@x", given("shop", "b", "2026-12-03")),
                           email("c@x", from("shop", "c"))};
  for (int i = 0; i < 25; ++i) {
    const Date expires = noonOf("2027-01-09").addingSeconds(i * 31 * 86400.0);
    values.push_back(email("d@x", from("shop", std::to_string(i), {}, expires)));
  }
  const std::string page = OwnerPage::of(contentOf(std::move(values)));
  EXPECT_THAT(page, HasSubstr("2 donations expire within a week; 1 of them has expired already."));
  EXPECT_THAT(page, HasSubstr(">Never</th>"));
  EXPECT_THAT(page, Not(HasSubstr(">November 2028</th>")));
  EXPECT_THAT(page, HasSubstr("And 3 later months."));
}

TEST(OwnerPageTest, CutsListsThatNobodyWouldRead) {
  DonationValues values;
  for (int i = 0; i < 700; ++i) {
    const std::string number = std::to_string(i);
    values.push_back(email(number + "@example.org", given("shop", number, "2027-01-05")));
  }
  const std::string page = OwnerPage::of(contentOf(std::move(values)));
  EXPECT_THAT(page, HasSubstr("<summary>692 more</summary>"));
  EXPECT_THAT(page, HasSubstr(">499@example.org<"));
  EXPECT_THAT(page, Not(HasSubstr(">500@example.org<")));
  EXPECT_THAT(page, HasSubstr("And 200 more, which this page leaves out: <code>quenlet card"));
}

}  // namespace
}  // namespace quenlet
