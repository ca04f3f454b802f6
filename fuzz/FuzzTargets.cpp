// Each target takes any bytes and stops the program when what came out is not what has to. The
// build makes a program of each; QUENLET_FUZZ_TARGET is the one that it tries.

#include <cassert>
#include <cstdint>

#include "platform/contacts/EmailAddressScanner.h"
#include "platform/contacts/NameComponentsTokenizer.h"
#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/VCard.h"
#include "platform/donations/CorvelInterface.h"
#include "platform/donations/DonationWire.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/ipc/FrameReader.h"

namespace quenlet {

void propertyList(std::string_view text) {
  const auto object = PropertyListSerializer::objectWithData(text);
  if (!object.isLeft()) return;
  const auto written = PropertyListSerializer::dataWithObject(object.left());
  assert(PropertyListSerializer::objectWithData(written.left()).left() == object.left());
}

void vCard(std::string_view text) {
  const auto cards = parseVCards(text);
  if (!cards.isLeft()) return;
  for (const VCard& card : cards.left()) {
    const auto again = parseVCards(writeVCard(card.contact));
    assert(again.left().size() == 1 && again.left()[0].contact == card.contact);
  }
}

void wireMessage(std::string_view bytes) {
  const std::vector<WireParameter> donations{{WireType::list, false, {DonationWire::className}}};
  FrameReader reader(1 << 20);
  for (; !bytes.empty(); bytes.remove_prefix(1)) {
    reader.room().front() = bytes.front();
    reader.added(1);
    const auto frame = reader.next();
    if (!frame) continue;
    if (frame->error) return;
    if (validateWireValues(frame->body, donations)) continue;
    WireReader values(frame->body);
    const auto decoded = DonationWire::decode(values);
    if (!decoded.isLeft()) continue;
    WireEncoder once, twice;
    DonationWire::encode(once, decoded.left());
    WireReader again(once.bytes());
    DonationWire::encode(twice, DonationWire::decode(again).left());
    assert(values.atEnd() && again.atEnd() && once.bytes() == twice.bytes());
  }
}

void phoneNumber(std::string_view text) {
  const std::size_t middle = text.find('\n');
  const auto number = PhoneNumber::withStringValue(text.substr(0, middle));
  if (!number) return;
  assert(PhoneNumber::withStringValue(number->digits())->digits() == number->digits());
  assert(number->isLikePhoneNumber(*number));
  if (middle == text.npos) return;
  const auto other = PhoneNumber::withStringValue(text.substr(middle + 1));
  if (other) assert(number->isLikePhoneNumber(*other) == other->isLikePhoneNumber(*number));
}

void emailAddress(std::string_view text) {
  const auto address = EmailAddressScanner().firstEmailAddressInString(text);
  if (!address) return;
  // It is a part of the text, but for the escapes of a URL and a full-width "@".
  const bool isOther = text.find('%') != text.npos || text.find("\uFF20") != text.npos;
  assert(isOther || text.find(*address) != text.npos);
  assert(EmailAddressScanner().firstEmailAddressInString(*address) == address);
}

void name(std::string_view text) {
  const auto components = NameComponentsTokenizer::componentsFromString(text);
  for (const auto& [key, component] : components.dictionaryRepresentation()) {
    const std::string_view words = *component.string();
    assert(!words.empty() && text.find(words.substr(0, words.find(' '))) != text.npos);
  }
}

}  // namespace quenlet

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  quenlet::QUENLET_FUZZ_TARGET({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
