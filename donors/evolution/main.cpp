// The donor extension for evolution: see donors/mail.

#include "donors/mail/MailDonations.h"

int main() {
  return quenlet::runMailDonor("org.quenlet.donors.evolution", &quenlet::evolutionIdentities);
}
