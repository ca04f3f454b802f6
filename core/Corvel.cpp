#include "core/Corvel.h"

#include <memory>
#include <utility>

#include "model/DonationError.h"
#include "platform/PlatformServices.h"
#include "platform/foundation/FreedMemory.h"
#include "protocol/CorvelInterface.h"
#include "sources/DonationSolicitor.h"
#include "sources/sim/SIMCardMonitor.h"
#include "storage/DonationPersistence.h"

namespace quenlet {
namespace {

// Has all accounts donated again. Thread-safe.
class AccountsDonationSolicitor final : public DonationSolicitor {
 public:
  explicit AccountsDonationSolicitor(std::shared_ptr<Corvel> accountsAgent)
      : donationAgent(std::move(accountsAgent)) {}

  [[nodiscard]] const std::shared_ptr<Corvel>& agent() const { return donationAgent; }
  void runWithReason(std::uint64_t) override { donationAgent->reloadAllAccounts(); }

 private:
  const std::shared_ptr<Corvel> donationAgent;
};

using WhileUndetermined = FeatureSwitch::WhileUndetermined;

double secondsUntilExpiration(const DonationValue& value) {
  return value.expirationDate().timeIntervalSince(PlatformServices::current().now());
}

std::shared_ptr<DonationPersistenceProtocol> persistenceOrDefault(
    std::shared_ptr<DonationPersistenceProtocol> given, AgentEnvironmentProtocol& environment) {
  if (given) return given;
  return std::make_shared<DonationPersistence>(environment.dataProxy());
}

}  // namespace

Corvel::Corvel(std::shared_ptr<AgentEnvironmentProtocol> agentEnvironment,
               std::shared_ptr<DonationPersistenceProtocol> givenPersistence,
               std::shared_ptr<CuratedInfoProviderProtocol> infoProvider)
    : notYetExpired([](const DonationValue& value) { return secondsUntilExpiration(value) > 0; }),
      readyForRenewal([](const DonationValue& value) {
        return secondsUntilExpiration(value) < renewalDeadline;
      }),
      environment(std::move(agentEnvironment)),
      schedulerProvider(environment->schedulerProvider()),
      replyScheduler(schedulerProvider->backgroundScheduler()),
      logger(environment->logger()),
      curatedInfoProvider(std::move(infoProvider)),
      preferencesMonitor(std::make_shared<DonationPreferencesMonitor>(
          environment->donationPreferences(), environment->distributedNotificationCenter(),
          schedulerProvider)),
      persistence(persistenceOrDefault(std::move(givenPersistence), *environment)),
      store(std::make_shared<DonationStore>(*environment, persistence, curatedInfoProvider)),
      versions(std::make_shared<SourceVersions>(persistence, logger)),
      rejections(std::make_shared<Rejections>(*environment, store)),
      renewal(std::make_shared<Renewal>(logger, store)),
      discovery(logger),
      accounts(store, versions,
               PlatformServices::current().defaultLoggerProvider()->accountLogger()),
      feature(logger, [this] { solicitDonations(); }) {}

void Corvel::restorePersistedState() {
  store->followFeedback();
  store->submitWriterBlock(
      [self = shared_from_this()](DonationStore& donations) { self->restore(donations); });
}

void Corvel::restore(DonationStore& donations) {
  logger->beginRestorePersistedState();
  std::optional<DonationValues> restored = donations.restore(notYetExpired);
  if (!restored) return;
  // Includes values that have expired: their donors may still stand for them.
  renewWithDonations(valuesWhere(*restored, readyForRenewal));
  restored.reset();
  donations.rebuildCard();
  // The file's bytes and all temporaries have been freed by now.
  returnFreedMemory();
  logger->endRestorePersistedState();
}

void Corvel::start() {
  startMonitoringPreferences();
  curatedInfoProvider->startMonitoring(environment, [weakSelf = weak_from_this()] {
    const auto self = weakSelf.lock();
    if (!self) return;
    self->store->submitWriterBlock([](DonationStore& donations) {
      donations.rebuildCard();
      donations.postValuesDidChange();
    });
  });
}

void Corvel::startMonitoringPreferences() {
  preferencesMonitor->setOnSuppress([self = shared_from_this()](bool suppress) {
    self->store->submitWriterBlock([self, suppress](DonationStore& donations) {
      self->setFeatureEnabled(!suppress);
      donations.postValuesDidChange();
    });
  });
  preferencesMonitor->setOnEnable([self = shared_from_this()](bool enable) {
    self->store->submitWriterBlock([self, enable](DonationStore&) {
      if (enable) {
        self->reenableDonations();
      } else {
        self->disableDonations();
      }
    });
  });
  preferencesMonitor->startMonitoring();
}

void Corvel::stop() {
  preferencesMonitor->stopMonitoring();
  // The callbacks hold the agent, which holds the monitor.
  preferencesMonitor->setOnSuppress(nullptr);
  preferencesMonitor->setOnEnable(nullptr);
}

void Corvel::disableDonations() {
  store->submitWriterBlock([log = logger](DonationStore& donations) {
    donations.deleteAll();
    log->featureDidDisable();
  });
}

void Corvel::solicitDonations() {
  const auto self = shared_from_this();
  discovery.solicitDonations(self,
                             {std::make_shared<AccountsDonationSolicitor>(self),
                              std::make_shared<SIMCardDonationSolicitor>(self)},
                             [this] { feature.solicitAgain(); });
}

void Corvel::discoverAllExtensions() {
  if (feature.isDisabled()) return;
  if (!versions->areLoaded()) loadExtensionVersions();
  if (accounts.needsReload()) reloadAllAccounts();
  Discovery::printExtensions(weak_from_this(), *schedulerProvider->mainThreadScheduler());
}

void Corvel::donateMeCardValues(DonationValues values, ErrorReply completionHandler) {
  donateMeCardValuesWithin(nullptr, std::move(values), std::move(completionHandler));
}

void Corvel::donateMeCardValuesWithin(std::shared_ptr<const BundleLimit> limit,
                                      DonationValues values, ErrorReply completionHandler) {
  const std::string requestName = CorvelSelector::donate;
  logger->agentWillHandleRequest(requestName);
  if (const ErrorPtr error = feature.refusal(requestName, WhileUndetermined::served)) {
    completionHandler(error);
    return;
  }
  logger->acceptingDonations(values);
  ChangeLimit within{std::move(limit), [self = shared_from_this(), requestName,
                                        completionHandler](const ErrorPtr& error) {
                       completionHandler(error);
                       self->logger->agentDidHandleRequest(requestName);
                     }};
  SaveReply saveReply = [self = shared_from_this(), values, requestName,
                         reply = std::move(completionHandler)](const SaveResponse& response) {
    reply(response.error());
    // All values are offered, not only those near their end.
    if (response.isSuccess()) self->renewWithDonations(values);
    self->logger->agentDidHandleRequest(requestName);
    self->renewal->renewPreExpired(values, self);
  };
  store->submitChange(InsertOrModifyValues{std::move(values)}, std::move(saveReply),
                      std::move(within));
}

void Corvel::removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                                     SuccessReply completionHandler) {
  removeDonatedMeCardValuesWithin(nullptr, std::move(identifiers), std::move(completionHandler));
}

