#pragma once

#include <cstdint>
#include <string>

namespace quenlet {

// The system's counters, by key ("ovaro.quenlet.me-card.count"): lower-case letters first, then
// digits, dots and dashes as well. Thread-safe; counting never fails for the caller.
class CounterStore {
 public:
  virtual ~CounterStore() = default;
  virtual void setScalar(const std::string& key, std::int64_t value) = 0;
  virtual void addSample(const std::string& key, double sample) = 0;
};

}  // namespace quenlet
