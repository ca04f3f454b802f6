#pragma once

#include <memory>
#include <vector>

#include "platform/extensions/DonorExtension.h"
#include "platform/extensions/ExtensionServing.h"
#include "platform/extensions/ManifestDirectory.h"
#include "platform/foundation/Observable.h"
#include "protocol/CorvelProtocol.h"

namespace quenlet {

class ExtensionCatalog;
class ExtensionSupervisor;

// The installed donor extensions and their programs, which run while they have requests. Programs
// are talked to on the event loop's thread. Handlers are called there or, when there is much to
// decode or many to call, in the background; donations are made in the background. Whatever a
// program does, each request ends in one call of its handler, and the program is ended and reaped.
// Thread-safe except for construction and destruction.
//
// Manifests are read on the calling thread: once by each loader, at its first use, and at each
// subscription. If several name the same bundle identifier, the first counts, in the order of the
// directories and then of file names.
class ExtensionHost final {
 public:
  ExtensionHost(std::shared_ptr<const ExtensionCatalog> manifests, ExtensionSchedulers schedulers,
                ExtensionLimits limits = {});
  ExtensionHost(std::vector<ManifestDirectory> manifestDirectories, ExtensionSchedulers schedulers,
                ExtensionLimits limits = {});
  // Kills the programs and fails their requests. On the loop's thread, or while the loop is not
  // running. Loaders and donors may outlive the host; their requests then fail.
  ~ExtensionHost();
  // The same for a process that exits without destroying the host. Later requests fail.
  void shutDown();
  ExtensionHost(const ExtensionHost&) = delete;
  ExtensionHost& operator=(const ExtensionHost&) = delete;

  // Loading a donor extension starts its program. Its donations go to `donationReceiver` while that
  // exists. Errors are in ExtensionErrorDomain.
  [[nodiscard]] std::shared_ptr<DonorLoader> makeLoader(
      std::weak_ptr<CorvelProtocol> donationReceiver) const;
  // Emits the installed donors, in order, during subscribe() and then completes. The program of an
  // emitted extension starts at its first request. If a manifest directory exists but cannot be
  // read, the donors in the others are emitted, then it fails.
  [[nodiscard]] std::shared_ptr<Observable<DonorObjectPtr>> currentExtensionsObservable(
      std::weak_ptr<CorvelProtocol> donationReceiver) const;

 private:
  const std::shared_ptr<const ExtensionCatalog> catalog;
  const std::shared_ptr<ExtensionSupervisor> supervisor;
};

}  // namespace quenlet
