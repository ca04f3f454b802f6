#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/DonationPreferencesMonitor.h"
#include "core/FeatureSwitch.h"
#include "lifecycle/Discovery.h"
#include "lifecycle/Rejections.h"
#include "lifecycle/Renewal.h"
#include "sources/accounts/AccountSync.h"
#include "storage/DonationStore.h"
#include "storage/SourceVersions.h"

namespace quenlet {

// The agent: the clients' operations and the routines that start-up, preference and signals run.
// Each decides by the feature state, is bracketed in the log, and is carried out by one of these:
//
//   DonationStore   the table, its file, the donated me card
//   Rejections      what the owner does not want
//   Renewal         asks donors until when their values hold
//   Discovery       asks all sources, when donations come on again
//   AccountSync     keeps the donations of accounts in step with the account store
//
//   change  caller ─▶ writer block: table, card ─▶ disk: save ─▶ background: reply
//                       └─▶ notification, before the save is done
//   fetch   caller ─▶ reader block: the last card ─▶ caller: reply
//   list    caller ─▶ reader block: a snapshot    ─▶ background: reply
//
// Thread-safe. The feature state decides on a request when it arrives, before its block is queued.
// An operation keeps the object alive until it has replied.
class Corvel final : public CorvelProtocol, public std::enable_shared_from_this<Corvel> {
 public:
  // At the restore, values that expire within this many seconds are offered to their donors for
  // renewal.
  static constexpr double renewalDeadline = 604800.0;

  using ChangeType = quenlet::ChangeType;
  using SaveResponse = quenlet::SaveResponse;
  using RejectionResult = Rejections::RejectionResult;

  // A null `persistence` stands for a DonationPersistence over the environment's data proxy. Starts
  // nothing.
  Corvel(std::shared_ptr<AgentEnvironmentProtocol> environment,
         std::shared_ptr<DonationPersistenceProtocol> persistence,
         std::shared_ptr<CuratedInfoProviderProtocol> curatedInfoProvider);

  // Submits the restore of the stored donations; call it before any other operation. From then on,
  // a change of the feedback drops the values that it confirms or rejects: feedback may become
  // readable only later.
  void restorePersistedState();

  // Follows the preference, then the curated card.
  void start();
  void startMonitoringPreferences();
  // Stops following the preference and calls off a pending deletion. Until then the agent and its
  // monitor hold each other.
  void stop();

  [[nodiscard]] bool featureEnabled() const { return feature.isEnabled(); }
  // Changes the state at once: call it in a writer block.
  void setFeatureEnabled(bool enabled) { feature.applySuppression(!enabled); }
  // Submits the deletion of all donations; leaves the feature state alone.
  void disableDonations();
  // Runs the enable routine at once: call it in a writer block.
  void reenableDonations() { feature.runEnableRoutine(); }

  void donateMeCardValues(DonationValues values, ErrorReply completionHandler) override;
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply completionHandler) override;
  void removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                     SuccessReply completionHandler) override;
  // The same for a client with a limit (null for none): a change that would replace or remove a
  // value held under any other bundle is refused as a whole.
  void donateMeCardValuesWithin(std::shared_ptr<const BundleLimit> limit, DonationValues values,
                                ErrorReply completionHandler);
  void removeDonatedMeCardValuesWithin(std::shared_ptr<const BundleLimit> limit,
                                       std::vector<std::string> identifiers,
                                       SuccessReply completionHandler);
  void fetchDonatedMeCard(ContactReply reply) override;
  void synchronousDonatedMeCard(EitherContactReply reply) override;
  // The fetch behind both operations. `sel` names the request in the log. A refusal is replied on
  // `replyScheduler`, a contact on the calling thread.
  void getDonatedMeCardWithSel(const std::string& sel,
                               const std::shared_ptr<Scheduler>& replyScheduler,
                               const EitherContactReply& reply);
  void meCardDonations(DonationsReply reply) override;
  void changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                         ErrorReply completionHandler) override;
  void rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                         ErrorReply completionHandler) override;
  void rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                         ErrorReply completionHandler) override;
  void removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) override;

  // The reader/writer scheduler "ovaro.quenlet.agent.state".
  [[nodiscard]] const std::shared_ptr<ReaderWriterScheduler>& lock() const { return store->lock(); }
  void deleteDonationsWithBundleID(const std::string& bundleIdentifier) {
    store->deleteDonationsWithBundleID(bundleIdentifier);
  }

  void renewWithDonations(const DonationValues& values) {
    renewal->renewWithDonations(values, weak_from_this());
  }
  void discoverExtensionWithIdentifier(const std::string& bundleIdentifier) {
    Renewal::discoverExtensionWithIdentifier(bundleIdentifier, weak_from_this());
  }

  void loadExtensionVersions() { versions->loadExtensionVersions(); }
  void saveExtensionVersions() { versions->saveExtensionVersions(); }
  // Prints the installed donors, for 10,000 s. First donates all accounts again, unless the table
  // of versions says that this version of their parser has read them. Does nothing while donations
  // are off.
  void discoverAllExtensions();

  void donateAccountChangesFrom(const AccountPtr& oldAccount, const AccountPtr& to);
  void reloadAllAccounts();

  // Takes the donations and removals that come from accounts; null stands for the agent itself. Set
  // it before the agent starts.
  std::shared_ptr<CorvelProtocol> accountDonationReceiver;
  // Replaceable; all callers use this pair.
  std::function<bool(const DonationValue&)> notYetExpired;
  std::function<bool(const DonationValue&)> readyForRenewal;

 private:
  // Both run in a writer block.
  void restore(DonationStore& donations);
  void solicitDonations();

  void removeValues(const std::string& requestName, ChangeType change, SuccessReply reply,
                    std::shared_ptr<const BundleLimit> limit = nullptr);
  [[nodiscard]] std::shared_ptr<CorvelProtocol> accountReceiver();

  const std::shared_ptr<AgentEnvironmentProtocol> environment;
  const std::shared_ptr<SchedulerProvider> schedulerProvider;
  const std::shared_ptr<Scheduler> replyScheduler;
  const std::shared_ptr<AgentLogger> logger;
  const std::shared_ptr<CuratedInfoProviderProtocol> curatedInfoProvider;
  const std::shared_ptr<DonationPreferencesMonitor> preferencesMonitor;
  const std::shared_ptr<DonationPersistenceProtocol> persistence;
  const std::shared_ptr<DonationStore> store;
  const std::shared_ptr<SourceVersions> versions;
  const std::shared_ptr<Rejections> rejections;
  const std::shared_ptr<Renewal> renewal;
  const Discovery discovery;
  const AccountSync accounts;
  FeatureSwitch feature;
};

}  // namespace quenlet
