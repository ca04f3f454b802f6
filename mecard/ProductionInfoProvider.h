#pragma once

#include "mecard/CuratedInfoProviderProtocol.h"
#include "platform/contacts/ContactStore.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {

// Reads the curated facts from the contact store and keeps them up to date with the platform's
// me-card notification. A card that cannot be read counts as no card.
//
// Thread-safe. One lock orders refreshes; under it only the contact store and the logger are
// called. Another guards the facts; under it nothing is called. Once started, monitoring goes on
// for the provider's life.
class ProductionInfoProvider final : public CuratedInfoProviderProtocol,
                                     public std::enable_shared_from_this<ProductionInfoProvider> {
 public:
  ProductionInfoProvider() = default;
  ~ProductionInfoProvider() override;

  std::optional<PersonNameComponents> curatedName() const override EXCLUDES(factsMutex);
  void setCuratedName(std::optional<PersonNameComponents> name) EXCLUDES(factsMutex);
  std::vector<std::string> curatedEmailAddresses() const override EXCLUDES(factsMutex);
  // Takes the list as it is.
  void setCuratedEmailAddresses(std::vector<std::string> addresses) EXCLUDES(factsMutex);

  void startMonitoring(std::shared_ptr<AgentEnvironmentProtocol> environment,
                       std::function<void()> changeHandler) override;

  // The fields of the curated card that the facts are taken from.
  [[nodiscard]] static std::vector<KeyDescriptor> keysToFetch();
  // The curated card, read now; null if it is missing or cannot be read.
  [[nodiscard]] std::shared_ptr<const Contact> curatedMeCard() EXCLUDES(refreshMutex);
  // Takes the fact from a card, null for none; true when it has changed.
  bool updateCuratedName(const std::shared_ptr<const Contact>& contact) EXCLUDES(factsMutex);
  bool updateCuratedEmailAddresses(const std::shared_ptr<const Contact>& contact)
      EXCLUDES(factsMutex);
  // The notification's callback: reads the card and tells the change handler of a change.
  void meCardChanged() EXCLUDES(refreshMutex, factsMutex);

 private:
  [[nodiscard]] std::shared_ptr<const Contact> fetchMeCard() REQUIRES(refreshMutex);
  [[nodiscard]] std::shared_ptr<AgentLogger> logger() const EXCLUDES(factsMutex);

  Mutex refreshMutex;
  std::shared_ptr<ContactStore> contactStore GUARDED_BY(refreshMutex);

  mutable Mutex factsMutex;
  std::optional<PersonNameComponents> name GUARDED_BY(factsMutex);
  std::vector<std::string> emailAddresses GUARDED_BY(factsMutex);
  std::function<void()> handler GUARDED_BY(factsMutex);
  std::shared_ptr<AgentEnvironmentProtocol> agentEnvironment GUARDED_BY(factsMutex);
  std::shared_ptr<Cancelable> observation GUARDED_BY(factsMutex);
};

}  // namespace quenlet
