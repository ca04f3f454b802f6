#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/contacts/VCard.h"
#include "quenlet/Result.h"

namespace quenlet {

// Puts a card of the owner's choice in the place of their own card. One thread.
class OwnCardFile final {
 public:
  // What became of the former card.
  struct Replaced final {
    // Where the former card is kept, if there was a different one.
    std::optional<std::filesystem::path> former;
    bool isUnchanged = false;
  };
  // The same, and the card that was put there.
  struct Placed final {
    VCard card;
    // Where the former card is kept, if there was a different one.
    std::optional<std::filesystem::path> former;
    bool isUnchanged = false;
  };

  // Stands between the card's name and the number of a former one.
  static constexpr char formerMark[] = ".former-";

  // An error when the user has no home directory.
  [[nodiscard]] static Result<OwnCardFile> open();
  explicit OwnCardFile(std::filesystem::path cardPath) : path(std::move(cardPath)) {}

  [[nodiscard]] const std::filesystem::path& location() const { return path; }

  // The bytes of `source` take the place of the card durably; the former one stays beside it as
  // "<name>.former-<n>", even if it cannot be read or is too large for a card. An error, and
  // nothing is changed, when the source is not exactly one card, of a person, or when the former
  // one cannot be kept.
  [[nodiscard]] Result<Placed> replaceWith(const std::filesystem::path& source) const;

  // The same with `bytes`, which are not checked.
  [[nodiscard]] Result<Replaced> replaceWithBytes(const std::string& bytes) const;

 private:
  [[nodiscard]] Result<std::filesystem::path> keepFormer(const Result<std::string>& former) const;

  std::filesystem::path path;
};

}  // namespace quenlet
