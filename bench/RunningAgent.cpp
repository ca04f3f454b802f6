#include "bench/RunningAgent.h"

#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "client/waitForReply.h"
#include "platform/accounts/Account.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "protocol/CorvelInterface.h"
#include "storage/DonationsText.h"

namespace quenlet {
namespace {

std::filesystem::path makeDirectory() {
  std::string path = (std::filesystem::temp_directory_path() / "quenlet-bench-XXXXXX").string();
  if (::mkdtemp(path.data()) == nullptr) failBenchmark("no temporary directory");
  return path;
}

std::filesystem::path ownProgram() { return std::filesystem::read_symlink("/proc/self/exe"); }

}  // namespace

AgentHome::AgentHome() : directory(makeDirectory()) {
  ::umask(0077);
  std::filesystem::create_directories(directory / "home");
  std::filesystem::create_directories(directory / "run");
  // For the clients in this process.
  ::setenv("XDG_RUNTIME_DIR", (directory / "run").c_str(), 1);
}

AgentHome::~AgentHome() {
  // Another process may be removing some of the files.
  std::error_code ignored;
  std::filesystem::remove_all(directory, ignored);
}

std::unique_ptr<ChildProcess> AgentHome::start() const {
  return std::make_unique<ChildProcess>(
      std::vector<std::string>{ownProgram().parent_path() / "quenlet-agent"},
      std::vector<std::string>{"HOME=" + (directory / "home").string()});
}

std::filesystem::path AgentHome::socket() const {
  return directory / "run/quenlet" / CorvelServiceName;
}

void AgentHome::hold(DonationValues values) const {
  const auto text =
      DonationsText::of(std::make_shared<const DonationValues>(std::move(values))).takeValue();
  std::filesystem::create_directories(donationsFile().parent_path());
  std::ofstream file(donationsFile(), std::ios::binary);
  text->handTo([&](std::string_view piece) { return bool(file << piece); });
  if (!file.flush()) failBenchmark("cannot write the donations");
}

void AgentHome::addAccounts(std::size_t count) const {
  const std::filesystem::path accounts = directory / "home/Library/Accounts";
  std::filesystem::create_directories(accounts);
  for (std::size_t number = 0; number < count; ++number) {
    const std::string name = "account-" + std::to_string(number);
    const Account account{.identifier = name,
                          .accountType = AccountType{"org.example.imap"},
                          .username = name + "@example.org",
                          .isActive = true,
                          .enabledDataclasses = {"ovaro.dataclass.mail"},
                          .properties = {{"FullUserName", "Ann Berg"}}};
    std::ofstream(accounts / (name + ".plist"))
        << PropertyListSerializer::dataWithObject(account.propertyListRepresentation()).value();
  }
}

RunningAgent::RunningAgent(const DonationValues& values) : process(home.start()) {
  waitUntilServing();
  if (!values.empty()) donate(values);
  // A new client: the old one has a thread for its asynchronous calls.
  client = std::make_unique<CorvelProxy>();
}

RunningAgent::RunningAgent(Stored stored)
    : process((home.hold(std::move(stored.values)), home.start())) {
  waitUntilServing();
}

void RunningAgent::waitUntilServing() {
  constexpr int attempts = 6000;  // a minute: a million donations take a while to load
  for (int attempt = 0; attempt < attempts; ++attempt) {
    bool served = false;
    client->synchronousDonatedMeCard(
        [&served](const Result<ContactPtr>& card) { served = card.ok(); });
    if (served) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  failBenchmark("the agent does not serve");
}

void RunningAgent::donate(const DonationValues& values) {
  const auto [error] = waitForReply<ErrorPtr>(
      [this, &values](ErrorReply reply) { client->donateMeCardValues(values, std::move(reply)); });
  if (error) failBenchmark(error->description());
}

}  // namespace quenlet
