#pragma once

#include <sys/resource.h>

#include <cstring>
#include <random>

#include "client/CorvelProxy.h"
#include "client/waitForReply.h"
#include "tests/process/ProcessTest.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {

// The whole agent, under more than it is made for. QUENLET_TRUST=long in the environment makes the
// tests many times as long; QUENLET_TRUST_SEED repeats a run.
class TrustTest : public ProcessTest {
 protected:
  TrustTest() {
    rlimit files{};
    ::getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &files);
    std::cout << "seed " << seed << std::endl;
    mayRemark = true;
  }

  static int count(int inShortForm, int inLongForm) {
    const char* form = std::getenv("QUENLET_TRUST");
    return form != nullptr && std::strcmp(form, "long") == 0 ? inLongForm : inShortForm;
  }
  // Its log would fill the disk.
  void startSilentAgent() {
    startAgent({"/bin/sh", "-c", "exec \"$0\" 2>/dev/null", bin / "quenlet-agent"});
  }
  // PSS without mapped files, whose pages count for more once another that shares them has gone.
  [[nodiscard]] double memoryInMiB() const {
    std::istringstream words(readFile(agent->processDirectory() / "smaps_rollup"));
    for (std::string word; words >> word;) {
      if (word == "Pss_Anon:" && words >> word) return std::stod(word) / 1024;
    }
    ADD_FAILURE() << "the agent's memory cannot be seen";
    return 0;
  }
  static ErrorPtr fetch(CorvelProtocol& client) {
    return std::get<1>(waitForReply<ContactPtr, ErrorPtr>(
        [&](ContactReply reply) { client.fetchDonatedMeCard(std::move(reply)); }));
  }
  static ErrorPtr donateTo(CorvelProtocol& client, const DonationValues& values) {
    return std::get<0>(waitForReply<ErrorPtr>(
        [&](ErrorReply reply) { client.donateMeCardValues(values, std::move(reply)); }));
  }

  static ErrorPtr removeFrom(CorvelProtocol& client, const std::vector<std::string>& identifiers) {
    return std::get<1>(waitForReply<bool, ErrorPtr>([&](SuccessReply reply) {
      client.removeDonatedMeCardValuesForIdentifiers(identifiers, std::move(reply));
    }));
  }

  const unsigned seed = std::getenv("QUENLET_TRUST_SEED") != nullptr
                            ? std::stoul(std::getenv("QUENLET_TRUST_SEED"))
                            : std::random_device()();
  std::mt19937 random{seed};
  CorvelProxy client;
};

}  // namespace quenlet
