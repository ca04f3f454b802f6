#include "platform/donations/PropertyListFeedbackStore.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/donations/FeedbackContent.h"
#include "platform/donations/FeedbackEntries.h"
#include "platform/donations/PropertyListFile.h"
#include "platform/files/DirectoryWatch.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

using KeySetsPtr = FeedbackEntries::KeySetsPtr;

struct Rejection final {
  std::string contactIdentifier;
  std::vector<FeedbackContent> contents;
  std::function<void(ErrorPtr)> completionHandler;
};

// Whether the file can hold it, asked for each rejection alone, so that one which it cannot hold
// does not fail those that share its write.
ErrorPtr serializationError(const Rejection& rejection) {
  PropertyListArray elements;
  FeedbackEntries::addRejected(rejection.contents, elements);
  const auto outcome = PropertyListSerializer::dataWithObject(
      PropertyListDictionary{{rejection.contactIdentifier, std::move(elements)}});
  return outcome.isLeft() ? nullptr : outcome.right();
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
      // What a write of ours changes is no news; what others change meanwhile is read after it.
      if (!isAsked || isWriting) return;
    }
    worker->performBlock([self = shared_from_this()] { static_cast<void>(self->keySets()); });
  }

  // Takes over what a write of ours left in the file. The next look-up still reads it, as another
  // program may have changed it right after.
  void publish(const KeySetsPtr& before, KeySetsPtr after) EXCLUDES(mutex) {
    std::function<void()> told;
    {
      MutexLock lock(mutex);
      ++generation;
      isStale = true;
      // Our own additions are gone from wherever they were looked up.
      if (isAsked && FeedbackEntries::hasMore(*before, known)) told = changeHandler;
      known = std::move(after);
    }
    if (told) told();
  }

  // Null while nothing is known.
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
    problems.setProblem(contacts.isLeft() ? nullptr : contacts.right());
    if (contacts.isLeft())
      return takeOver(FeedbackEntries::keySetsOfFile(contacts.left()), readGeneration, wasAsked);
    return keepKnown(contacts.right(), readGeneration);
  }

  // What was read while the file changed, or while we change it, is good for this look-up, but not
  // for the next one.
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
    // A file that makes no sense now is changed by the one who makes it whole, and the watch tells;
    // what the system refuses may work next time without a change.
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

  // Never on the thread that completes writes: others' donations go through it, and the file's lock
  // can take a while.
  void writeWaitingSoon() {
    worker->performBlock([self = shared_from_this()] { self->writeWaiting(); });
  }

  // One at a time: the one that set isWriting, then the one after a write.
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
      if (outcome.isLeft()) self->publish(sets->before, sets->after);
      for (const Rejection& rejection : *batch) {
        rejection.completionHandler(outcome.isLeft() ? nullptr : outcome.right());
      }
      self->writeWaitingSoon();
    });
  }

  // Adds what the file does not hold yet; a content that was confirmed before stays one entry, and
  // becomes a rejected one.
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
