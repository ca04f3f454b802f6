// The donor extension for thunderbird: see donors/mail.

#include "donors/mail/MailDonations.h"

int main() {
  return quenlet::runMailDonor("org.quenlet.donors.thunderbird", &quenlet::thunderbirdIdentities);
}
