#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/DonationValue.h"
#include "platform/accounts/Account.h"
#include "platform/foundation/PropertyList.h"
#include "quenlet/Date.h"
#include "quenlet/Result.h"

namespace quenlet {

// All that nobody but the owner could give again, in one property list: the donations with their
// origins, the feedback, the accounts and the own card. A value type.
//
// {version: 1, made: real, donations: [record], feedback: {contact: [decision]},
//  accounts: [account], ownCard: data, pseudonymKey: data}; the last two may be missing.
struct Backup final {
  static constexpr std::int64_t version = 1;

  Date made = {};
  DonationValues donations = {};
  // The content of the feedback file.
  PropertyListDictionary feedback = {};
  std::vector<Account> accounts = {};
  // The bytes of the owner's card, whatever they are.
  std::optional<std::string> ownCard = std::nullopt;
  // The secret of the journal, under which the owner's files have their bundles.
  std::optional<std::string> pseudonymKey = std::nullopt;

  // An error when a property list cannot hold it.
  [[nodiscard]] Result<std::string> text() const;
  // Reads bytes of unknown origin. An error in PropertyListErrorDomain for anything that text()
  // does not give, or that an agent would not take; it quotes nothing. Unknown keys are ignored.
  [[nodiscard]] static Result<Backup> read(std::string_view bytes);
};

}  // namespace quenlet
