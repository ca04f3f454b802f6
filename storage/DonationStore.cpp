#include "storage/DonationStore.h"

#include <algorithm>

#include "mecard/ContactRebuilder.h"
#include "model/DonationError.h"
#include "platform/PlatformServices.h"
#include "platform/foundation/ProblemReporter.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {
namespace {

// Held by each pending step of a change, so that an orderly exit waits for it.
std::shared_ptr<ProcessTransaction> beginChange() {
  return PlatformServices::current().makeProcessTransaction("ovaro.quenlet-agent.change");
}

struct IsEmptyChange final {
  bool operator()(const InsertOrModifyValues& change) const { return change.values.empty(); }
  bool operator()(const RemoveValuesWithIdentifiers& change) const {
    return change.identifiers.empty();
  }
  bool operator()(const RemoveValuesWithBundleIdentifier& change) const {
    return change.bundleIdentifier.empty();
  }
};

}  // namespace

DonationValues valuesWhere(const DonationValues& values, const DonationStore::Predicate& selected) {
  DonationValues found;
  for (const DonationValuePtr& value : values) {
    if (selected(*value)) found.push_back(value);
  }
  return found;
}

DonationStore::DonationStore(AgentEnvironmentProtocol& environment,
                             std::shared_ptr<DonationPersistenceProtocol> donationPersistence,
                             std::shared_ptr<CuratedInfoProviderProtocol> infoProvider)
    : distributedNotificationCenter(environment.distributedNotificationCenter()),
      persistence(std::move(donationPersistence)),
      feedbackStore(environment.feedbackStore()),
      stateScheduler(environment.schedulerProvider()->newReaderWriterSchedulerWithName(
          "ovaro.quenlet.agent.state")),
      diskScheduler(
          environment.schedulerProvider()->newSerialSchedulerWithName("ovaro.quenlet.agent.io")),
      replyScheduler(environment.schedulerProvider()->backgroundScheduler()),
      curatedInfoProvider(std::move(infoProvider)) {}

void DonationStore::submitWriterBlock(std::function<void(DonationStore&)> block) {
  changes.submitApart([&] { performWriterBlock(std::move(block)); });
}

void DonationStore::submitReaderBlock(std::function<void(const DonationStore&)> block) {
  changes.submitApart([&] {
    stateScheduler->performReaderBlock(
        [self = shared_from_this(), block = std::move(block)] { block(*self); });
  });
}

void DonationStore::performWriterBlock(std::function<void(DonationStore&)> block) {
  stateScheduler->performWriterBlock([self = shared_from_this(), block = std::move(block),
                                      transaction = beginChange()] { block(*self); });
}

void DonationStore::submitChange(ChangeType change, SaveReply saveReply, ChangeLimit within) {
  changes.add({std::move(change), std::move(saveReply), std::move(within)},
              [this](const std::shared_ptr<SubmittedChanges>& joined) {
                performWriterBlock([joined](DonationStore& store) {
                  store.makeChanges(store.changes.take(joined));
                });
              });
}

void DonationStore::deleteDonationsWithBundleID(const std::string& bundleIdentifier) {
  submitWriterBlock([bundleIdentifier](DonationStore& store) {
    if (store.donations.removeBundle(bundleIdentifier)) store.hasUnsavedRemoval = true;
  });
}

void DonationStore::saveUnsavedRemoval() {
  submitWriterBlock([](DonationStore& store) {
    if (store.hasUnsavedRemoval) store.change([] {}, nobodyWaits);
  });
}

void DonationStore::followFeedback() {
  feedbackStore->setChangeHandler([weakSelf = weak_from_this()] {
    if (const auto self = weakSelf.lock()) {
      self->submitWriterBlock([](DonationStore& store) { store.dropConfirmedOrRejected(); });
    }
  });
}

std::optional<DonationValues> DonationStore::restore(const Predicate& notYetExpired) {
  const Future<DonationValues> load = persistence->loadDonations();
  const Result<DonationValues>& loaded = load.result();
  if (!loaded.ok()) return std::nullopt;
  keepStoredIfMostExpired(loaded.value(), notYetExpired);
  DonationValues candidates = valuesWhere(
      loaded.value(), [this](const DonationValue& value) { return !isConfirmedOrRejected(value); });
  DonationTable restored;
  restored.insertAll(valuesWhere(candidates, notYetExpired));
  donations = std::move(restored);
  return candidates;
}

// Under a clock that is far ahead, good values look expired, and the next save would lose them.
void DonationStore::keepStoredIfMostExpired(const DonationValues& loaded,
                                            const Predicate& notYetExpired) {
  constexpr std::size_t handful = 5;
  const std::size_t expired = loaded.size() - valuesWhere(loaded, notYetExpired).size();
  if (expired < handful || expired <= loaded.size() / 2) return;
  persistence->keepStoredDonations();
  ProblemReporter("donations")
      .setProblem(makeError(
          DonationErrorDomain, 0,
          std::to_string(expired) + " of " + std::to_string(loaded.size()) +
              " have expired by this machine's clock; their file stays beside the next one"));
}

void DonationStore::rebuildCard() {
  ContactRebuilder rebuilder(donations.snapshot(), curatedInfoProvider->curatedName(),
                             curatedInfoProvider->curatedEmailAddresses());
  contact = std::make_shared<const Contact>(rebuilder.buildNewContact());
}

bool DonationStore::isConfirmedOrRejected(const DonationValue& value) const {
  return feedbackStore->donatedValueHasBeenConfirmedOrRejected(value, MeCardContactIdentifier);
}

