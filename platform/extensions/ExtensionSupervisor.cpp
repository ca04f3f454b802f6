#include "platform/extensions/ExtensionSupervisor.h"

#include <algorithm>
#include <utility>

#include "platform/extensions/ExtensionError.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

bool isOfSameBundle(const ExtensionManifest& a, const ExtensionManifest& b) {
  return canonicallyEqual(a.bundleIdentifier, b.bundleIdentifier);
}

}  // namespace

ExtensionSupervisor::ExtensionSupervisor(ExtensionSchedulers hostSchedulers,
                                         const ExtensionLimits& extensionLimits)
    : schedulers(std::move(hostSchedulers)), limits(extensionLimits) {}

void ExtensionSupervisor::ask(ExtensionManifestPtr extension, ExtensionRequestPtr request) {
  // Keeps the request beyond the lock: one that is not posted fails when it is destroyed, and its
  // completion must not run under the lock.
  const ExtensionRequestPtr held = request;
  MutexLock lock(mutex);
  if (!isOpen) return;
  schedulers.loop.post([weak = weak_from_this(), extension = std::move(extension),
                        request = std::move(request)]() mutable {
    if (const auto self = weak.lock()) self->enqueue(extension, std::move(request));
  });
}

std::shared_ptr<ProblemReporter> ExtensionSupervisor::problemsOf(
    const std::string& bundleIdentifier) {
  MutexLock lock(mutex);
  std::shared_ptr<ProblemReporter>& reporter = problems[canonicalKey(bundleIdentifier)];
  if (!reporter) reporter = std::make_shared<ProblemReporter>("extension " + bundleIdentifier);
  return reporter;
}

void ExtensionSupervisor::shutDown() {
  {
    MutexLock lock(mutex);
    isOpen = false;
  }
  const ErrorPtr reason = makeExtensionError(ExtensionErrorCode::hostGone, "the agent ends");
  for (const auto& run : std::exchange(runs, {})) run->abort(reason);
}

void ExtensionSupervisor::enqueue(const ExtensionManifestPtr& extension,
                                  ExtensionRequestPtr request) {
  {
    MutexLock lock(mutex);
    if (!isOpen) return;
  }
  const auto found = std::find_if(runs.begin(), runs.end(), [&](const auto& run) {
    return run->accepts() && isOfSameBundle(run->extension(), *extension);
  });
  if (found != runs.end()) return (*found)->add(std::move(request));
  runs.push_back(makeRun(extension));
  runs.back()->add(std::move(request));
  startWaiting();
}

std::shared_ptr<ExtensionRun> ExtensionSupervisor::makeRun(const ExtensionManifestPtr& extension) {
  return std::make_shared<ExtensionRun>(
      schedulers, limits, extension, [weak = weak_from_this()](const ExtensionRun& gone) {
        const auto self = weak.lock();
        if (!self) return;
        std::erase_if(self->runs, [&](const auto& run) { return run.get() == &gone; });
        self->startWaiting();
      });
}

void ExtensionSupervisor::startWaiting() {
  // A run that cannot start is gone at once and frees its place for the next one.
  while (const auto run = nextToStart()) {
    run->start();
    if (run->isGone()) std::erase(runs, run);
  }
}

std::shared_ptr<ExtensionRun> ExtensionSupervisor::nextToStart() const {
  const auto running = static_cast<std::size_t>(
      std::count_if(runs.begin(), runs.end(), [](const auto& run) { return !run->isWaiting(); }));
  if (running >= limits.programs) return nullptr;
  // One program per extension at a time: one that is still ending must be gone first.
  const auto next = std::find_if(runs.begin(), runs.end(), [this](const auto& run) {
    return run->isWaiting() && !isRunning(run->extension());
  });
  return next == runs.end() ? nullptr : *next;
}

bool ExtensionSupervisor::isRunning(const ExtensionManifest& extension) const {
  return std::any_of(runs.begin(), runs.end(), [&](const auto& run) {
    return !run->isWaiting() && isOfSameBundle(run->extension(), extension);
  });
}

}  // namespace quenlet
