#include "browser/host/CardAnswer.h"

#include <gmock/gmock.h>

#include "browser/host/BrowserHost.h"
#include "protocol/ClientEntitlements.h"
#include "quenlet/ErrorCodes.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using namespace testing;

const Date now(1'800'000'000);

class CardAnswerTest : public testing::Test {
 protected:
  ContactFields own;

  std::string answerOn(const DonationValues& donated) const {
    OwnCard card;
    card.contact = std::make_shared<const Contact>(ContactFields(own));
    card.name = PersonNameComponents::componentsForContact(*card.contact);
    const auto list = listOf(donated);
    const CardReading reading{
        ReadingState::ready, {"a note"}, {now, {.own = card, .listed = statesOf(list, card)}}};
    return CardAnswer::to(7, reading);
  }
  template <typename T>
  static auto entry(std::string label, T value) {
    return std::make_shared<const LabeledValue<T>>(LabeledValue<T>{std::move(label), value, {}});
  }
};

TEST_F(CardAnswerTest, HasOwnEntriesFirstEachWithLabelAndSource) {
  own.namePrefix = "Dr.";
  own.givenName = "Ann";
  own.middleName = "Mae";
  own.familyName = "Berg";
  own.nameSuffix = "PhD";
  own.nickname = "Annie";
  own.emailAddresses = {entry<std::string>("work", "ann@example.org")};
  const std::string answer =
      answerOn({email("ann@home.example", from("com.example.mail", "1", {}, Date(1'900'000'000)))});
  EXPECT_EQ(answer + "\n", goldenLine("tests/browser/card.json"));
}

TEST_F(CardAnswerTest, GivesPhoneNumbersInTheFormsThatFieldsWant) {
  const std::tuple<std::string, std::string> rows[] = {
      {"+44-20-7946-0958;ext=21",
       R"("digits":"+442079460958","extension":"21","countryCode":"+44","region":"GB",)"
       R"("international":"+44 20 7946 0958","national":"020 7946 0958","shown")"},
      {"+1 (202) 555-0143",
       R"("digits":"+12025550143","countryCode":"+1","region":"US",)"
       R"("international":"+1 202-555-0143","national":"(202) 555-0143","shown")"},
      // A zero that belongs to the number.
      {"+39 06 1234 5678", R"("national":"06 1234 5678")"},
      // Nobody knows of which country.
      {"030 1234567", R"("value":"030 1234567","digits":"0301234567","shown")"},
      {"+999 123", R"("value":"+999 123","digits":"+999123","shown")"},
  };
  for (const auto& [number, forms] : rows) EXPECT_THAT(answerOn({phone(number)}), HasSubstr(forms));
}

TEST_F(CardAnswerTest, SaysWhatIsLeftOutOfTheCardAndWhy) {
  own.givenName = "Ann";
  own.familyName = "Berg";
  const PersonNameComponents other{.givenName = "Alex", .familyName = "Morgan"};
  EXPECT_THAT(answerOn({named(other, from("com.example.else", "1", "c")),
                        email("alex@example.net", from("com.example.else", "2", "c"))}),
              HasSubstr(R"("title":"Silenced: the donor knows you by another name")"));
}

TEST_F(CardAnswerTest, StaysWithinTheBrowsersLimitAndSaysWhatItLeavesOut) {
  const std::string picture = "\x89PNG\r\n\x1A\n" + std::string(500'000, 'p');
  const std::string tooLong(CardAnswer::mostBytesInText + 1, 'a');
  DonationValues many{image(picture)}, tooMany;
  for (int i = 0; i < 300; ++i) {
    PostalAddress address{.street = std::string(900, '\x01') + std::to_string(i)};
    address.city = std::string(900, '\x02');
    many.push_back(postal(address, from("com.example.many", "adr" + std::to_string(i))));
    address.state = address.country = address.city;
    tooMany.push_back(postal(address, from("com.example.many", "adr" + std::to_string(i))));
  }
  const std::tuple<const char*, DonationValues, std::string, std::string> rows[] = {
      {"a small one", {image(picture)}, R"("picture":{"type":"image/png","bytes":"iVB)", "note "},
      {"a huge picture", {image(picture + picture)}, "The picture is too large", "\"picture\""},
      {"what is no picture", {image("GIF89")}, "of a type that no form takes", "\"picture\""},
      {"a long address", {email(tooLong + "@example.org")}, R"("emails":[])", "aaaa"},
      {"many long ones", many, "The picture is left out", "\"picture\":"},
      {"many longer ones", tooMany, "The card is too large", "\\u0002"},
  };
  for (const auto& [name, donated, has, hasNot] : rows) {
    const std::string answer = answerOn(donated);
    EXPECT_LE(answer.size(), CardAnswer::mostBytes) << name;
    EXPECT_TRUE(answer.find(has) != std::string::npos) << name << ": " << answer.substr(0, 2000);
    EXPECT_TRUE(answer.find(hasNot) == std::string::npos) << name;
  }
}

class BrowserHostTest : public testing::Test {
 protected:
  const TemporaryHome home;
  RecordingAgent agent;
};

TEST_F(BrowserHostTest, TellsPlainlyWhyTheDonatedCardIsMissing) {
  const auto service = [](ServiceErrorCode code) {
    return makeError(ServiceErrorDomain, static_cast<int>(code));
  };
  const std::tuple<ErrorPtr, std::string> rows[] = {
      {service(ServiceErrorCode::noService), "noAgent"},
      {service(ServiceErrorCode::timedOut), "noAgent"},
      {service(ServiceErrorCode::malformedMessage), "failed"},
      {makeError(GeneralErrorDomain, MissingEntitlementCode), "notEntitled"},
      {makeError(GeneralErrorDomain, MissingEntitlementCode + 1), "failed"},
      {makeError(DonationErrorDomain, static_cast<int>(DonationErrorCode::featureNotEnabled)),
       "donationsOff"},
      {nullptr, "ready"},
  };
  for (const auto& [error, state] : rows) {
    agent.setError(error);
    const CardReading reading = CardReading::of(agent, now);
    EXPECT_EQ(wordFor(reading.state), state);
    EXPECT_EQ(agent.takeCalls(), "list;") << "it asks for the list, once, and for nothing else";
  }
}

TEST_F(BrowserHostTest, WatchesOnceAndAnswersEveryRequest) {
  std::vector<std::string> sent;
  std::vector<std::function<void()>> watchers;
  BrowserHost host(
      agent, [&](std::string_view message) { sent.emplace_back(message); },
      [&](auto changed) { watchers.push_back(std::move(changed)); });
  const auto ask = [&](std::string_view text) {
    return host.take(std::string{static_cast<char>(text.size()), 0, 0, 0} + std::string(text));
  };
  EXPECT_TRUE(ask(R"({"id":1,"ask":"changes"})"));
  EXPECT_TRUE(ask(R"({"id":2,"ask":"changes"})"));
  ASSERT_EQ(watchers.size(), 1U);
  watchers.front()();
  EXPECT_TRUE(ask(R"({"id":3,"ask":"donate"})"));
  EXPECT_TRUE(ask("{}"));
  EXPECT_FALSE(host.take(std::string(4, '\xFF')));
  EXPECT_THAT(sent, ElementsAre(R"({"id":1,"watching":true})", R"({"id":2,"watching":true})",
                                R"({"event":"changed"})", R"({"id":3,"error":"unknownWord"})",
                                R"({"id":0,"error":"malformed"})"));
  EXPECT_EQ(agent.takeCalls(), "");
}

}  // namespace
}  // namespace quenlet
