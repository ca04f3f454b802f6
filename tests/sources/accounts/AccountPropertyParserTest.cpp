#include "sources/accounts/AccountPropertyParser.h"

#include "sources/accounts/AccountChangeAnalyzer.h"
#include "tests/support/RecordingAgent.h"
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
      {{{"firstName", "\x01"}}, ""},
      {{{"lastName", ""}, {"FullUserName", "Bo Berg"}}, "- "},
      {{{"firstName", 1}, {"lastName", "Lee"}, {"ZeltPropertyFullName", "Bo Berg"}}, "- Lee"},
      {{{"ZeltPropertyFullName", "Bo Berg"}, {"FullUserName", "Cy Cole"}}, "Bo Berg"},
      {{{"ZeltPropertyFullName", ""}, {"FullUserName", "Cy Cole"}}, "Cy Cole"},
      {{{"FullUserName", "(Bo)"}, {"CalDAVPrincipals", principals("FullName")}}, "Cy Cole"},
      {{{"kCalDAVPrincipalsKey", principals("ZeltPropertyFullName")}}, "Cy Cole"},
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
  const char* const jabber = "ovaro.account.jabber";
  const std::tuple<std::optional<std::string>, const char*, PropertyListDictionary, const char*>
      rows[] = {
          {"Ann (ann@x.org)", "", all, "<ann@x.org>"},
          {"ann", "", all, "<Primary <p@x.org>>"},
          {{}, "", allWith("primaryEmail", "p@id.ovaro.services"), "<i@x.org>"},
          {{}, "", allWith("primaryEmail", "p@id.ovaro.Services"), "<p@id.ovaro.Services>"},
          {{}, "", allWith("primaryEmail", Data{"p@x.org"}), "<i@x.org>"},
          {{}, "", allWith("ovaroId", 7), "<i@x.org>"},
          {{}, "", allWith("ovaroId", "7"), "<Primary <p@x.org>>"},
          {{}, "", {{"userName", "(u@x.org)"}, {"qualifiedUsername", "q@x.org"}}, "<u@x.org>"},
          {{},
           "",
           {{"qualifiedUsername", "q@x.org"}, {"RuvoAccountEmailAddress", "r"}},
           "<q@x.org>"},
          {"ann@x.org", jabber, all, "<Primary <p@x.org>>"},
          {"ann@x.org", jabber, allWith("primaryEmail", 1), ""},
          {"ann@x.org", "ovaro.account.Jabber", {}, "<ann@x.org>"},
      };

  for (const auto& [username, type, properties, email] : rows) {
    Account account = withProperties(properties);
    account.username = username;
    if (*type != '\0') account.accountType = AccountType{type};
    EXPECT_EQ(parsed(account), email);
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
}

class AccountChangeAnalyzerTest : public EnvironmentTest {
 protected:
  AccountPtr account(bool isActive, bool hasMail, std::optional<std::string> username = {},
                     const char* type = "ovaro.account.IMAP") {
    Account made{"A1", AccountType{type},     std::move(username), isActive,
                 {},   {{"firstName", "Ann"}}};
    if (hasMail) made.enabledDataclasses = {"mail"};
    made.accountStore = environment->accounts;
    return std::make_shared<const Account>(std::move(made));
  }

  std::string effectOf(const AccountPtr& from, const AccountPtr& to) {
    AccountChangeAnalyzer analyzer(from, to, store, environment->loggers->accountLogger());
    analyzer.collectRemovals();
    analyzer.collectDonations();
    analyzer.keepReDonatedIdentifiers();
    analyzer.applyChanges();
    for (const auto& value : analyzer.donations) {
      EXPECT_EQ(value->origin().expirationDate,
                environment->schedulers.now().addingSeconds(7776000));
    }
    return store->takeCalls();
  }

  const std::shared_ptr<RecordingAgent> store = std::make_shared<RecordingAgent>();
};

TEST_F(AccountChangeAnalyzerTest, DonatesRelevantAccountsAndRemovesTheRest) {
  const AccountPtr both = account(false, true, "a@x.org");
  const AccountPtr nameOnly = account(false, true);
  const AccountPtr unused = account(true, false);
  const AccountPtr smtp = account(true, true, {}, "ovaro.account.SMTP");
  const AccountPtr active = account(true, false, {}, "ovaro.account.MelodaStore");
  const AccountPtr off = account(false, true, {}, "ovaro.account.MelodaStore");
  const std::string removal = "removeIdentifiers name:A1 email:A1;";
  const std::tuple<AccountPtr, AccountPtr, std::string> cases[] = {
      {nullptr, nullptr, ""},         {nullptr, both, "donate 2;"},
      {both, both, "donate 2;"},      {both, nameOnly, "donate 1;removeIdentifiers email:A1;"},
      {nameOnly, nullptr, removal},   {both, smtp, removal},
      {nullptr, active, "donate 1;"}, {active, off, removal},
      {nullptr, unused, ""},
  };
  for (const auto& [from, to, effect] : cases) EXPECT_EQ(effectOf(from, to), effect);

  static_cast<void>(takeTrace());
  store->error = makeError("domain", 7);
  EXPECT_EQ(effectOf(both, nameOnly), "donate 1;removeIdentifiers email:A1;");
  EXPECT_EQ(takeTrace().size(), 2U) << "both failures are logged";
}

}  // namespace
}  // namespace quenlet
