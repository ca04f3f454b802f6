#include "platform/extensions/ExtensionManifest.h"

#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "model/DonationRecord.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

using Outcome = Result<ExtensionManifest>;

constexpr std::size_t maximumTextSize = 255;
constexpr std::size_t maximumPathSize = 4095;

Outcome refuse(std::string sentence) {
  return Outcome::failure(makeError(PosixErrorDomain, EINVAL, std::move(sentence)));
}

// These texts reach terminals and logs, where control characters could do harm.
bool isPlainText(std::string_view text, std::size_t maximumSize) {
  if (text.empty() || text.size() > maximumSize) return false;
  while (!text.empty()) {
    const std::optional<char32_t> character = takeCharacter(text);
    if (!character || isControlOrLineBreak(*character)) return false;
  }
  return true;
}

// Empty when the entry is missing or not a plain text.
std::string plainText(const PropertyListDictionary& entries, std::string_view key,
                      std::size_t maximumSize = maximumTextSize) {
  const std::string* text = findString(entries, key);
  return text != nullptr && isPlainText(*text, maximumSize) ? *text : std::string();
}

bool isReserved(const std::string& bundleIdentifier) {
  return canonicallyEqual(bundleIdentifier, AccountsBundleIdentifier) ||
         canonicallyEqual(bundleIdentifier, SIMCardBundleIdentifier);
}

}  // namespace

bool ExtensionManifest::isDonorExtension() const {
  return extensionPoint == agentExtensionPoint && version == agentExtensionVersion;
}

bool ExtensionManifest::isStillInstalled() const {
  std::error_code failure;
  return std::filesystem::exists(std::filesystem::symlink_status(file, failure));
}

Outcome ExtensionManifest::read(std::string_view text, const std::filesystem::path& directory) {
  if (text.size() > maximumSizeInBytes) return refuse("it is larger than 64 KiB");
  const Result<PropertyList> content = PropertyListSerializer::objectWithData(text);
  if (!content.ok()) return Outcome::failure(content.error());
  const PropertyListDictionary* entries = content.value().dictionary();
  if (entries == nullptr) return refuse("its top level is not a dictionary");
  ExtensionManifest manifest{plainText(*entries, "bundleIdentifier"),
                             plainText(*entries, "extensionPoint"), plainText(*entries, "version"),
                             plainText(*entries, "executable", maximumPathSize)};
  if (manifest.bundleIdentifier.empty()) return refuse("its bundleIdentifier is not plain text");
  if (manifest.extensionPoint.empty()) return refuse("its extensionPoint is not plain text");
  if (manifest.version.empty()) return refuse("its version is not plain text");
  if (isReserved(manifest.bundleIdentifier)) {
    return refuse("its bundleIdentifier is the agent's own");
  }
  if (!manifest.executable.empty()) {
    manifest.executable = (directory / manifest.executable).lexically_normal();
  } else if (manifest.isDonorExtension()) {
    return refuse("its executable is not plain text");
  }
  return Outcome::success(std::move(manifest));
}

}  // namespace quenlet
