#include "platform/telephony/PropertyListPhoneNumberMonitor.h"

#include <atomic>
#include <optional>
#include <utility>

#include "platform/files/DirectoryWatch.h"
#include "platform/foundation/ProblemReporter.h"
#include "platform/telephony/TelephonyFile.h"

namespace quenlet {
namespace {

// Nothing when there are too many elements, or one is malformed.
std::optional<SIMCardItems> itemsOfArray(const PropertyListArray& elements) {
  if (elements.size() > PropertyListPhoneNumberMonitor::maximumItems) return std::nullopt;
  SIMCardItems items;
  for (const PropertyList& element : elements) {
    const PropertyListDictionary* entries = element.dictionary();
    const std::string* identifier = entries ? findString(*entries, "identifier") : nullptr;
    const std::string* value = entries ? findString(*entries, "value") : nullptr;
    if (!identifier || identifier->empty() || !value) return std::nullopt;
    items.push_back({*identifier, *value});
  }
  return items;
}

Result<SIMCardItems> itemsOfObject(const std::optional<PropertyList>& object) {
  if (!object) return Result<SIMCardItems>::success({});
  const PropertyListArray* elements = object->array();
  std::optional<SIMCardItems> items = elements ? itemsOfArray(*elements) : std::nullopt;
  if (items) return Result<SIMCardItems>::success(*std::move(items));
  return Result<SIMCardItems>::failure(TelephonyFile::damage(
      "the file is not an array of up to 1,000 dictionaries with the texts identifier and value"));
}

}  // namespace

struct PropertyListPhoneNumberMonitor::CardFile final {
  CardFile(std::filesystem::path file, std::shared_ptr<DataProxy> proxy)
      : path(std::move(file)), dataProxy(std::move(proxy)), problems(path.filename().string()) {}

  [[nodiscard]] Result<SIMCardItems> read() {
    using Items = Result<SIMCardItems>;
    const auto object = TelephonyFile::read(*dataProxy, path);
    Items items = object.ok() ? itemsOfObject(object.value()) : Items::failure(object.error());
    problems.setProblem(items.ok() ? nullptr : items.error());
    return items;
  }

  const std::filesystem::path path;
  const std::shared_ptr<DataProxy> dataProxy;
  ProblemReporter problems;
};

// Used on the loop's thread only, except for `isCancelled`.
struct PropertyListPhoneNumberMonitor::Registration final {
  void check() {
    if (isCancelled) return;
    Result<SIMCardItems> items = cardFile->read();
    if (!items.ok() || items.value() == told) return;
    told = std::move(items).takeValue();
    handler(*told);
  }

  const std::shared_ptr<CardFile> cardFile;
  const InfoChangeHandler handler;
  // The items last given to the handler. Absent until then: even an empty list is news at first.
  std::optional<SIMCardItems> told = {};
  std::atomic<bool> isCancelled = false;
};

PropertyListPhoneNumberMonitor::PropertyListPhoneNumberMonitor(std::filesystem::path file,
                                                               std::shared_ptr<DataProxy> dataProxy,
                                                               EventLoop& eventLoop)
    : cardFile(std::make_shared<CardFile>(std::move(file), std::move(dataProxy))),
      eventLoop(eventLoop) {}

std::shared_ptr<Cancelable> PropertyListPhoneNumberMonitor::addInfoChangeHandler(
    InfoChangeHandler handler) {
  const std::shared_ptr<Registration> registration(new Registration{cardFile, std::move(handler)});
  auto watch = DirectoryWatch::watchDirectory(
      eventLoop, cardFile->path.parent_path(),
      [registration, name = cardFile->path.filename().string()](const std::string& changed) {
        if (changed.empty() || changed == name) registration->check();
      });
  // After the watch has begun, so that no change is missed in between.
  eventLoop.post([registration] { registration->check(); });
  return std::make_shared<CancelBlock>([registration, watch = std::move(watch)] {
    registration->isCancelled = true;
    watch->cancel();
  });
}

void PropertyListPhoneNumberMonitor::infoWithCompletion(InfoCompletion completion) {
  Result<SIMCardItems> items = cardFile->read();
  if (items.ok()) {
    completion(std::move(items).takeValue(), nullptr);
  } else {
    completion(std::nullopt, items.error());
  }
}

}  // namespace quenlet