void Corvel::removeDonatedMeCardValuesWithin(std::shared_ptr<const BundleLimit> limit,
                                             std::vector<std::string> identifiers,
                                             SuccessReply completionHandler) {
  removeValues(CorvelSelector::removeIdentifiers,
               RemoveValuesWithIdentifiers{std::move(identifiers)}, std::move(completionHandler),
               std::move(limit));
}

void Corvel::removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                           SuccessReply completionHandler) {
  removeValues(CorvelSelector::removeBundle,
               RemoveValuesWithBundleIdentifier{std::move(bundleIdentifier)},
               std::move(completionHandler));
}

void Corvel::removeValues(const std::string& requestName, ChangeType change, SuccessReply reply,
                          std::shared_ptr<const BundleLimit> limit) {
  logger->agentWillHandleRequest(requestName);
  if (const ErrorPtr error = feature.refusal(requestName, WhileUndetermined::served)) {
    reply(false, error);
    return;
  }
  const auto finish = [self = shared_from_this(), requestName, reply = std::move(reply)](
                          bool success, const ErrorPtr& error) {
    reply(success, error);
    self->logger->agentDidHandleRequest(requestName);
  };
  store->submitChange(
      std::move(change),
      [finish](const SaveResponse& response) { finish(response.isSuccess(), response.error()); },
      {std::move(limit), [finish](const ErrorPtr& error) { finish(false, error); }});
}

