#include "platform/extensions/DonorExtensionInterface.h"

#include <string>
#include <utility>

#include "platform/foundation/Text.h"
#include "platform/ipc/ErrorWire.h"
#include "protocol/DonationWire.h"

namespace quenlet {

ServiceInterface makeDonorExtensionInterface() {
  const WireParameter value{WireType::object, false, {DonationWire::className}};
  const WireParameter values{WireType::list, true, {DonationWire::className}};
  const WireParameter error{WireType::object, true, {ErrorWire::className}};
  ServiceInterface interface;
  interface
      .addOperation(DonorExtensionSelector::renew, {value},
                    {WireParameter{WireType::date, true}, error})
      .addOperation(DonorExtensionSelector::redonate, {WireParameter{WireType::integer}},
                    {values, error});
  return interface;
}

ErrorPtr boundedDonorError(const ErrorPtr& error) {
  if (!error) return nullptr;
  // At most a quarter for the domain: the sentence says more.
  std::string domain = onOneLine(error->domain(), maximumDonorErrorTextInBytes / 4);
  std::string sentence =
      onOneLine(error->debugDescription(), maximumDonorErrorTextInBytes - domain.size());
  return makeError(std::move(domain), error->code(), std::move(sentence));
}

}  // namespace quenlet
