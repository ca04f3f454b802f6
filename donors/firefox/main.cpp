// The donor extension for Firefox: see donors/browser.

#include "donors/browser/FirefoxDonations.h"
#include "donors/browser/OwnersName.h"

int main() {
  quenlet::SourceDonor donor([] {
    using Donations = quenlet::SourceDonor::Donations;
    const auto places = quenlet::UserPlaces::ofProcess();
    if (!places.ok()) return Donations::failure(places.error());
    const auto name = quenlet::OwnersName::find(places.value());
    if (!name.ok()) return Donations::failure(name.error());
    return quenlet::firefoxDonations(places.value(), name.value());
  });
  return quenlet::runExtension(donor);
}
