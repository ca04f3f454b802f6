#include "platform/telephony/PropertyListPhoneNumberMonitor.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

#include "platform/files/DirectoryWatch.h"

namespace quenlet {
namespace {

// Whether each number of `before` is among those of `now`.
bool areAllAmong(const SIMCardItems& before, const SIMCardItems& now) {
  return std::all_of(before.begin(), before.end(), [&](const SIMCardItem& item) {
    return std::find(now.begin(), now.end(), item) != now.end();
  });
}

}  // namespace

// Used on the loop's thread only, except for `isCancelled`.
struct PropertyListPhoneNumberMonitor::Registration final {
  void check() {
    if (isCancelled) return;
    Result<SIMCardItems> items = cardFile->read();
    if (!items.ok() || items.value() == told) return;
    const bool haveSomeGone = !told || !areAllAmong(*told, items.value());
    told = std::move(items).takeValue();
    if (haveSomeGone && !told->empty()) handler({});
    if (!isCancelled) handler(*told);
  }

  const std::shared_ptr<SIMCardFile> cardFile;
  const InfoChangeHandler handler;
  // The items last given to the handler. Absent until then: even an empty list is news at first.
  std::optional<SIMCardItems> told = {};
  std::atomic<bool> isCancelled = false;
};

PropertyListPhoneNumberMonitor::PropertyListPhoneNumberMonitor(std::filesystem::path file,
                                                               std::shared_ptr<DataProxy> dataProxy,
                                                               EventLoop& eventLoop)
    : cardFile(std::make_shared<SIMCardFile>(std::move(file), std::move(dataProxy))),
      eventLoop(eventLoop) {}

std::shared_ptr<Cancelable> PropertyListPhoneNumberMonitor::addInfoChangeHandler(
    InfoChangeHandler handler) {
  const std::shared_ptr<Registration> registration(new Registration{cardFile, std::move(handler)});
  auto watch = DirectoryWatch::watchDirectory(
      eventLoop, cardFile->path().parent_path(),
      [registration, name = cardFile->path().filename().string()](const std::string& changed) {
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
