#include <poll.h>

#include <cmath>

#include "quenlet/quenlet.h"
#include "tests/client/ServedAgent.h"

namespace quenlet {
namespace {

constexpr std::pair<int, int> textsOfName{QUENLET_NAME_PREFIX, QUENLET_NICKNAME};
constexpr std::pair<int, int> textsOfAddress{QUENLET_STREET, QUENLET_ISO_COUNTRY_CODE};
constexpr std::pair<int, int> textsOfOrigin{QUENLET_BUNDLE, QUENLET_CLUSTER};

struct Freed final {
  void operator()(quenlet_values* values) const { quenlet_values_free(values); }
  void operator()(quenlet_client* client) const { quenlet_client_free(client); }
};
using Values = std::unique_ptr<quenlet_values, Freed>;

std::string textOf(const quenlet_value* value, int which) {
  const char* text = quenlet_value_text(value, static_cast<quenlet_text>(which));
  return text == nullptr ? "-" : text;
}

class CInterfaceTest : public ServedAgent {
 protected:
  CInterfaceTest() { serveAgent(); }

  // What callbacks were called with: the number of values or "ok", else the status.
  static void noteValues(const quenlet_values* values, const quenlet_error* error, void* list) {
    EXPECT_NE(values == nullptr, error == nullptr);
    static_cast<std::vector<std::string>*>(list)->push_back(
        error == nullptr ? std::to_string(quenlet_values_count(values))
                         : "!" + std::to_string(error->status));
  }
  static void noteDone(const quenlet_error* error, void* list) {
    static_cast<std::vector<std::string>*>(list)->push_back(
        error == nullptr ? "ok" : "!" + std::to_string(error->status));
  }
  void dispatchUntil(std::size_t number) {
    pollfd ready{quenlet_client_fd(client.get(), nullptr), POLLIN, 0};
    while (noted.size() < number) {
      ASSERT_EQ(::poll(&ready, 1, 10'000), 1) << "nothing comes";
      quenlet_client_dispatch(client.get());
    }
  }
  Values oneDonation() {
    Values values(quenlet_values_new());
    quenlet_value* email = quenlet_values_add(values.get(), QUENLET_EMAIL);
    quenlet_value_set_text(email, QUENLET_TEXT, "a@x");
    quenlet_value_set_text(email, QUENLET_BUNDLE, "bundle");
    quenlet_value_set_text(email, QUENLET_IDENTIFIER, "id");
    return values;
  }

  std::unique_ptr<quenlet_client, Freed> client{quenlet_client_new(0)};
  std::vector<std::string> noted;
};

TEST_F(CInterfaceTest, ValuesKeepEveryTextOfTheirKindAndNoOther) {
  const std::tuple<quenlet_kind, std::vector<std::pair<int, int>>> rows[] = {
      {QUENLET_NAME, {textsOfName, textsOfOrigin}},
      {QUENLET_EMAIL, {{QUENLET_TEXT, QUENLET_LABEL}, textsOfOrigin}},
      {QUENLET_PHONE, {{QUENLET_TEXT, QUENLET_LABEL}, textsOfOrigin}},
      {QUENLET_POSTAL, {{QUENLET_LABEL, QUENLET_LABEL}, textsOfAddress, textsOfOrigin}},
      {QUENLET_IMAGE, {textsOfOrigin}},
  };
  const Values values(quenlet_values_new());
  for (const auto& [kind, ranges] : rows) {
    quenlet_value* value = quenlet_values_add(values.get(), kind);
    ASSERT_EQ(quenlet_value_kind(value), kind);
    const auto has = [&, &own = ranges](int which) {
      return std::any_of(own.begin(), own.end(), [which](const auto& range) {
        return range.first <= which && which <= range.second;
      });
    };
    for (int which = 0; which < 40; ++which) {
      const auto text = static_cast<quenlet_text>(which);
      EXPECT_EQ(quenlet_value_set_text(value, text, std::to_string(which).c_str()),
                has(which) ? QUENLET_OK : QUENLET_INVALID_ARGUMENT)
          << kind << " " << which;
    }
    for (int which = 0; which < 40; ++which) {
      EXPECT_EQ(textOf(value, which), has(which) ? std::to_string(which) : "-") << kind;
    }
    quenlet_value_set_text(value, QUENLET_CLUSTER, nullptr);
    EXPECT_EQ(textOf(value, QUENLET_CLUSTER), "-");
    EXPECT_EQ(quenlet_value_set_image(value, "ab\0c", 4),
              kind == QUENLET_IMAGE ? QUENLET_OK : QUENLET_INVALID_ARGUMENT);
  }
  const Values copy(quenlet_values_copy(values.get()));
  size_t size = 0;
  const void* bytes = quenlet_value_image(quenlet_values_at(copy.get(), 4), &size);
  EXPECT_EQ(std::string(static_cast<const char*>(bytes), size), std::string("ab\0c", 4));
  EXPECT_EQ(quenlet_values_at(copy.get(), 5), nullptr);
  EXPECT_EQ(quenlet_values_add(copy.get(), static_cast<quenlet_kind>(6)), nullptr);
}

TEST_F(CInterfaceTest, WaitsForEachOperation) {
  quenlet_error error{};
  const Values card(quenlet_client_fetch_card(client.get(), &error));
  ASSERT_EQ(quenlet_values_count(card.get()), 2) << error.sentence;
  const quenlet_value* name = quenlet_values_at(card.get(), 0);
  EXPECT_EQ(textOf(name, QUENLET_GIVEN_NAME), "Ann");
  EXPECT_TRUE(std::isnan(quenlet_value_date(name, QUENLET_DONATION_DATE)));
  const Values donations(quenlet_client_fetch_donations(client.get(), &error));
  for (const quenlet_value* email :
       {quenlet_values_at(card.get(), 1), quenlet_values_at(donations.get(), 0)}) {
    EXPECT_EQ(textOf(email, QUENLET_TEXT) + " " + textOf(email, QUENLET_BUNDLE) + " " +
                  textOf(email, QUENLET_IDENTIFIER) + " " + textOf(email, QUENLET_CLUSTER),
              "ann@example.org bundle id cluster");
    EXPECT_EQ(quenlet_value_date(email, QUENLET_DONATION_DATE), 1.5);
    EXPECT_EQ(quenlet_value_date(email, QUENLET_EXPIRATION_DATE), 40 * 86400 + 2.5);
  }
  const char* const identifiers[] = {"id1", "id2"};
  EXPECT_EQ(quenlet_client_donate(client.get(), oneDonation().get(), &error), QUENLET_OK);
  EXPECT_EQ(quenlet_client_remove(client.get(), identifiers, 2, &error), QUENLET_OK);
  EXPECT_EQ(quenlet_client_remove_bundle(client.get(), "bundle", &error), QUENLET_OK);
  EXPECT_EQ(quenlet_client_reject(client.get(), "id", &error), QUENLET_OK);
  EXPECT_EQ(quenlet_client_reject_cluster(client.get(), "cluster", &error), QUENLET_OK);
  EXPECT_EQ(agent->takeCalls(),
            "synchronous;list;donate 1;removeIdentifiers id1 id2;removeBundle bundle;reject id;"
            "rejectCluster cluster;");
  const char* const missing[] = {"id1", nullptr};
  EXPECT_EQ(quenlet_client_remove(client.get(), missing, 2, &error), QUENLET_INVALID_ARGUMENT);
  EXPECT_EQ(quenlet_client_reject(nullptr, "id", &error), QUENLET_INVALID_ARGUMENT);
  EXPECT_EQ(quenlet_client_fetch_card(nullptr, nullptr), nullptr);
}

TEST_F(CInterfaceTest, TellsErrorsByValue) {
  const std::string longText = std::string(438, 'x') + "\u00e4\u00e4";
  const std::tuple<const char*, int, quenlet_status> rows[] = {
      {ServiceErrorDomain, 1, QUENLET_NO_AGENT},
      {ServiceErrorDomain, 2, QUENLET_CONNECTION_BROKEN},
      {ServiceErrorDomain, 3, QUENLET_FAILED},
      {ServiceErrorDomain, 4, QUENLET_INVALID_ARGUMENT},
      {ServiceErrorDomain, 6, QUENLET_TOO_LARGE},
      {ServiceErrorDomain, 11, QUENLET_TIMED_OUT},
      {ServiceErrorDomain, 12, QUENLET_BUNDLE_NOT_ALLOWED},
      {DonationErrorDomain, 1, QUENLET_DONATIONS_DISABLED},
      {DonationErrorDomain, 501, QUENLET_TOO_LARGE},
      {DonationErrorDomain, 4097, QUENLET_FAILED},
      {GeneralErrorDomain, 4097, QUENLET_NOT_ENTITLED},
      {"x", 1, QUENLET_FAILED},
  };
  for (const auto& [domain, code, status] : rows) {
    agent->setError(makeError(domain, code, longText));
    quenlet_error error{};
    EXPECT_EQ(quenlet_client_fetch_card(client.get(), &error), nullptr);
    EXPECT_EQ(error.status, status) << domain << " " << code;
    EXPECT_EQ(error.code, code);
    EXPECT_STREQ(error.domain, domain);
    EXPECT_EQ(error.sentence, std::string(438, 'x')) << "ends with a whole character";
    EXPECT_EQ(quenlet_client_reject(client.get(), "id", nullptr), status);
  }
}

TEST_F(CInterfaceTest, CallsBackInDispatch) {
  const char* const identifier = "id";
  const auto begin = [&] {
    quenlet_client_fetch_card_async(client.get(), noteValues, &noted);
    quenlet_client_fetch_donations_async(client.get(), noteValues, &noted);
    quenlet_client_donate_async(client.get(), oneDonation().get(), noteDone, &noted);
    quenlet_client_remove_async(client.get(), &identifier, 1, noteDone, &noted);
  };
  begin();
  EXPECT_EQ(noted.size(), 0);
  dispatchUntil(4);
  EXPECT_EQ(noted, (std::vector<std::string>{"2", "1", "ok", "ok"}));
  agent->setError(makeError("domain", 7, "no"));
  begin();
  dispatchUntil(8);
  EXPECT_EQ(noted.back(), "!1");
  agent->setError(nullptr);
  const std::uint64_t following = quenlet_client_on_card_change(client.get(), noteValues, &noted);
  dispatchUntil(9);
  EXPECT_EQ(noted.back(), "2");
  quenlet_client_cancel(client.get(), following);

  agent->holdsReplies = true;
  const std::uint64_t taken = quenlet_client_fetch_card_async(client.get(), noteValues, &noted);
  quenlet_client_fetch_card_async(client.get(), noteValues, &noted);
  quenlet_client_cancel(client.get(), taken);
  client.reset();
  EXPECT_EQ(noted.size(), 10);
  EXPECT_EQ(noted.back(), "!3") << "what is under way at the client's end";
}

}  // namespace
}  // namespace quenlet
