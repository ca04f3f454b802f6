#include "platform/contacts/PersonNameComponents.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

using Components = PersonNameComponents;

TEST(PersonNameComponentsTest, IsRebuiltFromItsDictionaryAndComparesCanonically) {
  for (const Components& name : {Components{"Dr.", "Ann", "B.", "Lee", "PhD", "Annie"},
                                 Components{.givenName = ""}, Components()}) {
    EXPECT_EQ(Components::componentsWithDictionary(name.dictionaryRepresentation()), name);
  }
  EXPECT_EQ((Components{.givenName = "", .nickname = "An"}.dictionaryRepresentation()),
            (PropertyListDictionary{{"givenName", ""}, {"nickname", "An"}}));
  EXPECT_EQ(Components::componentsWithDictionary({{"givenName", 1}, {"age", "9"}}), Components());
  EXPECT_EQ((Components{.givenName = "Zo\u00eb"}), (Components{.givenName = "Zoe\u0308"}));
  EXPECT_FALSE((Components{.givenName = ""}) == Components());
}

}  // namespace
}  // namespace quenlet
