#pragma once

#include <algorithm>
#include <memory>

#include "tests/process/ChildProcess.h"

namespace quenlet {

// The programs as they were built, run as a user with a home, which nobody has created yet, and a
// runtime directory of its own.
class ProcessTest : public testing::Test {
 protected:
  struct Ran final {
    int code = -1;
    std::string out;
    std::string err;
  };

  ProcessTest() {
    std::filesystem::create_directory(runtime);
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
  }

  // Starts the agent and waits until it serves requests.
  void startAgent() {
    agent = start({bin / "quenlet-agent"});
    ASSERT_TRUE(eventually([this] { return !agent->isRunning() || countDonations() >= 0; }));
    ASSERT_TRUE(agent->isRunning()) << agent->err();
  }
  // Asks the agent to end, and gives back its exit status.
  int stopAgent() {
    agent->signal(SIGTERM);
    return agent->wait().value_or(-1);
  }

  std::unique_ptr<ChildProcess> start(std::vector<std::string> command) {
    const auto output = temporary.path() / ("child-" + std::to_string(++childrenStarted));
    return std::make_unique<ChildProcess>(std::move(command), environment, output);
  }
  Ran finish(ChildProcess& child) {
    const int code = child.wait().value_or(-1);
    return {code, child.out(), child.err()};
  }
  // Runs `quenlet` with these words to its end.
  Ran quenlet(std::vector<std::string> words) {
    words.insert(words.begin(), bin / "quenlet");
    return finish(*start(std::move(words)));
  }
  // Writes a card and donates it. `lines` are its properties besides FN.
  Ran donate(const std::string& bundle, const std::string& fullName,
             const std::vector<std::string>& lines) {
    writeFile(donatedCard, cardText(fullName, lines));
    return quenlet({"donate", donatedCard, "--bundle", bundle});
  }
  static std::string cardText(const std::string& fullName, const std::vector<std::string>& lines) {
    std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + fullName + "\r\n";
    for (const std::string& line : lines) text += line + "\r\n";
    return text + "END:VCARD\r\n";
  }
  std::string card() { return quenlet({"card"}).out; }
  // How many donations the agent has; -1 when it does not tell.
  int countDonations() {
    const Ran ran = quenlet({"list"});
    if (ran.code != 0) return -1;
    // Of a table the first line is the headings, of an empty list a sentence.
    return static_cast<int>(std::count(ran.out.begin(), ran.out.end(), '\n')) - 1;
  }

  const std::filesystem::path bin =  // where the programs are
      std::filesystem::read_symlink("/proc/self/exe").parent_path();
  TemporaryDirectory temporary;
  const std::filesystem::path runtime = temporary.path() / "run";
  const std::filesystem::path home = temporary.path() / "missing" / "home";
  const std::filesystem::path donationsFile = home / "Library/Contacts/Donations/donations.plist";
  const std::filesystem::path ownersCard = home / "Library/Contacts/me.vcf";
  const std::filesystem::path donatedCard = temporary.path() / "donated.vcf";
  const ChildProcess::Environment environment = {{"HOME", home}, {"XDG_RUNTIME_DIR", runtime}};
  std::unique_ptr<ChildProcess> agent;

 private:
  int childrenStarted = 0;
};

}  // namespace quenlet
