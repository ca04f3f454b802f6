#include "storage/DonationPersistence.h"

#include <cmath>

#include "platform/foundation/PropertyListSerializer.h"
#include "tests/support/DonationFactory.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/SteeredDataProxy.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using Entries = PropertyListDictionary;

class DonationPersistenceTest : public testing::Test {
 protected:
  void write(const char* name, const PropertyList& contents) const {
    writeFile(directory / name, PropertyListSerializer::dataWithObject(contents).value());
  }
  [[nodiscard]] std::string read(const char* name) const { return readFile(directory / name); }
  [[nodiscard]] Future<bool> store(DonationValues values) {
    return persistence.storeWithAllValues(listOf(std::move(values)));
  }
  [[nodiscard]] std::string loadedIdentifiers() {
    return identifiersOf(persistence.loadDonations().result().value());
  }

  const TemporaryHome home;
  const std::filesystem::path directory = home / "Library/Contacts/Donations";
  const std::shared_ptr<SteeredDataProxy> files = std::make_shared<SteeredDataProxy>();
  DonationPersistence persistence{files};
};

// What donations.plist beside this file holds: one of each kind, with every key that there is.
const DonationValues goldenValues = {
    named({"Dr.", "Zo\u00eb", "", "Berg & Tal", "<PhD>", "Z"}, from("com.example.a", "1", "c 1")),
    email("zoe@example.org", from("com.example.b", "2", "", Date(1777777777.125)), "work"),
    phone("+49 (0)30 1;ext=2", from("com.example.c", "3", std::nullopt, Date(-0.1)), "cell"),
    postal({"Allee 1\nHof", "Mitte", "Ulm", "Donau", "BW", "089", "DE-land", "de"},
           from("com.example.d", "4"), PostalAddressStyle::abbreviated),
    image(std::string("\0\xff\x10", 3), from("com.example.e", "5", std::nullopt, Date(7)))};
TEST_F(DonationPersistenceTest, ReadsAndWritesTheFormThatOtherBuildsDo) {
  EXPECT_EQ(persistence.loadDonations().result(), Result<DonationValues>::success({}));
  EXPECT_FALSE(std::filesystem::exists(directory));
  const std::string goldenText = goldenFile("tests/storage/donations.plist");
  EXPECT_EQ(store(goldenValues).result(), Result<bool>::success(true));
  EXPECT_EQ(read("donations.plist"), goldenText);
  EXPECT_TRUE(std::filesystem::exists(directory / "CACHEDIR.TAG"));

  // A blank at the end is one of many ways to miss the form; then a record keeps a text of its own.
  for (const std::string ending : {"", " "}) {
    writeFile(directory / "donations.plist", goldenText + ending);
    const DonationValues loaded = persistence.loadDonations().result().value();
    ASSERT_EQ(loaded.size(), goldenValues.size());
    for (std::size_t i = 0; i < loaded.size(); ++i) EXPECT_EQ(*loaded[i], *goldenValues[i]) << i;
    const std::string_view first = *loaded[0]->propertyListText();
    EXPECT_EQ(first.data() + first.size() == loaded[1]->propertyListText()->data(), ending.empty())
        << "one stands behind the other, as in the file";
  }
  EXPECT_EQ(store({}).result(), Result<bool>::success(true));
  EXPECT_EQ(PropertyListSerializer::objectWithData(read("donations.plist")).value(),
            PropertyList(Entries{{"donations", PropertyListArray{}}}));

  const ExtensionVersions versions{{"app", 3}, {"other", -1}};
  EXPECT_EQ(persistence.storeWithExtensionVersions(versions).result(), Result<bool>::success(true));
  EXPECT_EQ(PropertyListSerializer::objectWithData(read("bundle_versions.plist")).value(),
            PropertyList(Entries{{"versions", Entries{{"app", 3}, {"other", -1}}}}));
  EXPECT_EQ(persistence.loadExtensionVersions().result().value(), versions);
}

