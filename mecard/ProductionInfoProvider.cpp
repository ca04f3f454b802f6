#include "mecard/ProductionInfoProvider.h"

#include <algorithm>

#include "platform/PlatformServices.h"
#include "platform/contacts/EmailAddress.h"

namespace quenlet {
namespace {

const std::vector<KeyDescriptor>& nameKeys() {
  static const std::vector<KeyDescriptor> keys = {ContactGivenNameKey, ContactFamilyNameKey};
  return keys;
}

std::vector<std::string> normalizedAddresses(const Contact& contact) {
  std::vector<std::string> addresses;
  for (const auto& entry : contact.emailAddresses()) {
    addresses.push_back(EmailAddressNormalize(entry->value));
  }
  // Byte order of UTF-8 is the order of code points.
  std::sort(addresses.begin(), addresses.end());
  addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
  return addresses;
}

}  // namespace

ProductionInfoProvider::~ProductionInfoProvider() {
  std::shared_ptr<Cancelable> token;
  {
    MutexLock lock(factsMutex);
    token.swap(observation);
  }
  if (token) token->cancel();
}

std::optional<PersonNameComponents> ProductionInfoProvider::curatedName() const {
  MutexLock lock(factsMutex);
  return name;
}

void ProductionInfoProvider::setCuratedName(std::optional<PersonNameComponents> newName) {
  MutexLock lock(factsMutex);
  name = std::move(newName);
}

std::vector<std::string> ProductionInfoProvider::curatedEmailAddresses() const {
  MutexLock lock(factsMutex);
  return emailAddresses;
}

void ProductionInfoProvider::setCuratedEmailAddresses(std::vector<std::string> addresses) {
  MutexLock lock(factsMutex);
  emailAddresses = std::move(addresses);
}

void ProductionInfoProvider::startMonitoring(std::shared_ptr<AgentEnvironmentProtocol> environment,
                                             std::function<void()> changeHandler) {
  const auto center = environment->distributedNotificationCenter();
  {
    // Set before observing: a notification needs the handler.
    MutexLock lock(factsMutex);
    agentEnvironment = std::move(environment);
    handler = std::move(changeHandler);
  }
  auto token =
      center->addObserver(MeCardChangeDistributedNotification, [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->meCardChanged();
      });
  {
    MutexLock lock(factsMutex);
    observation.swap(token);
  }
  if (token) token->cancel();
  meCardChanged();
}

std::shared_ptr<const Contact> ProductionInfoProvider::curatedMeCard() {
  MutexLock lock(refreshMutex);
  return fetchMeCard();
}

std::vector<KeyDescriptor> ProductionInfoProvider::keysToFetch() {
  std::vector<KeyDescriptor> keys = nameKeys();
  keys.push_back(ContactEmailAddressesKey);
  return keys;
}

std::shared_ptr<const Contact> ProductionInfoProvider::fetchMeCard() {
  if (!contactStore) contactStore = PlatformServices::current().makeContactStore();
  const auto contact = contactStore->_crossPlatformUnifiedMeContactWithKeysToFetch(keysToFetch());
  return contact.ok() ? contact.value() : nullptr;
}

std::shared_ptr<AgentLogger> ProductionInfoProvider::logger() const {
  std::shared_ptr<AgentEnvironmentProtocol> environment;
  {
    MutexLock lock(factsMutex);
    environment = agentEnvironment;
  }
  return environment ? environment->logger() : nullptr;
}

bool ProductionInfoProvider::updateCuratedName(const std::shared_ptr<const Contact>& contact) {
  std::optional<PersonNameComponents> newName;
  if (contact) newName = PersonNameComponents::componentsForContact(*contact);
  bool changed = false;
  {
    MutexLock lock(factsMutex);
    changed = newName != name;
  }
  if (const auto log = logger()) {
    log->contactsChangedNotificationFoundName(contact != nullptr, changed);
  }
  if (changed) setCuratedName(std::move(newName));
  return changed;
}

bool ProductionInfoProvider::updateCuratedEmailAddresses(
    const std::shared_ptr<const Contact>& contact) {
  std::vector<std::string> newAddresses;
  if (contact) newAddresses = normalizedAddresses(*contact);
  bool changed = false;
  {
    MutexLock lock(factsMutex);
    changed = newAddresses != emailAddresses;
  }
  if (const auto log = logger()) log->contactsChangedNotificationEmailAddressesChanged(changed);
  if (changed) setCuratedEmailAddresses(std::move(newAddresses));
  return changed;
}

void ProductionInfoProvider::meCardChanged() {
  std::function<void()> changeHandler;
  {
    // Refreshes run one after another, so that the last one leaves the latest facts.
    MutexLock refresh(refreshMutex);
    const std::shared_ptr<const Contact> contact = fetchMeCard();
    const bool nameChanged = updateCuratedName(contact);
    const bool addressesChanged = updateCuratedEmailAddresses(contact);
    if (!nameChanged && !addressesChanged) return;
    MutexLock facts(factsMutex);
    changeHandler = handler;
  }
  // Called without a lock: it may ask for the facts.
  if (changeHandler) changeHandler();
}

}  // namespace quenlet
