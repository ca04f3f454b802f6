#include "platform/donations/AccountWire.h"

#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

constexpr std::size_t maximumValuesInAccount = 100'000;

}  // namespace

void AccountWire::encode(WireEncoder& encoder, const std::shared_ptr<const Account>& account) {
  if (account) {
    encoder.object(className).propertyList(account->propertyListRepresentation());
  } else {
    encoder.null();
  }
}

Result<std::shared_ptr<const Account>> AccountWire::decode(WireReader& reader) {
  using Outcome = Result<std::shared_ptr<const Account>>;
  if (reader.nextType() == WireType::null) {
    reader.skip();
    return Outcome::left(nullptr);
  }
  const bool isAccount = reader.object() == className;
  const std::optional<PropertyList> content = reader.propertyList(maximumValuesInAccount);
  if (isAccount && content && content->dictionary()) {
    if (auto account = Account::initWithPropertyListRepresentation(*content->dictionary())) {
      return Outcome::left(std::make_shared<const Account>(std::move(*account)));
    }
  }
  return Outcome::right(
      makeServiceError(ServiceErrorCode::invalidArguments, "an argument is no valid account"));
}

}  // namespace quenlet
