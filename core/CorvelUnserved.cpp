// The operation of the client interface that this version does not serve: account changes. It says
// so instead of pretending.

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

}  // namespace quenlet
