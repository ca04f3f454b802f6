#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/extensions/DonorExtension.h"
#include "platform/extensions/ExtensionManifest.h"
#include "platform/extensions/ExtensionSupervisor.h"
#include "protocol/CorvelProtocol.h"

namespace quenlet {

// A donor extension that is a program, started when it is asked. Handlers are called on the
// supervisor's thread or in the background; on the calling thread when the supervisor is gone.
// Thread-safe.
//
// The values of a re-donation go to the receiver if all are of the extension's own bundle. No
// caller waits for them, so problems are reported on standard error. Neither these nor a renewal
// are taken when the manifest has gone meanwhile.
class ProgramDonor final : public DonorExtension {
 public:
  ProgramDonor(ExtensionManifestPtr installed, std::weak_ptr<ExtensionSupervisor> programs,
               std::weak_ptr<CorvelProtocol> donationReceiver);

  [[nodiscard]] std::string description() const override;
  void renewExpirationDateForDonatedValue(DonationValuePtr value,
                                          AcknowledgementHandler acknowledgementHandler) override;
  void redonateAllValuesWithReason(std::uint64_t reason) override;

  // The values of a re-donation, all of the extension's own bundle, or why there are none.
  using ValuesHandler = std::function<void(Result<DonationValues> donated)>;
  // Asks for them on behalf of a caller, who gets them in place of the receiver. The handler is
  // called once.
  void fetchAllValuesWithReason(std::uint64_t reason, ValuesHandler handler) const;
  [[nodiscard]] const std::string& bundleIdentifier() const { return manifest->bundleIdentifier; }

 private:
  void ask(const char* selector, ExtensionRequest::Encode encode,
           ExtensionRequest::Completion completion) const;

  const ExtensionManifestPtr manifest;
  const std::weak_ptr<ExtensionSupervisor> supervisor;
  const std::weak_ptr<CorvelProtocol> receiver;
};

// A registration for another extension point or version. Immutable.
class UnknownDonor final : public DonorObject {
 public:
  explicit UnknownDonor(ExtensionManifestPtr installed) : manifest(std::move(installed)) {}
  [[nodiscard]] std::string description() const override;

 private:
  const ExtensionManifestPtr manifest;
};

}  // namespace quenlet
