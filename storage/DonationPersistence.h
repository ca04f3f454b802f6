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

// Stores donations and extension versions as property lists in "~/Library/Contacts/Donations/".
// Thread-safe: holds nothing but the data proxy.
//
// Each store replaces the whole file, and none loses bytes that could not be read. A damaged file
// counts as empty, or as the part that could be read; it is kept beside the new one at once. A file
// that the system does not hand out counts as empty; the next store keeps it first.
class DonationPersistence final : public DonationPersistenceProtocol {
 public:
  explicit DonationPersistence(std::shared_ptr<DataProxy> proxy) : dataProxy(std::move(proxy)) {}

  // Skips invalid records.
  Future<DonationValues> loadDonations() override;
  // The values of "rejections.json", a file that the agent neither writes nor loads. Skips elements
  // that are not value dictionaries.
  [[nodiscard]] Future<std::vector<DonationValue::Value>> loadRejections();
  // Skips entries that are not integers.
  Future<ExtensionVersions> loadExtensionVersions() override;

  // Fails with notSerializable when a value has no property-list text or all texts together are too
  // large; otherwise with the error of the write.
  Future<bool> storeWithAllValues(const std::shared_ptr<const DonationValues>& values) override;
  Future<bool> storeWithExtensionVersions(const ExtensionVersions& versions) override;
  [[nodiscard]] std::size_t capacityInBytes() const override;
  // Keeps the file as a damaged one is kept.
  void keepStoredDonations() override;
  // Writes one file as a property list, then excludes the directory from backups.
  [[nodiscard]] Future<bool> storeAsPlistWithUrl(const std::filesystem::path& url,
                                                 PropertyListDictionary value);

  // Marks the directory; a failure is ignored, since what was stored is stored.
  void excludeFromBackups() const;

 private:
  [[nodiscard]] Future<bool> store(const std::filesystem::path& url, FileContentPtr content);

  std::shared_ptr<DataProxy> dataProxy;
};

}  // namespace quenlet
