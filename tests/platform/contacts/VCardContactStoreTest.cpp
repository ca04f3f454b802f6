#include "platform/contacts/VCardContactStore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/contacts/VCard.h"
#include "tests/platform/contacts/CardDescription.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class VCardContactStoreTest : public testing::Test {
 protected:
  void write(const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

  std::string fetched(const std::vector<KeyDescriptor>& keys) {
    const auto contact = store._crossPlatformUnifiedMeContactWithKeysToFetch(keys);
    if (contact.isLeft()) return described({.contact = *contact.left()});
    return contact.right()->domain() + " " + std::to_string(contact.right()->code());
  }
  // The error of a fetch. Clears the path for the next one.
  std::string failure() {
    const std::string error = fetched({});
    std::filesystem::remove_all(path);
    return error;
  }

  const TemporaryDirectory directory;
  const std::filesystem::path path = directory.path() / "me.vcf";
  VCardContactStore store{path};
};

TEST_F(VCardContactStoreTest, FillsOnlyTheFieldsAskedForFromTheFileAsItIs) {
  write("BEGIN:VCARD\nVERSION:3.0\nFN:Bo\nEND:VCARD\n");
  EXPECT_EQ(fetched({ContactGivenNameKey}), "|Bo||||");
  write(
      "BEGIN:VCARD\nVERSION:3.0\nN:F;G;M;P;S\nNICKNAME:K\nEMAIL:a@example.com\nTEL:112\n"
      "ADR;CC=de:;\nPHOTO:data:,x\nEND:VCARD\nBEGIN:VCARD\nVERSION:3.0\nFN:Other\nEND:VCARD\n");
  const std::pair<std::vector<KeyDescriptor>, const char*> cases[] = {
      {{}, ""},
      {{ContactGivenNameKey, ContactFamilyNameKey, ContactEmailAddressesKey},
       "|G||F|| E(:a@example.com)"},
      {{KeyDescriptor::namePrefix, KeyDescriptor::imageData}, "P||||| P(x)"},
      {{KeyDescriptor::middleName, ContactPostalAddressesKey}, "||M||| A(:|||||||de)"},
      {{KeyDescriptor::nameSuffix, ContactPhoneNumbersKey, KeyDescriptor::nickname},
       "||||S|K T(:112)"},
  };
  for (const auto& [keys, expected] : cases) EXPECT_EQ(fetched(keys), expected);
}

TEST_F(VCardContactStoreTest, RefusesWhatIsNoCardFileWithoutWaiting) {
  const std::string invalid = "ovaro.quenlet.contact-error 2";
  EXPECT_EQ(failure(), "ovaro.quenlet.contact-error 1") << "no file";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(failure(), invalid) << "FIFO";
  std::filesystem::create_symlink(path, path);
  EXPECT_EQ(failure(), "posix-error " + std::to_string(ELOOP)) << "link to itself";
  write("BEGIN:VCARD\nVERSION:2.1\nEND:VCARD\n");
  EXPECT_EQ(failure(), "ovaro.quenlet.contact-error 3") << "old version";
  write("");
  std::filesystem::resize_file(path, std::uintmax_t{1} << 40);
  EXPECT_EQ(failure(), invalid) << "a file of a tebibyte";
}

}  // namespace
}  // namespace quenlet
