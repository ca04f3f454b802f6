#include "platform/contacts/PersonNameComponents.h"

#include <gtest/gtest.h>

#include "platform/contacts/Contact.h"

namespace quenlet {
namespace {

TEST(PersonNameComponentsTest, IsRebuiltFromItsDictionary) {
  const PersonNameComponents full{"Dr.", "Ann", "B.", "Lee", "PhD", "Annie"};
  const PersonNameComponents sparse{.givenName = "", .nickname = "An"};
  for (const auto& name : {full, sparse, PersonNameComponents()}) {
    EXPECT_EQ(PersonNameComponents::componentsWithDictionary(name.dictionaryRepresentation()),
              name);
  }
  EXPECT_EQ(sparse.dictionaryRepresentation(),
            (PropertyListDictionary{{"givenName", ""}, {"nickname", "An"}}));
  EXPECT_EQ(PersonNameComponents::componentsWithDictionary({{"givenName", 1}, {"age", "9"}}),
            PersonNameComponents());
}

TEST(PersonNameComponentsTest, AbsentEqualsOnlyAbsent) {
  EXPECT_EQ((PersonNameComponents{.givenName = "Zo\u00eb"}),
            (PersonNameComponents{.givenName = "Zoe\u0308"}));
  EXPECT_FALSE((PersonNameComponents{.givenName = ""}) == PersonNameComponents());
  EXPECT_FALSE((PersonNameComponents{.givenName = "Ann"}) ==
               (PersonNameComponents{.givenName = "ann"}));
  EXPECT_FALSE((PersonNameComponents{.givenName = "Ann"}) ==
               (PersonNameComponents{.middleName = "Ann"}));
}

TEST(PersonNameComponentsTest, TakesTheFieldsOfAContactThatAreSet) {
  ContactFields fields;
  fields.namePrefix = "Dr.";
  fields.familyName = "Lee";
  fields.nickname = "Annie";
  EXPECT_EQ(PersonNameComponents::componentsForContact(Contact(fields)),
            (PersonNameComponents{.namePrefix = "Dr.", .familyName = "Lee", .nickname = "Annie"}));
  EXPECT_EQ(PersonNameComponents::componentsForContact(Contact()), PersonNameComponents());
}

}  // namespace
}  // namespace quenlet
