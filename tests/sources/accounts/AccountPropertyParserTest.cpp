#include "sources/accounts/AccountPropertyParser.h"

#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

const Date donated(10);
const Date expires(20);

Account withProperties(PropertyListDictionary properties) {
  return {.identifier = "A1", .properties = std::move(properties)};
}

// "given family <address>" of the account's values, whose origins are checked.
std::string parsed(const Account& account) {
  std::string text;
  for (const auto& value : AccountPropertyParser(donated, expires).parseWithAccount(account)) {
    const std::string kind = value->isName() ? "name:" : "email:";
    const std::string& id = account.identifier;
    EXPECT_EQ(value->origin(),
              (DonationOrigin{AccountsBundleIdentifier, kind + id, id, donated, expires}));
    if (value->isName()) {
      const auto name = std::get<PersonNameComponents>(value->value().cases());
      text += name.givenName.value_or("-") + " " + name.familyName.value_or("-");
    } else {
      EXPECT_EQ(value->emailEntry()->label, "home");
      text += "<" + value->emailEntry()->value + ">";
    }
  }
  return text;
}

TEST(AccountPropertyParserTest, FindsTheNameByTheFirstRuleThatGivesOne) {
  const auto principals = [](const char* nameKey) {
    return PropertyListDictionary{
        {"1", PropertyListDictionary{{"other", "x"}}},
        {"2", PropertyListDictionary{{nameKey, 5}}},
        {"3", PropertyListDictionary{{nameKey, "Cy Cole"}}},
        {"4", PropertyListDictionary{{nameKey, "Di Dorn"}}},
    };
  };
  const PropertyListDictionary mixed = {{"1", PropertyListDictionary{{"FullName", "Cy Cole"}}},
                                        {"2", "text"}};
  const std::pair<PropertyListDictionary, const char*> cases[] = {
      {{}, ""},
      {{{"firstName", "Ann"}}, "Ann -"},
      {{{"firstName", "\x01"}}, ""},
      {{{"lastName", ""}, {"FullUserName", "Bo Berg"}}, "- "},
      {{{"firstName", 1}, {"lastName", "Lee"}, {"ZeltPropertyFullName", "Bo Berg"}}, "- Lee"},
      {{{"ZeltPropertyFullName", "Bo Berg"}, {"FullUserName", "Cy Cole"}}, "Bo Berg"},
      {{{"ZeltPropertyFullName", ""}, {"FullUserName", "Cy Cole"}}, "Cy Cole"},
      {{{"FullUserName", "(Bo)"}, {"CalDAVPrincipals", principals("FullName")}}, "Cy Cole"},
      {{{"kCalDAVPrincipalsKey", principals("ZeltPropertyFullName")}}, "Cy Cole"},
      {{{"kCalDAVPrincipalsKey", principals("FullName")}}, ""},
      {{{"kCalDAVPrincipalsKey", "Bo"}, {"CalDAVPrincipals", mixed}}, ""},
  };
  for (const auto& [properties, name] : cases) EXPECT_EQ(parsed(withProperties(properties)), name);
}

TEST(AccountPropertyParserTest, FindsTheAddressByTheFirstRuleThatGivesOne) {
  const PropertyListDictionary all = {{"primaryEmail", "Primary <p@x.org>"},
                                      {"IdentityEmailAddress", "mailto:i@x.org"},
                                      {"userName", "u@x.org"}};
  const auto allWith = [&](const char* key, PropertyList value) {
    PropertyListDictionary changed = all;
    changed.insert_or_assign(key, std::move(value));
    return changed;
  };
  struct Row {
    std::optional<std::string> username;
    const char* type;
    PropertyListDictionary properties;
    const char* email;
  };
  const char* const jabber = "ovaro.account.jabber";
  const Row rows[] = {
      {"Ann (ann@x.org)", "", all, "<ann@x.org>"},
      {"ann", "", all, "<Primary <p@x.org>>"},
      {{}, "", allWith("primaryEmail", "p@id.ovaro.services"), "<i@x.org>"},
      {{}, "", allWith("primaryEmail", "p@id.ovaro.Services"), "<p@id.ovaro.Services>"},
      {{}, "", allWith("primaryEmail", Data{"p@x.org"}), "<i@x.org>"},
      {{}, "", allWith("ovaroId", 7), "<i@x.org>"},
      {{}, "", allWith("ovaroId", "7"), "<Primary <p@x.org>>"},
      {{}, "", {{"userName", "(u@x.org)"}, {"qualifiedUsername", "q@x.org"}}, "<u@x.org>"},
      {{}, "", {{"qualifiedUsername", "q@x.org"}, {"RuvoAccountEmailAddress", "r"}}, "<q@x.org>"},
      {{}, "", {{"RuvoAccountEmailAddress", "r@x.org"}, {"userName", "u"}}, "<r@x.org>"},
      {"ann@x.org", jabber, all, "<Primary <p@x.org>>"},
      {"ann@x.org", jabber, allWith("primaryEmail", 1), ""},
      {"ann@x.org", "ovaro.account.Jabber", {}, "<ann@x.org>"},
  };
  for (const Row& row : rows) {
    Account account = withProperties(row.properties);
    account.username = row.username;
    if (*row.type != '\0') account.accountType = AccountType{row.type};
    EXPECT_EQ(parsed(account), row.email);
  }
}

using AccountComparisonTest = EnvironmentTest;

TEST_F(AccountComparisonTest, AccountsAreEqualByWhatTheyDonate) {
  const auto account = [](const char* username) {
    return std::make_shared<const Account>(
        Account{"A1", {}, username, true, {}, {{"firstName", "Ann"}}});
  };
  const auto isEqual = &AccountPropertyParser::isAccountEqualTo;
  EXPECT_TRUE(isEqual(nullptr, nullptr) && isEqual(account("a@x.org"), account("<a@x.org>")));
  EXPECT_FALSE(isEqual(account("a"), nullptr) || isEqual(account("a@x.org"), account("b@x.org")));
  EXPECT_EQ(parsed(*account("a@x.org")), "Ann -<a@x.org>") << "the name comes first";
}

}  // namespace
}  // namespace quenlet
