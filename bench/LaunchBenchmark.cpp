// From the launch of the agent to its first answer, and what it costs while it has nothing to do,
// against the least that can answer over a Unix socket.

#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "bench/RawClient.h"
#include "bench/RunningAgent.h"
#include "bench/SampleDonations.h"

namespace quenlet {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t bareReplySize = 1024;

// Longer than anything that the agent does by itself after its start.
constexpr std::chrono::seconds untilIdle(8);
constexpr std::chrono::seconds watched(5);

// Asks until an answer comes, on connections of its own.
template <typename Answers>
void waitForAnswer(const std::filesystem::path& path, Answers answers) {
  while (true) {
    RawClient client(path);
    if (client.isConnected() && client.send(fetchRequest()) && answers(client)) return;
    std::this_thread::sleep_for(std::chrono::microseconds(20));
  }
}

std::string builtProgram(const char* name) {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

std::unique_ptr<ChildProcess> launchAgent(const AgentHome& home) {
  auto agent = home.start();
  waitForAnswer(home.socket(), [](RawClient& client) { return client.receiveMessage(); });
  return agent;
}

std::unique_ptr<ChildProcess> launchBareServer(const AgentHome& home) {
  const std::filesystem::path path = home.scratch("bare");
  std::filesystem::remove(path);
  auto server = std::make_unique<ChildProcess>(std::vector<std::string>{
      builtProgram("quenlet-bare-server"), path, std::to_string(fetchRequest().size()),
      std::to_string(bareReplySize)});
  waitForAnswer(path, [](RawClient& client) { return client.receive(bareReplySize); });
  return server;
}

// gpg-agent, as service managers start it: with a socket that listens already.
std::unique_ptr<ChildProcess> launchKeyAgent(const AgentHome& home) {
  constexpr int firstHanded = 3;
  const std::filesystem::path directory = home.scratch("gnupg");
  std::filesystem::create_directories(directory);
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, (directory / "S.gpg-agent").c_str(), sizeof address.sun_path - 1);
  if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(socket.get(), SOMAXCONN) != 0) {
    failBenchmark("no socket for gpg-agent");
  }
  return std::make_unique<ChildProcess>([&] {
    ::dup2(socket.get(), firstHanded);
    ::setenv("GNUPGHOME", directory.c_str(), 1);
    ::setenv("LISTEN_FDS", "1", 1);
    ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
    ::execlp("gpg-agent", "gpg-agent", "--supervised", "--log-file", "/dev/null", nullptr);
  });
}

// A home that holds so many donations.
void prepare(const AgentHome& home, std::size_t donations) {
  if (donations > 0) home.hold(sampleDonations(donations));
}

std::size_t fetchedAddresses(const std::string& reply) {
  return static_cast<std::size_t>(std::count(reply.begin(), reply.end(), '@'));
}

// The longest wait of one who fetches all the time while an agent reads accounts for the first
// time.
void fetchWhileAccountsAreRead(benchmark::State& state) {
  const auto accounts = static_cast<std::size_t>(state.range(0));
  for (auto _ : state) {
    const AgentHome home;
    home.addAccounts(accounts);
    const auto agent = launchAgent(home);
    RawClient client(home.socket());
    Clock::duration longest{};
    do {
      const auto begin = Clock::now();
      if (!client.send(fetchRequest()) || !client.receiveMessage()) failBenchmark("no card");
      longest = std::max(longest, Clock::now() - begin);
    } while (fetchedAddresses(client.received) < accounts);
    state.SetIterationTime(std::chrono::duration<double>(longest).count());
  }
}

template <typename Launch>
void timeLaunch(benchmark::State& state, Launch launch) {
  for (auto _ : state) {
    const auto begin = Clock::now();
    const auto process = launch();
    state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
  }
}

void launchToFirstAnswer(benchmark::State& state) {
  const AgentHome home;
  prepare(home, static_cast<std::size_t>(state.range(0)));
  timeLaunch(state, [&] { return launchAgent(home); });
}

void launchToFirstAnswerBare(benchmark::State& state) {
  const AgentHome home;
  timeLaunch(state, [&] { return launchBareServer(home); });
}

template <typename Launch>
void lookAtIdleProcess(benchmark::State& state, Launch launch) {
  for (auto _ : state) {
    const auto process = launch();
    std::this_thread::sleep_for(untilIdle);
    state.counters["pss"] = static_cast<double>(process->pssInBytes());
    state.counters["dirty"] = static_cast<double>(process->privateDirtyInBytes());
    const std::uint64_t before = process->contextSwitches();
    std::this_thread::sleep_for(watched);
    state.counters["wakeups"] = static_cast<double>(process->contextSwitches() - before);
    state.counters["threads"] = static_cast<double>(process->threads());
  }
}

void idleMemory(benchmark::State& state) {
  const AgentHome home;
  prepare(home, static_cast<std::size_t>(state.range(0)));
  lookAtIdleProcess(state, [&] { return launchAgent(home); });
  std::error_code missing;
  const auto bytes = std::filesystem::file_size(home.donationsFile(), missing);
  state.counters["held"] = missing ? 0.0 : static_cast<double>(bytes);
}

void idleMemoryBare(benchmark::State& state) {
  const AgentHome home;
  lookAtIdleProcess(state, [&] { return launchBareServer(home); });
}

// Beside programs that share the libraries of a C++ program with it, as a desktop has them.
void idleMemoryBesideOthers(benchmark::State& state) {
  constexpr int others = 4;
  for (auto _ : state) {
    const AgentHome home;
    const auto agent = launchAgent(home);
    const auto keyAgent = launchKeyAgent(home);
    std::vector<std::unique_ptr<ChildProcess>> beside;
    while (beside.size() < others) {
      beside.push_back(std::make_unique<ChildProcess>(
          std::vector<std::string>{builtProgram("quenlet"), "watch"}));
    }
    std::this_thread::sleep_for(untilIdle);
    state.counters["pss"] = static_cast<double>(agent->pssInBytes());
    state.counters["keyAgent"] = static_cast<double>(keyAgent->pssInBytes());
    for (const auto& other : beside) {
      if (other->pssInBytes() == 0) failBenchmark("quenlet watch has ended");
    }
    if (keyAgent->pssInBytes() == 0) failBenchmark("gpg-agent has ended");
  }
}

BENCHMARK(launchToFirstAnswer)->Arg(0)->Arg(10'000)->UseManualTime();
BENCHMARK(launchToFirstAnswerBare)->UseManualTime();
BENCHMARK(fetchWhileAccountsAreRead)
    ->Arg(3'000)
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(idleMemory)->Arg(0)->Arg(10'000)->Iterations(1);
BENCHMARK(idleMemoryBare)->Iterations(1);
BENCHMARK(idleMemoryBesideOthers)->Iterations(1);

}  // namespace
}  // namespace quenlet
