#include "tools/page/PageContent.h"

#include <utility>

#include "mecard/ContactBuilder.h"

namespace quenlet {
namespace {

PageDonations parsed(const StatedDonations& stated) {
  PageDonations donations;
  donations.reserve(stated.size());
  for (const StatedDonation& each : stated) {
    DecodedDonation decoded = each.donation->decoded();
    donations.push_back({each, Value(std::move(decoded.content)), std::move(decoded.origin)});
  }
  return donations;
}

Contact merged(const StatedDonations& stated) {
  ContactBuilder builder;
  for (const StatedDonation& each : stated) {
    if (each.isShown()) builder.addWithDonatedValue(each.donation);
  }
  return builder.build();
}

}  // namespace

PageContent::PageContent(Date now, OwnersValues values)
    : madeOn(now),
      donationsEnabled(values.donationsEnabled),
      own(std::move(values.own)),
      donations(parsed(values.listed)),
      donated(merged(values.listed)),
      missing(values.missing()),
      decisions(std::move(values.decisions)) {}

}  // namespace quenlet
