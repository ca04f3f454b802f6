#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mecard/CuratedInfoProviderProtocol.h"
#include "platform/AgentEnvironmentProtocol.h"
#include "platform/contacts/Contact.h"
#include "platform/scheduling/Scheduler.h"
#include "storage/ChangeQueue.h"
#include "storage/DonationPersistenceProtocol.h"
#include "storage/DonationTable.h"
#include "storage/StoreChange.h"

namespace quenlet {

// What the agent holds: the donations, their file, and the donated me card made from them.
//
//   submitChange ─▶ writer block: table ─▶ card ─▶ queue the save ─▶ post the notification
//                   state scheduler                     │
//                   I/O scheduler                       └▶ write the file
//                   reply scheduler                            └▶ SaveReply
//
// A block sees the table and the card of all blocks before it. Changes in a row share a block, a
// card and a save. A change that throws leaves table and card as they were. The store keeps itself
// alive until its blocks, saves and replies are done.
class DonationStore final : public std::enable_shared_from_this<DonationStore> {
 public:
  using Predicate = std::function<bool(const DonationValue&)>;

  // Starts nothing.
  DonationStore(AgentEnvironmentProtocol& environment,
                std::shared_ptr<DonationPersistenceProtocol> persistence,
                std::shared_ptr<CuratedInfoProviderProtocol> curatedInfoProvider);

  // Any thread.

  // The reader/writer scheduler "ovaro.quenlet.agent.state": the blocks' order. For
  // synchronous readers: other blocks are submitted below, to keep their place among changes.
  [[nodiscard]] const std::shared_ptr<ReaderWriterScheduler>& lock() const {
    return stateScheduler;
  }
  void submitReaderBlock(std::function<void(const DonationStore&)> block);
  // An orderly exit waits for the block, and for the answer to a save that it starts.
  void submitWriterBlock(std::function<void(DonationStore&)> block);
  // Submits one change. `saveReply` is called on the reply scheduler, exactly once, unless `within`
  // refuses the change. An empty change saves and posts nothing.
  void submitChange(ChangeType change, SaveReply saveReply, ChangeLimit within = {});
  // Submits the removal of one bundle's values from memory only: the next save writes it.
  void deleteDonationsWithBundleID(const std::string& bundleIdentifier);
  // Submits a save of what that dropped, unless another save has written it by then.
  void saveUnsavedRemoval();
  // From now on, each change of the feedback drops the values that it confirms or rejects.
  void followFeedback();

  // In blocks of the state scheduler, of readers or writers.

  // The card of the last rebuild; never computes.
  [[nodiscard]] const ContactPtr& card() const { return contact; }
  // All donations, in the order in which they first came.
  [[nodiscard]] std::shared_ptr<const DonationValues> list() const { return donations.snapshot(); }
  // The donation under an identifier, or null.
  [[nodiscard]] DonationValuePtr find(std::string_view donationIdentifier) const {
    return donations.find(donationIdentifier);
  }

  // In writer blocks only.

  // Replaces the table by the stored values that the owner has neither confirmed nor rejected and
  // for which `notYetExpired` is true. Returns those of them that have expired, too; nothing, with
  // the table unchanged, when the load fails. Does not rebuild the card.
  [[nodiscard]] std::optional<DonationValues> restore(const Predicate& notYetExpired);
  // Drops these values, with all that follows from it.
  void removeAll(const DonationValues& values, SaveReply saveReply);
  // Drops everything and saves. Posts nothing.
  void deleteAll();
  // Makes the card anew from the table and the curated facts.
  void rebuildCard();
  void postValuesDidChange() const;

 private:
  void dropConfirmedOrRejected();
  void keepStoredIfMostExpired(const DonationValues& loaded, const Predicate& notYetExpired);
  [[nodiscard]] bool isConfirmedOrRejected(const DonationValue& value) const;
  [[nodiscard]] bool isWithin(const BundleLimit& limit, const ChangeType& change) const;
  // Inserts the values that the owner has neither confirmed nor rejected. Inserts nothing and
  // returns an error when the table would outgrow its file.
  [[nodiscard]] ErrorPtr insert(const DonationValues& values);
  [[nodiscard]] ErrorPtr changeTable(const ChangeType& change);
  // Runs a step that leaves table and card as they were if it throws.
  void allOrNothing(const std::function<void()>& step);
  // Makes changes in their order. Each that throws fails for itself.
  void makeChanges(const SubmittedChanges& submitted);
  // The same with one card and one save. Returns the answers to those that were refused and the
  // posts of the others, to be run next.
  [[nodiscard]] std::vector<Block> makeTogether(const SubmittedChanges& submitted);
  // Changes the table, or returns the answer for which nothing has to be saved.
  [[nodiscard]] std::optional<Block> make(const SubmittedChange& submitted);
  // Runs a step that changes the table, then rebuilds the card, saves and posts the change.
  void change(const std::function<void()>& step, SaveReply saveReply);
  void performWriterBlock(std::function<void(DonationStore&)> block);
  void save(std::vector<SaveReply> saveReplies);

  ChangeQueue changes;
  // Changed in writer blocks, read in reader blocks.
  DonationTable donations;
  ContactPtr contact = std::make_shared<const Contact>();
  // The table in memory lacks values that are still stored.
  bool hasUnsavedRemoval = false;

  const std::shared_ptr<DistributedNotificationCenter> distributedNotificationCenter;
  const std::shared_ptr<DonationPersistenceProtocol> persistence;
  const std::shared_ptr<DonationFeedbackStore> feedbackStore;
  const std::shared_ptr<ReaderWriterScheduler> stateScheduler;
  const std::shared_ptr<Scheduler> diskScheduler;
  const std::shared_ptr<Scheduler> replyScheduler;
  const std::shared_ptr<CuratedInfoProviderProtocol> curatedInfoProvider;
};

// The values for which `selected` is true, in their order.
[[nodiscard]] DonationValues valuesWhere(const DonationValues& values,
                                         const DonationStore::Predicate& selected);

}  // namespace quenlet
