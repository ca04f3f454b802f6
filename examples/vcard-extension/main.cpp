// A donor extension that donates the vCards of ~/Library/Contacts/Cards.

#include <quenlet/Extension.h>
#include <quenlet/VCards.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

using namespace quenlet;

using Paths = std::vector<std::filesystem::path>;

constexpr char bundleIdentifier[] = "org.quenlet.vcard-extension";

Date inDays(int days) { return Date::now().addingSeconds(days * 86400.0); }

// The card files by name, so that every run sees them in the same order. A directory that does not
// exist holds no cards.
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

// Donates the vCards (*.vcf) of a directory for 30 days, and renews for 30 more each value that a
// card there still has. Takes back values that no card has any more; but nothing while some file
// cannot be read as cards, since that file may hold the value. Renewals go by the cards as read at
// the first one or at a re-donation since: a run of the program is short.
class CardDirectoryDonor final : public Extension {
 public:
  explicit CardDirectoryDonor(std::filesystem::path cardDirectory)
      : directory(std::move(cardDirectory)) {}

  Result<Date> renew(const Donation& donation) override {
    if (!known) {
      if (ErrorPtr error = readCards()) return Result<Date>::failure(std::move(error));
    }
    // Cards with the same UID have donations with the same identifier.
    const auto [first, last] = known->places.equal_range(donation.donationIdentifier);
    const bool stillThere = std::any_of(first, last, [&](const auto& entry) {
      return known->donations[entry.second].content == donation.content;
    });
    if (stillThere) return Result<Date>::success(inDays(30));
    if (known->areAll) return Result<Date>::success(inDays(-1));
    return Result<Date>::failure(
        makeError(bundleIdentifier, 1, "a card cannot be read, and the value may be in it"));
  }

  Result<std::vector<Donation>> allDonations(std::uint64_t) override {
    if (ErrorPtr error = readCards()) {
      return Result<std::vector<Donation>>::failure(std::move(error));
    }
    return Result<std::vector<Donation>>::success(known->donations);
  }

 private:
  struct Cards final {
    std::vector<Donation> donations;
    std::multimap<std::string, std::size_t> places;  // in `donations`, by identifier
    bool areAll = true;
  };

  // Reads the cards into `known`; the error when the directory cannot be listed.
  ErrorPtr readCards() {
    known.reset();
    const Result<Paths> paths = cardFiles(directory);
    if (!paths.ok()) return paths.error();
    const DonationTerms terms{.bundleIdentifier = bundleIdentifier, .expirationDate = inDays(30)};
    Cards found;
    for (const std::filesystem::path& path : paths.value()) {
      Result<VCardDonations> cards = readVCards(path.native(), terms);
      found.areAll = found.areAll && cards.ok() && cards.value().failures.empty();
      if (!cards.ok()) continue;
      std::vector<Donation> donations = std::move(cards).takeValue().donations;
      for (Donation& donation : donations) {
        found.places.emplace(donation.donationIdentifier, found.donations.size());
        found.donations.push_back(std::move(donation));
      }
    }
    known = std::move(found);
    return nullptr;
  }

  const std::filesystem::path directory;
  std::optional<Cards> known;
};

}  // namespace

int main() {
  const char* home = std::getenv("HOME");
  if (home == nullptr || home[0] != '/') {
    std::fputs("HOME is not set\n", stderr);
    return EXIT_FAILURE;
  }
  CardDirectoryDonor donor(std::filesystem::path(home) / "Library/Contacts/Cards");
  return runExtension(donor);
}
