#include "analytics/AugmentationClassifier.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

PhoneNumber number(const char* text) { return *PhoneNumber::withStringValue(text); }

template <typename T>
LabeledValues<T> entries(const std::vector<T>& values) {
  LabeledValues<T> made;
  for (const T& value : values) {
    const std::string label = "label " + std::to_string(made.size());
    made.push_back(std::make_shared<const LabeledValue<T>>(LabeledValue<T>{label, value, {}}));
  }
  return made;
}

struct Values final {
  std::vector<std::string> emails = {};
  std::vector<PhoneNumber> numbers = {};
  std::vector<PostalAddress> addresses = {};

  [[nodiscard]] std::shared_ptr<const Contact> card() const {
    ContactFields fields;
    fields.emailAddresses = entries(emails);
    fields.phoneNumbers = entries(numbers);
    fields.postalAddresses = entries(addresses);
    return std::make_shared<const Contact>(std::move(fields));
  }
};

// The lists of the buckets that hold anything.
std::string sorted(const AugmentationClassifier& classifier) {
  std::string all;
  const auto append = [&](const auto& bucket) {
    const std::string text = bucket.description();
    if (!text.ends_with("=() uniqueToCurated=() uniqueToDonated=()")) {
      all += text.substr(text.find(": ") + 1);
    }
  };
  append(classifier.emailAddresses());
  append(classifier.phoneNumbers());
  append(classifier.postalAddresses());
  return all;
}

TEST(AugmentationClassifierTest, TellsWhatIsOnBothCardsAndWhatWasOnlyDonated) {
  const std::tuple<const char*, Values, Values, const char*> rows[] = {
      {"another letter case",
       {{"a@x"}},
       {{"A@x"}},
       " common=() uniqueToCurated=(a@x) uniqueToDonated=(A@x)"},
      {"canonically equal",
       {{"\u00e9@x"}},
       {{"e\u0301@x"}},
       " common=(e\u0301@x) uniqueToCurated=() uniqueToDonated=()"},
      {"donated twice",
       {{"a@x"}},
       {{"a@x", "a@x", "c@x", "b@x", "c@x"}},
       " common=(a@x) uniqueToCurated=() uniqueToDonated=(c@x, b@x)"},
      {"nothing donated",
       {{"a@x", "a@x"}},
       {},
       " common=() uniqueToCurated=(a@x) uniqueToDonated=()"},
      {"like each other and the curated one",
       {{}, {number("+49 30 2312500")}},
       {{}, {number("030 2312500"), number("0049302312500"), number("112")}},
       " common=(030 2312500) uniqueToCurated=() uniqueToDonated=(112)"},
      {"the same text in another field",
       {{}, {}, {{.city = "Ulm"}}},
       {{}, {}, {{.street = "Ulm"}, {.city = "Ulm"}}},
       " common=(Ulm) uniqueToCurated=() uniqueToDonated=(Ulm)"},
  };
  for (const auto& [name, curated, donated, lists] : rows) {
    AugmentationClassifier classifier(curated.card(), donated.card());
    static_cast<void>(classifier.analyze());
    EXPECT_EQ(sorted(classifier), lists) << name;
  }
  const PhoneNumber phone = number("112");
  const Values curated{{"a@x"}, {phone}},
      donated{{"a@x", "b@x", "c@x"}, {phone}, {{.city = "Ulm"}}};
  EXPECT_EQ(AugmentationClassifier(curated.card(), donated.card()).analyze().description(),
            "<AugmentationStatus email addresses=(1 matched, 2 unmatched), "
            "phone numbers=(1 matched, 0 unmatched), postal addresses=(0 matched, 1 unmatched)>");
}

// The rule as it reads, with every list searched from its start.
template <typename T>
void compareWithPlainScan(const std::vector<T>& pool, std::mt19937& random) {
  AugmentationBucket<T> bucket;
  std::vector<T> curated, donated, common;
  const auto list = [](const auto& values) { return std::vector<T>(values.begin(), values.end()); };
  for (int i = 0; i < 24; ++i) {
    const T& value = pool[random() % pool.size()];
    const auto in = [&](std::vector<T>& listed) {
      return std::find_if(listed.begin(), listed.end(), [&](const T& other) {
        if constexpr (std::is_same_v<T, PhoneNumber>) return value.isLikePhoneNumber(other);
        if constexpr (std::is_same_v<T, std::string>) return canonicallyEqual(value, other);
        return value == other;
      });
    };
    const bool isCurated = random() % 2 == 0;
    isCurated ? bucket.addCurated(value) : bucket.addDonated(value);
    const auto [own, other] = isCurated ? std::tie(curated, donated) : std::tie(donated, curated);
    if (in(common) == common.end()) {
      if (const auto found = in(other); found != other.end()) {
        other.erase(found);
        common.push_back(value);
      } else if (in(own) == own.end()) {
        own.push_back(value);
      }
    }
    ASSERT_EQ(list(bucket.uniqueToCurated()), curated);
    ASSERT_EQ(list(bucket.uniqueToDonated()), donated);
    ASSERT_EQ(list(bucket.common()), common);
  }
}

TEST(AugmentationClassifierTest, SortsAsAPlainScanDoes) {
  std::mt19937 random(1);
  // Likeness is not transitive: the numbers of two areas are like the one without an area.
  const std::vector<PhoneNumber> numbers = {number("+1 202 555 0143"),    number("202 555 0143"),
                                            number("555 0143"),           number("+1 212 555 0143"),
                                            number("+1 202 555 0143 x1"), number("50143")};
  const std::vector<PostalAddress> addresses = {
      {.street = "a", .city = "b"}, {.street = "ab"},    {.city = "ab"},
      {.city = "\u00e9"},           {.city = "e\u0301"}, {}};
  for (int round = 0; round < 200; ++round) {
    compareWithPlainScan<std::string>({"a@x", "A@x", "\u00e9@x", "e\u0301@x", ""}, random);
    compareWithPlainScan(numbers, random);
    compareWithPlainScan(addresses, random);
  }
}

}  // namespace
}  // namespace quenlet