void DonationStore::dropConfirmedOrRejected() {
  const DonationValues unwanted = valuesWhere(
      *list(), [this](const DonationValue& value) { return isConfirmedOrRejected(value); });
  // No caller waits for this save. Should it fail, the next start drops the values again.
  if (!unwanted.empty()) removeAll(unwanted, nobodyWaits);
}

bool DonationStore::isWithin(const BundleLimit& limit, const ChangeType& change) const {
  const auto mayTouch = [&](const auto& identifier) {
    const DonationValuePtr held = donations.find(identifier);
    return !held || limit.allows(*held);
  };
  if (const auto* insertion = std::get_if<InsertOrModifyValues>(&change)) {
    return std::all_of(insertion->values.begin(), insertion->values.end(),
                       [&](const auto& value) { return mayTouch(value->donationKey()); });
  }
  if (const auto* removal = std::get_if<RemoveValuesWithIdentifiers>(&change)) {
    return std::all_of(removal->identifiers.begin(), removal->identifiers.end(), mayTouch);
  }
  return limit.allows(std::get<RemoveValuesWithBundleIdentifier>(change).bundleIdentifier);
}

ErrorPtr DonationStore::changeTable(const ChangeType& change) {
  if (const auto* insertion = std::get_if<InsertOrModifyValues>(&change)) {
    return insert(insertion->values);
  }
  if (const auto* removal = std::get_if<RemoveValuesWithIdentifiers>(&change)) {
    donations.removeIdentifiers(removal->identifiers);
  } else {
    donations.removeBundle(std::get<RemoveValuesWithBundleIdentifier>(change).bundleIdentifier);
  }
  return nullptr;
}

void DonationStore::makeChanges(const SubmittedChanges& submitted) {
  std::vector<Block> next;
  try {
    next = makeTogether(submitted);
  } catch (...) {
    if (submitted.size() == 1) throw;
    for (const SubmittedChange& alone : submitted) runGuarded([&] { makeChanges({alone}); });
  }
  for (const Block& block : next) runGuarded(block);
}

std::vector<Block> DonationStore::makeTogether(const SubmittedChanges& submitted) {
  std::vector<Block> next;
  std::vector<SaveReply> saveReplies;
  allOrNothing([&] {
    for (const SubmittedChange& each : submitted) {
      if (std::optional<Block> answer = make(each)) {
        next.push_back(
            [this, answer = std::move(*answer)] { replyScheduler->performBlock(answer); });
      } else {
        saveReplies.push_back(each.saveReply);
        next.push_back([this] { postValuesDidChange(); });
      }
    }
    if (saveReplies.empty()) return;
    rebuildCard();
    save(std::move(saveReplies));
  });
  return next;
}

std::optional<Block> DonationStore::make(const SubmittedChange& submitted) {
  // Only here is it certain which values the change will touch.
  if (submitted.within.limit && !isWithin(*submitted.within.limit, submitted.change)) {
    return [refused = submitted.within.refused] { refused(BundleLimit::refusal()); };
  }
  const auto answer = [&](const SaveResponse& response) {
    return [saveReply = submitted.saveReply, response] { saveReply(response); };
  };
  if (std::visit(IsEmptyChange{}, submitted.change)) return answer(SaveResponse::success());
  const ErrorPtr refusal = changeTable(submitted.change);
  if (refusal) return answer(SaveResponse::failure(refusal));
  return std::nullopt;
}

void DonationStore::removeAll(const DonationValues& values, SaveReply saveReply) {
  change([&] { donations.removeAll(values); }, std::move(saveReply));
}

void DonationStore::change(const std::function<void()>& step, SaveReply saveReply) {
  allOrNothing([&] {
    step();
    rebuildCard();
    save({std::move(saveReply)});
  });
  postValuesDidChange();
}

void DonationStore::allOrNothing(const std::function<void()>& step) {
  // Cheap: rows are shared, so the copy holds just the index. Memory may run short at any step.
  DonationTable formerTable(donations);
  const ContactPtr formerContact = contact;
  const bool hadUnsavedRemoval = hasUnsavedRemoval;
  try {
    step();
  } catch (...) {
    donations = std::move(formerTable);
    contact = formerContact;
    hasUnsavedRemoval = hadUnsavedRemoval;
    throw;
  }
}

ErrorPtr DonationStore::insert(const DonationValues& values) {
  const DonationValues accepted = valuesWhere(
      values, [this](const DonationValue& value) { return !isConfirmedOrRejected(value); });
  // If they were put in, this save would fail, and so would those of all other donors from now on.
  if (!donations.hasRoomFor(accepted, persistence->capacityInBytes())) {
    return makeDonationError(DonationErrorCode::notSerializable,
                             "with these values the donations are larger than their file may be");
  }
  donations.insertAll(accepted);
  return nullptr;
}

void DonationStore::deleteAll() {
  allOrNothing([this] {
    donations = DonationTable();
    rebuildCard();
    // A failed save can be told to nobody; the next change writes the table again.
    save({});
  });
}

void DonationStore::save(std::vector<SaveReply> saveReplies) {
  hasUnsavedRemoval = false;
  diskScheduler->performBlock([self = shared_from_this(), values = donations.snapshot(),
                               saveReplies = std::move(saveReplies), transaction = beginChange()] {
    self->persistence->storeWithAllValues(values).onCompletion(
        [self, saveReplies, transaction](const Result<bool>& stored) {
          const SaveResponse response =
              stored.ok() ? SaveResponse::success() : SaveResponse::failure(stored.error());
          for (const SaveReply& saveReply : saveReplies) {
            self->replyScheduler->performBlock(
                [saveReply, response, transaction] { saveReply(response); });
          }
        });
  });
}

void DonationStore::postValuesDidChange() const {
  distributedNotificationCenter->post(MeCardValuesDidChangeNotification);
}

}  // namespace quenlet
