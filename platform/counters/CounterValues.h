#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <variant>

namespace quenlet {

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

}  // namespace quenlet
