#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>

#include <set>

#include "platform/files/PosixDataProxy.h"
#include "storage/DonationPersistence.h"
#include "tests/trust/FileCallPlan.h"
#include "tests/trust/RecordedDisk.h"
#include "tests/trust/TrustTest.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

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

  // The `call`-th one from now on.
  void strike(FileCallFate fate, int call, int error = 0, bool lasting = false) {
    plan->errorNumber = error;
    plan->lasting = lasting;
    plan->first = plan->calls + call;
    plan->fate = fate;
  }
  void startPlannedAgent() {
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
    return std::get<1>(waitForReply<bool, ErrorPtr>([&](SuccessReply reply) {
      client.removeDonatedMeCardValuesForIdentifiers({identifier}, std::move(reply));
    }));
  }
  static Table tableOf(const DonationValues& values) {
    Table table;
    for (const auto& value : values) {
      table[value->origin().donationIdentifier] = value->emailEntry()->value;
    }
    return table;
  }
  Table onDisk() { return tableOf(persistence.loadDonations().result().left()); }
  // The files in the directory of the donations, by name.
  [[nodiscard]] Table files() const {
    Table bytes;
    for (const auto& entry : std::filesystem::directory_iterator(donationsFile.parent_path())) {
      bytes[entry.path().filename()] = readFile(entry.path());
    }
    return bytes;
  }

  const std::filesystem::path planFile = temporary.path() / "plan";
  FileCallPlan* plan = nullptr;
  CorvelProxy client;
  const std::shared_ptr<PosixDataProxy> dataProxy = std::make_shared<PosixDataProxy>();
  DonationPersistence persistence{dataProxy};
};

class KillTest : public DiskTest {
 protected:
  // Donates, replaces and takes back until the agent is gone.
  void useAgent(int user, std::mt19937 chance) {
    CorvelProxy proxy;
    for (ErrorPtr error; !error;) {
      const std::string identifier = std::to_string(user) + std::to_string(chance() % 4);
      const std::string address =
          chance() % 5 == 0 ? "" : std::to_string(chance()) + "@example.org";
      auto& addresses = possible[user].emplace(identifier, std::set{std::string()}).first->second;
      addresses.insert(address);
      error = change(proxy, identifier, address, chance() % 3000);
      EXPECT_TRUE(!error || error->domain() == ServiceErrorDomain) << error->description();
      if (error) continue;
      addresses = {address};
      ++acknowledgements;
    }
  }
  void useUntilKilled(std::chrono::microseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    std::vector<std::jthread> users;
    for (int user = 0; user < 3; ++user) {
      users.emplace_back(&KillTest::useAgent, this, user, std::mt19937(random()));
    }
    while (agent->isRunning() && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    agent.reset();
  }
  void compare(Table found) {
    for (auto& ofUser : possible) {
      for (auto& [identifier, addresses] : ofUser) {
        EXPECT_TRUE(addresses.contains(found[identifier])) << identifier;
        addresses = {found[identifier]};
      }
    }
  }

  // By identifier, the address acknowledged last and the one of which no reply came; empty for
  // none.
  std::map<std::string, std::set<std::string>> possible[3];
  std::atomic<int> acknowledgements = 0;
};

// A third of the times at a random moment, a third at each call of the saves in turn, a third at
// each call of the start.
TEST_F(KillTest, KeepsWhatWasAcknowledgedAndLeavesNothingElse) {
  int cycle = 0;
  for (; cycle < count(300, 10'000) && !HasFailure(); ++cycle) {
    SCOPED_TRACE("cycle " + std::to_string(cycle));
    if (cycle % 3 == 0) strike(FileCallFate::kills, 1 + cycle / 3 % 40);
    auto table = startAndList();
    plan->fate = FileCallFate::none;
    if (!table) table = startAndList();
    EXPECT_EQ(table, onDisk());
    EXPECT_THAT(files(), testing::Each(testing::Key(
                             testing::AnyOf("donations.plist", "agent.lock", "CACHEDIR.TAG"))));
    compare(*table);
    if (cycle % 3 == 1) strike(FileCallFate::kills, 1 + cycle / 3 % 60);
    useUntilKilled(std::chrono::microseconds(cycle % 3 == 1 ? 150'000 : random() % 40'000));
    plan->fate = FileCallFate::none;
  }
  RecordProperty("kills and restarts", cycle);
  RecordProperty("changes acknowledged before them", acknowledgements);
}

class FileFaultTest : public DiskTest {
 protected:
  // Each kind of fault, once and for good, at one call after another, until a round makes fewer
  // calls before it calls heal().
  void forEachFault(const char* figure, const std::function<void()>& round) {
    int faults = 0;
    for (const int error : {0, ENOSPC, EIO, EROFS, EMFILE, EACCES, EINTR}) {
      const auto fate = error == 0 ? FileCallFate::fallsShort : FileCallFate::fails;
      for (const bool lasting : {false, true}) {
        reached = true;
        for (int call = 1; reached && !HasFailure(); ++call, ++faults) {
          SCOPED_TRACE(testing::Message() << "error " << error << lasting << " at call " << call);
          strike(fate, call, error, lasting);
          round();
        }
      }
    }
    RecordProperty(figure, faults);
  }
  void heal() {
    plan->fate = FileCallFate::none;
    reached = plan->calls >= plan->first;
  }

  bool reached = true;
};

TEST_F(FileFaultTest, TellsTheClientThatASaveFailedAndSavesAllWithTheNext) {
  Table before;
  ASSERT_EQ(startAndList(), before);
  std::map<bool, int> outcomes;
  forEachFault("faults in a save", [&] {
    Table after = before;
    const ErrorPtr error = change(client, "a", after["a"] = std::to_string(random()));
    heal();
    ++outcomes[error != nullptr];
    const Table found = onDisk();
    EXPECT_TRUE(found == after || (error && found == before));
    EXPECT_EQ(change(client, "b", after["b"] = "b" + after["a"]), nullptr);
    EXPECT_EQ(onDisk(), before = after);
    // Made anew by the next save.
    std::filesystem::remove(donationsFile.parent_path() / "CACHEDIR.TAG");
  });
  EXPECT_GT(outcomes[true], outcomes[false] / 3);
}

TEST_F(FileFaultTest, KeepsBesideTheNextSaveWhatAStartCouldNotRead) {
  forEachFault("faults in a start", [&] {
    std::filesystem::remove_all(home / "Library");
    EXPECT_TRUE(persistence.storeWithAllValues({email("old@")}).result().isLeft());
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
    std::string kept;
    for (const auto& [name, bytes] : files()) kept += bytes;
    EXPECT_THAT(kept, testing::AllOf(HasSubstr("old@"), HasSubstr(error ? "" : "first@")));
    agent.reset();
  });
}

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
  // Whether each power failure leaves the table acknowledged last or the one that is on its way,
  // or only the worst one when calls of the name `ignored` have no effect.
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
  strike(FileCallFate::kills, 4);
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
