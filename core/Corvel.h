#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "core/BundleLimit.h"
#include "core/DonationPreferencesMonitor.h"
#include "core/FeatureState.h"
#include "mecard/CuratedInfoProviderProtocol.h"
#include "platform/AgentEnvironmentProtocol.h"
#include "platform/extensions/DonorLoader.h"
#include "platform/foundation/Mutex.h"
#include "platform/logging/AccountLogger.h"
#include "protocol/CorvelProtocol.h"
#include "storage/DonationPersistenceProtocol.h"
#include "storage/DonationTable.h"

namespace quenlet {

// The agent's central object: holds the donations and the donated me card, serves the clients'
// operations, and follows the donations-enabled preference and the curated card.
//
//   change  caller ─▶ writer block: table, card ─▶ disk: save ─▶ background: reply
//                       └─▶ notification, before the save is done
//   fetch   caller ─▶ reader block: the last card ─▶ caller: reply
//   list    caller ─▶ reader block: a snapshot    ─▶ background: reply
//
// Thread-safe. State is read and changed only in blocks of one reader/writer scheduler, in
// submission order. The feature state decides on a request when it arrives, before its block is
// queued. Saves run in order on a serial scheduler, replies after saves on the background
// scheduler. An operation keeps the object alive until it has replied.
class Corvel final : public CorvelProtocol, public std::enable_shared_from_this<Corvel> {
 public:
  // At the restore, values that expire within this many seconds are offered to their donors for
  // renewal.
  static constexpr double renewalDeadline = 604800.0;

  struct InsertOrModifyValues final {
    DonationValues values;
  };
  struct RemoveValuesWithIdentifiers final {
    std::vector<std::string> identifiers;
  };
  struct RemoveValuesWithBundleIdentifier final {
    std::string bundleIdentifier;
  };
  // One change of the store.
  using ChangeType = std::variant<InsertOrModifyValues, RemoveValuesWithIdentifiers,
                                  RemoveValuesWithBundleIdentifier>;

  // The outcome of the save of a change.
  class SaveResponse final {
   public:
    [[nodiscard]] static SaveResponse success() { return SaveResponse(nullptr); }
    // `error` is not null.
    [[nodiscard]] static SaveResponse failure(ErrorPtr error) {
      return SaveResponse(std::move(error));
    }
    [[nodiscard]] bool isSuccess() const { return saveError == nullptr; }
    // Null for success.
    [[nodiscard]] const ErrorPtr& error() const { return saveError; }

   private:
    explicit SaveResponse(ErrorPtr error) : saveError(std::move(error)) {}
    ErrorPtr saveError;
  };
  using SaveReply = std::function<void(const SaveResponse&)>;

  // The outcome of a rejection: the feedback store failed with `error`, values were dropped and
  // reported, or nothing matched.
  struct RejectionResult final {
    enum Case { failure, success, unknownIdentifier };
    Case outcome;
    ErrorPtr error = nullptr;
  };

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

  [[nodiscard]] bool featureEnabled() const;
  // Changes the state at once: call it in a writer block.
  void setFeatureEnabled(bool enabled);
  // Submits the deletion of all donations; leaves the feature state alone.
  void disableDonations();
  // Runs the enable routine at once: call it in a writer block.
  void reenableDonations();

