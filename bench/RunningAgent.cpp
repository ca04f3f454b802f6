#include "bench/RunningAgent.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "client/waitForReply.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

[[noreturn]] void fail(const std::string& problem) {
  std::fprintf(stderr, "quenlet-bench: %s\n", problem.c_str());
  std::exit(1);
}

std::filesystem::path makeDirectory() {
  std::string path = (std::filesystem::temp_directory_path() / "quenlet-bench-XXXXXX").string();
  if (::mkdtemp(path.data()) == nullptr) fail("no temporary directory");
  return path;
}

std::filesystem::path ownProgram() { return std::filesystem::read_symlink("/proc/self/exe"); }

}  // namespace

RunningAgent::RunningAgent() : directory(makeDirectory()) {
  ::umask(0077);
  installWithEntitlement();
  std::filesystem::create_directories(directory / "home");
  std::filesystem::create_directories(directory / "run");
  ::setenv("XDG_RUNTIME_DIR", (directory / "run").c_str(), 1);
  const std::string program = directory / "bin/quenlet-agent";
  const std::string home = directory / "home";
  pid = ::fork();
  if (pid == 0) {
    ::setenv("HOME", home.c_str(), 1);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDERR_FILENO);
    ::execl(program.c_str(), program.c_str(), nullptr);
    ::_exit(127);
  }
  if (pid < 0) fail("cannot start the agent");
  proxy = std::make_unique<CorvelProxy>();
  waitUntilServing();
}

RunningAgent::~RunningAgent() {
  proxy.reset();
  ::kill(pid, SIGTERM);
  ::waitpid(pid, nullptr, 0);
  std::filesystem::remove_all(directory);
}

// A prefix of its own, which entitles this program.
void RunningAgent::installWithEntitlement() const {
  const std::filesystem::path entitlements = directory / "share/quenlet/entitlements";
  std::filesystem::create_directories(directory / "bin");
  std::filesystem::create_directories(entitlements);
  std::filesystem::copy_file(ownProgram().parent_path() / "quenlet-agent",
                             directory / "bin/quenlet-agent");
  PropertyListDictionary values;
  values.emplace("ovaro.private.contacts", true);
  PropertyListDictionary programs;
  programs.emplace(ownProgram().string(), std::move(values));
  const auto text = PropertyListSerializer::dataWithObject(std::move(programs));
  std::ofstream(entitlements / "bench.plist") << text.left();
}

void RunningAgent::waitUntilServing() {
  constexpr int attempts = 500;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    const auto [contact, error] = waitForReply<ContactPtr, ErrorPtr>(
        [this](ContactReply reply) { proxy->fetchDonatedMeCard(std::move(reply)); });
    if (contact) {
      // Without the thread that asynchronous calls have needed.
      proxy = std::make_unique<CorvelProxy>();
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  fail("the agent does not serve");
}

void RunningAgent::donate(const DonationValues& values) {
  const auto [error] = waitForReply<ErrorPtr>(
      [this, &values](ErrorReply reply) { proxy->donateMeCardValues(values, std::move(reply)); });
  if (error) fail(error->description());
}

}  // namespace quenlet
