#include "tools/owner/HealthChecks.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/files/UserDirectories.h"
#include "protocol/CorvelInterface.h"
#include "quenlet/ErrorCodes.h"
#include "tools/owner/AgentDonations.h"
#include "tools/owner/ClientPrograms.h"
#include "tools/owner/DonationJournal.h"
#include "tools/owner/Hints.h"
#include "tools/owner/OwnCard.h"
#include "tools/owner/OwnersDecisions.h"
#include "tools/owner/ShellWord.h"
#include "tools/owner/SystemChecks.h"
#include "tools/owner/UserFiles.h"

namespace quenlet {
namespace {

using std::filesystem::path;

Finding checkHome(CorvelProtocol& /*agent*/) {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return {false, home.error()->description(), {"set HOME"}};
  const std::string name = home.value().native();
  struct stat status {};
  if (::stat(name.c_str(), &status) != 0) {
    return {false, name + " is not there", {"make it, or set HOME to another one"}};
  }
  if (!S_ISDIR(status.st_mode)) {
    return {false, name + " is not a directory", {"set HOME to one"}};
  }
  if (::access(name.c_str(), W_OK | X_OK) != 0) {
    return {
        false, name + " cannot be written", {Advice::command("chmod u+rwx " + shellWord(name))}};
  }
  return {true, name};
}

// Files with values of the owner's are for nobody else to read, others for nobody else to write.
Finding examine(const path& file, mode_t forbidden) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) {
    if (errno == ENOENT) return {};
    return {false,
            file.native() + ": " + std::generic_category().message(errno),
            {"chmod u+rwx the directories above it"}};
  }
  if (status.st_uid != ::geteuid()) {
    return {false,
            file.native() + " belongs to another user",
            {Advice::command("as root: chown " + std::to_string(::geteuid()) + " " +
                             shellWord(file.native()))}};
  }
  if ((status.st_mode & forbidden) == 0) return {};
  const bool isRead = (forbidden & S_IROTH) != 0;
  return {false,
          file.native() + (isRead ? " is open to others" : " can be written by others"),
          {Advice::command((isRead ? "chmod go= " : "chmod go-w ") + shellWord(file.native()))}};
}

Finding checkFiles(CorvelProtocol& /*agent*/) {
  const auto files = UserFiles::open();
  if (!files.ok()) return {false, files.error()->description()};
  std::size_t count = 0;
  for (const UserFile& file : files.value().all()) {
    if (file.keeper != FileKeeper::donations && file.keeper != FileKeeper::quenlet) continue;
    const path parent = file.path.parent_path();
    Finding directory = examine(parent, S_IWGRP | S_IWOTH);
    if (!directory.isWell) return directory;
    if (::access(parent.c_str(), R_OK | W_OK | X_OK) != 0 && errno != ENOENT) {
      return {false,
              parent.native() + " cannot be written",
              {Advice::command("chmod u+rwx " + shellWord(parent.native()))}};
    }
    for (const path& present : UserFiles::present(file)) {
      Finding found = examine(present, S_IRWXG | S_IRWXO);
      if (!found.isWell) return found;
      ++count;
    }
  }
  return {true, std::to_string(count) + " files, all private"};
}

Finding checkRecords(CorvelProtocol& /*agent*/) {
  const auto decisions = OwnersDecisions::open();
  if (!decisions.ok()) return {false, decisions.error()->description()};
  if (const auto all = decisions.value().all(); !all.ok()) {
    return {false,
            all.error()->debugDescription(),
            {"mend it or put it aside; without it nothing is rejected"}};
  }
  const auto journal = DonationJournal::open();
  if (!journal.ok()) return {false, journal.error()->description()};
  if (const auto entries = journal.value().entries(); !entries.ok()) {
    return {false,
            entries.error()->debugDescription(),
            {"mend it or put it aside; without it nothing can be undone"}};
  }
  return {true, "rejections and journal can be read"};
}