  void donateMeCardValues(DonationValues values, ErrorReply completionHandler) override;
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply completionHandler) override;
  void removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                     SuccessReply completionHandler) override;
  // The same for a client with a limit: a change that would replace or remove a value held under
  // any other bundle is refused as a whole.
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

  // Submits the removal of one bundle's donations from memory only; the next save writes it.
  void deleteDonationsWithBundleID(const std::string& bundleIdentifier);

  // The reader/writer scheduler "ovaro.quenlet.agent.state".
  [[nodiscard]] const std::shared_ptr<ReaderWriterScheduler>& lock() const {
    return stateScheduler;
  }

  // Two seconds later, asks the donors of these values until when they hold, and applies the
  // answers. Skips values of the agent's own sources.
  void renewWithDonations(const DonationValues& values);
  // Asks the donor of one bundle to renew a placeholder, and prints the answer. Stores nothing.
  void discoverExtensionWithIdentifier(const std::string& bundleIdentifier);

  // Load and save the table of source versions. Loading waits for the file.
  void loadExtensionVersions();
  void saveExtensionVersions();
  // Prints the installed donors, for 10,000 s. First donates all accounts again, unless the table
  // of versions says that this version of their parser has read them. Does nothing while donations
  // are off.
  void discoverAllExtensions();

  // Updates the donations of one account to its new state. `oldAccount` is null for an added
  // account, `to` for a removed one.
  void donateAccountChangesFrom(const AccountPtr& oldAccount, const AccountPtr& to);
  // Replaces the donations of all accounts by those of the present ones, and notes the parser's
  // version. Does nothing when the account store cannot be read.
  void reloadAllAccounts();

  // Takes the donations and removals that come from accounts; null stands for the agent itself. Set
  // it before the agent starts.
  std::shared_ptr<CorvelProtocol> accountDonationReceiver;
  // Replaceable; all callers use this pair.
  std::function<bool(const DonationValue&)> notYetExpired;
  std::function<bool(const DonationValue&)> readyForRenewal;

 private:
  struct RejectionEvents;
  // A client's request to reject, with its reply.
  struct Rejection final {
    const RejectionEvents& events;
    std::string identifier;
    ErrorReply reply;
  };

  // Checked when the change's turn comes: if `limit` (null for none) forbids any part of the
  // change, none of it is made, and `refused` is called on the reply scheduler.
  struct ChangeLimit final {
    std::shared_ptr<const BundleLimit> limit;
    std::function<void(const ErrorPtr&)> refused;
  };

  // Whether a request is served before the preference has been read.
  enum class WhileUndetermined { served, refused };

  // Runs in a writer block.
  void restore();
  [[nodiscard]] bool restoreTable();
  void keepStoredIfMostExpired(const DonationValues& loaded);
  void dropConfirmedOrRejected();
  void rebuildMeCard();
  // Inserts the values that the owner has neither confirmed nor rejected. Inserts nothing and
  // returns an error when the table would outgrow its file.
  [[nodiscard]] ErrorPtr insert(const DonationValues& values);
  void applyChange(const ChangeType& change, SaveReply saveReply);
  [[nodiscard]] bool isWithin(const BundleLimit& limit, const ChangeType& change) const;
  // Runs a step that changes the table and the card; restores both if it throws.
  void changeTable(const std::function<void()>& step);
  // Completes a change of the table: rebuilds the card, saves, posts the change.
  void commitTable(SaveReply saveReply);
  void save(SaveReply saveReply);
  void deleteAllDonations();
  [[nodiscard]] DonationValues valuesWhere(
      const std::function<bool(const DonationValue&)>& selected) const;
  void rejectValues(DonationValues values, const Rejection& rejection);
  void runEnableRoutine();
  void solicitDonations();
  void applySuppression(bool suppress);

  // Any thread. An orderly exit waits for the block, and for the answer to a save that it starts.
  void submitWriterBlock(std::function<void(Corvel&)> block);
  void submitChange(ChangeType change, SaveReply saveReply, ChangeLimit within = {});
  void removeValues(const std::string& requestName, ChangeType change, SuccessReply reply,
                    std::shared_ptr<const BundleLimit> limit = nullptr);
  void reportRejection(const RejectionResult& result, const Rejection& rejection);
  void renewPreExpired(const DonationValues& values);
  void askDonorsToRenew(const DonationValues& values);
  void askDonorToRenew(const DonationValues& values, const Result<DonorObjectPtr>& donor);
  void renewalAcknowledged(const DonationValuePtr& value, std::optional<Date> newExpirationDate,
                           const ErrorPtr& donorError);
  [[nodiscard]] bool accountsNeedReload() EXCLUDES(versionsMutex);
  void postValuesDidChange() const;
  [[nodiscard]] bool isConfirmedOrRejected(const DonationValue& value) const;
  // The error for a request that the feature state refuses, logged; null when it may pass.
  [[nodiscard]] ErrorPtr refusal(const std::string& requestName,
                                 WhileUndetermined undetermined) const;

  // Changed in writer blocks, read in reader blocks.
  DonationTable donations;
  ContactPtr contact;
  // The table in memory lacks values that are still stored.
  bool hasUnsavedRemoval = false;

  const std::shared_ptr<AgentEnvironmentProtocol> environment;
  const std::shared_ptr<SchedulerProvider> schedulerProvider;
  const std::shared_ptr<DistributedNotificationCenter> distributedNotificationCenter;
  const std::shared_ptr<DonationPreferencesMonitor> preferencesMonitor;
  const std::shared_ptr<DonationPersistenceProtocol> persistence;
  const std::shared_ptr<DonationFeedbackStore> feedbackStore;
  const std::shared_ptr<ReaderWriterScheduler> stateScheduler;
  const std::shared_ptr<Scheduler> diskScheduler;
  const std::shared_ptr<Scheduler> replyScheduler;
  const std::shared_ptr<CuratedInfoProviderProtocol> curatedInfoProvider;
  const std::shared_ptr<AgentLogger> logger;
  const std::shared_ptr<AccountLogger> accountLogger;
  // Their values are never sent for renewal.
  const std::set<std::string> internalBundleIdentifiers;
  std::atomic<FeatureState> featureState = FeatureState::undetermined;

  Mutex versionsMutex;
  // Absent until loaded.
  std::optional<ExtensionVersions> bundleIDVersions GUARDED_BY(versionsMutex);
};

}  // namespace quenlet
