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

// A list with anything but texts allows no bundle.
std::optional<std::vector<std::string>> bundlesIn(const PropertyListDictionary& entitlements) {
  const PropertyList* value = findEntry(entitlements, BundlesEntitlement);
  if (value == nullptr) return std::nullopt;
  std::vector<std::string> bundles;
  const PropertyListArray* listed = value->array();
  if (listed == nullptr) return bundles;
  for (const PropertyList& bundle : *listed) {
    if (bundle.string() == nullptr) return std::vector<std::string>();
    bundles.push_back(*bundle.string());
  }
  return bundles;
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
                             bundlesIn(entitlements), trusted.ok() ? nullptr : trusted.error()});
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
