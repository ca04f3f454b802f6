#include "tools/owner/ClientPrograms.h"

#include <algorithm>
#include <utility>

#include "platform/files/TrustedProgram.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "protocol/ClientEntitlements.h"

namespace quenlet {
namespace {

bool isGranted(const PropertyListDictionary& entitlements, const char* name) {
  const PropertyList* value = findEntry(entitlements, name);
  return value != nullptr && grants(*value);
}

std::optional<std::vector<std::string>> bundlesOf(const PropertyListDictionary& entitlements) {
  const PropertyList* value = findEntry(entitlements, BundlesEntitlement);
  if (value == nullptr) return std::nullopt;
  return bundlesIn(*value);
}

}  // namespace

ClientPrograms ClientPrograms::read() {
  const std::filesystem::path prefix = EntitlementDatabase::prefixOfRunningProgram();
  const EntitlementTable table =
      EntitlementDatabase::tableFor(prefix, EntitlementDatabase::systemConfiguration);
  ClientPrograms read;
  read.ignored = table.ignored();
  for (const auto& [path, program] : table.all()) {
    const PropertyListDictionary& entitlements = *program.entitlements;
    const auto trusted = trustedProgram(path, prefix);
    read.programs.push_back({path, program.files,
                             isGranted(entitlements, ContactsEntitlement) ||
                                 isGranted(entitlements, SuggestionsEntitlement),
                             bundlesOf(entitlements), trusted.ok() ? nullptr : trusted.error()});
  }
  return read;
}

const ClientProgram* ClientPrograms::find(const std::filesystem::path& executable) const {
  const auto found = std::find_if(
      programs.begin(), programs.end(),
      [&](const ClientProgram& program) { return program.path == executable.native(); });
  return found == programs.end() ? nullptr : &*found;
}

}  // namespace quenlet
