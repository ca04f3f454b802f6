#include <sys/mman.h>

#include "mecard/DonatedEntries.h"
#include "platform/files/PosixDataProxy.h"
#include "storage/DonationPersistence.h"
#include "tests/trust/FileCallPlan.h"
#include "tests/trust/TrustTest.h"

namespace quenlet {
namespace {

using namespace testing;

// The agent, with a plan for its calls on files below its home, and a client of its own.
class DiskTest : public TrustTest {
 protected:
  using Table = std::map<std::string, std::string>;  // addresses by donation identifier

  DiskTest() {
    std::filesystem::create_directories(home);
    writeFile(planFile, std::string(sizeof(FileCallPlan), '\0'));
    const FileDescriptor file(::open(planFile.c_str(), O_RDWR | O_CLOEXEC));
    plan = static_cast<FileCallPlan*>(
        ::mmap(nullptr, sizeof(FileCallPlan), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0));
    ::setenv("QUENLET_TRUST_PLAN", planFile.c_str(), 1);
    ::setenv("HOME", home.c_str(), 1);
  }

  void strike(int fate, int callFromNow, bool lasting = false) {
    plan->lasting = lasting;
    plan->first = plan->calls + callFromNow;
    plan->fate = fate;
  }
  void startPlannedAgent() {
    // One that was killed holds its lock until the last of its threads has gone.
    agent.reset();
    agent = start({"env", "LD_PRELOAD=" + (bin / "../lib/quenlet/file-calls.so").string(),
                   bin / "quenlet-agent"});
  }
  // What the agent lists once it is started; nothing when it ended before.
  std::optional<Table> startAndList() {
    std::shared_ptr<const DonationValues> listed;
    startPlannedAgent();
    EXPECT_TRUE(eventually([&] {
      listed = std::get<0>(waitForReply<std::shared_ptr<const DonationValues>, ErrorPtr>(
          [&](DonationsReply reply) { client.meCardDonations(std::move(reply)); }));
      return listed || !agent->isRunning();
    }));
    return listed ? std::optional(tableOf(*listed)) : std::nullopt;
  }
  // Donates an address; an empty one takes the donation back.
  static ErrorPtr change(CorvelProxy& client, const std::string& identifier,
                         const std::string& address, std::size_t labelSize = 1200) {
    const std::string label(labelSize, 'x');
    if (!address.empty()) return donateTo(client, {email(address, from("app", identifier), label)});
    return removeFrom(client, {identifier});
  }
  // Lets users go about their business, each on a thread of its own, with a chance of its own.
  template <typename Use>
  std::vector<std::jthread> startUsers(std::size_t number, const Use& use) {
    std::vector<std::jthread> threads;
    for (std::size_t user = 0; user < number; ++user) {
      threads.emplace_back([use, user, chance = std::mt19937(random())] { use(user, chance); });
    }
    return threads;
  }
  static Table tableOf(const DonationValues& values) {
    Table table;
    for (const auto& value : values) {
      table[value->decoded().origin.donationIdentifier] = entryOf<std::string>(*value)->value;
    }
    return table;
  }
  static Table onDisk() { return tableOf(persistence.loadDonations().result().value()); }
  // The names and bytes of all files beside the donations.
  [[nodiscard]] std::string filesBeside() const {
    std::string text;
    for (const auto& entry : std::filesystem::directory_iterator(donationsFile.parent_path())) {
      text += entry.path().filename().string() + readFile(entry.path());
    }
    return text;
  }

  const std::filesystem::path planFile = temporary.path() / "plan";
  FileCallPlan* plan = nullptr;
  inline static DonationPersistence persistence{std::make_shared<PosixDataProxy>()};
};

class KillTest : public DiskTest {
 protected:
  // Donates, replaces and takes back until the agent is gone.
  void useAgent(std::size_t user, std::mt19937 chance) {
    CorvelProxy proxy;
    for (ErrorPtr error; !error;) {
      const std::size_t slot = user * 4 + chance() % 4;
      const std::string address = chance() % 5 == 0 ? "" : std::to_string(chance());
      possible[slot].insert(address);
      error = change(proxy, std::to_string(slot), address, chance() % 3000);
      EXPECT_TRUE(!error || error->domain() == ServiceErrorDomain) << error->description();
      if (!error) possible[slot] = {address};
      acknowledgements += !error;
    }
  }

