#include "analytics/AugmentationClassifier.h"

#include <gtest/gtest.h>

#include <random>

namespace quenlet {
namespace {

using Texts = std::vector<std::string>;

template <typename T>
LabeledValues<T> entries(const std::vector<T>& values) {
  LabeledValues<T> made;
  for (const T& value : values) {
    const std::string label = "label " + std::to_string(made.size());
    made.push_back(std::make_shared<const LabeledValue<T>>(LabeledValue<T>{label, value, {}}));
  }
  return made;
}

std::vector<PhoneNumber> numbers(const Texts& texts) {
  std::vector<PhoneNumber> made;
  for (const auto& text : texts) made.push_back(*PhoneNumber::withStringValue(text));
  return made;
}

using ContactPtr = std::shared_ptr<const Contact>;

ContactPtr cardOf(LabeledValues<std::string> emails, LabeledValues<PhoneNumber> phones,
                  LabeledValues<PostalAddress> addresses) {
  ContactFields fields;
  fields.emailAddresses = std::move(emails);
  fields.phoneNumbers = std::move(phones);
  fields.postalAddresses = std::move(addresses);
  return std::make_shared<const Contact>(std::move(fields));
}

TEST(AugmentationClassifierTest, CountsWhatIsOnBothCardsAndWhatWasOnlyDonated) {
  const struct {
    const char* name;
    Texts curated;
    Texts donated;
    std::uint64_t matched;
    std::uint64_t unmatched;
  } emailRows[] = {
      {"another letter case", {"a@x"}, {"A@x"}, 0, 1},
      {"canonically equal", {"\u00e9@x"}, {"e\u0301@x"}, 1, 0},
      {"donated twice", {"a@x"}, {"a@x", "a@x"}, 1, 0},
      {"curated twice", {"a@x", "a@x"}, {}, 0, 0},
      {"nothing donated", {"a@x", "b@x"}, {}, 0, 0},
      {"nothing curated", {}, {"a@x", "b@x", "a@x"}, 0, 2},
  };
  for (const auto& row : emailRows) {
    AugmentationClassifier classifier(cardOf(entries(row.curated), {}, {}),
                                      cardOf(entries(row.donated), {}, {}));
    EXPECT_EQ(classifier.analyze(), AugmentationStatus(row.matched, row.unmatched, 0, 0, 0, 0))
        << row.name;
  }
  // The first goes to `common`, where the second finds it.
  AugmentationClassifier classifier(
      cardOf({}, entries(numbers({"+49 30 2312500", "112"})),
             entries<PostalAddress>({{.city = "Ulm"}, {.city = "Bonn"}})),
      cardOf({}, entries(numbers({"030 2312500", "0049302312500", "+49112"})),
             entries<PostalAddress>({{.street = "Ulm"}, {.city = "Ulm"}, {.state = "Ulm"}})));
  const AugmentationStatus status = classifier.analyze();
  EXPECT_EQ(status, AugmentationStatus(0, 0, 1, 1, 1, 2));
  EXPECT_EQ(status.description(),
            "<AugmentationStatus email addresses=(0 matched, 0 unmatched), "
            "phone numbers=(1 matched, 1 unmatched), postal addresses=(1 matched, 2 unmatched)>");
  const std::string description = classifier.phoneNumbers().description();
  EXPECT_EQ(description.find("<AugmentationClassifier.Bucket 0x"), 0u);
  EXPECT_EQ(description.substr(description.find(": ")),
            ": common=(030 2312500) uniqueToCurated=(112) uniqueToDonated=(+49112)");
}

// The rule as it reads, with every list searched from its start.
template <typename T>
struct PlainBucket final {
  std::vector<T> uniqueToCurated, uniqueToDonated, common;

  void add(const T& value, std::vector<T>& own, std::vector<T>& other) {
    const auto in = [&](std::vector<T>& list) {
      return std::find_if(list.begin(), list.end(),
                          [&](const T& listed) { return match(value, listed); });
    };
    if (in(common) != common.end()) return;
    if (const auto found = in(other); found != other.end()) {
      other.erase(found);
      common.push_back(value);
    } else if (in(own) == own.end()) {
      own.push_back(value);
    }
  }
  static bool match(const T& added, const T& listed) {
    if constexpr (std::is_same_v<T, PhoneNumber>) {
      return added.isLikePhoneNumber(listed);
    } else {
      return added == listed;
    }
  }
};

template <typename T>
void compareWithPlainScan(const std::vector<T>& pool, std::mt19937& random) {
  AugmentationBucket<T> bucket;
  PlainBucket<T> plain;
  const auto list = [](const auto& values) { return std::vector<T>(values.begin(), values.end()); };
  for (int i = 0; i < 24; ++i) {
    const T& value = pool[random() % pool.size()];
    if (random() % 2 == 0) {
      bucket.addCurated(value);
      plain.add(value, plain.uniqueToCurated, plain.uniqueToDonated);
    } else {
      bucket.addDonated(value);
      plain.add(value, plain.uniqueToDonated, plain.uniqueToCurated);
    }
    ASSERT_EQ(list(bucket.uniqueToCurated()), plain.uniqueToCurated);
    ASSERT_EQ(list(bucket.uniqueToDonated()), plain.uniqueToDonated);
    ASSERT_EQ(list(bucket.common()), plain.common);
  }
}

TEST(AugmentationClassifierTest, SortsAsAPlainScanDoes) {
  std::mt19937 random(1);
  // Likeness is not transitive: the numbers of two areas are like the one without an area.
  const auto phones = numbers({"+1 202 555 0143", "202 555 0143", "555 0143", "+1 212 555 0143",
                               "212-555-0143", "+1 202 555 0143 x1", "112", "+112", "9112"});
  std::vector<PostalAddress> addresses;
  for (const char* text : {"a", "b", "ab", ""}) {
    addresses.push_back({.street = text, .city = "b"});
    addresses.push_back({.city = text, .state = "b"});
    addresses.push_back({.country = text, .isoCountryCode = "b"});
  }
  for (int round = 0; round < 200; ++round) {
    compareWithPlainScan<std::string>({"a@x", "A@x", "b@x", "c@x", ""}, random);
    compareWithPlainScan(phones, random);
    compareWithPlainScan(addresses, random);
  }
}

}  // namespace
}  // namespace quenlet
