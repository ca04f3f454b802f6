#include "platform/accounts/Account.h"

#include <gtest/gtest.h>

#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

TEST(AccountTest, IsRebuiltFromItsPropertyList) {
  const Account accounts[] = {
      {.identifier = "A1"},
      {.identifier = "A1",
       .accountType = AccountType{"ovaro.account.jabber"},
       .username = "ann@example.com",
       .isActive = true,
       .enabledDataclasses = {"calendars", "mail"},
       .properties = {{"ovaroId", 7}, {"principals", PropertyListDictionary{{"a", 1.5}}}}},
  };
  for (const Account& account : accounts) {
    EXPECT_EQ(Account::initWithPropertyListRepresentation(account.propertyListRepresentation()),
              account);
  }
}

TEST(AccountTest, TakesOnlyWellFormedRecords) {
  const std::pair<PropertyListDictionary, bool> cases[] = {
      {{{"identifier", "A1"}, {"unknown", 1}}, true},
      {{}, false},
      {{{"identifier", 1}}, false},
      {{{"identifier", "A1"}, {"type", 1}}, false},
      {{{"identifier", "A1"}, {"username", Data{"ann"}}}, false},
      {{{"identifier", "A1"}, {"active", 1}}, false},
      {{{"identifier", "A1"}, {"dataClasses", PropertyListArray{"mail", 1}}}, false},
      {{{"identifier", "A1"}, {"properties", PropertyListArray()}}, false},
  };
  for (const auto& [entries, taken] : cases) {
    EXPECT_EQ(Account::initWithPropertyListRepresentation(entries).has_value(), taken)
        << PropertyListSerializer::dataWithObject(entries).left();
  }
}

}  // namespace
}  // namespace quenlet
