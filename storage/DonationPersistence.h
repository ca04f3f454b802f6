#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "platform/files/DataProxy.h"
#include "platform/foundation/PropertyList.h"
#include "storage/DonationPersistenceProtocol.h"

namespace quenlet {

// Keeps donations, rejections and extension versions in property-list files in
// "~/Library/Contacts/Donations/". Thread-safe: holds nothing but the data proxy.
//
// A file is always rewritten whole. A file that cannot be read as what it should be, in whole or in
// part, counts as empty, or as what could be read of it. Its bytes are kept beside it, so that the
// next store loses nothing: at once when they make no sense, by that store when the system does not
// hand them out.
class DonationPersistence final : public DonationPersistenceProtocol {
 public:
  explicit DonationPersistence(std::shared_ptr<DataProxy> proxy) : dataProxy(std::move(proxy)) {}

  // Elements that are no valid record are skipped.
  Future<DonationValues> loadDonations() override;
  // The values of "rejections.json", which the agent itself does not write. Elements that are no
  // value dictionary are skipped.
  [[nodiscard]] Future<std::vector<DonationValue::Value>> loadRejections();
  // Entries that are no integer are skipped.
  Future<ExtensionVersions> loadExtensionVersions() override;

  // Fails with notSerializable, when a value has no property-list text or all of them together are
  // too large, or with the error of the write.
  Future<bool> storeWithAllValues(const DonationValues& values) override;
  Future<bool> storeWithExtensionVersions(const ExtensionVersions& versions) override;
  [[nodiscard]] std::size_t capacityInBytes() const override;
  // As a damaged file is kept.
  void keepStoredDonations() override;
  // Writes one file as a property list and then excludes the directory from backups.
  [[nodiscard]] Future<bool> storeAsPlistWithUrl(const std::filesystem::path& url,
                                                 PropertyListDictionary value);

  // Marks the directory; a failure is ignored, since what was stored is stored.
  void excludeFromBackups() const;

 private:
  [[nodiscard]] Future<bool> storeText(const std::filesystem::path& url, Result<std::string> text);

  std::shared_ptr<DataProxy> dataProxy;
};

}  // namespace quenlet
