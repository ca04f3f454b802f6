// A durable donation. One client with 1,000 donations held, against the bare replacement of a file
// of the same bytes: write, sync, rename, sync of the directory. Many clients, each with one
// donation that it replaces, against a database that makes one row durable a commit.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>

#include "bench/Latencies.h"
#include "bench/RawClient.h"
#include "bench/RunningAgent.h"
#include "bench/SampleDonations.h"
#include "client/waitForReply.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {
namespace {

constexpr std::size_t heldDonations = 1'000;

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

// The two take turns within one loop, as the disk's speed changes from second to second. All on one
// core, like everything where two processes talk.
void donateBesideReplacements(benchmark::State& state, const RunningAgent& agent) {
  RawClient client(agent.home.socket());
  const std::string request = donateRequest(sampleDonations(1));
  const std::filesystem::path stored = agent.home.donationsFile();
  const std::filesystem::path bare = stored.parent_path() / "bare.plist";
  const std::string content = contentOf(stored);
  Latencies donations;
  Latencies replacements;
  agent.process->forgetPeak();
  for (auto _ : state) {
    donations.measure([&] {
      if (!client.send(request) || !client.receiveMessage()) failBenchmark("not donated");
    });
    replacements.measure([&] {
      if (!replace(bare, content)) failBenchmark("cannot write");
    });
  }
  replacements.report(state);
  state.counters["bare_p50"] = state.counters["p50"];
  donations.report(state);
  state.counters["peak"] = static_cast<double>(agent.process->peakInBytes());
  state.counters["held"] = static_cast<double>(content.size());
}

void durableDonate(benchmark::State& state) {
  const OnOneCore pinned;
  donateBesideReplacements(state, RunningAgent(sampleDonations(heldDonations)));
}

void donateToMany(benchmark::State& state) {
  const auto held = static_cast<std::size_t>(state.range(0));
  donateBesideReplacements(state, RunningAgent(RunningAgent::Stored{sampleDonations(held)}));
}

void donateFromMany(benchmark::State& state) {
  static std::optional<RunningAgent> agent;
  if (state.thread_index() == 0) agent.emplace();
  const auto thread = static_cast<std::size_t>(state.thread_index());
  const DonationValues one = {sampleDonations(thread + 1).back()};
  CorvelProxy client;
  for (auto _ : state) {
    const auto [error] = waitForReply<ErrorPtr>(
        [&](ErrorReply reply) { client.donateMeCardValues(one, std::move(reply)); });
    if (error) failBenchmark(error->description());
  }
  state.SetItemsProcessed(state.iterations());
  if (state.thread_index() == 0) agent.reset();
}

class Database final {
 public:
  explicit Database(const std::filesystem::path& file) {
    if (sqlite3_open(file.c_str(), &database) != SQLITE_OK) failBenchmark("no database");
    sqlite3_busy_timeout(database, 60'000);
    perform("PRAGMA journal_mode=WAL");
    perform("PRAGMA synchronous=FULL");
    perform("CREATE TABLE IF NOT EXISTS donations (identifier INTEGER PRIMARY KEY, text TEXT)");
    sqlite3_prepare_v2(database, "REPLACE INTO donations VALUES (?, ?)", -1, &statement, nullptr);
  }
  ~Database() {
    sqlite3_finalize(statement);
    sqlite3_close(database);
  }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  void replaceRow(int identifier, const std::string& text) {
    sqlite3_bind_int(statement, 1, identifier);
    sqlite3_bind_text(statement, 2, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    if (sqlite3_step(statement) != SQLITE_DONE) failBenchmark(sqlite3_errmsg(database));
    sqlite3_reset(statement);
  }

 private:
  void perform(const char* text) {
    if (sqlite3_exec(database, text, nullptr, nullptr, nullptr) != SQLITE_OK) {
      failBenchmark(sqlite3_errmsg(database));
    }
  }

  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
};

// The threads wait for each other at the start and at the end of the loop.
struct SharedDatabase final {
  AgentHome place;
  Mutex mutex;
  Database database{place.scratch("donations.db")};
};

// Each client with a connection of its own, as programs have that share a database.
void commitFromMany(benchmark::State& state) {
  static std::optional<SharedDatabase> shared;
  if (state.thread_index() == 0) shared.emplace();
  const std::string text(*sampleDonations(1).front()->propertyListText());
  std::optional<Database> own;
  for (auto _ : state) {
    if (!own) own.emplace(shared->place.scratch("donations.db"));
    own->replaceRow(state.thread_index(), text);
  }
  state.SetItemsProcessed(state.iterations());
  own.reset();
  if (state.thread_index() == 0) shared.reset();
}

// All through one connection, as a service could that keeps its data in a database.
void commitThroughOneConnection(benchmark::State& state) {
  static std::optional<SharedDatabase> shared;
  if (state.thread_index() == 0) shared.emplace();
  const std::string text(*sampleDonations(1).front()->propertyListText());
  for (auto _ : state) {
    MutexLock lock(shared->mutex);
    shared->database.replaceRow(state.thread_index(), text);
  }
  state.SetItemsProcessed(state.iterations());
  if (state.thread_index() == 0) shared.reset();
}

BENCHMARK(durableDonate)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(donateToMany)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Iterations(5)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(donateFromMany)->Threads(16)->Threads(64)->UseRealTime();
BENCHMARK(commitFromMany)->Threads(16)->Threads(64)->UseRealTime();
BENCHMARK(commitThroughOneConnection)->Threads(16)->Threads(64)->UseRealTime();

}  // namespace
}  // namespace quenlet
