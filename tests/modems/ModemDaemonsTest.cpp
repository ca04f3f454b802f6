#include <gmock/gmock.h>

#include "modems/ModemManagerDaemon.h"
#include "modems/OfonoDaemon.h"

namespace quenlet {
namespace {

// Each listed modem, after it was told of its card by the answer, if it asks for one:
// "/modem/3 readable 89: 111 112 @/sim/5".
std::string read(const ModemDaemonProtocol& daemon, const BusValues& list,
                 const BusDictionary& card) {
  const auto listed = daemon.listed(list);
  if (!listed) return "no list";
  static const char* const states[] = {"unknown", "absent", "readable"};
  std::string text;
  for (const ListedModem& each : *listed) {
    const Modem modem = each.cardCall ? daemon.withCard(each.modem, {card}) : each.modem;
    text += (text.empty() ? "" : "; ") + modem.place + " " + states[static_cast<int>(modem.state)] +
            " " + modem.card.identifier + ":";
    for (const std::string& number : modem.card.numbers) text += " " + number;
    if (each.cardCall) text += " @" + each.cardCall->path;
  }
  return text;
}

BusSignal changed(const char* member, BusValues arguments) {
  return {":1.7", "/modem/3", member, std::move(arguments)};
}

BusValues objects(const BusDictionary& modem) {
  return {BusDictionary{{"/modem/3", BusDictionary{{"org.freedesktop.ModemManager1.Modem", modem},
                                                   {"org.example.Other", BusDictionary()}}},
                        {"/other", BusDictionary()}}};
}

TEST(ModemManagerDaemonTest, ReadsModemsAndTheirCards) {
  const BusValue sim = BusObjectPath{"/sim/5"};
  const BusValue numbers = makeTexts({"111", "112"});
  const BusDictionary card = {{"SimIdentifier", "89"}, {"Imsi", "26201"}};
  const auto modemWith = [](const BusValue& state, const BusValue& place, const BusValue& list) {
    return BusDictionary{{"State", state}, {"Sim", place}, {"OwnNumbers", list}};
  };
  BusDictionary atPort = modemWith(8, sim, numbers);
  atPort.emplace("Device", "/usb/1");
  const BusDictionary otherCard = {{"SimIdentifier", 89}};
  const std::tuple<BusDictionary, BusDictionary, const char*> rows[] = {
      {atPort, card, "/usb/1 readable 89: 111 112 @/sim/5"},
      {modemWith(3, sim, makeTexts({})), card, "/modem/3 readable 89: @/sim/5"},
      {modemWith(2, sim, numbers), card, "/modem/3 unknown 89: @/sim/5"},
      {modemWith(3, sim, "111"), otherCard, "/modem/3 readable : @/sim/5"},
      {modemWith(6, BusObjectPath{"/"}, numbers), card, "/modem/3 readable : 111 112"},
      {{{"State", -1}, {"StateFailedReason", std::uint32_t{2}}}, card, "/modem/3 absent :"},
      {{{"State", -1}, {"StateFailedReason", std::uint32_t{3}}}, card, "/modem/3 unknown :"},
      {{{"State", 1}, {"StateFailedReason", std::uint32_t{2}}}, card, "/modem/3 unknown :"},
      {{{"State", "8"}, {"Sim", "/sim/5"}, {"Device", 7}}, card, "/modem/3 unknown :"},
  };
  const ModemManagerDaemon daemon;
  for (const auto& [modem, answer, expected] : rows) {
    EXPECT_EQ(read(daemon, objects(modem), answer), expected);
  }
  EXPECT_EQ(read(daemon, {BusDictionary{}}, {}), "");
  EXPECT_EQ(read(daemon, {}, {}), "no list");
  EXPECT_EQ(read(daemon, {"text"}, {}), "no list");
}

TEST(ModemManagerDaemonTest, MindsChangesOfModemsAndCardsOnly) {
  const ModemManagerDaemon daemon;
  const auto isNews = [&](const BusDictionary& properties) {
    return daemon.isNews(changed("PropertiesChanged", {"interface", properties, makeTexts({})}));
  };
  EXPECT_TRUE(daemon.isNews(changed("InterfacesAdded", {})));
  EXPECT_TRUE(daemon.isNews(changed("InterfacesRemoved", {})));
  EXPECT_TRUE(isNews({{"SignalQuality", 70}, {"State", 3}}));
  EXPECT_TRUE(isNews({{"OwnNumbers", makeTexts({})}}));
  EXPECT_TRUE(isNews({{"SimIdentifier", ""}}));
  EXPECT_FALSE(isNews({{"SignalQuality", 70}, {"AccessTechnologies", 4}}));
  EXPECT_FALSE(daemon.isNews(changed("PropertiesChanged", {"interface"})));
}

BusValues modems(const BusDictionary& properties) {
  return {BusList{"(oa{sv})", {BusStruct{{BusObjectPath{"/r"}, properties}}}}};
}

TEST(OfonoDaemonTest, ReadsModemsAndTheirCards) {
  const BusDictionary ready = {
      {"Interfaces", makeTexts({"org.ofono.VoiceCallManager", "org.ofono.SimManager"})}};
  const BusValue numbers = makeTexts({"111", "112"});
  // With these properties beside the numbers and, if any, the identifier.
  const auto cardWith = [&](BusDictionary properties, const char* identifier = "89") {
    properties.emplace("SubscriberNumbers", numbers);
    if (identifier != nullptr) properties.emplace("CardIdentifier", identifier);
    return properties;
  };
  const std::tuple<BusDictionary, BusDictionary, const char*> rows[] = {
      {ready, cardWith({{"Present", true}, {"PinRequired", "none"}}),
       "/r readable 89: 111 112 @/r"},
      {ready, cardWith({{"Present", true}, {"PinRequired", "pin"}}), "/r unknown 89: @/r"},
      {ready, cardWith({{"Present", true}, {"PinRequired", "puk2"}}, nullptr),
       "/r readable : 111 112 @/r"},
      {ready, {{"Present", true}, {"CardIdentifier", "89"}}, "/r readable 89: @/r"},
      {ready, cardWith({{"Present", false}}), "/r absent : @/r"},
      {ready, cardWith({{"Present", "yes"}}), "/r unknown : @/r"},
      {{{"Interfaces", makeTexts({"org.ofono.VoiceCallManager"})}}, {}, "/r unknown :"},
      {{{"Interfaces", "org.ofono.SimManager"}}, {}, "/r unknown :"},
      {{}, {}, "/r unknown :"},
  };
  const OfonoDaemon daemon;
  for (const auto& [modem, answer, expected] : rows) {
    EXPECT_EQ(read(daemon, modems(modem), answer), expected);
  }
  EXPECT_EQ(read(daemon, {BusList{"(oa{sv})", {}}}, {}), "");
  for (const BusValues& bad : {BusValues{}, BusValues{"text"}, BusValues{makeTexts({"/r"})}}) {
    EXPECT_EQ(read(daemon, bad, {}), "no list");
  }
}

TEST(OfonoDaemonTest, MindsChangesOfModemsAndCardsOnly) {
  const OfonoDaemon daemon;
  for (const char* property :
       {"Interfaces", "Present", "CardIdentifier", "SubscriberNumbers", "PinRequired"}) {
    EXPECT_TRUE(daemon.isNews(changed("PropertyChanged", {property, 7}))) << property;
  }
  EXPECT_TRUE(daemon.isNews(changed("ModemRemoved", {})));
  EXPECT_FALSE(daemon.isNews(changed("PropertyChanged", {"Online", true})));
  EXPECT_FALSE(daemon.isNews(changed("PropertyChanged", {})));
}

}  // namespace
}  // namespace quenlet
