// A durable donation with 1,000 donations held, against the bare replacement of a file of the same
// bytes: write, sync, rename, sync of the directory.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "bench/RunningAgent.h"
#include "bench/SampleDonations.h"

namespace quenlet {
namespace {

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

bool replace(const std::filesystem::path& file, const std::string& content) {
  const std::string temporary = file.string() + ".new";
  const int written = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (::write(written, content.data(), content.size()) != static_cast<ssize_t>(content.size()) ||
      ::fsync(written) != 0 || ::close(written) != 0 ||
      std::rename(temporary.c_str(), file.c_str()) != 0) {
    return false;
  }
  const int directory = ::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  return ::fsync(directory) == 0 && ::close(directory) == 0;
}

constexpr std::size_t heldDonations = 1'000;

void bareReplace(benchmark::State& state) {
  RunningAgent agent;
  agent.donate(sampleDonations(heldDonations));
  const std::string content = contentOf(agent.donationsFile());
  const std::filesystem::path file = agent.donationsFile().parent_path() / "bare.plist";
  for (auto _ : state) {
    if (!replace(file, content)) state.SkipWithError("cannot write");
  }
}

void durableDonate(benchmark::State& state) {
  RunningAgent agent;
  agent.donate(sampleDonations(heldDonations));
  const DonationValues one = sampleDonations(2);
  for (auto _ : state) agent.donate(one);
}

BENCHMARK(bareReplace)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(durableDonate)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quenlet
