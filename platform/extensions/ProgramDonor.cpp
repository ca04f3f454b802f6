#include "platform/extensions/ProgramDonor.h"

#include <bit>
#include <utility>

#include "platform/extensions/DonorExtensionInterface.h"
#include "platform/extensions/ExtensionError.h"
#include "platform/foundation/Text.h"
#include "platform/ipc/ErrorWire.h"
#include "protocol/DonationWire.h"

namespace quenlet {
namespace {

// Not null when the owner has switched the extension off since it was asked. What it gave is taken
// back then, and an answer would bring it back.
ErrorPtr problemOfLateAnswer(const ExtensionManifest& manifest) {
  if (manifest.isStillInstalled()) return nullptr;
  return makeExtensionError(ExtensionErrorCode::notInstalled,
                            "it was switched off before its answer");
}

void readRenewal(const Result<std::string>& reply, const ExtensionManifest& manifest,
                 const DonorExtension::AcknowledgementHandler& handler) {
  if (!reply.ok()) return handler(std::nullopt, reply.error());
  if (ErrorPtr problem = problemOfLateAnswer(manifest)) return handler(std::nullopt, problem);
  WireReader values(reply.value());
  const std::optional<Date> date = values.date();
  handler(date, boundedDonorError(ErrorWire::decode(values)));
}

// The values of a re-donation. An error unless all are of the donor's own bundle.
Result<DonationValues> readRedonation(const Result<std::string>& reply,
                                      const std::string& bundleIdentifier) {
  using Donated = Result<DonationValues>;
  if (!reply.ok()) return Donated::failure(reply.error());
  WireReader values(reply.value());
  const bool hasList = values.nextType() == WireType::list;
  WireReader list(values.skip());
  if (ErrorPtr error = ErrorWire::decode(values)) return Donated::failure(boundedDonorError(error));
  if (!hasList) {
    return Donated::failure(makeExtensionError(ExtensionErrorCode::badAnswer,
                                               "there is neither a list of values nor an error"));
  }
  Donated donated = DonationWire::decodeDonated(list);
  if (!donated.ok()) return donated;
  for (const DonationValuePtr& value : donated.value()) {
    if (canonicallyEqual(value->decoded().origin.bundleIdentifier, bundleIdentifier)) continue;
    return Donated::failure(makeExtensionError(ExtensionErrorCode::foreignDonation,
                                               "it donates for another bundle than its own"));
  }
  return donated;
}

}  // namespace

ProgramDonor::ProgramDonor(ExtensionManifestPtr installed,
                           std::weak_ptr<ExtensionSupervisor> programs,
                           std::weak_ptr<CorvelProtocol> donationReceiver)
    : manifest(std::move(installed)),
      supervisor(std::move(programs)),
      receiver(std::move(donationReceiver)) {}

std::string ProgramDonor::description() const {
  return "donor extension " + manifest->bundleIdentifier;
}

void ProgramDonor::renewExpirationDateForDonatedValue(
    DonationValuePtr value, AcknowledgementHandler acknowledgementHandler) {
  ask(
      DonorExtensionSelector::renew,
      [value = std::move(value)](WireEncoder& encoder) {
        DonationWire::encodeValue(encoder, *value);
      },
      [asked = manifest, handler = std::move(acknowledgementHandler)](
          const Result<std::string>& reply) { readRenewal(reply, *asked, handler); });
}

void ProgramDonor::redonateAllValuesWithReason(std::uint64_t reason) {
  const auto programs = supervisor.lock();
  if (!programs) return;
  fetchAllValuesWithReason(reason, [asked = manifest, agent = receiver,
                                    problems = programs->problemsOf(manifest->bundleIdentifier)](
                                       Result<DonationValues> donated) {
    const auto living = agent.lock();
    if (!donated.ok()) return problems->setProblem(donated.error());
    if (donated.value().empty() || !living) return problems->setProblem(nullptr);
    if (ErrorPtr problem = problemOfLateAnswer(*asked)) return problems->setProblem(problem);
    living->donateMeCardValues(std::move(donated).takeValue(),
                               [problems](const ErrorPtr& error) { problems->setProblem(error); });
  });
}

void ProgramDonor::fetchAllValuesWithReason(std::uint64_t reason, ValuesHandler handler) const {
  ask(
      DonorExtensionSelector::redonate,
      [reason](WireEncoder& encoder) { encoder.integer(std::bit_cast<std::int64_t>(reason)); },
      [bundle = manifest->bundleIdentifier, handler = std::move(handler)](
          const Result<std::string>& reply) { handler(readRedonation(reply, bundle)); });
}

void ProgramDonor::ask(const char* selector, ExtensionRequest::Encode encode,
                       ExtensionRequest::Completion completion) const {
  // Without a supervisor, the request fails when it is destroyed here.
  auto request =
      std::make_shared<ExtensionRequest>(selector, std::move(encode), std::move(completion));
  if (const auto programs = supervisor.lock()) programs->ask(manifest, std::move(request));
}

std::string UnknownDonor::description() const {
  return manifest->bundleIdentifier + " for extension point " + manifest->extensionPoint +
         ", version " + manifest->version;
}

}  // namespace quenlet
