// A fetch of the card over the socket: one by one, pipelined, and on a connection of its own,
// against the same bytes sent to and fro with nothing else done to them. All on one core.

#include <benchmark/benchmark.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <string>
#include <thread>

#include "bench/Latencies.h"
#include "bench/RawClient.h"
#include "bench/RunningAgent.h"
#include "bench/SampleDonations.h"
#include "platform/ipc/FrameHeader.h"

namespace quenlet {
namespace {

constexpr std::size_t pipelinedRequests = 64;

// About 1 KiB on the wire.
DonationValues smallCard() { return sampleDonations(7); }

struct CardServer final {
  const OnOneCore pinned;
  RunningAgent agent{smallCard()};
  const std::string request = fetchRequest();

  // All bytes of one reply, the header's too.
  [[nodiscard]] std::size_t replySize() const {
    RawClient client(agent.home.socket());
    if (!client.send(request) || !client.receiveMessage()) failBenchmark("no card");
    return client.received.size() + FrameHeader::sizeInBytes;
  }
};

struct BareServer final {
  explicit BareServer(const CardServer& card)
      : path(card.agent.home.scratch("bare")),
        process(
            {std::filesystem::read_symlink("/proc/self/exe").parent_path() / "quenlet-bare-server",
             path, std::to_string(card.request.size()), std::to_string(card.replySize())}) {
    while (!RawClient(path).isConnected()) std::this_thread::yield();
  }
  const std::filesystem::path path;
  const ChildProcess process;
};

void pingPong(benchmark::State& state, RawClient::Wait wait) {
  const CardServer card;
  const std::size_t replySize = card.replySize();
  std::array<int, 2> sockets{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
    failBenchmark("no sockets");
  }
  RawClient near(FileDescriptor(sockets[0]), wait);
  RawClient far{FileDescriptor(sockets[1])};
  // The other side runs in a fork of this process.
  const ChildProcess echo([&] {
    const std::string reply(replySize, 'r');
    while (far.receive(card.request.size()) && far.send(reply)) continue;
  });
  Latencies latencies;
  for (auto _ : state) {
    latencies.measure([&] {
      if (!near.send(card.request) || !near.receive(replySize)) failBenchmark("no echo");
    });
  }
  latencies.report(state);
}

void rawPingPong(benchmark::State& state) { pingPong(state, RawClient::Wait::inReceive); }

void rawPingPongInPoll(benchmark::State& state) { pingPong(state, RawClient::Wait::inPoll); }

void fetch(benchmark::State& state, RawClient::Wait wait) {
  const CardServer card;
  const std::size_t replySize = card.replySize();
  RawClient client(card.agent.home.socket(), wait);
  Latencies latencies;
  for (auto _ : state) {
    latencies.measure([&] {
      if (!client.send(card.request) || !client.receive(replySize)) failBenchmark("no card");
    });
  }
  latencies.report(state);
  state.counters["bytes"] = static_cast<double>(replySize);
}

void fetchCard(benchmark::State& state) { fetch(state, RawClient::Wait::inReceive); }

void fetchCardInPoll(benchmark::State& state) { fetch(state, RawClient::Wait::inPoll); }

void fetchBare(benchmark::State& state) {
  const CardServer card;
  const BareServer bare(card);
  const std::size_t replySize = card.replySize();
  RawClient client(bare.path);
  Latencies latencies;
  for (auto _ : state) {
    latencies.measure([&] {
      if (!client.send(card.request) || !client.receive(replySize)) failBenchmark("no reply");
    });
  }
  latencies.report(state);
}

void fetchCardThroughLibrary(benchmark::State& state) {
  const CardServer card;
  Latencies latencies;
  std::size_t fetched = 0;
  for (auto _ : state) {
    latencies.measure([&] {
      card.agent.client->synchronousDonatedMeCard(
          [&fetched](const Result<ContactPtr>& reply) { fetched += reply.ok() ? 1 : 0; });
    });
  }
  if (fetched != static_cast<std::size_t>(state.iterations())) failBenchmark("no card");
  latencies.report(state);
}

void fetchCardPipelined(benchmark::State& state) {
  const CardServer card;
  RawClient client(card.agent.home.socket());
  std::string requests;
  for (std::size_t i = 0; i < pipelinedRequests; ++i) requests += card.request;
  const std::size_t replySize = card.replySize();
  for (auto _ : state) {
    if (!client.send(requests) || !client.receive(pipelinedRequests * replySize)) {
      failBenchmark("no cards");
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(pipelinedRequests));
}

void connectAndFetch(benchmark::State& state, const std::filesystem::path& path,
                     const CardServer& card) {
  const std::size_t replySize = card.replySize();
  for (auto _ : state) {
    RawClient client(path);
    if (!client.send(card.request) || !client.receive(replySize)) failBenchmark("no card");
  }
}

void connectFetchClose(benchmark::State& state) {
  const CardServer card;
  connectAndFetch(state, card.agent.home.socket(), card);
}

void connectFetchCloseBare(benchmark::State& state) {
  const CardServer card;
  const BareServer bare(card);
  connectAndFetch(state, bare.path, card);
}

BENCHMARK(rawPingPong)->UseRealTime();
BENCHMARK(rawPingPongInPoll)->UseRealTime();
BENCHMARK(fetchCard)->UseRealTime();
BENCHMARK(fetchCardInPoll)->UseRealTime();
BENCHMARK(fetchBare)->UseRealTime();
BENCHMARK(fetchCardThroughLibrary)->UseRealTime();
BENCHMARK(fetchCardPipelined)->UseRealTime();
BENCHMARK(connectFetchClose)->UseRealTime();
BENCHMARK(connectFetchCloseBare)->UseRealTime();

}  // namespace
}  // namespace quenlet
