#include "platform/contacts/Contact.h"

#include <gtest/gtest.h>

#include <functional>

namespace quenlet {
namespace {

using Change = std::function<void(ContactFields&)>;

ContactFields fieldsWith(const Change& change) {
  const auto origin =
      std::make_shared<const ValueOrigin>(ValueOrigin{"app", "1", std::nullopt, Date(1), Date(2)});
  ContactFields fields;
  fields.givenName = "Zo\u00eb";
  fields.emailAddresses.push_back(std::make_shared<const LabeledValue<std::string>>(
      LabeledValue<std::string>{"home", "zo\u00eb@example.com", {origin}}));
  fields.imageData = std::make_shared<const std::string>("image");
  change(fields);
  return fields;
}

Change withEntry(const std::string& label, const std::string& address, const char* cluster,
                 double expiration = 2) {
  return [=](ContactFields& fields) {
    ValueOrigin origin{"app", "1", std::nullopt, Date(1), Date(expiration)};
    if (cluster) origin.clusterIdentifier = cluster;
    fields.emailAddresses = {std::make_shared<const LabeledValue<std::string>>(
        LabeledValue<std::string>{label, address, {std::make_shared<const ValueOrigin>(origin)}})};
  };
}

TEST(ContactTest, EqualsByContent) {
  const struct {
    const char* name;
    Change change;
    bool equal;
  } cases[] = {
      {"the same", [](ContactFields&) {}, true},
      {"decomposed", withEntry("home", "zoe\u0308@example.com", nullptr), true},
      {"other label", withEntry("work", "zo\u00eb@example.com", nullptr), false},
      {"other address", withEntry("home", "zoe@example.com", nullptr), false},
      {"a cluster", withEntry("home", "zo\u00eb@example.com", ""), false},
      {"other expiration", withEntry("home", "zo\u00eb@example.com", nullptr, 3), false},
      {"no entry", [](ContactFields& fields) { fields.emailAddresses.clear(); }, false},
      {"null entry", [](ContactFields& fields) { fields.emailAddresses = {nullptr}; }, false},
      {"no image", [](ContactFields& fields) { fields.imageData = nullptr; }, false},
      {"suffix", [](ContactFields& fields) { fields.nameSuffix = "Jr."; }, false},
  };
  const ContactFields original = fieldsWith([](ContactFields&) {});
  for (const auto& [name, change, equal] : cases) {
    EXPECT_EQ(Contact(original) == Contact(fieldsWith(change)), equal) << name;
    EXPECT_EQ(Contact(fieldsWith(change)) == Contact(original), equal) << name;
  }
}

}  // namespace
}  // namespace quenlet
