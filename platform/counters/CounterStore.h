#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <variant>

namespace quenlet {

// The system's counters, by key ("ovaro.quenlet.me-card.count"): lower-case letters first, then
// digits, dots and dashes as well. Thread-safe; counting never fails for the caller.
class CounterStore {
 public:
  virtual ~CounterStore() = default;
  virtual void setScalar(const std::string& key, std::int64_t value) = 0;
  virtual void addSample(const std::string& key, double sample) = 0;
};

// The number and the sum of a distribution's samples.
struct CounterDistribution final {
  // Programs that read the counts may use signed numbers.
  static constexpr std::uint64_t largestCount = std::numeric_limits<std::int64_t>::max();

  std::uint64_t count = 0;
  double sum = 0;

  friend bool operator==(const CounterDistribution&, const CounterDistribution&) = default;
};

// The values of the counters by key: the number of a scalar, or a distribution.
using CounterValues =
    std::map<std::string, std::variant<std::int64_t, CounterDistribution>, std::less<>>;

// The counters that the daily report keeps.
namespace CounterKeys {

// Scalars; the has-… ones are 1 or 0.
inline constexpr char meCardCount[] = "ovaro.quenlet.me-card.count";
inline constexpr char hasName[] = "ovaro.quenlet.me-card.has-name";
inline constexpr char hasEmailAddress[] = "ovaro.quenlet.me-card.has-email-address";
inline constexpr char hasPhoneNumber[] = "ovaro.quenlet.me-card.has-phone-number";
inline constexpr char hasPostalAddress[] = "ovaro.quenlet.me-card.has-postal-address";

// Distributions, with one sample per report.
inline constexpr char matchedEmailAddresses[] =
    "ovaro.quenlet.augmentation.email-address.matched-count";
inline constexpr char unmatchedEmailAddresses[] =
    "ovaro.quenlet.augmentation.email-address.unmatched-count";
inline constexpr char matchedPhoneNumbers[] =
    "ovaro.quenlet.augmentation.phone-number.matched-count";
inline constexpr char unmatchedPhoneNumbers[] =
    "ovaro.quenlet.augmentation.phone-number.unmatched-count";
inline constexpr char matchedPostalAddresses[] =
    "ovaro.quenlet.augmentation.postal-address.matched-count";
inline constexpr char unmatchedPostalAddresses[] =
    "ovaro.quenlet.augmentation.postal-address.unmatched-count";

}  // namespace CounterKeys

}  // namespace quenlet