Finding checkRuntime(CorvelProtocol& /*agent*/) {
  const auto place = UserDirectories::placeOfRuntimeDirectory();
  if (!place.ok()) return {false, place.error()->description()};
  const std::string name = place.value().native();
  for (const path& directory : {place.value(), place.value() / "quenlet"}) {
    const ErrorPtr error = UserDirectories::examinePrivateDirectory(directory, directory.native());
    if (!error) continue;
    // Missing ones are made, the first of them where the user may.
    const bool canBeMade =
        directory != place.value() || ::access(directory.parent_path().c_str(), W_OK | X_OK) == 0;
    if (error->code() == ENOENT && canBeMade) continue;
    return {false,
            error->debugDescription(),
            {"chmod 700 it if it is yours, or set XDG_RUNTIME_DIR to a directory of your own"}};
  }
  return {true, name};
}

// Connecting would make the directory of the sockets.
bool hasSocket() {
  const auto place = UserDirectories::placeOfRuntimeDirectory();
  std::error_code failure;
  return place.ok() &&
         std::filesystem::is_socket(place.value() / "quenlet" / CorvelServiceName, failure);
}

Finding checkAgent(CorvelProtocol& agent) {
  Finding none{false, "no agent runs", {Advice::command("systemctl --user start quenlet-agent")}};
  if (!hasSocket()) return none;
  const Result<DonationListPtr> list = donationsOf(agent);
  if (list.ok()) {
    const std::size_t count = list.value()->size();
    return {true,
            "answers, with " + std::to_string(count) + (count == 1 ? " donation" : " donations")};
  }
  const ErrorPtr& error = list.error();
  if (isNotEnabled(*error)) return {true, "answers; " + hintsFor(*error).front().text};
  if (error->domain() == ServiceErrorDomain &&
      error->code() == static_cast<std::int64_t>(ServiceErrorCode::noService)) {
    return none;
  }
  return {false, error->debugDescription(), hintsFor(*error)};
}

Finding checkEntitlement(CorvelProtocol& /*agent*/) {
  std::error_code failure;
  const path self = std::filesystem::read_symlink("/proc/self/exe", failure);
  const ClientPrograms clients = ClientPrograms::read();
  const ClientProgram* program = clients.find(self);
  if (program != nullptr && program->isServed()) return {true, self.native() + " is entitled"};
  if (program != nullptr && program->mistrust) {
    return {false,
            "not trusted: " + program->mistrust->debugDescription(),
            {"let only yourself or root write it and the directories above it"}};
  }
  Advices advice = {
      "install quenlet and its agent together, or name the program in /etc/quenlet/entitlements"};
  for (const auto& [ignored, reason] : clients.ignored) {
    advice.emplace_back("look at " + ignored.native() + ", which is ignored: " + reason);
  }
  return {false, "no file of entitlements names " + self.native(), std::move(advice)};
}

Finding checkOwnCard(CorvelProtocol& /*agent*/) {
  const auto card = OwnCard::read();
  if (!card.ok()) return {false, card.error()->description()};
  if (card.value().fault) {
    return {false,
            card.value().fault->debugDescription(),
            {"mend it, or replace it: quenlet me set FILE"}};
  }
  if (!card.value().contact) return {true, "none; quenlet me set FILE puts one in place"};
  const std::size_t skipped = card.value().skipped.size();
  if (skipped == 0) return {true, "read"};
  return {false,
          "read, without " + std::to_string(skipped) + " of its lines",
          {"quenlet status shows which"}};
}

}  // namespace

const std::vector<HealthCheck>& healthChecks() {
  static const std::vector<HealthCheck> checks = {
      {"kernel", [](CorvelProtocol&) { return checkKernel(); }},
      {"watching", [](CorvelProtocol&) { return checkNotifications(); }},
      {"disk", [](CorvelProtocol&) { return checkDisk(); }},
      {"home", checkHome},
      {"files", checkFiles},
      {"records", checkRecords},
      {"own card", checkOwnCard},
      {"runtime", checkRuntime},
      {"unit", [](CorvelProtocol&) { return checkUnit(); }},
      {"entitlement", checkEntitlement},
      {"agent", checkAgent},
  };
  return checks;
}

}  // namespace quenlet
