#include <cstdio>
#include <cstdlib>

#include "client/DonorExtensionMain.h"
#include "examples/vcard-extension/CardDirectoryDonor.h"

int main() {
  const char* home = std::getenv("HOME");
  if (home == nullptr || home[0] != '/') {
    std::fputs("HOME is not set\n", stderr);
    return EXIT_FAILURE;
  }
  quenlet::CardDirectoryDonor donor(std::filesystem::path(home) / "Library/Contacts/Cards");
  return quenlet::runDonorExtension(donor);
}
