#include "platform/feedback/PropertyListFeedbackStore.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/feedback/FeedbackContent.h"
#include "platform/feedback/FeedbackEntries.h"
#include "platform/files/DirectoryWatch.h"
#include "platform/files/PropertyListFile.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {

// A cache of the file's keys, a queue of rejections, and the order between the two:
//
//   look-up ------> keySets(): not stale? `known`, without touching the file
//                     | stale: read the file (no lock of ours or the file's is held)
//                     +-- read ----> takeOver(): becomes `known` if nothing changed meanwhile
//                     +-- failed --> keepKnown(): `known` stays; retryLater() if it may pass
//   file watch ---> fileDidChange(): stale, next generation; reads soon if anybody ever asked
//   rejection ----> submit() -> writeWaiting(): a batch, under the file's lock -> publish()
//
// `generation` counts the changes heard of. A reading that began under another generation than it
// ends with, or during our own write, answers its own look-up but is not kept. The change handler
// is called when keys appear that a look-up may have denied; our own rejections do not count.

namespace {

using KeySetsPtr = FeedbackEntries::KeySetsPtr;

struct Rejection final {
  std::string contactIdentifier;
  std::vector<FeedbackContent> contents;
  std::function<void(ErrorPtr)> completionHandler;
};

// Checks that the file can hold the rejection. Each is checked alone: a bad one must not fail the
// others of its batch.
ErrorPtr serializationError(const Rejection& rejection) {
  PropertyListArray elements;
  FeedbackEntries::addRejected(rejection.contents, elements);
  const auto outcome = PropertyListSerializer::dataWithObject(
      PropertyListDictionary{{rejection.contactIdentifier, std::move(elements)}});
  return outcome.ok() ? nullptr : outcome.error();
}

}  // namespace

struct PropertyListFeedbackStore::State final : std::enable_shared_from_this<State> {
  State(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy,
        std::shared_ptr<Scheduler> scheduler)
      : file(std::move(path), std::move(dataProxy)),
        worker(std::move(scheduler)),
        problems(file.path().filename().string()) {}

  const PropertyListFile file;
  const std::shared_ptr<Scheduler> worker;
  ProblemReporter problems;
  Mutex mutex;
  KeySetsPtr known GUARDED_BY(mutex);              // null while unread or unknown
  bool isAsked GUARDED_BY(mutex) = false;          // a look-up may have been answered already
  bool isStale GUARDED_BY(mutex) = true;           // the file may differ from what is known
  std::uint64_t generation GUARDED_BY(mutex) = 0;  // of the file, as far as it is heard of
  double retryDelaySeconds GUARDED_BY(mutex) = retrySeconds;
  bool retryComes GUARDED_BY(mutex) = false;
  std::function<void()> changeHandler GUARDED_BY(mutex);
  std::vector<Rejection> waiting GUARDED_BY(mutex);
  bool isWriting GUARDED_BY(mutex) = false;

  void fileDidChange() EXCLUDES(mutex) {
    {
      MutexLock lock(mutex);
      ++generation;
      isStale = true;
      // Our own write is not news. writeWaiting() later reads what others have changed meanwhile.
      if (!isAsked || isWriting) return;
    }
    worker->performBlock([self = shared_from_this()] { static_cast<void>(self->keySets()); });
  }

  // Called after our own write, with the keys before and after it. The file stays stale: another
  // program may have changed it right after.
  void publish(const KeySetsPtr& before, KeySetsPtr after) EXCLUDES(mutex) {
    std::function<void()> told;
    {
      MutexLock lock(mutex);
      ++generation;
      isStale = true;
      // Compares the keys before our own additions: the callers that rejected those know already.
      if (isAsked && FeedbackEntries::hasMore(*before, known)) told = changeHandler;
      known = std::move(after);
    }
    if (told) told();
  }

  // The current keys, from the file if it has changed; null while nothing is known.
  KeySetsPtr keySets() EXCLUDES(mutex) {
    bool wasAsked = false;
    std::uint64_t readGeneration = 0;
    {
      MutexLock lock(mutex);
      wasAsked = std::exchange(isAsked, true);
      if (!isStale) return known;
      readGeneration = generation;
    }
    const Result<PropertyListDictionary> contacts = file.read();
    problems.setProblem(contacts.ok() ? nullptr : contacts.error());
    if (contacts.ok())
      return takeOver(FeedbackEntries::keySetsOfFile(contacts.value()), readGeneration, wasAsked);
    return keepKnown(contacts.error(), readGeneration);
  }

  // If the file has changed during the reading, or we are changing it, the sets are good enough for
  // this look-up, but not to be kept.
  KeySetsPtr takeOver(KeySetsPtr sets, std::uint64_t readGeneration, bool wasAsked)
      EXCLUDES(mutex) {
    std::function<void()> told;
    {
      MutexLock lock(mutex);
      if (generation != readGeneration || isWriting) return sets;
      isStale = false;
      retryDelaySeconds = retrySeconds;
      if (wasAsked && FeedbackEntries::hasMore(*sets, known)) told = changeHandler;
      known = sets;
    }
    if (told) told();
    return sets;
  }

  KeySetsPtr keepKnown(const ErrorPtr& error, std::uint64_t readGeneration) EXCLUDES(mutex) {
    // Damage is repaired by changing the file, which the watch notices. An error of the system can
    // pass without any change, so only a timer helps.
    if (error->domain() != PropertyListErrorDomain) retryLater();
    MutexLock lock(mutex);
    if (generation == readGeneration) isStale = false;
    return known;
  }

