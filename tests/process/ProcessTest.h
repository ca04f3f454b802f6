#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/process/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {

// The programs as they were built, run as a user with a home and a runtime directory of its own.
class ProcessTest : public testing::Test {
 protected:
  struct Ran final {
    int code = -1;
    std::string out;
    std::string err;
  };

  ProcessTest();

  // Starts the agent and waits until it serves requests.
  void startAgent();
  // Asks the agent to end, and gives back its exit status.
  int stopAgent();
  void killAgent();
  // The agent's standard error since it was started.
  std::string log() const { return agent->err(); }

  std::unique_ptr<ChildProcess> start(std::vector<std::string> command);
  Ran finish(ChildProcess& child);
  // Runs `quenlet` with these words to its end.
  Ran quenlet(std::vector<std::string> words);
  // Runs a Python script with python3, and gives back its output.
  std::string python(const std::string& script, std::vector<std::string> arguments);

  // Writes a card and donates it. `lines` are its properties besides FN.
  Ran donate(const std::string& bundle, const std::string& fullName,
             const std::vector<std::string>& lines);
  static std::string cardText(const std::string& fullName, const std::vector<std::string>& lines);
  std::string card() { return quenlet({"card"}).out; }
  // How many donations the agent has; -1 when it does not tell.
  int countDonations();

  const std::filesystem::path bin;  // where the programs are
  TemporaryDirectory temporary;
  const std::filesystem::path home = temporary.path() / "home";
  const std::filesystem::path donationsFile = home / "Library/Contacts/Donations/donations.plist";
  const std::filesystem::path ownersCard = home / "Library/Contacts/me.vcf";
  ChildProcess::Environment environment;
  std::unique_ptr<ChildProcess> agent;

 private:
  int childrenStarted = 0;
};

}  // namespace quenlet
