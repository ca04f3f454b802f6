#include "platform/contacts/VCardContactStore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/contacts/VCard.h"
#include "tests/platform/contacts/CardDescription.h"

namespace quenlet {
namespace {

class VCardContactStoreTest : public testing::Test {
 protected:
  VCardContactStoreTest() {
    std::string pattern = testing::TempDir() + "/quenlet-contacts-XXXXXX";
    directory = mkdtemp(pattern.data());
    path = directory / "me.vcf";
  }
  ~VCardContactStoreTest() override { std::filesystem::remove_all(directory); }

  void write(const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

  std::string fetched(const std::vector<KeyDescriptor>& keys) {
    VCardContactStore store(path);
    const auto contact = store._crossPlatformUnifiedMeContactWithKeysToFetch(keys);
    if (!contact.isLeft()) {
      return contact.right()->domain() + " " + std::to_string(contact.right()->code());
    }
    return described({.contact = *contact.left()});
  }

  std::filesystem::path directory;
  std::filesystem::path path;
};

TEST_F(VCardContactStoreTest, FillsOnlyTheFieldsAskedFor) {
  write(
      "BEGIN:VCARD\nVERSION:3.0\nN:F;G;M;P;S\nNICKNAME:K\nEMAIL:a@example.com\nTEL:112\n"
      "ADR;CC=de:;\nPHOTO:data:,x\nEND:VCARD\nBEGIN:VCARD\nVERSION:3.0\nFN:Other\nEND:VCARD\n");
  const struct {
    std::vector<KeyDescriptor> keys;
    const char* expected;
  } cases[] = {
      {{}, ""},
      {{ContactGivenNameKey, ContactFamilyNameKey, ContactEmailAddressesKey},
       "|G||F|| E(:a@example.com)"},
      {{KeyDescriptor::namePrefix, KeyDescriptor::middleName}, "P||M|||"},
      {{KeyDescriptor::nameSuffix, KeyDescriptor::nickname}, "||||S|K"},
      {{ContactPhoneNumbersKey}, " T(:112)"},
      {{ContactPostalAddressesKey}, " A(:|||||||de)"},
      {{KeyDescriptor::imageData}, " P(x)"},
  };
  for (const auto& [keys, expected] : cases) EXPECT_EQ(fetched(keys), expected);
}

TEST_F(VCardContactStoreTest, ReadsTheFileAnewAtEachFetch) {
  const std::vector<KeyDescriptor> keys = {ContactGivenNameKey};
  VCardContactStore store(path);
  for (const std::string name : {"Ann", "Bo"}) {
    write("BEGIN:VCARD\nVERSION:3.0\nFN:" + name + "\nEND:VCARD\n");
    EXPECT_EQ(store._crossPlatformUnifiedMeContactWithKeysToFetch(keys).left()->givenName(), name);
  }
}

TEST_F(VCardContactStoreTest, RefusesWhatIsNoCardFileWithoutWaiting) {
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 1") << "no file";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 2") << "FIFO";
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 2") << "directory";
  std::filesystem::remove(path);
  std::filesystem::create_symlink(path, path);
  EXPECT_EQ(fetched({}), "posix-error " + std::to_string(ELOOP)) << "link to itself";
  std::filesystem::remove(path);
  write("");
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 2") << "empty file";
  write("BEGIN:VCARD\nVERSION:2.1\nEND:VCARD\n");
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 3") << "old version";
  std::filesystem::resize_file(path, std::uintmax_t{1} << 40);
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 2") << "a file of a tebibyte";
}

}  // namespace
}  // namespace quenlet
