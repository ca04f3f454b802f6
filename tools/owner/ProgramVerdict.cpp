#include "tools/owner/ProgramVerdict.h"

#include <sys/stat.h>
#include <unistd.h>

#include <system_error>
#include <utility>

#include "platform/files/TrustedProgram.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "protocol/ClientEntitlements.h"
#include "tools/owner/ShellWord.h"

namespace quenlet {
namespace {

using std::filesystem::path;

// Says what mends the owner and mode of a file or directory that is not trusted because of them. A
// link is left alone: the commands would change what it leads to.
void adviseToMend(Advices& advice, const path& place) {
  struct stat status {};
  if (::lstat(place.c_str(), &status) != 0 || S_ISLNK(status.st_mode)) return;
  const mode_t mode = status.st_mode;
  const auto run = [&](const char* words) {
    const std::string lead = status.st_uid == ::geteuid() ? "" : "as root: ";
    advice.push_back(Advice::command(lead + words + shellQuoted(place.native())));
  };
  if (status.st_uid != 0 && status.st_uid != ::geteuid()) run("chown root ");
  const bool isSticky = S_ISDIR(mode) && (mode & S_ISVTX) != 0;
  if ((mode & (S_IWGRP | S_IWOTH)) != 0 && !isSticky) run("chmod go-w ");
  if (S_ISREG(mode) && (mode & (S_ISUID | S_ISGID)) != 0) run("chmod ug-s ");
}

path systemDirectory() {
  return path(EntitlementDatabase::systemConfiguration) / EntitlementDatabase::configuredPath;
}

ProgramVerdict::Example exampleFor(const path& executable) {
  PropertyListDictionary entitlements;
  entitlements.emplace(ContactsEntitlement, PropertyList(true));
  entitlements.emplace(BundlesEntitlement,
                       PropertyList(PropertyListArray{PropertyList("com.example.mail")}));
  PropertyListDictionary programs;
  programs.emplace(executable.native(), PropertyList(std::move(entitlements)));
  const auto text = PropertyListSerializer::dataWithObject(PropertyList(std::move(programs)));
  // A path that is not text cannot be named in a property list.
  return {systemDirectory() / (executable.filename().native() + ".plist"),
          text.ok() ? text.value() : std::string()};
}

void adviseToName(ProgramVerdict& verdict, const RunProgram& program,
                  const ClientPrograms& clients) {
  for (const auto& [ignored, reason] : clients.ignored) {
    verdict.advice.emplace_back("look at " + ignored.native() + ", which is ignored: " + reason);
    adviseToMend(verdict.advice, ignored);
  }
  ProgramVerdict::Example example = exampleFor(program.executable);
  if (example.content.empty()) {
    verdict.advice.emplace_back("give it a path that is valid text");
    return;
  }
  if (!program.scripts.empty()) {
    verdict.advice.emplace_back(
        "rather than that program, name a copy of it that only this script uses");
  }
  std::error_code failure;
  const bool isThere = std::filesystem::exists(example.file, failure);
  verdict.advice.emplace_back(std::string("as root, ") +
                              (isThere ? "add the entry below to " : "write ") +
                              example.file.native() + (isThere ? "" : ", as below") +
                              "; without the list of bundles it may change everything");
  verdict.advice.emplace_back("let only root or yourself write that file");
  verdict.advice.push_back(
      Advice::command("as root: chmod go-w " + shellQuoted(example.file.native())));
  verdict.example = std::move(example);
}

// `mistrust` names the topmost part of the path that is at fault. Those below it may be as well.
void adviseOnTrust(ProgramVerdict& verdict, const Error& mistrust, const path& executable) {
  const std::string fault = mistrust.debugDescription();
  for (path place = executable; place.has_relative_path(); place = place.parent_path()) {
    adviseToMend(verdict.advice, place);
    if (fault.starts_with(place.native() + ": ")) break;
  }
  verdict.advice.emplace_back("let only yourself or root write it and the directories above it");
}

}  // namespace

ProgramVerdict ProgramVerdict::on(const RunProgram& program, const ClientPrograms& clients) {
  ProgramVerdict verdict;
  const ClientProgram* const named = clients.find(program.executable);
  if (named == nullptr) {
    verdict.reason = "no file of entitlements names it";
    adviseToName(verdict, program, clients);
  } else {
    verdict.named = *named;
    if (!named->isEntitled) {
      verdict.reason = "its entitlements do not grant it";
      verdict.advice.emplace_back("set " + std::string(ContactsEntitlement) +
                                  " to true for it in " + named->files.back().native());
    }
  }
  // Also of a program that is yet to be named: it would not be served then either.
  const auto trusted =
      trustedProgram(program.executable, EntitlementDatabase::prefixOfRunningProgram());
  if (!trusted.ok()) {
    verdict.reason += (verdict.reason.empty() ? "" : "; and ") +
                      ("it is not trusted: " + trusted.error()->debugDescription());
    adviseOnTrust(verdict, *trusted.error(), program.executable);
  }
  return verdict;
}

}  // namespace quenlet
