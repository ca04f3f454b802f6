#include "tools/owner/ShownNumbers.h"

#include "platform/feedback/FeedbackContent.h"
#include "platform/files/DurableFileWriter.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/UserDirectories.h"
#include "platform/foundation/SHA256.h"

namespace quenlet {
namespace {

constexpr std::size_t digestSize = 32;

}  // namespace

ShownNumbers::ShownNumbers(const char* path) {
  const auto runtime = UserDirectories::runtimeDirectory();
  if (runtime.ok()) file = runtime.value() / path;
}

void ShownNumbers::rememberDonations(const StatedDonations& list, const StatedDonations& shown) {
  std::vector<std::size_t> places;
  places.reserve(shown.size());
  for (const StatedDonation& stated : shown) places.push_back(stated.number - 1);
  ofDonations().remember(itemsOf(donationsOf(list)), places);
}

std::string ShownNumbers::digests() const {
  if (!file) return {};
  const auto shown = PosixDataProxy().dataWithContentsOfURL(*file);
  return shown.result().ok() ? shown.result().value() : std::string();
}

void ShownNumbers::remember(const std::vector<std::string>& items,
                            const std::vector<std::size_t>& shownPlaces) const {
  if (!file) return;
  std::string all = digests();
  all.resize(items.size() * digestSize);
  for (const std::size_t place : shownPlaces) {
    all.replace(place * digestSize, digestSize, sha256(items[place]));
  }
  PosixFileOperations operations;
  static_cast<void>(DurableFileWriter(operations).replace(*file, all));
}

bool ShownNumbers::hold(const std::vector<std::string>& items, std::size_t place) const {
  const std::string all = digests();
  return place < items.size() && all.size() >= (place + 1) * digestSize &&
         all.compare(place * digestSize, digestSize, sha256(items[place])) == 0;
}

std::vector<std::string> ShownNumbers::itemsOf(const DonationValues& donations) {
  std::vector<std::string> items;
  items.reserve(donations.size());
  for (const DonationValuePtr& donation : donations) {
    items.push_back(donation->decoded().origin.donationIdentifier + '\n' +
                    FeedbackContent::keyOfValue(donation->value()));
  }
  return items;
}

}  // namespace quenlet
