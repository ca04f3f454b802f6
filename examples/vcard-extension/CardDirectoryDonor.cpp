#include "examples/vcard-extension/CardDirectoryDonor.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include "client/CardDonor.h"
#include "client/CardFile.h"

namespace quenlet {
namespace {

using Paths = std::vector<std::filesystem::path>;

// The card files by name, so that every run sees them in the same order.
Result<Paths> cardFiles(const std::filesystem::path& directory) {
  Paths paths;
  std::error_code failure;
  for (std::filesystem::directory_iterator entry(directory, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    // Reading a pipe would wait.
    std::error_code unknown;
    if (entry->path().extension() == ".vcf" && entry->is_regular_file(unknown)) {
      paths.push_back(entry->path());
    }
  }
  if (failure && failure != std::errc::no_such_file_or_directory) {
    return Result<Paths>::failure(makePosixError(failure.value(), "list the cards"));
  }
  std::sort(paths.begin(), paths.end());
  return Result<Paths>::success(std::move(paths));
}

bool isSameContent(const DonationValue& a, const DonationValue& b) {
  PropertyListDictionary first = a.propertyListRepresentation();
  PropertyListDictionary second = b.propertyListRepresentation();
  first.erase("origin");
  second.erase("origin");
  return first == second;
}

}  // namespace

CardDirectoryDonor::CardDirectoryDonor(std::filesystem::path cardDirectory,
                                       std::function<Date()> clock)
    : directory(std::move(cardDirectory)), now(std::move(clock)) {}

Result<Date> CardDirectoryDonor::renewExpirationDate(const DonationValue& value) {
  if (!known) {
    if (ErrorPtr error = readCards()) return Result<Date>::failure(std::move(error));
  }
  const auto [first, last] =
      known->byIdentifier.equal_range(value.decoded().origin.donationIdentifier);
  const bool stillThere = std::any_of(
      first, last, [&](const auto& current) { return isSameContent(*current.second, value); });
  if (stillThere) return Result<Date>::success(now().addingSeconds(lifetimeSeconds));
  if (known->areAll) return Result<Date>::success(now().addingSeconds(-1));
  return Result<Date>::failure(
      makeError(bundleIdentifier, 1, "a card cannot be read, and the value may be in it"));
}

Result<DonationValues> CardDirectoryDonor::allValues(std::uint64_t) {
  if (ErrorPtr error = readCards()) return Result<DonationValues>::failure(std::move(error));
  return Result<DonationValues>::success(known->values);
}

ErrorPtr CardDirectoryDonor::readCards() {
  known.reset();
  const Result<Paths> paths = cardFiles(directory);
  if (!paths.ok()) return paths.error();
  const Date today = now();
  CardDonor donor({bundleIdentifier, std::nullopt, today, today.addingSeconds(lifetimeSeconds)});
  Cards found;
  for (const std::filesystem::path& path : paths.value()) {
    const Result<VCards> cards = CardFile::read(path.native());
    if (cards.ok()) donor.addFile(cards.value().cards, CardFile::nameOf(path.native()));
    found.areAll = found.areAll && cards.ok() && cards.value().failures.empty();
  }
  found.values = donor.donations();
  for (const DonationValuePtr& value : found.values) {
    found.byIdentifier.emplace(value->decoded().origin.donationIdentifier, value);
  }
  known = std::move(found);
  return nullptr;
}

}  // namespace quenlet
