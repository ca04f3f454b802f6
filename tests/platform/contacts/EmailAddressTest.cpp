#include "platform/contacts/EmailAddress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quenlet {
namespace {

using testing::ElementsAre;

TEST(EmailAddressTest, NormalFormIsItsOwnNormalForm) {
  const std::pair<const char*, const char*> cases[] = {
      {" \r\n\tAnn.Lee+x@Example.COM ", "ann.lee+x@example.com"},
      {"mailto:MailTo: Mailto:a@b", "a@b"},
      {"mailto", "mailto"},
      {"\u00C9va@example.com", "\u00E9va@example.com"},
  };
  for (const auto& [address, normal] : cases) {
    EXPECT_EQ(EmailAddressNormalize(address), normal);
    EXPECT_EQ(EmailAddressNormalize(normal), normal);
  }
}

TEST(EmailAddressTest, ExpandsToTheSameMailboxUnderEveryAlias) {
  const auto expanded = EmailAddressExpandAliasedDomains;
  EXPECT_THAT(expanded("ann@GoogleMail.com "), ElementsAre("ann@GoogleMail.com ", "ann@gmail.com"));
  EXPECT_THAT(expanded("\"a@gmail.com\"@pm.me"),
              ElementsAre("\"a@gmail.com\"@pm.me", "\"a@gmail.com\"@proton.me",
                          "\"a@gmail.com\"@protonmail.com", "\"a@gmail.com\"@protonmail.ch"));
  for (const char* alone : {"", "ann@", "ann@example.com", "gmail.com", "a@sub.gmail.com"}) {
    EXPECT_THAT(expanded(alone), ElementsAre(alone));
  }
}

}  // namespace
}  // namespace quenlet
