// The donor extension for git: see donors/owner.

#include "donors/owner/GitDonations.h"

int main() {
  quenlet::SourceDonor donor([] { return quenlet::gitDonations(); });
  return quenlet::runExtension(donor);
}