void Corvel::fetchDonatedMeCard(ContactReply reply) {
  getDonatedMeCardWithSel(CorvelSelector::fetch, replyScheduler,
                          [reply = std::move(reply)](const Result<ContactPtr>& result) {
                            if (result.ok()) {
                              reply(result.value(), nullptr);
                            } else {
                              reply(nullptr, result.error());
                            }
                          });
}

void Corvel::synchronousDonatedMeCard(EitherContactReply reply) {
  getDonatedMeCardWithSel(CorvelSelector::synchronousFetch, schedulerProvider->immediateScheduler(),
                          reply);
}

void Corvel::getDonatedMeCardWithSel(const std::string& sel,
                                     const std::shared_ptr<Scheduler>& refusalScheduler,
                                     const EitherContactReply& reply) {
  logger->agentWillHandleRequest(sel);
  if (const ErrorPtr error = feature.refusal(sel, WhileUndetermined::refused)) {
    refusalScheduler->performBlock([reply, error] { reply(Result<ContactPtr>::failure(error)); });
  } else {
    ContactPtr current;
    lock()->performSynchronousReaderBlock([this, &current] { current = store->card(); });
    reply(Result<ContactPtr>::success(std::move(current)));
  }
  logger->agentDidHandleRequest(sel);
}

void Corvel::meCardDonations(DonationsReply reply) {
  const std::string requestName = CorvelSelector::list;
  logger->agentWillHandleRequest(requestName);
  if (const ErrorPtr error = feature.refusal(requestName, WhileUndetermined::refused)) {
    reply(nullptr, error);
    return;
  }
  store->submitReaderBlock([self = shared_from_this(), requestName,
                            reply = std::move(reply)](const DonationStore& donations) {
    self->replyScheduler->performBlock(
        [reply, values = donations.list()] { reply(values, nullptr); });
    self->logger->agentDidHandleRequest(requestName);
  });
}

void Corvel::changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                               ErrorReply completionHandler) {
  accounts.logChange(oldAccount, toAccount);
  if (feature.isDisabled()) {
    logger->featureNotEnabled(CorvelSelector::changeAccount);
    completionHandler(makeDonationError(DonationErrorCode::featureNotEnabled, ""));
    return;
  }
  donateAccountChangesFrom(oldAccount, toAccount);
  completionHandler(nullptr);
}

std::shared_ptr<CorvelProtocol> Corvel::accountReceiver() {
  return accountDonationReceiver ? accountDonationReceiver : shared_from_this();
}

void Corvel::donateAccountChangesFrom(const AccountPtr& oldAccount, const AccountPtr& to) {
  accounts.donateAccountChangesFrom(oldAccount, to, accountReceiver());
}

void Corvel::reloadAllAccounts() { accounts.reloadAllAccounts(accountReceiver()); }

void Corvel::rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                               ErrorReply completionHandler) {
  rejections->rejectValueWithDonationIdentifier(std::move(donationIdentifier),
                                                std::move(completionHandler));
}

void Corvel::rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                               ErrorReply completionHandler) {
  rejections->rejectValuesWithClusterIdentifier(std::move(clusterIdentifier),
                                                std::move(completionHandler));
}

void Corvel::removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) {
  rejections->removeAllRejections(std::move(completionHandler));
}

}  // namespace quenlet
