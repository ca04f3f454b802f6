// The donor extension for kmail: see donors/mail.

#include "donors/mail/MailDonations.h"

int main() { return quenlet::runMailDonor("org.quenlet.donors.kmail", &quenlet::kmailIdentities); }
