#include "facade/FacadeError.h"

#include <utility>

#include "bus/BusError.h"
#include "protocol/ClientEntitlements.h"
#include "quenlet/ErrorCodes.h"

namespace quenlet {
namespace {

const char* nameOfDonationError(DonationErrorCode code) {
  switch (code) {
    case DonationErrorCode::featureNotEnabled:
      return DonationsDisabledError;
    case DonationErrorCode::notSerializable:
      return NotSerializableError;
    default:
      return FailedError;
  }
}

const char* nameOfServiceError(ServiceErrorCode code) {
  switch (code) {
    case ServiceErrorCode::noService:
    case ServiceErrorCode::connectionBroken:
    case ServiceErrorCode::timedOut:
    case ServiceErrorCode::tooManyConnections:
    case ServiceErrorCode::noReply:
      return NoAgentError;
    case ServiceErrorCode::invalidArguments:
      return InvalidArgsError;
    case ServiceErrorCode::messageTooLarge:
      return TooLargeError;
    case ServiceErrorCode::bundleNotAllowed:
      return NotPermittedError;
    default:
      return FailedError;
  }
}

}  // namespace

ErrorPtr makeFacadeError(const std::string& name, std::string sentence) {
  return makeBusError(name, std::move(sentence));
}

std::string facadeErrorName(const Error& error) {
  std::string name = busErrorName(error);
  // Others' names, as the permission store's, mean nothing to a caller.
  if (name.starts_with("org.quenlet.") || name == InvalidArgsError || name == BusyError) {
    return name;
  }
  if (error.domain() == DonationErrorDomain) {
    return nameOfDonationError(static_cast<DonationErrorCode>(error.code()));
  }
  if (error.domain() == ServiceErrorDomain) {
    return nameOfServiceError(static_cast<ServiceErrorCode>(error.code()));
  }
  if (error.domain() == GeneralErrorDomain && error.code() == MissingEntitlementCode) {
    return NotPermittedError;
  }
  return FailedError;
}

}  // namespace quenlet
