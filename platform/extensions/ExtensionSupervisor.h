#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/extensions/ExtensionLimits.h"
#include "platform/extensions/ExtensionManifest.h"
#include "platform/extensions/ExtensionRequest.h"
#include "platform/extensions/ExtensionRun.h"
#include "platform/extensions/ExtensionSchedulers.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

// Runs the programs of donor extensions: one for each bundle, a bounded number at once, the others
// in the order in which they were first asked. ask() and problemsOf() are thread-safe; all else
// happens on the loop's thread.
class ExtensionSupervisor final : public std::enable_shared_from_this<ExtensionSupervisor> {
 public:
  ExtensionSupervisor(ExtensionSchedulers hostSchedulers, const ExtensionLimits& extensionLimits);
  ExtensionSupervisor(const ExtensionSupervisor&) = delete;
  ExtensionSupervisor& operator=(const ExtensionSupervisor&) = delete;

  // Gives the request to the extension's program, which is started unless it runs. Completes later,
  // on the loop's thread or in the background; after shutDown() at once, on the calling one.
  void ask(ExtensionManifestPtr extension, ExtensionRequestPtr request) EXCLUDES(mutex);
  // Where problems of a bundle are told that nobody waits for.
  [[nodiscard]] std::shared_ptr<ProblemReporter> problemsOf(const std::string& bundleIdentifier)
      EXCLUDES(mutex);
  // Ends all programs and fails their requests, for good. On the loop's thread, or when the loop
  // does not run. Until then the loop must live; afterwards it is not used any more.
  void shutDown() EXCLUDES(mutex);

 private:
  void enqueue(const ExtensionManifestPtr& extension, ExtensionRequestPtr request);
  [[nodiscard]] std::shared_ptr<ExtensionRun> makeRun(const ExtensionManifestPtr& extension);
  // The first in line that may start; null for none.
  [[nodiscard]] std::shared_ptr<ExtensionRun> nextToStart() const;
  [[nodiscard]] bool isRunning(const ExtensionManifest& extension) const;
  void startWaiting();

  const ExtensionSchedulers schedulers;
  const ExtensionLimits limits;
  // In line, running and ending, in the order of their first request.
  std::vector<std::shared_ptr<ExtensionRun>> runs;

  Mutex mutex;
  bool isOpen GUARDED_BY(mutex) = true;
  std::map<std::string, std::shared_ptr<ProblemReporter>> problems GUARDED_BY(mutex);
};

}  // namespace quenlet
