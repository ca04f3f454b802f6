#include "platform/extensions/ExtensionHost.h"

#include <mutex>
#include <utility>

#include "platform/extensions/ExtensionCatalog.h"
#include "platform/extensions/ExtensionSupervisor.h"
#include "platform/extensions/ProgramDonor.h"

namespace quenlet {
namespace {

// Makes donors from manifests.
struct DonorSource final {
  std::shared_ptr<const ExtensionCatalog> catalog;
  std::weak_ptr<ExtensionSupervisor> supervisor;
  std::weak_ptr<CorvelProtocol> receiver;

  [[nodiscard]] DonorObjectPtr donor(const ExtensionManifestPtr& manifest) const {
    if (!manifest->isDonorExtension()) return std::make_shared<UnknownDonor>(manifest);
    return std::make_shared<ProgramDonor>(manifest, supervisor, receiver);
  }
};

class ProgramDonorLoader final : public DonorLoader {
 public:
  explicit ProgramDonorLoader(DonorSource donorSource) : source(std::move(donorSource)) {}

  Future<DonorObjectPtr> donorWithIdentifier(const std::string& bundleIdentifier) override {
    std::call_once(read, [this] { content = source.catalog->recent(); });
    const Result<ExtensionManifestPtr> installed = content->manifest(bundleIdentifier);
    if (!installed.ok()) return Future<DonorObjectPtr>::futureWithError(installed.error());
    const ExtensionManifestPtr& manifest = installed.value();
    DonorObjectPtr donor = source.donor(manifest);
    if (!manifest->isDonorExtension()) {
      return Future<DonorObjectPtr>::futureWithResult(std::move(donor));
    }
    const Promise<DonorObjectPtr> loaded;
    auto request = ExtensionRequest::toStart([loaded, donor](const Result<std::string>& started) {
      started.ok() ? loaded.succeed(donor) : loaded.fail(started.error());
    });
    if (const auto programs = source.supervisor.lock()) programs->ask(manifest, request);
    return loaded.future();
  }

 private:
  const DonorSource source;
  std::once_flag read;
  std::shared_ptr<const ExtensionCatalog::Content> content;
};

class InstalledDonors final : public Observable<DonorObjectPtr> {
 public:
  explicit InstalledDonors(DonorSource donorSource) : source(std::move(donorSource)) {}

  std::shared_ptr<Cancelable> subscribe(Observer<DonorObjectPtr> observer) override {
    const auto content = source.catalog->read();
    for (const ExtensionManifestPtr& manifest : content->manifests) {
      if (observer.resultBlock) observer.resultBlock(source.donor(manifest));
    }
    if (!content->unreadable) {
      if (observer.completionBlock) observer.completionBlock();
    } else if (observer.failureBlock) {
      observer.failureBlock(content->unreadable);
    }
    return std::make_shared<CancelBlock>(nullptr);  // all has been said
  }

 private:
  const DonorSource source;
};

}  // namespace

ExtensionHost::ExtensionHost(std::vector<ManifestDirectory> manifestDirectories,
                             ExtensionSchedulers schedulers, ExtensionLimits limits)
    : ExtensionHost(std::make_shared<ExtensionCatalog>(std::move(manifestDirectories)),
                    std::move(schedulers), limits) {}

ExtensionHost::ExtensionHost(std::shared_ptr<const ExtensionCatalog> manifests,
                             ExtensionSchedulers schedulers, ExtensionLimits limits)
    : catalog(std::move(manifests)),
      supervisor(std::make_shared<ExtensionSupervisor>(std::move(schedulers), limits)) {}

ExtensionHost::~ExtensionHost() { shutDown(); }

void ExtensionHost::shutDown() { supervisor->shutDown(); }

std::shared_ptr<DonorLoader> ExtensionHost::makeLoader(
    std::weak_ptr<CorvelProtocol> donationReceiver) const {
  return std::make_shared<ProgramDonorLoader>(
      DonorSource{catalog, supervisor, std::move(donationReceiver)});
}

std::shared_ptr<Observable<DonorObjectPtr>> ExtensionHost::currentExtensionsObservable(
    std::weak_ptr<CorvelProtocol> donationReceiver) const {
  return std::make_shared<InstalledDonors>(
      DonorSource{catalog, supervisor, std::move(donationReceiver)});
}

}  // namespace quenlet
