#include "platform/extensions/DonorExtensionInterface.h"

#include <optional>
#include <string>
#include <string_view>

#include "platform/donations/DonationWire.h"
#include "platform/foundation/Text.h"
#include "platform/ipc/ErrorWire.h"

namespace quenlet {
namespace {

// As many whole characters as fit.
std::string bounded(std::string_view text, std::size_t maximumSize) {
  std::string result;
  while (!text.empty()) {
    const std::optional<char32_t> character = takeCharacter(text);
    const bool isPlain =
        character && *character >= 0x20 && (*character < 0x7F || *character >= 0xA0);
    std::string next;
    appendCharacter(next, isPlain ? *character : U' ');
    if (result.size() + next.size() > maximumSize) break;
    result += next;
  }
  return result;
}

}  // namespace

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
  std::string domain = bounded(error->domain(), maximumDonorErrorTextInBytes / 4);
  std::string sentence =
      bounded(error->debugDescription(), maximumDonorErrorTextInBytes - domain.size());
  return makeError(std::move(domain), error->code(), std::move(sentence));
}

}  // namespace quenlet
