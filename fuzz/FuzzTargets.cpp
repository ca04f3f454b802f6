// Each target takes any bytes; QUENLET_FUZZ_TARGET is the one that a program tries.

#include <cassert>
#include <cstdint>

#include "browser/host/BrowserRequest.h"
#include "browser/host/MessageReader.h"
#include "donors/browser/FirefoxAddresses.h"
#include "donors/mail/PreferenceScript.h"
#include "foreign/KeyFile.h"
#include "foreign/Mailbox.h"
#include "foreign/OnlineAccounts.h"
#include "platform/accounts/PropertyListAccountStore.h"
#include "platform/contacts/EmailAddressScanner.h"
#include "platform/contacts/NameComponentsTokenizer.h"
#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/VCard.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/foundation/Text.h"
#include "platform/ipc/FrameReader.h"
#include "protocol/ContactWire.h"
#include "protocol/CorvelInterface.h"
#include "protocol/DonationWire.h"

namespace quenlet {

void propertyList(std::string_view text) {
  const auto object = PropertyListSerializer::objectWithData(text);
  if (!object.ok()) return;
  const auto written = PropertyListSerializer::dataWithObject(object.value());
  assert(PropertyListSerializer::objectWithData(written.value()).value() == object.value());
}

// A card that was read is written and read back equal, except for blanks at the ends and "tel:"
// before an entry.
void vCard(std::string_view text) {
  for (const VCard& card : parseVCards(text).cards) {
    const std::string written = writeVCard(card.contact);
    const VCards again = parseVCards(written);
    assert(again.cards.size() == 1 && again.failures.empty() && again.cards[0].skippedEntries == 0);
    const Contact& contact = again.cards[0].contact;
    assert(contact == card.contact || writeVCard(contact).size() < written.size());
  }
}

template <typename Decode, typename Encode>
void decodedIsEncoded(std::string_view bytes, const Decode& decode, const Encode& encode) {
  WireReader reader(bytes);
  const auto decoded = decode(reader);
  if (!decoded) return;
  WireEncoder once, twice;
  encode(once, *decoded);
  WireReader again(once.bytes());
  encode(twice, *decode(again));
  assert(reader.atEnd() && again.atEnd() && once.bytes() == twice.bytes());
}

void wireMessage(std::string_view bytes) {
  const std::vector<WireParameter> donations{{WireType::list, false, {DonationWire::className}}};
  const std::vector<WireParameter> card{{WireType::object, false, {ContactWire::className}}};
  FrameReader reader(1 << 20);
  const auto room = reader.room();
  reader.added(bytes.copy(room.data(), room.size()));
  while (const auto frame = reader.next()) {
    if (frame->error) return;
    if (!validateWireValues(frame->body, card)) {
      decodedIsEncoded(frame->body, &ContactWire::decode, &ContactWire::encode);
    } else if (!validateWireValues(frame->body, donations)) {
      decodedIsEncoded(
          frame->body,
          [](WireReader& values) {
            auto list = DonationWire::decodeDonated(values);
            return list.ok() ? std::optional(std::move(list).takeValue()) : std::nullopt;
          },
          &DonationWire::encode);
    }
  }
}

void phoneNumber(std::string_view text) {
  const std::size_t middle = std::min(text.find('\n'), text.size() / 2);
  const auto number = PhoneNumber::withStringValue(text.substr(0, middle));
  const auto other = PhoneNumber::withStringValue(text.substr(middle));
  if (!number || !other) return;
  assert(PhoneNumber::withStringValue(number->digits())->digits() == number->digits());
  assert(number->isLikePhoneNumber(*other) == other->isLikePhoneNumber(*number));
}

void emailAddress(std::string_view text) {
  const auto address = EmailAddressScanner().firstEmailAddressInString(text);
  if (!address) return;
  // It is a part of the text, except for the escapes of a URL and a full-width "@".
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

// What a file of another program's holds reaches the card only as plain text.
void keyFile(std::string_view text) {
  const auto file = KeyFile::parse(text);
  if (!file.ok()) return;
  for (const std::string& group : file.value().groups()) {
    for (const std::string& item : file.value().list(group, "k", ';')) {
      assert(!item.empty() && isValidUTF8(item));
      for (const std::string& mailbox : splitMailboxes(item)) {
        const auto address = personalAddress(mailbox);
        assert(!address || mailbox.find(*address) != mailbox.npos);
        const auto name = fullName(mailbox);
        assert(!name || (name->givenName && name->familyName));
      }
    }
  }
}

void preferenceScript(std::string_view text) {
  const auto script = PreferenceScript::parse(text);
  if (!script.ok()) return;
  for (const std::string& name : script.value().namesBelow("")) {
    const auto value = script.value().text(name);
    assert(isValidUTF8(name) && (!value || isValidUTF8(*value)));
  }
}

// Identifiers name files and are logged.
void onlineAccounts(std::string_view text) {
  const auto accounts = OnlineAccounts::parse(text);
  if (!accounts.ok()) return;
  for (const Account& account : accounts.value()) {
    assert(OnlineAccounts::isOne(account) && account.enabledDataclasses.contains("mail"));
    assert(!PropertyListAccountStore::problemOfAccount(account));
    assert(personalAddress(*account.username) == account.username);
  }
}

// Each text is one of the file's own.
void firefoxAddresses(std::string_view text) {
  const auto records = FirefoxAddresses::parse(text);
  if (!records.ok()) return;
  for (const auto& record : records.value()) {
    for (const auto& [key, value] : record) {
      assert(isValidUTF8(key) && isValidUTF8(value) && value.size() <= text.size());
    }
  }
}

// In pieces or at once, the same messages come; each is understood or refused.
void browserMessage(std::string_view bytes) {
  MessageReader whole, pieces;
  whole.add(bytes);
  for (const char& byte : bytes) {
    pieces.add({&byte, 1});
    while (const auto message = pieces.next()) {
      assert(whole.next() == message && !message->empty());
      assert(message->size() <= MessageReader::mostBytes);
      const BrowserRequest request = BrowserRequest::parse(*message);
      assert(request.id >= 0 &&
             (request.word != BrowserRequest::Word::malformed || request.id == 0));
    }
  }
  assert(!whole.next() && whole.hasFault() == pieces.hasFault());
}

}  // namespace quenlet

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  quenlet::QUENLET_FUZZ_TARGET({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
