// Each target takes any bytes. The environment's QUENLET_FUZZ_TARGET names the one to try.

#include <cassert>
#include <cstdio>

#include "apps/AppPermission.h"
#include "browser/host/BrowserRequest.h"
#include "browser/host/MessageReader.h"
#include "donors/browser/FirefoxAddresses.h"
#include "donors/mail/PreferenceScript.h"
#include "facade/SandboxedApp.h"
#include "foreign/KeyFile.h"
#include "foreign/Mailbox.h"
#include "foreign/OnlineAccounts.h"
#include "modems/ModemManagerDaemon.h"
#include "modems/OfonoDaemon.h"
#include "platform/accounts/PropertyListAccountStore.h"
#include "platform/contacts/EmailAddressScanner.h"
#include "platform/contacts/NameComponentsTokenizer.h"
#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/VCard.h"
#include "platform/foundation/PropertyListSerializer.h"
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

// A card is written and read back equal, except for blanks at ends and "tel:" before entries.
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

// Whom a sandbox is said to hold is a name that may stand for an app.
void flatpakInfo(std::string_view text) {
  const auto app = appIdentifierIn(text);
  assert(!app.ok() || isAppIdentifier(app.value()));
  assert(!app.ok() || text.find("[Application") != text.npos);
}

// A tree of values as a message holds them, and with the keys that daemons have.
class BusTree final {
 public:
  explicit BusTree(std::string_view bytes) : rest(bytes) {}

  BusValue value(int depth = 0) {
    const int letter = take() % (depth > 6 ? 4 : 9);
    if (letter == 0) return text();
    if (letter == 1) return static_cast<std::int32_t>(take()) - 2;
    if (letter == 2) return take() % 2 == 0;
    if (letter == 3) return BusObjectPath{"/" + text()};
    if (letter == 4) return makeTexts({text(), text()});
    if (letter == 6) return BusBytes{text()};
    if (letter > 6) return dictionary(depth + 1);
    return BusList{"(oa{sv})", {BusStruct{{value(depth + 1), value(depth + 1)}}}};
  }

 private:
  BusDictionary dictionary(int depth) {
    static const std::vector<std::string> keys = [] {
      std::istringstream words(
          "org.freedesktop.ModemManager1.Modem Device OwnNumbers Sim State StateFailedReason "
          "SimIdentifier Interfaces Present PinRequired CardIdentifier SubscriberNumbers");
      return std::vector<std::string>(std::istream_iterator<std::string>(words), {});
    }();
    BusDictionary entries;
    for (int count = take() % 8; count > 0; --count) {
      const std::size_t place = take();
      const std::string key = place < keys.size() ? keys[place] : text();
      entries.insert_or_assign(key, value(depth));
    }
    return entries;
  }
  std::uint8_t take() {
    if (rest.empty()) return 0;
    const char first = rest.front();
    rest.remove_prefix(1);
    return static_cast<std::uint8_t>(first);
  }
  std::string text() {
    const std::string_view taken = rest.substr(0, take() % 80);
    rest.remove_prefix(std::min(rest.size(), taken.size()));
    return std::string(taken);
  }

  std::string_view rest;
};

// Whatever daemons say, only what looks like a phone number goes on, and no card's own number.
void modemAnswers(std::string_view bytes) {
  const ModemManagerDaemon modemManager;
  const OfonoDaemon ofono;
  const ModemDaemonProtocol* const daemons[] = {&modemManager, &ofono};
  BusTree tree(bytes);
  ModemCards cards;
  SIMCardItems written;
  for (int turn = 0; turn < 3; ++turn) {
    for (const ModemDaemonProtocol* daemon : daemons) {
      std::vector<Modem> modems;
      for (const ListedModem& listed :
           daemon->listed({tree.value()}).value_or(std::vector<ListedModem>())) {
        modems.push_back(listed.cardCall ? daemon->withCard(listed.modem, {tree.value()})
                                         : listed.modem);
      }
      cards.setModems(daemon->name(), modems);
      written = cards.listInPlaceOf(written).value_or(written);
    }
  }
  for (const auto& [identifier, number] : written) {
    assert(identifier.starts_with("sim-") && identifier.size() == 20);
    assert(number.size() <= ModemCards::maximumNumberSizeInBytes);
    assert(number.find_first_not_of("0123456789+*#()-./ ") == number.npos);
  }
}

namespace {

using Target = void (*)(std::string_view bytes);
constexpr std::pair<std::string_view, Target> targets[] = {
    {"propertyList", &propertyList},
    {"vCard", &vCard},
    {"wireMessage", &wireMessage},
    {"phoneNumber", &phoneNumber},
    {"emailAddress", &emailAddress},
    {"name", &name},
    {"keyFile", &keyFile},
    {"preferenceScript", &preferenceScript},
    {"onlineAccounts", &onlineAccounts},
    {"firefoxAddresses", &firefoxAddresses},
    {"browserMessage", &browserMessage},
    {"flatpakInfo", &flatpakInfo},
    {"modemAnswers", &modemAnswers},
};
Target chosen = nullptr;

}  // namespace

}  // namespace quenlet

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const char* const name = std::getenv("QUENLET_FUZZ_TARGET");
  for (const auto& [known, target] : quenlet::targets) {
    if (name != nullptr && known == name) quenlet::chosen = target;
  }
  if (quenlet::chosen != nullptr) return 0;
  std::fputs("QUENLET_FUZZ_TARGET does not name a target\n", stderr);
  std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  quenlet::chosen({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
