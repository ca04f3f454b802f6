#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Blocks ordered by the instant when they are due, then by the order of their addition. Removal
// leaves nothing behind. Not thread-safe. Has no clock of its own: the owner supplies all instants.
class TimerQueue final {
 public:
  using Instant = std::chrono::steady_clock::time_point;
  using Key = std::pair<Instant, std::uint64_t>;

  [[nodiscard]] Key add(Instant due, Block block) {
    const Key key(due, ++lastNumber);
    blocks.emplace(key, std::move(block));
    return key;
  }

  // Removes and returns the block, so that the owner can free it outside its lock; null when it has
  // already been taken.
  [[nodiscard]] Block remove(const Key& key) {
    auto node = blocks.extract(key);
    return node.empty() ? Block() : std::move(node.mapped());
  }

  [[nodiscard]] std::optional<Instant> earliest() const {
    if (blocks.empty()) return std::nullopt;
    return blocks.begin()->first.first;
  }

  // Removes and returns the earliest block if it is due at `now`; null otherwise.
  [[nodiscard]] Block takeDue(Instant now) {
    if (blocks.empty() || blocks.begin()->first.first > now) return nullptr;
    return std::move(blocks.extract(blocks.begin()).mapped());
  }

  [[nodiscard]] std::size_t count() const { return blocks.size(); }

  // A delay as a duration. Negative delays and NaN become zero; delays over 30 years become 30
  // years, since the clock cannot hold every double.
  [[nodiscard]] static std::chrono::nanoseconds duration(double delaySeconds) {
    constexpr double longest = 30 * 365.25 * 86400;
    if (!(delaySeconds > 0)) return std::chrono::nanoseconds::zero();
    return std::chrono::ceil<std::chrono::nanoseconds>(
        std::chrono::duration<double>(std::min(delaySeconds, longest)));
  }

 private:
  std::map<Key, Block> blocks;
  std::uint64_t lastNumber = 0;
};

}  // namespace quenlet
