// The donor extension for geary: see donors/mail.

#include "donors/mail/MailDonations.h"

int main() { return quenlet::runMailDonor("org.quenlet.donors.geary", &quenlet::gearyIdentities); }
