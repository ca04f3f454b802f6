#pragma once

#include <memory>
#include <vector>

#include "platform/donations/CorvelProtocol.h"
#include "platform/extensions/DonorLoader.h"
#include "platform/extensions/ExtensionLimits.h"
#include "platform/extensions/ExtensionSchedulers.h"
#include "platform/extensions/ManifestDirectory.h"
#include "platform/foundation/Observable.h"

namespace quenlet {

class ExtensionCatalog;
class ExtensionSupervisor;

// The donor extensions that are installed, and the programs behind them, which run while something
// is asked of them. Programs are spoken to on the event loop's thread; handlers are called there,
// or in the background when there is much to read or to tell, and donations come from there.
// Whatever a program does, each request ends in one call of its handler and the program is ended
// and reaped. Thread-safe but for construction and destruction.
//
// Manifests are read on the calling thread: by each loader once, when it is first used, and at each
// subscription. Of several for one bundle identifier
// the first counts, by the order of the directories and then by file name.
class ExtensionHost final {
 public:
  ExtensionHost(std::vector<ManifestDirectory> manifestDirectories, ExtensionSchedulers schedulers,
                ExtensionLimits limits = {});
  // Kills the programs and fails what is asked of them. On the loop's thread, or when the loop does
  // not run. Loaders and donors may outlive the host: they answer with an error from then on.
  ~ExtensionHost();
  // The same without the end of the object, for a process that is not torn down: what is asked from
  // then on fails, too.
  void shutDown();
  ExtensionHost(const ExtensionHost&) = delete;
  ExtensionHost& operator=(const ExtensionHost&) = delete;

  // Loading a donor extension starts its program. What it donates goes to `donationReceiver`, while
  // that lives. Errors are of ExtensionErrorDomain.
  [[nodiscard]] std::shared_ptr<DonorLoader> makeLoader(
      std::weak_ptr<CorvelProtocol> donationReceiver) const;
  // Emits the installed donors, in order, during subscribe() and then completes; the program of an
  // emitted extension starts at its first request. Where a manifest directory is there but cannot
  // be read, what the others hold is emitted and then it fails.
  [[nodiscard]] std::shared_ptr<Observable<DonorObjectPtr>> currentExtensionsObservable(
      std::weak_ptr<CorvelProtocol> donationReceiver) const;

 private:
  const std::shared_ptr<ExtensionCatalog> catalog;
  const std::shared_ptr<ExtensionSupervisor> supervisor;
};

}  // namespace quenlet
