#include "protocol/CorvelInterface.h"

#include "platform/ipc/ErrorWire.h"
#include "protocol/ContactWire.h"
#include "protocol/DonationWire.h"

namespace quenlet {
namespace {

WireParameter objectOrNull(const char* className) { return {WireType::object, true, {className}}; }

WireParameter errorOrNull() { return objectOrNull(ErrorWire::className); }

}  // namespace

ServiceInterface makeCorvelInterface() {
  const WireParameter text{WireType::string};
  const WireParameter list{WireType::list};
  const WireParameter flag{WireType::boolean};
  // The signature leaves the class open; the service adds the classes that it accepts.
  const WireParameter anyObject{WireType::object, true};
  const WireParameter either{
      WireType::object,
      false,
      {ContactWire::eitherClassName, ContactWire::className, ErrorWire::className}};
  const WireParameter donations{WireType::list, true, {DonationWire::className}};
  ServiceInterface interface;
  interface.addOperation(CorvelSelector::donate, {list}, {errorOrNull()})
      .addOperation(CorvelSelector::removeIdentifiers, {list}, {flag, errorOrNull()})
      .addOperation(CorvelSelector::removeBundle, {text}, {flag, errorOrNull()})
      .addOperation(CorvelSelector::fetch, {},
                    {objectOrNull(ContactWire::className), errorOrNull()})
      .addOperation(CorvelSelector::synchronousFetch, {}, {either})
      .addOperation(CorvelSelector::list, {}, {donations, errorOrNull()})
      .addOperation(CorvelSelector::changeAccount, {anyObject, anyObject}, {errorOrNull()})
      .addOperation(CorvelSelector::rejectValue, {text}, {errorOrNull()})
      .addOperation(CorvelSelector::rejectCluster, {text}, {errorOrNull()})
      .addOperation(CorvelSelector::removeRejections, {}, {errorOrNull()})
      .expectLongReplies(CorvelSelector::list);
  return interface;
}

}  // namespace quenlet
