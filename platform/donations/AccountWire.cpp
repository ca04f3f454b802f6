#include "platform/donations/AccountWire.h"

#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

constexpr std::size_t maximumValuesInAccount = 100'000;

}  // namespace

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
    return Outcome::left(nullptr);
  }
  const bool isAccount = reader.object() == className;
  const std::optional<PropertyList> content = reader.propertyList(maximumValuesInAccount);
  if (isAccount && content && content->dictionary()) {
    if (auto account = Account::initWithPropertyListRepresentation(*content->dictionary())) {
      account->accountStore = std::move(accountStore);
      return Outcome::left(std::make_shared<const Account>(std::move(*account)));
    }
  }
  return Outcome::right(
      makeServiceError(ServiceErrorCode::invalidArguments, "an argument is no valid account"));
}

}  // namespace quenlet
