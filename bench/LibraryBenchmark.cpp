// A fetch of the card as programs of others do it: with the library in C++, in C and in Python.

#include <benchmark/benchmark.h>
#include <stdio.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "bench/Latencies.h"
#include "bench/RunningAgent.h"
#include "bench/SampleDonations.h"
#include "quenlet/Client.h"
#include "quenlet/quenlet.h"

namespace quenlet {
namespace {

struct CardForPrograms final {
  const OnOneCore pinned;
  // About 1 KiB on the wire.
  RunningAgent agent{sampleDonations(7)};
};

void fetchInCxx(benchmark::State& state) {
  const CardForPrograms card;
  Client client;
  Latencies latencies;
  for (auto _ : state) {
    latencies.measure([&] {
      if (!client.card().ok()) failBenchmark("no card");
    });
  }
  latencies.report(state);
}

void fetchInC(benchmark::State& state) {
  const CardForPrograms card;
  const std::unique_ptr<quenlet_client, void (*)(quenlet_client*)> client(quenlet_client_new(0),
                                                                          quenlet_client_free);
  Latencies latencies;
  for (auto _ : state) {
    latencies.measure([&] {
      quenlet_values* values = quenlet_client_fetch_card(client.get(), nullptr);
      if (values == nullptr) failBenchmark("no card");
      quenlet_values_free(values);
    });
  }
  latencies.report(state);
}

// Prints the median of a thousand fetches, in nanoseconds. The interpreter is one that the agent
// serves; see scripts/bench.
constexpr char pythonProgram[] = R"(
import statistics, time
import quenlet.blocking
with quenlet.blocking.Client() as me:
    times = []
    for turn in range(1100):
        begun = time.perf_counter_ns()
        me.card()
        times.append(time.perf_counter_ns() - begun)
print(statistics.median(times[100:]))
)";

void fetchInPython(benchmark::State& state) {
  const CardForPrograms card;
  const auto interpreter =
      std::filesystem::read_symlink("/proc/self/exe").parent_path() / "quenlet-bench-python";
  const std::string command = "exec \"" + interpreter.string() + "\" -c '" + pythonProgram + "'";
  for (auto _ : state) {
    double median = 0;
    FILE* output = ::popen(command.c_str(), "r");
    const bool hasRead = output != nullptr && ::fscanf(output, "%lf", &median) == 1;
    if (output == nullptr || ::pclose(output) != 0 || !hasRead) failBenchmark("no card");
    state.counters["p50"] = median;
  }
}

BENCHMARK(fetchInCxx)->UseRealTime();
BENCHMARK(fetchInC)->UseRealTime();
BENCHMARK(fetchInPython)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace quenlet
