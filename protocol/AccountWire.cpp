#include "protocol/AccountWire.h"

#include "model/DonationError.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {

void AccountWire::encode(WireEncoder& encoder, const AccountPtr& account) {
  if (account) {
    encoder.object(className).propertyList(account->propertyListRepresentation());
  } else {
    encoder.null();
  }
}

Result<AccountPtr> AccountWire::decode(WireReader& reader,
                                       std::weak_ptr<AccountStore> accountStore) {
  using Outcome = Result<AccountPtr>;
  if (reader.nextType() == WireType::null) {
    reader.skip();
    return Outcome::success(nullptr);
  }
  const bool isAccount = reader.object() == className;
  const std::optional<PropertyList> content = reader.propertyList(Account::maximumValues);
  if (isAccount && content && content->dictionary()) {
    if (!PropertyListSerializer::dataWithObject(*content).ok()) {
      return Outcome::failure(
          makeDonationError(DonationErrorCode::notSerializable, "an account cannot be serialised"));
    }
    if (auto account = Account::initWithPropertyListRepresentation(*content->dictionary())) {
      account->accountStore = std::move(accountStore);
      return Outcome::success(std::make_shared<const Account>(std::move(*account)));
    }
  }
  return Outcome::failure(
      makeServiceError(ServiceErrorCode::invalidArguments, "an argument is not a valid account"));
}

}  // namespace quenlet
