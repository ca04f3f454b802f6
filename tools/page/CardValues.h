#pragma once

#include <string>
#include <vector>

#include "tools/page/PageContent.h"

namespace quenlet {

// A value of the card and everyone who gave it. Valid as long as the content that it was made of.
struct CardValue final {
  std::vector<std::string> lines;
  std::string label;
  bool isOwn;
  // The donations of this value: the one that the card shows first, then those that repeat it.
  SomeDonations sources;
};

// The e-mail addresses, phone numbers or postal addresses of the card: the owner's own first, in
// the order of the owner's card, then donated ones in the agent's order. A value that several give
// is there once, with all of them as its sources.
[[nodiscard]] std::vector<CardValue> cardValuesOf(DonationKind kind, const PageContent& content);

}  // namespace quenlet
