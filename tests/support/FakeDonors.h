#pragma once

#include "platform/extensions/DonorExtension.h"
#include "platform/foundation/Observable.h"
#include "tests/support/Trace.h"

// Donors that keep their state in memory. One thread only.
namespace quenlet {

class FakeDonorObject final : public DonorObject {
 public:
  std::string description() const override { return "object"; }
};

// Notes "renew <identifier>" and "redonate <bundle> <reason>"; `asked` waits for answers.
class FakeExtension final : public DonorExtension {
 public:
  FakeExtension(Trace& shared, std::string bundleIdentifier)
      : trace(shared), bundle(std::move(bundleIdentifier)) {}
  std::vector<AcknowledgementHandler> asked;
  DonationValuePtr lastValue;

  std::string description() const override { return "extension " + bundle; }
  void renewExpirationDateForDonatedValue(DonationValuePtr value,
                                          AcknowledgementHandler handler) override {
    trace.note("renew " + value->decoded().origin.donationIdentifier);
    lastValue = std::move(value);
    asked.push_back(std::move(handler));
  }
  void redonateAllValuesWithReason(std::uint64_t reason) override {
    trace.note("redonate " + bundle + " " + std::to_string(reason));
  }

 private:
  Trace& trace;
  const std::string bundle;
};

// What is installed, in the order of the bundles. Notes "load <bundle>" and, at a subscription's
// end, "cancel discovery". Discovery fails after its results when there is a `failure`.
class FakeDonors final : public DonorLoader, public Observable<DonorObjectPtr> {
 public:
  explicit FakeDonors(Trace& shared) : trace(shared) {}
  std::map<std::string, DonorObjectPtr> installed;
  ErrorPtr failure;

  std::shared_ptr<FakeExtension> install(const std::string& bundleIdentifier) {
    auto extension = std::make_shared<FakeExtension>(trace, bundleIdentifier);
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
  Future<DonorObjectPtr> donorWithIdentifier(const std::string& bundleIdentifier) override {
    trace.note("load " + bundleIdentifier);
    const auto found = installed.find(bundleIdentifier);
    if (found != installed.end()) return Future<DonorObjectPtr>::futureWithResult(found->second);
    return Future<DonorObjectPtr>::futureWithError(makeError("donors", 404));
  }

  std::shared_ptr<Cancelable> subscribe(Observer<DonorObjectPtr> observer) override {
    for (const auto& [bundle, donor] : installed) observer.resultBlock(donor);
    failure ? observer.failureBlock(failure) : observer.completionBlock();
    return std::make_shared<CancelBlock>([this] { trace.note("cancel discovery"); });
  }

 private:
  Trace& trace;
};

}  // namespace quenlet
