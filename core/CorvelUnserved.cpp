// Operations of the client interface that this version does not serve: account changes and
// rejections. Each says so instead of pretending.

#include "core/Corvel.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

ErrorPtr notServed(const char* operation) {
  return makeServiceError(ServiceErrorCode::notImplemented,
                          std::string("this agent does not serve ") + operation);
}

}  // namespace

void Corvel::changeFromAccount(AccountPtr, AccountPtr, ErrorReply completionHandler) {
  completionHandler(notServed("changeFromAccount:toAccount:completionHandler:"));
}

void Corvel::rejectValueWithDonationIdentifier(std::string, ErrorReply completionHandler) {
  completionHandler(notServed("rejectValueWithDonationIdentifier:completionHandler:"));
}

void Corvel::rejectValuesWithClusterIdentifier(std::string, ErrorReply completionHandler) {
  completionHandler(notServed("rejectValuesWithClusterIdentifier:completionHandler:"));
}

void Corvel::removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) {
  completionHandler(notServed("removeAllRejectionsWithCompletionHandler:"));
}

}  // namespace quenlet
