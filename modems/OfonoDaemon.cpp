#include "modems/OfonoDaemon.h"

#include <algorithm>
#include <utility>

namespace quenlet {
namespace {

constexpr char ofonoName[] = "org.ofono";
constexpr char ofonoManagerInterface[] = "org.ofono.Manager";
constexpr char ofonoModemInterface[] = "org.ofono.Modem";
constexpr char simManagerInterface[] = "org.ofono.SimManager";

bool isOneOf(const std::string& word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// A second PIN locks none of what is read here.
bool needsPIN(const BusDictionary& properties) {
  const std::string* required = findText(properties, "PinRequired");
  return required && !isOneOf(*required, {"none", "pin2", "puk2"});
}

// The interface is there once the modem has power and knows whether it has a card.
bool hasSimManager(const BusDictionary& properties) {
  const BusValue* interfaces = findEntry(properties, "Interfaces");
  const std::vector<std::string> names =
      (interfaces ? interfaces->texts() : std::nullopt).value_or(std::vector<std::string>());
  return std::find(names.begin(), names.end(), simManagerInterface) != names.end();
}

std::optional<ListedModem> listedModem(const BusValue& element) {
  const BusValues* members = element.members();
  if (!members || members->size() != 2) return std::nullopt;
  const std::string* path = members->front().objectPath();
  const BusDictionary* properties = members->back().dictionary();
  if (!path || !properties) return std::nullopt;
  ListedModem listed{{*path, CardState::unknown, {}}, std::nullopt};
  if (hasSimManager(*properties)) {
    listed.cardCall = BusCall{.destination = ofonoName,
                              .path = *path,
                              .interface = simManagerInterface,
                              .member = "GetProperties"};
  }
  return listed;
}

}  // namespace

std::string OfonoDaemon::name() const { return ofonoName; }

std::vector<BusSignalMatch> OfonoDaemon::signals() const {
  std::vector<BusSignalMatch> matches = {
      {.sender = ofonoName, .path = "/", .interface = ofonoManagerInterface}};
  for (const char* interface : {ofonoModemInterface, simManagerInterface}) {
    matches.push_back({.sender = ofonoName, .interface = interface, .member = "PropertyChanged"});
  }
  return matches;
}

bool OfonoDaemon::isNews(const BusSignal& signal) const {
  if (signal.member != "PropertyChanged") return true;
  const std::string* property =
      signal.arguments.empty() ? nullptr : signal.arguments.front().text();
  return property && isOneOf(*property, {"Interfaces", "Present", "CardIdentifier",
                                         "SubscriberNumbers", "PinRequired"});
}

BusCall OfonoDaemon::listCall() const {
  return {.destination = ofonoName,
          .path = "/",
          .interface = ofonoManagerInterface,
          .member = "GetModems"};
}

std::optional<std::vector<ListedModem>> OfonoDaemon::listed(const BusValues& answer) const {
  const BusValues* elements = answer.empty() ? nullptr : answer.front().elements();
  if (!elements) return std::nullopt;
  std::vector<ListedModem> modems;
  for (const BusValue& element : *elements) {
    std::optional<ListedModem> modem = listedModem(element);
    if (!modem) return std::nullopt;
    modems.push_back(*std::move(modem));
  }
  return modems;
}

Modem OfonoDaemon::withCard(Modem modem, const BusValues& answer) const {
  const BusDictionary* properties = answer.empty() ? nullptr : answer.front().dictionary();
  const BusValue* presence = properties ? findEntry(*properties, "Present") : nullptr;
  if (!presence || !presence->boolean()) return modem;
  if (!*presence->boolean()) {
    modem.state = CardState::absent;
    return modem;
  }
  if (const std::string* identifier = findText(*properties, "CardIdentifier")) {
    modem.card.identifier = *identifier;
  }
  if (needsPIN(*properties)) return modem;
  modem.state = CardState::readable;
  if (const BusValue* numbers = findEntry(*properties, "SubscriberNumbers")) {
    modem.card.numbers = numbers->texts().value_or(std::vector<std::string>());
  }
  return modem;
}

}  // namespace quenlet
