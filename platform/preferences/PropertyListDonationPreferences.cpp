#include "platform/preferences/PropertyListDonationPreferences.h"

#include <utility>

#include "platform/preferences/DonationPreferencesObservable.h"

namespace quenlet {
namespace {

constexpr char donationsEnabledKey[] = "donations-enabled";

}  // namespace

PropertyListDonationPreferences::PropertyListDonationPreferences(
    std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy, EventLoop& eventLoop,
    std::shared_ptr<DistributedNotificationCenter> notificationCenter)
    : file(std::move(path), std::move(dataProxy)),
      eventLoop(eventLoop),
      notificationCenter(std::move(notificationCenter)),
      problems(file.path().filename().string()) {}

bool PropertyListDonationPreferences::isDonationsEnabled() {
  return donationsEnabled().value_or(false);
}

std::optional<bool> PropertyListDonationPreferences::donationsEnabled() {
  const Result<PropertyListDictionary> entries = file.read();
  std::optional<bool> value;
  {
    MutexLock lock(mutex);
    if (entries.ok()) {
      const PropertyList* object = findEntry(entries.value(), donationsEnabledKey);
      lastRead = object && object->boolean() ? *object->boolean() : true;
    }
    value = lastRead;
  }
  problems.setProblem(value ? nullptr : entries.error());
  return value;
}

ErrorPtr PropertyListDonationPreferences::setDonationsEnabled(bool enabled) {
  const auto change = [enabled](PropertyListDictionary& entries) {
    entries.insert_or_assign(donationsEnabledKey, enabled);
    return true;
  };
  // The owner's decision must get through, so a damaged file is replaced; a copy of it is kept.
  const Future<bool> written = file.update(change, PropertyListFile::OnDamage::replaceFile);
  const Result<bool>& outcome = written.result();
  if (!outcome.ok()) return outcome.error();
  notificationCenter->post(DonationPreferencesDidChangeNotification);
  return nullptr;
}

std::shared_ptr<Observable<bool>> PropertyListDonationPreferences::observableWithPreferences(
    std::shared_ptr<DistributedNotificationCenter> observedCenter,
    std::shared_ptr<SchedulerProvider>) {
  return std::make_shared<DonationPreferencesObservable>(
      [this, self = shared_from_this()] { return donationsEnabled(); }, file.path(), eventLoop,
      std::move(observedCenter));
}

}  // namespace quenlet
