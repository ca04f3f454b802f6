#include "platform/donations/PropertyListFeedbackStore.h"

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/donations/FeedbackContent.h"
#include "platform/donations/PropertyListFile.h"
#include "platform/files/DirectoryWatch.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

constexpr char statusKey[] = "status";
constexpr char rejectedStatus[] = "rejected";
constexpr char confirmedStatus[] = "confirmed";

// The keys of all contents with a known status, by contact identifier.
using KeySets = std::unordered_map<std::string, std::unordered_set<std::string>>;
using KeySetsPtr = std::shared_ptr<const KeySets>;

struct Rejection final {
  std::string contactIdentifier;
  std::vector<FeedbackContent> contents;
  std::function<void(ErrorPtr)> completionHandler;
};

// The key of one element of a contact's list, when that says what the owner thinks of a content.
std::optional<std::string> keyOfElement(const PropertyList& element) {
  const PropertyListDictionary* entry = element.dictionary();
  const std::string* status = entry ? findString(*entry, statusKey) : nullptr;
  if (!status || (*status != rejectedStatus && *status != confirmedStatus)) return std::nullopt;
  return FeedbackContent::keyOfEntry(*entry);
}

std::unordered_set<std::string> keysOfList(const PropertyListArray& list) {
  std::unordered_set<std::string> keys;
  for (const PropertyList& element : list) {
    if (std::optional<std::string> key = keyOfElement(element)) keys.insert(*std::move(key));
  }
  return keys;
}

KeySetsPtr keySetsOfFile(const PropertyListDictionary& contacts) {
  const auto sets = std::make_shared<KeySets>();
  for (const auto& [contactIdentifier, list] : contacts) {
    if (list.array()) sets->emplace(contactIdentifier, keysOfList(*list.array()));
  }
  return sets;
}

PropertyList rejectedElement(const FeedbackContent& content) {
  PropertyListDictionary element = content.entry;
  element.emplace(statusKey, rejectedStatus);
  return element;
}

bool isRejected(const PropertyList& element) {
  return *findString(*element.dictionary(), statusKey) == rejectedStatus;
}

// Whether the file can hold it, asked for each rejection alone, so that one which it cannot hold
// does not fail those that share its write.
ErrorPtr serializationError(const Rejection& rejection) {
  PropertyListArray elements;
  for (const FeedbackContent& content : rejection.contents) {
    elements.push_back(rejectedElement(content));
  }
  const auto outcome = PropertyListSerializer::dataWithObject(
      PropertyListDictionary{{rejection.contactIdentifier, std::move(elements)}});
  return outcome.isLeft() ? nullptr : outcome.right();
}

}  // namespace

struct PropertyListFeedbackStore::State final : std::enable_shared_from_this<State> {
  State(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy)
      : file(std::move(path), std::move(dataProxy)) {}

  const PropertyListFile file;
  Mutex mutex;
  KeySetsPtr known GUARDED_BY(mutex);              // null before the first look-up
  bool isStale GUARDED_BY(mutex) = true;           // the file may differ from what is known
  std::uint64_t generation GUARDED_BY(mutex) = 0;  // of the file, as far as it is heard of
  std::vector<Rejection> waiting GUARDED_BY(mutex);
  bool isWriting GUARDED_BY(mutex) = false;

  void fileDidChange() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    ++generation;
    isStale = true;
  }

  // The next look-up still reads the file, as another program may have changed it right after.
  void publish(KeySetsPtr sets) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    ++generation;
    isStale = true;
    known = std::move(sets);
  }

  KeySetsPtr keySets() EXCLUDES(mutex) {
    KeySetsPtr last;
    std::uint64_t readGeneration = 0;
    {
      MutexLock lock(mutex);
      if (!isStale) return known;
      last = known;
      readGeneration = generation;
    }
    KeySetsPtr sets = readKeySets(std::move(last));
    MutexLock lock(mutex);
    // What was read while the file changed is good for this look-up, but not for the next one.
    if (generation == readGeneration) {
      isStale = false;
      known = sets;
    }
    return sets;
  }

  // A file that cannot be read now leaves what is known as it is: a value that its owner rejected
  // must not come back because somebody's editor is at work.
  [[nodiscard]] KeySetsPtr readKeySets(KeySetsPtr last) const {
    const Result<PropertyListDictionary> contacts = file.read();
    if (contacts.isLeft()) return keySetsOfFile(contacts.left());
    return last ? std::move(last) : std::make_shared<const KeySets>();
  }

  void submit(Rejection rejection) EXCLUDES(mutex) {
    {
      MutexLock lock(mutex);
      waiting.push_back(std::move(rejection));
      if (std::exchange(isWriting, true)) return;
    }
    writeWaiting();
  }

  // Runs on one thread at a time: the one that set isWriting, then the one that completes a write.
  void writeWaiting() EXCLUDES(mutex) {
    auto batch = std::make_shared<std::vector<Rejection>>();
    {
      MutexLock lock(mutex);
      batch->swap(waiting);
      if (batch->empty()) {
        isWriting = false;
        return;
      }
    }
    const auto merged = std::make_shared<KeySetsPtr>();
    const Future<bool> written = file.update(
        [&](PropertyListDictionary& contacts) {
          bool changed = false;
          for (const Rejection& rejection : *batch) changed |= merge(rejection, contacts);
          *merged = keySetsOfFile(contacts);
          return changed;
        },
        PropertyListFile::OnDamage::replaceFile);
    written.onCompletion([self = shared_from_this(), batch, merged](const Result<bool>& outcome) {
      if (outcome.isLeft()) self->publish(*merged);
      for (const Rejection& rejection : *batch) {
        rejection.completionHandler(outcome.isLeft() ? nullptr : outcome.right());
      }
      self->writeWaiting();
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
    if (!addRejected(rejection.contents, list)) return false;
    contacts.insert_or_assign(rejection.contactIdentifier, std::move(list));
    return true;
  }

  static bool addRejected(const std::vector<FeedbackContent>& contents, PropertyListArray& list) {
    std::unordered_map<std::string, std::size_t> positions;
    for (std::size_t position = 0; position < list.size(); ++position) {
      if (auto key = keyOfElement(list[position])) positions.emplace(*std::move(key), position);
    }
    bool changed = false;
    for (const FeedbackContent& content : contents) {
      const auto [found, isNew] = positions.emplace(content.key, list.size());
      if (isNew) {
        list.push_back(rejectedElement(content));
      } else if (!isRejected(list[found->second])) {
        list[found->second] = rejectedElement(content);
      } else {
        continue;
      }
      changed = true;
    }
    return changed;
  }
};

PropertyListFeedbackStore::PropertyListFeedbackStore(std::filesystem::path path,
                                                     std::shared_ptr<DataProxy> dataProxy,
                                                     EventLoop& eventLoop)
    : state(std::make_shared<State>(std::move(path), std::move(dataProxy))) {
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

}  // namespace quenlet