  void retryLater() EXCLUDES(mutex) {
    double delaySeconds = 0;
    {
      MutexLock lock(mutex);
      if (std::exchange(retryComes, true)) return;
      delaySeconds =
          std::exchange(retryDelaySeconds, std::min(2 * retryDelaySeconds, longestRetrySeconds));
    }
    static_cast<void>(worker->afterDelay(delaySeconds, [weak = weak_from_this()] {
      if (const auto state = weak.lock()) state->retry();
    }));
  }

  void retry() EXCLUDES(mutex) {
    {
      MutexLock lock(mutex);
      retryComes = false;
    }
    fileDidChange();
  }

  void setChangeHandler(std::function<void()> handler) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    changeHandler.swap(handler);  // the former one ends without the lock
  }

  void submit(Rejection rejection) EXCLUDES(mutex) {
    {
      MutexLock lock(mutex);
      waiting.push_back(std::move(rejection));
      if (std::exchange(isWriting, true)) return;
    }
    writeWaitingSoon();
  }

  // On the worker, never on the thread that completes writes: waiting for the file's lock there
  // would hold up everyone's donations.
  void writeWaitingSoon() {
    worker->performBlock([self = shared_from_this()] { self->writeWaiting(); });
  }

  // Never runs twice at once: submit() posts it only when it sets isWriting, and each write posts
  // it again on completion, until nothing is waiting.
  void writeWaiting() EXCLUDES(mutex) {
    auto batch = std::make_shared<std::vector<Rejection>>();
    bool mustLook = false;
    {
      MutexLock lock(mutex);
      batch->swap(waiting);
      isWriting = !batch->empty();
      mustLook = isAsked && isStale;
    }
    if (batch->empty()) {
      if (mustLook) static_cast<void>(keySets());
      return;
    }
    struct Sets final {
      KeySetsPtr before;
      KeySetsPtr after;
    };
    const auto sets = std::make_shared<Sets>();
    const Future<bool> written = file.update(
        [&](PropertyListDictionary& contacts) {
          sets->before = FeedbackEntries::keySetsOfFile(contacts);
          bool changed = false;
          for (const Rejection& rejection : *batch) changed |= merge(rejection, contacts);
          sets->after = FeedbackEntries::keySetsOfFile(contacts);
          return changed;
        },
        PropertyListFile::OnDamage::fail);
    written.onCompletion([self = shared_from_this(), batch, sets](const Result<bool>& outcome) {
      if (outcome.ok()) self->publish(sets->before, sets->after);
      for (const Rejection& rejection : *batch) {
        rejection.completionHandler(outcome.ok() ? nullptr : outcome.error());
      }
      self->writeWaitingSoon();
    });
  }

  // Adds the rejection to the contact's list. An entry of another type than a list is replaced,
  // after a copy of the file was kept.
  bool merge(const Rejection& rejection, PropertyListDictionary& contacts) const {
    PropertyListArray list;
    if (const PropertyList* present = findEntry(contacts, rejection.contactIdentifier)) {
      if (present->array()) {
        list = *present->array();
      } else {
        file.keepDamagedFile();
      }
    }
    if (!FeedbackEntries::addRejected(rejection.contents, list)) return false;
    contacts.insert_or_assign(rejection.contactIdentifier, std::move(list));
    return true;
  }
};

PropertyListFeedbackStore::PropertyListFeedbackStore(std::filesystem::path path,
                                                     std::shared_ptr<DataProxy> dataProxy,
                                                     EventLoop& eventLoop,
                                                     std::shared_ptr<Scheduler> worker)
    : state(std::make_shared<State>(std::move(path), std::move(dataProxy), std::move(worker))) {
  const std::filesystem::path& file = state->file.path();
  watch =
      DirectoryWatch::watchDirectory(eventLoop, file.parent_path(),
                                     [weak = std::weak_ptr<State>(state),
                                      name = file.filename().string()](const std::string& changed) {
                                       if (!changed.empty() && changed != name) return;
                                       if (const auto held = weak.lock()) held->fileDidChange();
                                     });
}

PropertyListFeedbackStore::~PropertyListFeedbackStore() { watch->cancel(); }

bool PropertyListFeedbackStore::donatedValueHasBeenConfirmedOrRejected(
    const DonationValue& value, const std::string& contactIdentifier) {
  const KeySetsPtr sets = state->keySets();
  if (!sets) return false;
  const auto found = sets->find(contactIdentifier);
  return found != sets->end() && found->second.contains(FeedbackContent::contentOfValue(value).key);
}

void PropertyListFeedbackStore::rejectDonatedValues(
    const DonationValues& values, const std::string& contactIdentifier,
    std::function<void(ErrorPtr)> completionHandler) {
  Rejection rejection{contactIdentifier, {}, std::move(completionHandler)};
  for (const DonationValuePtr& value : values) {
    rejection.contents.push_back(FeedbackContent::contentOfValue(*value));
  }
  if (ErrorPtr error = serializationError(rejection)) {
    rejection.completionHandler(std::move(error));
    return;
  }
  state->submit(std::move(rejection));
}

void PropertyListFeedbackStore::setChangeHandler(std::function<void()> handler) {
  state->setChangeHandler(std::move(handler));
}

}  // namespace quenlet
