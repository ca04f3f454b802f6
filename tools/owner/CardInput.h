#pragma once

#include <string>
#include <vector>

#include "client/Pseudonyms.h"
#include "platform/contacts/VCard.h"
#include "quenlet/Result.h"
#include "quenlet/VCards.h"
#include "tools/owner/JournalEntry.h"

namespace quenlet {

// A file of cards that the owner named, or the standard input. A value type.
struct CardInput final {
  std::string path;   // as the owner wrote it
  std::string place;  // the same for all ways to write it; "-" for what is not a file
  std::vector<VCard> cards;
  std::vector<ErrorPtr> failures;  // of cards that cannot be read, organisations among them

  // Whether all of its cards could be read, except for those of organisations and the like.
  [[nodiscard]] bool isWhole() const;

  // An error when the file cannot be read, or has no card that is one.
  [[nodiscard]] static Result<CardInput> read(const std::string& path);

  // The donations of all cards. Under an empty bundle identifier in `terms`, the file has a bundle
  // to itself. An error when a value cannot be donated.
  [[nodiscard]] Result<DonatedFile> donations(DonationTerms terms,
                                              const Pseudonyms& pseudonyms) const;
};

// Whose cards an input holds: most donations are made in error when they hold other people's. One
// thread.
class CardPeople final {
 public:
  explicit CardPeople(const std::vector<CardInput>& inputs);

  // How each person is called, by the first card of the name. Names are one person's when the
  // agent takes them for one. A card without a name counts as a person of its own if it stands
  // among others in its file, since nothing tells whose it is.
  [[nodiscard]] const std::vector<std::string>& names() const { return people; }
  // What cards are of organisations, groups and other things.
  [[nodiscard]] const std::vector<std::string>& things() const { return others; }
  [[nodiscard]] bool areOne() const { return people.size() <= 1 && others.empty(); }

 private:
  std::vector<std::string> people;
  std::vector<std::string> others;
};

// Whether the error of a card is that it is an organisation's, a group's or a place's.
[[nodiscard]] bool isNotAPerson(const Error& error);

// Leaves of all cards those whose name, UID or an e-mail address contains `text`, in any letter
// case; drops inputs without any, and what is known of cards of organisations and the like. Gives
// how each of the cards is called.
std::vector<std::string> keepCardsWith(const std::string& text, std::vector<CardInput>& inputs);

}  // namespace quenlet
