#include "foreign/Mailbox.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

TEST(MailboxTest, TellsTheOwnersAddressesAndNamesFromOthers) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"ann@example.org", "ann@example.org", "none"},
      {" Ann Berg <ann@example.org> ", "ann@example.org", "Ann|Berg"},
      {"\"Berg, Ann\" <ann@example.org>", "ann@example.org", "Ann|Berg"},
      {"b@example.org <ann@example.org>", "ann@example.org", "none"},
      {"Ann Berg", "none", "Ann|Berg"},
      {"Ann", "none", "none"},
      {"rhartwell", "none", "none"},
      {"Ann Berg <>", "none", "Ann|Berg"},
      {"ann@localhost", "none", "none"},
      {"ann@example.org berg@example.org", "none", "none"},
      {"ann+shop@example.org", "none", "none"},
      {"No-Reply@example.org", "none", "none"},
      {"1+ann@users.noreply.example.org", "none", "none"},
      {"Ann\x1B[2J Berg", "none", "none"},
      {"Ann \u202EBerg", "none", "none"},
  };
  for (const auto& [text, address, expected] : rows) {
    const auto found = fullName(text);
    EXPECT_EQ(personalAddress(text).value_or("none"), address) << text;
    EXPECT_EQ(found ? *found->givenName + "|" + *found->familyName : "none", expected) << text;
  }
  EXPECT_EQ(fullName("Dr. Ann Mary \"Annie\" Berg Jr."),
            std::optional(Name{"Dr.", "Ann", "Mary", "Berg", "Jr.", "Annie"}));
  EXPECT_EQ(splitMailboxes(R"(a, "b, \"c" <d,e>, (f, (g), h) i,, )"),
            std::vector<std::string>({"a", R"("b, \"c" <d,e>)", "(f, (g), h) i"}));
}

}  // namespace
}  // namespace quenlet
