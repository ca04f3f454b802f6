#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/extensions/DonorLoader.h"
#include "platform/foundation/Observable.h"
#include "tests/support/Trace.h"

// Donors that keep their state in memory. One thread only.
namespace quenlet {

// Something installed that is no extension.
class FakeDonorObject final : public DonorObject {
 public:
  std::string description() const override { return "object"; }
};

// Notes requests as "renew <identifier>" and "redonate <reason>". Keeps what it is asked in
// `asked` until the test answers.
class FakeExtension final : public DonorExtension {
 public:
  explicit FakeExtension(Trace& shared) : trace(shared) {}
  std::vector<AcknowledgementHandler> asked;

  std::string description() const override { return "extension"; }
  void renewExpirationDateForDonatedValue(DonationValuePtr value,
                                          AcknowledgementHandler handler) override {
    trace.note("renew " + value->origin().donationIdentifier);
    asked.push_back(std::move(handler));
  }
  void redonateAllValuesWithReason(std::uint64_t reason) override {
    trace.note("redonate " + std::to_string(reason));
  }

 private:
  Trace& trace;
};

// What is installed, by bundle identifier, in the order of these. Loading is noted as "load
// <bundle>". Discovery fails after its results when there is a `failure`.
class FakeDonors final {
 public:
  explicit FakeDonors(Trace& shared) : trace(shared) {}
  std::map<std::string, DonorObjectPtr> installed;
  ErrorPtr failure;
  std::size_t openDiscoveries = 0;

  std::shared_ptr<FakeExtension> install(const std::string& bundleIdentifier) {
    auto extension = std::make_shared<FakeExtension>(trace);
    installed[bundleIdentifier] = extension;
    return extension;
  }
  // What was asked and never answered holds the agent that asks.
  void clear() {
    for (const auto& [bundle, donor] : installed) {
      if (auto* extension = dynamic_cast<FakeExtension*>(donor.get())) extension->asked.clear();
    }
    installed.clear();
  }
  [[nodiscard]] std::shared_ptr<DonorLoader> loader() { return std::make_shared<Loader>(*this); }
  [[nodiscard]] std::shared_ptr<Observable<DonorObjectPtr>> observable() {
    return std::make_shared<Discovery>(*this);
  }

 private:
  class Loader final : public DonorLoader {
   public:
    explicit Loader(FakeDonors& all) : donors(all) {}
    Future<DonorObjectPtr> donorWithIdentifier(const std::string& bundleIdentifier) override {
      donors.trace.note("load " + bundleIdentifier);
      const auto found = donors.installed.find(bundleIdentifier);
      return found == donors.installed.end()
                 ? Future<DonorObjectPtr>::futureWithError(makeError("donors", 404))
                 : Future<DonorObjectPtr>::futureWithResult(found->second);
    }

   private:
    FakeDonors& donors;
  };

  class Discovery final : public Observable<DonorObjectPtr> {
   public:
    explicit Discovery(FakeDonors& all) : donors(all) {}
    std::shared_ptr<Cancelable> subscribe(Observer<DonorObjectPtr> observer) override {
      for (const auto& [bundle, donor] : donors.installed) observer.resultBlock(donor);
      donors.failure ? observer.failureBlock(donors.failure) : observer.completionBlock();
      ++donors.openDiscoveries;
      return std::make_shared<CancelBlock>([&all = donors] { --all.openDiscoveries; });
    }

   private:
    FakeDonors& donors;
  };

  Trace& trace;
};

}  // namespace quenlet
