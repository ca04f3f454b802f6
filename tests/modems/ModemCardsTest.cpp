#include "modems/ModemCards.h"

#include <gmock/gmock.h>

namespace quenlet {
namespace {

using testing::ElementsAre;

// Modems are written as "slot=1:111,112", a readable card 1 with two numbers; "slot=1?", one that
// is locked; "slot=?", nothing known; "slot=-", no card.
Modem modemOf(const std::string& text) {
  Modem modem;
  modem.place = text.substr(0, text.find('='));
  const std::string rest = text.substr(text.find('=') + 1);
  modem.state = rest == "-"          ? CardState::absent
                : rest.back() == '?' ? CardState::unknown
                                     : CardState::readable;
  modem.card.identifier = rest.substr(0, rest.find_first_of(":?-"));
  if (rest.find(':') == rest.npos) return modem;
  std::istringstream numbers(rest.substr(rest.find(':') + 1));
  for (std::string number; std::getline(numbers, number, ',');) {
    modem.card.numbers.push_back(number);
  }
  return modem;
}

// Lists are written as "1/111 1/112": which card has which number.
SIMCardItems itemsOf(const std::string& text) {
  SIMCardItems items;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const std::string number = word.substr(word.find('/') + 1);
    items.push_back({ModemCards::identifierOf(word.substr(0, word.find('/')), number), number});
  }
  return items;
}

// What is written after the daemon "m", or "o" in steps that begin with it, said all this in turn.
std::string writtenAfter(const std::string& before, const std::vector<std::string>& steps) {
  ModemCards cards;
  SIMCardItems written = itemsOf(before);
  for (const std::string& step : steps) {
    const bool isOther = step.starts_with("o ");
    std::istringstream words(isOther ? step.substr(2) : step);
    std::vector<Modem> modems;
    for (std::string word; words >> word;) modems.push_back(modemOf(word));
    cards.setModems(isOther ? "o" : "m", modems);
    if (auto list = cards.listInPlaceOf(written)) {
      EXPECT_NE(*list, written) << "written for nothing";
      written = *std::move(list);
    }
  }
  std::string text;
  for (const SIMCardItem& item : written) {
    std::string owner = item.identifier;
    for (const char* card : {"", "1", "2", "3"}) {
      if (item.identifier == ModemCards::identifierOf(card, item.value)) owner = card;
    }
    text += (text.empty() ? "" : " ") + owner + "/" + item.value;
  }
  return text;
}

TEST(ModemCardsTest, LetANumberGoOnlyWhenAnotherCardHasTakenItsCardsPlace) {
  const std::tuple<const char*, const char*, std::vector<std::string>, const char*> rows[] = {
      {"first numbers", "", {"a=1:111,112"}, "1/111 1/112"},
      {"no daemon", "1/111", {""}, "1/111"},
      {"daemon gone", "", {"a=1:111", ""}, "1/111"},
      {"restarted, not read yet", "1/111", {"a=?", "a=1:"}, "1/111"},
      {"locked", "1/111", {"a=1?"}, "1/111"},
      {"another card, locked", "1/111", {"a=2?"}, "1/111"},
      {"card taken out", "1/111", {"a=1:111", "a=-"}, "1/111"},
      {"another card", "1/111", {"a=2:222"}, "2/222"},
      {"another card while it ran", "", {"a=1:111", "a=-", "a=2:222"}, "2/222"},
      {"another card without numbers", "1/111", {"a=2:"}, ""},
      {"another card, back in another place", "", {"a=1:111", "", "b=2:222", "b=1:111"}, "1/111"},
      {"same card in another place", "", {"a=1:111", "", "b=1:111", "b=2:222"}, "2/222"},
      {"other numbers of the card", "1/111 1/112", {"a=1:112,113"}, "1/112 1/113"},
      {"other numbers while it ran", "", {"a=1:111,112", "a=1:112,113"}, "1/112 1/113"},
      {"same number, another card", "1/111", {"a=2:111"}, "2/111"},
      {"two cards", "1/111", {"a=1:111 b=2:222"}, "1/111 2/222"},
      {"cards change places", "1/111 2/222", {"a=2:222 b=1:111"}, "1/111 2/222"},
      {"one of two away", "", {"a=1:111 b=2:222", "a=1:111"}, "1/111 2/222"},
      {"one of two locked", "1/111 2/222", {"a=1:111 b=2?"}, "1/111 2/222"},
      {"one of two unknown", "1/111 2/222", {"a=1:111 b=?"}, "1/111 2/222"},
      {"one of two taken out", "", {"a=1:111 b=2:222", "a=1:111 b=-"}, "1/111"},
      {"one of two replaced, other locked", "", {"a=1:111 b=2:222", "a=3:333 b=?"}, "2/222 3/333"},
      {"taken out, and a modem in another place", "", {"a=1:111", "a=-", "", "b=2:222"}, "2/222"},
      {"away, and never had a card", "1/111", {"a=?", "b=2:222"}, "2/222"},
      {"away with a card that has no number", "", {"a=:111", "b=?", "b=2:222"}, "/111 2/222"},
      {"one of two late", "1/111 2/222", {"a=1:111"}, "1/111 2/222"},
      {"one of two late, and there", "1/111 2/222", {"a=1:111", "a=1:111 b=2:222"}, "1/111 2/222"},
      {"one late, with another card", "1/111 2/222", {"a=1:111", "a=1:111 b=3:333"}, "1/111 3/333"},
      {"one of two late, without its card", "1/111 2/222", {"a=1:111", "a=1:111 b=-"}, "1/111"},
      {"one of two late, the other replaced", "1/111 2/222", {"a=1:111", "a=3:333"}, "2/222 3/333"},
      {"one late, the other taken out, replaced",
       "1/111 2/222",
       {"a=1:111", "a=-", "a=3:333"},
       "2/222 3/333"},
      {"one of two late, and another card", "1/111 2/222", {"a=3:333"}, "3/333"},
      {"two daemons, one without cards", "1/111", {"a=?", "o a=2:222", "a=-"}, "2/222"},
      {"two daemons", "", {"a=1:111", "o a=2:222", ""}, "1/111 2/222"},
      {"two daemons, one card", "", {"a=1:111", "o b=1:111"}, "1/111"},
      {"card without its own number", "1/111", {"a=:333"}, "/333"},
      {"nothing to tell cards apart by", "1/111", {"a=:"}, "1/111"},
      {"no phone numbers", "", {"a=1:voice,+1(2)3-4.5/6*#,\0017,++"}, "1/+1(2)3-4.5/6*#"},
  };
  for (const auto& [name, before, steps, after] : rows) {
    EXPECT_EQ(writtenAfter(before, steps), after) << name;
  }
}

TEST(ModemCardsTest, LeavesEntriesOfOthersAndTellsCardsByADigest) {
  ModemCards cards;
  cards.setModems("m", {modemOf("a=8949010000000012345:+491701234567")});
  const auto list = cards.listInPlaceOf({{"89490200001", "112"}, {"sim-0000000000000000", "113"}});
  ASSERT_TRUE(list);
  EXPECT_THAT(*list, ElementsAre(SIMCardItem{"89490200001", "112"},
                                 SIMCardItem{"sim-1a0a8f7f3b082b37", "+491701234567"}));
  EXPECT_NE(ModemCards::identifierOf("1", "23"), ModemCards::identifierOf("12", "3"));
}

TEST(ModemCardsTest, BelievesADaemonWithinLimitsOnly) {
  const std::string tooLong(ModemCards::maximumNumberSizeInBytes + 1, '1');
  std::vector<Modem> modems;
  for (int place = 100; place < 120; ++place) {
    modems.push_back({std::to_string(place), CardState::readable, {std::to_string(place), {}}});
    for (int number = 0; number < 20; ++number) {
      modems.back().card.numbers.push_back(number == 3 ? tooLong : std::to_string(number));
    }
  }
  ModemCards cards;
  cards.setModems("m", modems);
  EXPECT_EQ(cards.listInPlaceOf({})->size(),
            ModemCards::maximumModems * ModemCards::maximumNumbersOfCard);
  // Modems that come under ever new names, each with a card of its own.
  for (int place = 0; place < 100; ++place) {
    cards.setModems("m", {modemOf(std::to_string(place) + "=7" + std::to_string(place) + ":1")});
  }
  const auto list = cards.listInPlaceOf(itemsOf("70/1"));
  ASSERT_TRUE(list);
  EXPECT_THAT(*list, ElementsAre(itemsOf("799/1").front())) << "what was long ago is forgotten";
}

}  // namespace
}  // namespace quenlet
