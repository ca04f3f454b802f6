#include "modems/ModemManagerDaemon.h"

#include <algorithm>
#include <utility>

namespace quenlet {
namespace {

constexpr char managerName[] = "org.freedesktop.ModemManager1";
constexpr char managerPath[] = "/org/freedesktop/ModemManager1";
constexpr char modemInterface[] = "org.freedesktop.ModemManager1.Modem";
constexpr char simInterface[] = "org.freedesktop.ModemManager1.Sim";
constexpr char objectManagerInterface[] = "org.freedesktop.DBus.ObjectManager";
constexpr char propertiesInterface[] = "org.freedesktop.DBus.Properties";

// The daemon's own numbers.
constexpr std::int64_t stateFailed = -1;
constexpr std::int64_t stateDisabled = 3;  // the first in which a card has been read
constexpr std::int64_t failedSIMMissing = 2;

bool isOurProperty(const std::string& name) {
  static constexpr std::string_view ours[] = {"Device", "OwnNumbers",        "Sim",
                                              "State",  "StateFailedReason", "SimIdentifier"};
  return std::find(std::begin(ours), std::end(ours), name) != std::end(ours);
}

std::int64_t integerUnder(const BusDictionary& properties, std::string_view key) {
  const BusValue* value = findEntry(properties, key);
  return value ? value->integer().value_or(0) : 0;
}

CardState stateOf(const BusDictionary& properties) {
  const std::int64_t state = integerUnder(properties, "State");
  if (state >= stateDisabled) return CardState::readable;
  const bool isMissing =
      state == stateFailed && integerUnder(properties, "StateFailedReason") == failedSIMMissing;
  return isMissing ? CardState::absent : CardState::unknown;
}

ListedModem listedModem(const std::string& path, const BusDictionary& properties) {
  const std::string* device = findText(properties, "Device");
  ListedModem listed{{device ? *device : path, stateOf(properties), {}}, std::nullopt};
  const BusValue* numbers = findEntry(properties, "OwnNumbers");
  if (numbers && listed.modem.state == CardState::readable) {
    listed.modem.card.numbers = numbers->texts().value_or(std::vector<std::string>());
  }
  const BusValue* sim = findEntry(properties, "Sim");
  const std::string* simPath = sim ? sim->objectPath() : nullptr;
  if (simPath && *simPath != "/") {
    listed.cardCall = BusCall{.destination = managerName,
                              .path = *simPath,
                              .interface = propertiesInterface,
                              .member = "GetAll",
                              .signature = "s",
                              .arguments = {simInterface}};
  }
  return listed;
}

}  // namespace

std::string ModemManagerDaemon::name() const { return managerName; }

std::vector<BusSignalMatch> ModemManagerDaemon::signals() const {
  std::vector<BusSignalMatch> matches = {
      {.sender = managerName, .path = managerPath, .interface = objectManagerInterface}};
  for (const char* interface : {modemInterface, simInterface}) {
    matches.push_back({.sender = managerName,
                       .interface = propertiesInterface,
                       .member = "PropertiesChanged",
                       .firstArgument = interface});
  }
  return matches;
}

bool ModemManagerDaemon::isNews(const BusSignal& signal) const {
  if (signal.member != "PropertiesChanged") return true;
  const BusDictionary* changed =
      signal.arguments.size() > 1 ? signal.arguments[1].dictionary() : nullptr;
  return changed && std::any_of(changed->begin(), changed->end(),
                                [](const auto& entry) { return isOurProperty(entry.first); });
}

BusCall ModemManagerDaemon::listCall() const {
  return {.destination = managerName,
          .path = managerPath,
          .interface = objectManagerInterface,
          .member = "GetManagedObjects"};
}

std::optional<std::vector<ListedModem>> ModemManagerDaemon::listed(const BusValues& answer) const {
  const BusDictionary* objects = answer.empty() ? nullptr : answer.front().dictionary();
  if (!objects) return std::nullopt;
  std::vector<ListedModem> modems;
  for (const auto& [path, object] : *objects) {
    const BusDictionary* interfaces = object.dictionary();
    const BusDictionary* properties =
        interfaces ? findDictionary(*interfaces, modemInterface) : nullptr;
    if (properties) modems.push_back(listedModem(path, *properties));
  }
  return modems;
}

Modem ModemManagerDaemon::withCard(Modem modem, const BusValues& answer) const {
  const BusDictionary* properties = answer.empty() ? nullptr : answer.front().dictionary();
  const std::string* identifier = properties ? findText(*properties, "SimIdentifier") : nullptr;
  if (identifier) modem.card.identifier = *identifier;
  return modem;
}

}  // namespace quenlet
