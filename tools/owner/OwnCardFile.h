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
    // The copy of the former card, if there was a different one.
    std::optional<std::filesystem::path> former;
    bool isUnchanged = false;
  };
  // The same, and what was put there.
  struct Placed final {
    VCard card;
    // The copy of the former card, if there was a different one.
    std::optional<std::filesystem::path> former;
    bool isUnchanged = false;
  };

  // Stands between the card's name and the number of a former one.
  static constexpr char formerMark[] = ".former-";

  // An error when the user has no home directory.
  [[nodiscard]] static Result<OwnCardFile> open();
  explicit OwnCardFile(std::filesystem::path cardPath) : path(std::move(cardPath)) {}

  [[nodiscard]] const std::filesystem::path& location() const { return path; }

  // The bytes of `source` take the place of the card durably; the former one is first copied to
  // "<name>.former-<n>" beside it. An error, and nothing is changed, when the source is not exactly
  // one card, of a person, or when the copy cannot be made.
  [[nodiscard]] Result<Placed> replaceWith(const std::filesystem::path& source) const;

  // The same of bytes, whatever they are.
  [[nodiscard]] Result<Replaced> replaceWithBytes(const std::string& bytes) const;

 private:
  [[nodiscard]] Result<std::filesystem::path> keepFormer(const std::string& bytes) const;

  std::filesystem::path path;
};

}  // namespace quenlet