  // The address acknowledged last and the one of which no reply came; empty for none.
  std::vector<std::set<std::string>> possible = std::vector(12, std::set<std::string>{""});
  std::atomic<int> acknowledgements = 0;
};

// A third of the times at random, a third at each call of the saves, a third at each of the start.
TEST_F(KillTest, KeepsWhatWasAcknowledgedAndLeavesNothingElse) {
  int cycle = 0;
  for (; cycle < count(300, 10'000) && !HasFailure(); ++cycle) {
    SCOPED_TRACE("cycle " + std::to_string(cycle));
    if (cycle % 3 == 0) strike(FileCallPlan::kills, 1 + cycle / 3 % 40);
    auto table = startAndList();
    plan->fate = 0;
    if (!table) table = startAndList();
    EXPECT_EQ(table, onDisk());
    EXPECT_THAT(filesBeside(), Not(AnyOf(HasSubstr(".quenlet-"), HasSubstr(".damaged-"))));
    for (std::size_t slot = 0; slot < possible.size(); ++slot) {
      const std::string& address = (*table)[std::to_string(slot)];
      EXPECT_TRUE(possible[slot].contains(address)) << slot;
      possible[slot] = {address};
    }
    if (cycle % 3 == 1) strike(FileCallPlan::kills, 1 + cycle / 3 % 60);
    auto users = startUsers(3, [this](auto user, auto chance) { useAgent(user, chance); });
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 40'000));
    agent.reset();
    users.clear();
    plan->fate = 0;
  }
  RecordProperty("kills and restarts", cycle);
  RecordProperty("changes acknowledged before them", acknowledgements);
}

class OrderlyEndTest : public DiskTest {
 protected:
  static constexpr std::size_t users = 5;

  // Donates an address and takes it back, in one user's way, until the agent takes no more.
  void useAgent(std::size_t user, std::mt19937 chance) {
    CorvelProxy proxy;
    std::string& address = acknowledged[user];
    const std::string name = "user" + std::to_string(user);
    for (ErrorPtr error; !error;) {
      const std::string next =
          address.empty() ? name + "-" + std::to_string(chance()) + "@example.org" : "";
      error = changeInWayOf(user, proxy, name, next);
      EXPECT_TRUE(!error || error->domain() == ServiceErrorDomain) << error->description();
      if (!error) address = next;
      changes += !error;
      // Changes of accounts are answered before they are made; they must not pile up for the end.
      if (!error && user == 0) error = fetch(proxy);
    }
  }

  std::vector<std::string> acknowledged = std::vector<std::string>(users);
  std::atomic<int> changes = 0;

 private:
  // Donates the address; takes the one donated back when it is empty.
  static ErrorPtr changeInWayOf(std::size_t user, CorvelProxy& proxy, const std::string& name,
                                const std::string& address) {
    const bool donates = !address.empty();
    return std::get<0>(waitForReply<ErrorPtr>([&](const ErrorReply& reply) {
      const SuccessReply success = [reply](bool, const ErrorPtr& error) { reply(error); };
      const auto account = std::make_shared<Account>(
          Account{.identifier = name, .username = address, .enabledDataclasses = {"mail"}});
      const auto former = donates ? nullptr : account, present = donates ? account : nullptr;
      if (user == 0) return proxy.changeFromAccount(former, present, reply);
      if (donates) return proxy.donateMeCardValues({email(address, from(name, name, name))}, reply);
      if (user == 1) return proxy.removeDonatedMeCardValuesForIdentifiers({name}, success);
      if (user == 2) return proxy.removeDonatedMeCardValuesWithBundleIdentifier(name, success);
      if (user == 3) return proxy.rejectValueWithDonationIdentifier(name, reply);
      proxy.rejectValuesWithClusterIdentifier(name, reply);
    }));
  }
};

// Some thousand donations make each save long enough to be hit.
TEST_F(OrderlyEndTest, AnswersAndSavesWhatItTookAndNothingElse) {
  const auto others = std::make_shared<DonationValues>();
  for (int number = 0; number < count(3'000, 60'000); ++number) {
    others->push_back(email("a@x", from("other", std::to_string(number))));
  }
  EXPECT_TRUE(persistence.storeWithAllValues(others).result().ok());
  // Else an agent that starts drops accounts that are in no store, as these are.
  const ExtensionVersions allRead{{AccountsBundleIdentifier, 1'000'000}};
  EXPECT_TRUE(persistence.storeWithExtensionVersions(allRead).result().ok());
  int cycle = 0;
  for (; cycle < count(10, 300) && !HasFailure(); ++cycle) {
    SCOPED_TRACE("cycle " + std::to_string(cycle));
    ASSERT_TRUE(startAndList());
    auto threads = startUsers(users, [this](auto user, auto chance) { useAgent(user, chance); });
    std::this_thread::sleep_for(std::chrono::milliseconds(random() % 400));
    EXPECT_EQ(stopAgent(cycle % 2 == 0 ? SIGTERM : SIGINT), 0);
    threads.clear();
    std::multiset<std::string> saved;
    for (const auto& [identifier, address] : onDisk()) {
      if (address != "a@x") saved.insert(address);
    }
    std::multiset<std::string> expected(acknowledged.begin(), acknowledged.end());
    expected.erase("");
    EXPECT_EQ(saved, expected);
  }
  RecordProperty("orderly ends", cycle);
  RecordProperty("changes acknowledged before them", changes);
}

class FileFaultTest : public DiskTest {
 protected:
  // Each kind of fault, once and for good, at each call in turn that a round makes before heal().
  void forEachFault(const char* figure, const std::function<void()>& round) {
    int faults = 0;
    for (const int fate : {FileCallPlan::fallsShort, ENOSPC, EIO, EROFS, EMFILE, EACCES, EINTR}) {
      for (const bool lasting : {false, true}) {
        reached = true;
        for (int call = 1; reached && !HasFailure(); ++call, ++faults) {
          SCOPED_TRACE(Message() << "fate " << fate << lasting << " at call " << call);
          strike(fate, call, lasting);
          round();
        }
      }
    }
    EXPECT_GT(faults, 200);
    RecordProperty(figure, faults);
  }
  void heal() {
    plan->fate = 0;
    reached = plan->calls >= plan->first;
  }

  bool reached = true;
};

TEST_F(FileFaultTest, TellsTheClientThatASaveFailedAndSavesAllWithTheNext) {
  Table before;
  ASSERT_EQ(startAndList(), before);
  forEachFault("faults in a save", [&] {
    Table after = before;
    const ErrorPtr error = change(client, "a", after["a"] = std::to_string(random()));
    heal();
    EXPECT_THAT(onDisk(), error ? AnyOf(before, after) : AnyOf(after, after));
    EXPECT_EQ(change(client, "b", after["b"] = "b" + after["a"]), nullptr);
    EXPECT_EQ(onDisk(), before = after);
    std::filesystem::remove(donationsFile.parent_path() / "CACHEDIR.TAG");  // is made anew
  });
}

TEST_F(FileFaultTest, KeepsBesideTheNextSaveWhatAStartCouldNotRead) {
  forEachFault("faults in a start", [&] {
    std::filesystem::remove_all(home / "Library");
    EXPECT_TRUE(persistence.storeWithAllValues(listOf({email("old@")})).result().ok());
    startPlannedAgent();
    ErrorPtr error;
    EXPECT_TRUE(eventually([&] {
      error = change(client, "a", "first@");
      return !error || error->domain() != ServiceErrorDomain || !agent->isRunning();
    }));
    heal();
    if (agent->isRunning()) {
      EXPECT_EQ(change(client, "b", "next@"), nullptr);
      EXPECT_EQ(onDisk().at("b"), "next@");
    } else {
      EXPECT_THAT(agent->err(), HasSubstr("quenlet-agent: "));
    }
    EXPECT_THAT(filesBeside(), AllOf(HasSubstr("old@"), HasSubstr(error ? "" : "first@")));
    agent.reset();
  });
}

// What recorded calls did to the files on the way to a directory and in it, on a disk that keeps
// for sure what was synchronized. Later changes of a directory it keeps or not, each by itself; of
// a file's later bytes it keeps some at the front, or all but blocks of zeros.
class RecordedDisk final {
 public:
  using path = std::filesystem::path;

  RecordedDisk(path home, path inspected)
      : directory(std::move(inspected)), files{{std::move(home), std::make_shared<File>()}} {}

  // `call` is open, mkdir, rename (to `data`), write or synchronize; others do not matter here.
  void apply(char call, int descriptor, const path& name, const std::string& data) {
    if (call == 'o') opened[descriptor] = name;
    const path& at = name.empty() ? opened[descriptor] : name;
    if (!directory.native().starts_with(at.parent_path().native())) return;
    if (call == 'm' || (call == 'o' && !files.contains(at))) {
      changes.push_back({at, files[at] = std::make_shared<File>(File{call == 'm'})});
    }
    if (call == 'r') changes.push_back({data, files[data] = files.at(at), at});
    if (call == 'w') files.at(at)->bytes += data;
    if (call != 's') return;
    files.at(at)->safeSize = files.at(at)->bytes.size();
    for (Change& change : changes) change.isSafe |= change.name.parent_path() == at;
  }
  // In how many ways a power failure may leave it.
  [[nodiscard]] std::size_t countWays() const {
    std::size_t ways = 1;
    for (const Change& change : changes) ways *= change.isSafe ? 1 : 2;
    for (const auto& [name, file] : files) ways *= file->countWays();
    return ways;
  }
  // Makes what is left after one of them.
  void restore(std::size_t way) const {
    std::map<path, std::shared_ptr<File>> left;
    for (const Change& change : changes) {
      if (!change.isSafe && std::exchange(way, way / 2) % 2 == 0) continue;
      left[change.name] = change.file;
      left.erase(change.nameBefore);
    }
    for (const auto& [name, file] : left) {
      if (!exists(name.parent_path())) continue;
      if (file->isDirectory) create_directory(name);
      if (!file->isDirectory) std::ofstream(name, std::ios::binary) << file->afterwards(way);
    }
  }

 private:
  struct File final {
    bool isDirectory = true;
    std::string bytes = {};
    std::size_t safeSize = 0;

    [[nodiscard]] std::size_t unsafeSize() const { return bytes.size() - safeSize; }
    [[nodiscard]] std::size_t countWays() const {
      return unsafeSize() + (std::size_t{1} << (unsafeSize() + 511) / 512);
    }
    [[nodiscard]] std::string afterwards(std::size_t way) const {
      if (way < unsafeSize()) return bytes.substr(0, safeSize + way);
      std::string left = bytes;
      for (std::size_t i = safeSize; i < left.size(); ++i) {
        if ((way - unsafeSize()) >> ((i - safeSize) / 512) & 1) left[i] = '\0';
      }
      return left;
    }
  };
  struct Change final {
    path name;
    std::shared_ptr<File> file;
    path nameBefore = {};
    bool isSafe = false;
  };

  path directory;
  std::map<path, std::shared_ptr<File>> files;
  std::vector<Change> changes;
  std::map<int, path> opened;
};

class PowerFailTest : public DiskTest {
 protected:
  PowerFailTest() { writeFile(recordFile, ""); }

  void perform(const std::string& identifier, const std::string& address) {
    ASSERT_EQ(change(client, identifier, address), nullptr);
    tables.push_back(tables.back());
    tables.back()[identifier] = address;
    if (address.empty()) tables.back().erase(identifier);
    std::ofstream(recordFile, std::ios::app) << 'a' << '\0' << 0 << '\0' << '\0' << '\0';
  }
  // Whether each power failure, or the worst when `ignored` calls have no effect, leaves the table
  // acknowledged last or the next one.
  bool survives(char ignored = '\0') {
    RecordedDisk disk(home, donationsFile.parent_path());
    std::size_t acknowledged = 0;
    std::ifstream record(recordFile, std::ios::binary);
    for (std::string call, descriptor, name, data; std::getline(record, call, '\0');) {
      for (std::string* field : {&descriptor, &name, &data}) std::getline(record, *field, '\0');
      acknowledged += call == "a";
      if (call.front() == ignored) continue;
      disk.apply(call.front(), std::stoi(descriptor), name, data);
      const std::size_t ways = ignored == '\0' ? disk.countWays() : 1;
      if (ways > 1'000'000) return false;  // hardly anything is synchronized
      for (std::size_t way = 0; way < ways; ++way, ++states) {
        std::filesystem::remove_all(home / "Library");
        disk.restore(way);
        const std::size_t next = std::min(acknowledged + 1, tables.size() - 1);
        const Table left = onDisk();
        if (left != tables[acknowledged] && left != tables[next]) return false;
      }
    }
    return true;
  }

  const std::filesystem::path recordFile = planFile.native() + ".record";
  std::vector<Table> tables{{}};
  int states = 0;
};

TEST_F(PowerFailTest, LeavesTheOldTableOrTheNewOne) {
  ASSERT_EQ(startAndList(), Table());
  perform("a", "1@example.org");
  perform("b", "2@example.org");
  perform("a", "");
  strike(FileCallPlan::kills, 4);
  EXPECT_NE(change(client, "c", "3@example.org"), nullptr);
  ASSERT_EQ(startAndList(), tables.back());
  perform("c", "4@example.org");
  for (int i = 0; i < count(4, 10); ++i) perform("d", std::to_string(i) + "@example.org");
  agent.reset();

  EXPECT_TRUE(survives());
  RecordProperty("states after a power failure", states);
  EXPECT_FALSE(survives('s') || survives('r')) << "a missing step goes unnoticed";
}

}  // namespace
}  // namespace quenlet
