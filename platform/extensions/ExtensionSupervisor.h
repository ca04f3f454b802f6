#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/extensions/ExtensionManifest.h"
#include "platform/extensions/ExtensionRequest.h"
#include "platform/extensions/ExtensionRun.h"
#include "platform/extensions/ExtensionServing.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

// Runs the programs of donor extensions: one per bundle and a bounded number at once; the others
// wait in the order of their first requests. ask() and problemsOf() are thread-safe; all else
// happens on the loop's thread.
class ExtensionSupervisor final : public std::enable_shared_from_this<ExtensionSupervisor> {
 public:
  ExtensionSupervisor(ExtensionSchedulers hostSchedulers, const ExtensionLimits& extensionLimits);
  ExtensionSupervisor(const ExtensionSupervisor&) = delete;
  ExtensionSupervisor& operator=(const ExtensionSupervisor&) = delete;

  // Passes the request to the extension's program, and starts that if needed. Completes later, on
  // the loop's thread or in the background; after shutDown() at once, on the calling thread.
  void ask(ExtensionManifestPtr extension, ExtensionRequestPtr request) EXCLUDES(mutex);
  // Reports a bundle's problems in requests that have no caller to tell.
  [[nodiscard]] std::shared_ptr<ProblemReporter> problemsOf(const std::string& bundleIdentifier)
      EXCLUDES(mutex);
  // Ends all programs and fails their requests, for good. On the loop's thread, or while the loop
  // is not running. The loop must exist until then, and is not used afterwards.
  void shutDown() EXCLUDES(mutex);

 private:
  void enqueue(const ExtensionManifestPtr& extension, ExtensionRequestPtr request);
  [[nodiscard]] std::shared_ptr<ExtensionRun> makeRun(const ExtensionManifestPtr& extension);
  // The first run in line that may start, or null.
  [[nodiscard]] std::shared_ptr<ExtensionRun> nextToStart() const;
  [[nodiscard]] bool isRunning(const ExtensionManifest& extension) const;
  void startWaiting();

  const ExtensionSchedulers schedulers;
  const ExtensionLimits limits;
  // Waiting, running and ending, in the order of their first requests.
  std::vector<std::shared_ptr<ExtensionRun>> runs;

  Mutex mutex;
  bool isOpen GUARDED_BY(mutex) = true;
  std::map<std::string, std::shared_ptr<ProblemReporter>> problems GUARDED_BY(mutex);
};

}  // namespace quenlet