TEST_F(DonationPersistenceTest, ReadsWhatItCanAndKeepsTheBytesOfADamagedFile) {
  const PropertyList a = email("a@x", from("app", "a"))->propertyListRepresentation();
  const PropertyList b = email("b@x", from("app", "b"))->propertyListRepresentation();
  const std::tuple<const char*, PropertyList, const char*, bool> rows[] = {
      {"whole", Entries{{"donations", PropertyListArray{a, b}}}, "a b", false},
      {"a bad record", Entries{{"donations", PropertyListArray{a, Entries{}, b}}}, "a b", true},
      {"an element of another type", Entries{{"donations", PropertyListArray{a, 1}}}, "", true},
      {"a list on top", PropertyListArray{a}, "", true},
      {"no list", Entries{{"donations", Entries{{"a", a}}}}, "", true},
      {"another key", Entries{{"donation", PropertyListArray{a}}}, "", true},
  };
  for (const auto& [name, contents, expected, kept] : rows) {
    std::filesystem::remove_all(directory);
    write("donations.plist", contents);
    const std::string bytes = read("donations.plist");
    EXPECT_EQ(loadedIdentifiers(), expected) << name;
    EXPECT_EQ(read("donations.plist.damaged-1"), kept ? bytes : "") << name;
  }
  // Another file: what is kept is a link to the damaged one.
  std::filesystem::remove(directory / "donations.plist");
  writeFile(directory / "donations.plist", "no property list");
  EXPECT_EQ(loadedIdentifiers(), "");
  EXPECT_EQ(read("donations.plist.damaged-2"), "no property list");
}

TEST_F(DonationPersistenceTest, KeepsASoundFileBesideTheNextOneWhenAsked) {
  ASSERT_TRUE(store({email("a@x", from("app", "a"))}).result().ok());
  const std::string sound = read("donations.plist");
  persistence.keepStoredDonations();
  ASSERT_TRUE(store({}).result().ok());
  EXPECT_EQ(read("donations.plist.damaged-1"), sound);
}

TEST_F(DonationPersistenceTest, TakesAnUnreadableFileForNoDamagedOne) {
  ASSERT_TRUE(store({email("a@x", from("app", "a"))}).result().ok());
  const std::string sound = read("donations.plist");
  files->failsReads = true;
  EXPECT_EQ(loadedIdentifiers(), "");
  EXPECT_FALSE(std::filesystem::exists(directory / "donations.plist.damaged-1"));
  files->failsReads = false;
  EXPECT_EQ(loadedIdentifiers(), "a");
  ASSERT_TRUE(store({}).result().ok());
  EXPECT_EQ(read("donations.plist.damaged-1"), sound) << "what was taken for empty is replaced";
}

TEST_F(DonationPersistenceTest, SkipsUnreadableRejectionsAndVersions) {
  const Entries rejection{{"emailAddress", "a@x"}, {"label", "h"}};
  write("rejections.json", Entries{{"donations", PropertyListArray{Entries{}, rejection}}});
  write("bundle_versions.plist", Entries{{"versions", Entries{{"a", 3}, {"b", "3"}, {"c", 3.0}}}});
  EXPECT_EQ(persistence.loadRejections().result().value(),
            std::vector{Value::emailAddress("a@x", "h")});
  EXPECT_EQ(persistence.loadExtensionVersions().result().value(), (ExtensionVersions{{"a", 3}}));
}

TEST_F(DonationPersistenceTest, TellsWhyAStoreFailedAndLeavesTheFile) {
  files->failsWrites = true;
  EXPECT_EQ(store({}).result().error()->code(), ENOSPC);
  EXPECT_FALSE(std::filesystem::exists(directory / "CACHEDIR.TAG"));
  files->failsWrites = false;
  std::filesystem::create_directories(directory / "CACHEDIR.TAG");  // in the backup mark's way
  ASSERT_TRUE(store({email("a@x")}).result().ok());
  const std::string before = read("donations.plist");
  const auto failure = [](const Future<bool>& of) { return of.result().error()->description(); };
  const std::string refused = "ovaro.quenlet.donation-error 501: ";
  const auto never = from("app", "never", std::nullopt, Date(std::nan("")));
  for (const auto& unwritable : {email("\xff@x"), email("\x01"), email("a@x", never)}) {
    EXPECT_EQ(failure(store({unwritable})), refused + "a value cannot be serialised");
  }
  EXPECT_EQ(failure(persistence.storeWithExtensionVersions({{"\x01", 1}})),
            refused + "a value cannot be serialised");
  const DonationValues large(200, image(std::string(4 << 20, 'x')));
  EXPECT_EQ(failure(store(large)),
            refused + "the donations together are larger than their file may be");
  EXPECT_EQ(read("donations.plist"), before);
}

}  // namespace
}  // namespace quenlet
