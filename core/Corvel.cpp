// The store: restores, changes and saves the table, and rebuilds the donated me card from it.

#include "core/Corvel.h"

#include <algorithm>

#include "mecard/ContactRebuilder.h"
#include "model/DonationError.h"
#include "platform/PlatformServices.h"
#include "platform/foundation/FreedMemory.h"
#include "platform/foundation/ProblemReporter.h"
#include "storage/DonationPersistence.h"

namespace quenlet {
namespace {

double secondsUntilExpiration(const DonationValue& value) {
  return value.expirationDate().timeIntervalSince(PlatformServices::current().now());
}

std::shared_ptr<DonationPersistenceProtocol> persistenceOrDefault(
    std::shared_ptr<DonationPersistenceProtocol> given, AgentEnvironmentProtocol& environment) {
  if (given) return given;
  return std::make_shared<DonationPersistence>(environment.dataProxy());
}

// Held by each pending step of a change, so that an orderly exit waits for it.
std::shared_ptr<ProcessTransaction> beginChange() {
  return PlatformServices::current().makeProcessTransaction("ovaro.quenlet-agent.change");
}

template <typename List>
DonationValues valuesSatisfying(const List& values,
                                const std::function<bool(const DonationValue&)>& predicate) {
  DonationValues selected;
  for (const DonationValuePtr& value : values) {
    if (predicate(*value)) selected.push_back(value);
  }
  return selected;
}

struct IsEmptyChange final {
  bool operator()(const Corvel::InsertOrModifyValues& change) const {
    return change.values.empty();
  }
  bool operator()(const Corvel::RemoveValuesWithIdentifiers& change) const {
    return change.identifiers.empty();
  }
  bool operator()(const Corvel::RemoveValuesWithBundleIdentifier& change) const {
    return change.bundleIdentifier.empty();
  }
};

}  // namespace

Corvel::Corvel(std::shared_ptr<AgentEnvironmentProtocol> agentEnvironment,
               std::shared_ptr<DonationPersistenceProtocol> givenPersistence,
               std::shared_ptr<CuratedInfoProviderProtocol> infoProvider)
    : notYetExpired([](const DonationValue& value) { return secondsUntilExpiration(value) > 0; }),
      readyForRenewal([](const DonationValue& value) {
        return secondsUntilExpiration(value) < renewalDeadline;
      }),
      contact(std::make_shared<const Contact>()),
      environment(std::move(agentEnvironment)),
      schedulerProvider(environment->schedulerProvider()),
      distributedNotificationCenter(environment->distributedNotificationCenter()),
      preferencesMonitor(std::make_shared<DonationPreferencesMonitor>(
          environment->donationPreferences(), distributedNotificationCenter, schedulerProvider)),
      persistence(persistenceOrDefault(std::move(givenPersistence), *environment)),
      feedbackStore(environment->feedbackStore()),
      stateScheduler(
          schedulerProvider->newReaderWriterSchedulerWithName("ovaro.quenlet.agent.state")),
      diskScheduler(schedulerProvider->newSerialSchedulerWithName("ovaro.quenlet.agent.io")),
      replyScheduler(schedulerProvider->backgroundScheduler()),
      curatedInfoProvider(std::move(infoProvider)),
      logger(environment->logger()),
      accountLogger(PlatformServices::current().defaultLoggerProvider()->accountLogger()),
      internalBundleIdentifiers{AccountsBundleIdentifier, SIMCardBundleIdentifier} {}

void Corvel::submitWriterBlock(std::function<void(Corvel&)> block) {
  stateScheduler->performWriterBlock([self = shared_from_this(), block = std::move(block),
                                      transaction = beginChange()] { block(*self); });
}

void Corvel::restorePersistedState() {
  feedbackStore->setChangeHandler([weakSelf = weak_from_this()] {
    if (const auto self = weakSelf.lock()) {
      self->submitWriterBlock([](Corvel& agent) { agent.dropConfirmedOrRejected(); });
    }
  });
  submitWriterBlock([](Corvel& agent) { agent.restore(); });
}

void Corvel::restore() {
  logger->beginRestorePersistedState();
  if (!restoreTable()) return;
  rebuildMeCard();
  // The file's bytes and all temporaries have been freed by now.
  returnFreedMemory();
  logger->endRestorePersistedState();
}

bool Corvel::restoreTable() {
  const Future<DonationValues> load = persistence->loadDonations();
  const Result<DonationValues>& loaded = load.result();
  if (!loaded.ok()) return false;
  keepStoredIfMostExpired(loaded.value());
  const DonationValues candidates = valuesSatisfying(
      loaded.value(), [this](const DonationValue& value) { return !isConfirmedOrRejected(value); });
  DonationTable restored;
  restored.insertAll(valuesSatisfying(candidates, notYetExpired));
  donations = std::move(restored);
  // Includes values that have expired: their donors may still stand for them.
  renewWithDonations(valuesSatisfying(candidates, readyForRenewal));
  return true;
}

// Under a clock that is far ahead, good values look expired, and the next save would lose them.
void Corvel::keepStoredIfMostExpired(const DonationValues& loaded) {
  constexpr std::size_t handful = 5;
  const std::size_t expired = loaded.size() - valuesSatisfying(loaded, notYetExpired).size();
  if (expired < handful || expired <= loaded.size() / 2) return;
  persistence->keepStoredDonations();
  ProblemReporter("donations")
      .setProblem(makeError(
          DonationErrorDomain, 0,
          std::to_string(expired) + " of " + std::to_string(loaded.size()) +
              " have expired by this machine's clock; their file stays beside the next one"));
}

void Corvel::rebuildMeCard() {
  ContactRebuilder rebuilder(donations.snapshot(), curatedInfoProvider->curatedName(),
                             curatedInfoProvider->curatedEmailAddresses());
  contact = std::make_shared<const Contact>(rebuilder.buildNewContact());
}

bool Corvel::isConfirmedOrRejected(const DonationValue& value) const {
  return feedbackStore->donatedValueHasBeenConfirmedOrRejected(value, MeCardContactIdentifier);
}

void Corvel::dropConfirmedOrRejected() {
  const std::size_t before = donations.snapshot()->size();
  donations.removeIf([this](const DonationValue& value) { return isConfirmedOrRejected(value); });
  // No caller waits for this save. Should it fail, the next start drops the values again.
  if (donations.snapshot()->size() != before) commitTable([](const SaveResponse&) {});
}

void Corvel::submitChange(ChangeType change, SaveReply saveReply, ChangeLimit within) {
  submitWriterBlock([change = std::move(change), saveReply = std::move(saveReply),
                     within = std::move(within)](Corvel& agent) mutable {
    // Only here is it certain which values the change will touch.
    if (!within.limit || agent.isWithin(*within.limit, change)) {
      return agent.applyChange(change, std::move(saveReply));
    }
    agent.replyScheduler->performBlock(
        [refused = std::move(within.refused)] { refused(BundleLimit::refusal()); });
  });
}

bool Corvel::isWithin(const BundleLimit& limit, const ChangeType& change) const {
  const auto mayTouch = [&](const std::string& identifier) {
    const DonationValuePtr held = donations.find(identifier);
    return !held || limit.allows(*held);
  };
  if (const auto* insertion = std::get_if<InsertOrModifyValues>(&change)) {
    return std::all_of(insertion->values.begin(), insertion->values.end(), [&](const auto& value) {
      return mayTouch(std::string(value->donationKey().text));
    });
  }
  if (const auto* removal = std::get_if<RemoveValuesWithIdentifiers>(&change)) {
    return std::all_of(removal->identifiers.begin(), removal->identifiers.end(), mayTouch);
  }
  return limit.allows(std::get<RemoveValuesWithBundleIdentifier>(change).bundleIdentifier);
}

void Corvel::changeTable(const std::function<void()>& step) {
  // Cheap: rows are shared, so the copy holds just the index. The step throws when memory is short.
  DonationTable formerTable(donations);
  ContactPtr formerContact = contact;
  try {
    step();
  } catch (...) {
    donations = std::move(formerTable);
    contact = std::move(formerContact);
    throw;
  }
}

void Corvel::applyChange(const ChangeType& change, SaveReply saveReply) {
  const auto replyAtOnce = [&](const SaveResponse& response) {
    replyScheduler->performBlock(
        [saveReply = std::move(saveReply), response] { saveReply(response); });
  };
  // Nothing to save; the caller still expects its answer on the reply scheduler.
  if (std::visit(IsEmptyChange{}, change)) return replyAtOnce(SaveResponse::success());
  ErrorPtr refused;
  changeTable([&] {
    if (const auto* insertion = std::get_if<InsertOrModifyValues>(&change)) {
      refused = insert(insertion->values);
      if (refused) return;
    } else if (const auto* removal = std::get_if<RemoveValuesWithIdentifiers>(&change)) {
      donations.removeIdentifiers(removal->identifiers);
    } else {
      donations.removeBundle(std::get<RemoveValuesWithBundleIdentifier>(change).bundleIdentifier);
    }
    rebuildMeCard();
    save(std::move(saveReply));
  });
  if (refused) return replyAtOnce(SaveResponse::failure(refused));
  postValuesDidChange();
}

ErrorPtr Corvel::insert(const DonationValues& values) {
  const DonationValues accepted = valuesSatisfying(
      values, [this](const DonationValue& value) { return !isConfirmedOrRejected(value); });
  // Put in, they would fail this save and all later ones, whosever they are.
  if (!donations.hasRoomFor(accepted, persistence->capacityInBytes())) {
    return makeDonationError(DonationErrorCode::notSerializable,
                             "with these values the donations are larger than their file may be");
  }
  donations.insertAll(accepted);
  return nullptr;
}

void Corvel::commitTable(SaveReply saveReply) {
  rebuildMeCard();
  save(std::move(saveReply));
  postValuesDidChange();
}

void Corvel::save(SaveReply saveReply) {
  hasUnsavedRemoval = false;
  diskScheduler->performBlock([self = shared_from_this(), values = donations.snapshot(),
                               saveReply = std::move(saveReply), transaction = beginChange()] {
    self->persistence->storeWithAllValues(*values).onCompletion(
        [self, saveReply, transaction](const Result<bool>& stored) {
          const SaveResponse response =
              stored.ok() ? SaveResponse::success() : SaveResponse::failure(stored.error());
          self->replyScheduler->performBlock(
              [saveReply, response, transaction] { saveReply(response); });
        });
  });
}

void Corvel::postValuesDidChange() const {
  distributedNotificationCenter->post(MeCardValuesDidChangeNotification);
}

void Corvel::deleteDonationsWithBundleID(const std::string& bundleIdentifier) {
  submitWriterBlock([bundleIdentifier](Corvel& agent) {
    if (agent.donations.removeBundle(bundleIdentifier)) agent.hasUnsavedRemoval = true;
  });
}

}  // namespace quenlet
