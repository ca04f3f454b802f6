#include "tools/owner/Backup.h"

#include <gtest/gtest.h>

#include "platform/foundation/PropertyListSerializer.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

Backup good() {
  Account account{.identifier = "work", .username = "ann", .isActive = true};
  account.properties = {{"host", "example.org"}};
  return {.made = Date(7.5),
          .donations = {email("ann@example.org", from("app", "a")),
                        image(std::string("\0\xFF", 2), from("app", "b", "c", Date(2.25)))},
          .feedback = {{"me", PropertyListArray{PropertyListDictionary{{"status", "rejected"}}}}},
          .accounts = {account},
          .ownCard = std::string("BEGIN:VCARD\0\x80", 13),
          .pseudonymKey = "0123456789abcdef"};
}

PropertyListDictionary entriesOf(const Backup& backup) {
  return *PropertyListSerializer::objectWithData(backup.text().value()).value().dictionary();
}

TEST(BackupTest, ReadsBackWhatItWrote) {
  const Backup read = Backup::read(good().text().value()).value();
  EXPECT_EQ(entriesOf(read), entriesOf(good()));
  EXPECT_EQ(*read.donations.at(1), *good().donations[1]);
  EXPECT_EQ(read.ownCard, good().ownCard);
  const Backup empty = Backup::read(Backup().text().value()).value();
  EXPECT_FALSE(empty.ownCard || empty.pseudonymKey);
}

TEST(BackupTest, TakesNothingOfWhatIsNotWhollyAnExport) {
  const PropertyListDictionary record = good().donations[0]->propertyListRepresentation();
  const PropertyListDictionary account = good().accounts[0].propertyListRepresentation();
  const auto with = [](PropertyListDictionary changed, const char* key, PropertyList value) {
    changed.insert_or_assign(key, std::move(value));
    return PropertyListArray{std::move(changed)};
  };
  const std::tuple<const char*, PropertyList, const char*> rows[] = {
      {"version", "1", "it has no version"},
      {"version", 2, "this export has version 2, and this program reads version 1"},
      {"made", 7, "it has no date"},
      {"donations", PropertyListDictionary(), "it has no list of donations"},
      {"donations", PropertyListArray{record, 4}, "donation 2 cannot be read"},
      {"donations", with(record, "origin", "app"), "donation 1 cannot be read"},
      {"donations", with(record, "emailAddress", std::string(65'537, 'x')),
       "donation 1: emailAddress is larger than 64 KiB"},
      {"donations", PropertyListArray{record, record}, "donation 2 has the identifier of"},
      {"feedback", "none", "it has no feedback"},
      {"feedback", PropertyListDictionary{{"me", 4}}, "its feedback is not a list"},
      {"accounts", 4, "it has no list of accounts"},
      {"accounts", with(account, "active", "yes"), "account 1 cannot be read"},
      {"accounts", with(account, "identifier", "../x"), "account 1: an account's identifier has"},
      {"accounts", with(account, "username", std::string(1 << 20, 'x')), "account 1: write w"},
      {"accounts", PropertyListArray{account, account}, "account 2 has the identifier of"},
      {"ownCard", "BEGIN:VCARD", "its own card is not data, or is too large"},
      {"ownCard", Data{std::string((32 << 20) + 1, 'x')}, "its own card is not data"},
      {"pseudonymKey", Data{"0123"}, "its key for pseudonyms is not a key"},
  };
  for (const auto& [key, value, sentence] : rows) {
    PropertyListDictionary entries = entriesOf(good());
    entries.insert_or_assign(key, value);
    const auto read = Backup::read(PropertyListSerializer::dataWithObject(entries).value());
    ASSERT_FALSE(read.ok()) << sentence;
    EXPECT_NE(read.error()->debugDescription().find(sentence), std::string::npos)
        << read.error()->debugDescription();
  }
  EXPECT_FALSE(Backup::read("").ok());
  EXPECT_FALSE(Backup::read("<plist version=\"1.0\"><array/></plist>").ok());
}

}  // namespace
}  // namespace quenlet
