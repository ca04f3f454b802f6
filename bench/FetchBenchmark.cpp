// A fetch of the card over the socket, against the same number of bytes sent to and fro between two
// processes with nothing else done to them.

#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>

#include "bench/RunningAgent.h"
#include "bench/SampleDonations.h"

namespace quenlet {
namespace {

constexpr std::size_t requestSizeInBytes = 48;

// Some e-mail addresses and numbers, about 1 KiB of card.
DonationValues smallCard() { return sampleDonations(5); }

bool receiveAll(int socket, std::string& buffer) {
  std::size_t received = 0;
  while (received < buffer.size()) {
    const ssize_t count = ::recv(socket, buffer.data() + received, buffer.size() - received, 0);
    if (count <= 0) return false;
    received += static_cast<std::size_t>(count);
  }
  return true;
}

void rawPingPong(benchmark::State& state) {
  const auto replySize = static_cast<std::size_t>(state.range(0));
  std::array<int, 2> sockets{};
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets.data()) != 0) std::abort();
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(sockets[0]);
    std::string request(requestSizeInBytes, 'q');
    const std::string reply(replySize, 'r');
    while (receiveAll(sockets[1], request)) ::send(sockets[1], reply.data(), reply.size(), 0);
    ::_exit(0);
  }
  ::close(sockets[1]);
  const std::string request(requestSizeInBytes, 'q');
  std::string reply(replySize, '\0');
  for (auto _ : state) {
    ::send(sockets[0], request.data(), request.size(), 0);
    benchmark::DoNotOptimize(receiveAll(sockets[0], reply));
  }
  ::close(sockets[0]);
  ::waitpid(child, nullptr, 0);
}

void fetchCard(benchmark::State& state) {
  RunningAgent agent;
  agent.donate(smallCard());
  CorvelProxy client;
  std::size_t fetched = 0;
  for (auto _ : state) {
    client.synchronousDonatedMeCard(
        [&fetched](const Result<ContactPtr>& card) { fetched += card.isLeft() ? 1 : 0; });
  }
  if (fetched != static_cast<std::size_t>(state.iterations())) state.SkipWithError("refused");
}

BENCHMARK(rawPingPong)->Arg(1024)->UseRealTime();
BENCHMARK(fetchCard)->UseRealTime();

}  // namespace
}  // namespace quenlet
