#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace quenlet {

// Times single rounds of a benchmark, for the counters "p50" and "p99" in nanoseconds: the
// benchmark library's mean does not show how long the slowest clients wait.
class Latencies final {
 public:
  Latencies() { rounds.reserve(std::size_t{1} << 20); }

  template <typename Round>
  void measure(Round round) {
    const auto begin = std::chrono::steady_clock::now();
    round();
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
    rounds.push_back(taken.count());
  }
  void report(benchmark::State& state) {
    std::sort(rounds.begin(), rounds.end());
    state.counters["p50"] = rounds[rounds.size() / 2];
    state.counters["p99"] = rounds[rounds.size() * 99 / 100];
  }

 private:
  std::vector<double> rounds;
};

}  // namespace quenlet
