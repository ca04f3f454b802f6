// The cost of comparing 3,000 curated values with 3,000 donated ones, half of them the same, kind
// by kind, against building a hash set of the same texts: it must grow with their number, not with
// its square. Phone numbers that all end in the same digits, as a donor may choose them, are
// compared with each other, so each comparison must be cheap.

#include <benchmark/benchmark.h>

#include <string>
#include <unordered_set>

#include "analytics/AugmentationClassifier.h"

namespace quenlet {
namespace {

constexpr int valuesOfEachCard = 3000;

enum Kind : std::int64_t { emailAddresses, phoneNumbers, postalAddresses, oneEnding };

template <typename T>
void addEntry(LabeledValues<T>& entries, T value) {
  entries.append(
      std::make_shared<const LabeledValue<T>>(LabeledValue<T>{"home", std::move(value), {}}));
}

// The card of the values `first` up to `first + valuesOfEachCard`; phone numbers after `dialled`.
std::shared_ptr<const Contact> makeCard(Kind kind, int first, const std::string& dialled) {
  ContactFields fields;
  for (int number = first; number < first + valuesOfEachCard; ++number) {
    const std::string digits = std::to_string(1'000'000 + number);
    switch (kind) {
      case emailAddresses:
        addEntry<std::string>(fields.emailAddresses, "alex" + digits + "@example.com");
        break;
      case phoneNumbers:
        addEntry(fields.phoneNumbers, *PhoneNumber::withStringValue(dialled + digits));
        break;
      case oneEnding:
        addEntry(fields.phoneNumbers, *PhoneNumber::withStringValue(dialled + digits + "55501"));
        break;
      case postalAddresses:
        addEntry(fields.postalAddresses, PostalAddress{.street = digits + " Example Street",
                                                       .city = "Springfield",
                                                       .postalCode = "12345"});
        break;
    }
  }
  return std::make_shared<const Contact>(std::move(fields));
}

struct Cards final {
  explicit Cards(Kind kind)
      : curated(makeCard(kind, 0, "+49 30 ")),
        donated(makeCard(kind, valuesOfEachCard / 2, "030-")) {}
  const std::shared_ptr<const Contact> curated;
  const std::shared_ptr<const Contact> donated;
};

void compareCards(benchmark::State& state) {
  const Cards cards(static_cast<Kind>(state.range(0)));
  for (auto _ : state) {
    AugmentationClassifier classifier(cards.curated, cards.donated);
    benchmark::DoNotOptimize(classifier.analyze());
  }
}

void hashCards(benchmark::State& state) {
  const Cards cards(static_cast<Kind>(state.range(0)));
  for (auto _ : state) {
    std::unordered_set<std::string> texts;
    for (const auto& card : {cards.curated, cards.donated}) {
      for (const auto& entry : card->emailAddresses()) texts.insert(entry->value);
      for (const auto& entry : card->phoneNumbers()) texts.insert(entry->value.stringValue());
      for (const auto& entry : card->postalAddresses()) {
        texts.insert(entry->value.street + entry->value.postalCode + entry->value.city);
      }
    }
    benchmark::DoNotOptimize(texts);
  }
}

BENCHMARK(compareCards)->DenseRange(emailAddresses, oneEnding)->Unit(benchmark::kMicrosecond);
BENCHMARK(hashCards)->DenseRange(emailAddresses, oneEnding)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quenlet
