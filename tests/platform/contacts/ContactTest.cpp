#include "platform/contacts/Contact.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

std::shared_ptr<const LabeledValue<std::string>> entry(const char* label, const char* address,
                                                       double expiration = 2) {
  const ValueOrigin origin{"app", "1", std::nullopt, Date(1), Date(expiration)};
  return std::make_shared<const LabeledValue<std::string>>(
      LabeledValue<std::string>{label, address, {std::make_shared<const ValueOrigin>(origin)}});
}

TEST(ContactTest, EqualsByContent) {
  const std::pair<LabeledValues<std::string>, bool> cases[] = {
      {{entry("home", "zoe\u0308@example.com")}, true},
      {{entry("work", "zo\u00eb@example.com")}, false},
      {{entry("home", "zoe@example.com")}, false},
      {{entry("home", "zo\u00eb@example.com", 3)}, false},
      {{nullptr}, false},
      {{}, false},
  };
  ContactFields original, changed;
  original.emailAddresses = {entry("home", "zo\u00eb@example.com")};
  for (const auto& [entries, equal] : cases) {
    changed.emailAddresses = entries;
    EXPECT_EQ(Contact(original) == Contact(changed), equal);
    EXPECT_EQ(Contact(changed) == Contact(original), equal);
  }
  changed = original;
  changed.imageData = std::make_shared<const std::string>("image");
  EXPECT_FALSE(Contact(original) == Contact(changed));
}

}  // namespace
}  // namespace quenlet
