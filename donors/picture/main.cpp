// The donor extension for the owner's picture: see donors/owner.

#include "donors/owner/PictureDonations.h"
#include "foreign/LoginRecord.h"
#include "foreign/UserPlaces.h"

int main() {
  quenlet::SourceDonor donor([] {
    using Donations = quenlet::SourceDonor::Donations;
    const auto places = quenlet::UserPlaces::ofProcess();
    if (!places.ok()) return Donations::failure(places.error());
    const auto user = quenlet::LoginRecord::ofProcess();
    if (!user.ok()) return Donations::failure(user.error());
    return quenlet::pictureDonations(
        {places.value().home / ".face", "/var/lib/AccountsService/icons/" + user.value().login});
  });
  return quenlet::runExtension(donor);
}
