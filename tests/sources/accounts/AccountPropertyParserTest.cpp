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

// "prefix given family <address>" of the account's values, whose origins are checked.
std::string parsed(const Account& account) {
  std::string text;
  for (const auto& value : AccountPropertyParser(donated, expires).parseWithAccount(account)) {
    const std::string kind = value->kind() == DonationKind::name ? "name:" : "email:";
    const std::string& id = account.identifier;
    EXPECT_EQ(value->decoded().origin,
              (DonationOrigin{AccountsBundleIdentifier, kind + id, id, donated, expires}));
    if (value->kind() == DonationKind::name) {
      const auto name = std::get<PersonNameComponents>(value->value().cases());
      if (name.namePrefix) text += *name.namePrefix + " ";
      text += name.givenName.value_or("-") + " " + name.familyName.value_or("-");
    } else {
      EXPECT_EQ(entryOf<std::string>(*value)->label, "home");
      text += "<" + entryOf<std::string>(*value)->value + ">";
    }
  }
  return text;
}

// An account with all of these, then without the first, and so on: what each of them yields.
Events parsedOneByOne(const std::vector<std::pair<const char*, PropertyList>>& properties,
                      const Account& account) {
  Events texts;
  for (auto first = properties.begin(); first != properties.end(); ++first) {
    Account shorter = account;
    for (const auto& [key, value] : std::vector(first, properties.end())) {
      shorter.properties.insert_or_assign(key, value);
    }
    texts.push_back(parsed(shorter));
  }
  return texts;
}

PropertyListDictionary principals(const char* nameKey, PropertyList third) {
  return {{"1", PropertyListDictionary{{"other", "x"}}},
          {"2", PropertyListDictionary{{nameKey, 5}}},
          {"3", PropertyListDictionary{{nameKey, std::move(third)}}},
          {"4", PropertyListDictionary{{nameKey, "Di Dorn"}}},
          {"5", PropertyListDictionary{{nameKey, "Ed Ende"}}}};
}

TEST(AccountPropertyParserTest, FindsTheNameByTheFirstRuleThatGivesOne) {
  EXPECT_EQ(parsedOneByOne({{"firstName", "Ann"},
                            {"lastName", "Lee"},
                            {"ZeltPropertyFullName", "Dr. Bo Berg"},
                            {"FullUserName", "Cy Cole"},
                            {"kCalDAVPrincipalsKey", principals("ZeltPropertyFullName", "")},
                            {"CalDAVPrincipals", principals("FullName", "Fay Falk")}},
                           withProperties({})),
            (Events{"Ann Lee", "- Lee", "Dr. Bo Berg", "Cy Cole", "Di Dorn", "Fay Falk"}));
  const std::pair<PropertyListDictionary, const char*> cases[] = {
      {{}, ""},
      {{{"firstName", "\x01"}}, "\x01 -"},
      {{{"firstName", ""}, {"FullUserName", "Bo Berg"}}, " -"},
      {{{"lastName", ""}, {"FullUserName", "Bo Berg"}}, "- "},
      {{{"firstName", 1}, {"lastName", "Lee"}}, "- Lee"},
      {{{"ZeltPropertyFullName", ""}, {"FullUserName", "(Cy)"}}, ""},
      {{{"kCalDAVPrincipalsKey", "Bo"}, {"CalDAVPrincipals", principals("name", "Cy Cole")}}, ""},
      {{{"CalDAVPrincipals",
         PropertyListDictionary{{"1", PropertyListDictionary{{"FullName", "Cy Cole"}}},
                                {"2", "text"}}}},
       ""},
  };
  for (const auto& [properties, name] : cases) EXPECT_EQ(parsed(withProperties(properties)), name);
}

TEST(AccountPropertyParserTest, FindsTheAddressByTheFirstRuleThatGivesOne) {
  const std::vector<std::pair<const char*, PropertyList>> all = {
      {"none", "n@x.org"},
      {"primaryEmail", "Primary <p@x.org>"},
      {"IdentityEmailAddress", "mailto:i@x.org"},
      {"userName", "(u@x.org)"},
      {"qualifiedUsername", "q@x.org"},
      {"RuvoAccountEmailAddress", "my r@x.org"}};
  Account account = withProperties({});
  account.username = "Ann (ann@x.org)";
  EXPECT_EQ(parsedOneByOne(all, account), Events(6, "<ann@x.org>"));
  account.accountType = AccountType{"ovaro.account.jabber"};
  const std::string primary = "<Primary <p@x.org>>";
  EXPECT_EQ(parsedOneByOne(all, account), (Events{primary, primary, "", "", "", ""}));
  account.accountType = AccountType{"ovaro.account.Jabber"};
  account.username = "ann";
  EXPECT_EQ(parsedOneByOne(all, account),
            (Events{primary, primary, "<i@x.org>", "<u@x.org>", "<q@x.org>", "<r@x.org>"}));

  const std::tuple<const char*, PropertyList, const char*> rows[] = {
      {"primaryEmail", "p@id.ovaro.services", "<i@x.org>"},
      {"primaryEmail", "p@grid.ovaro.services", "<i@x.org>"},
      {"primaryEmail", "p@d.ovaro.services", "<p@d.ovaro.services>"},
      {"primaryEmail", "p@id.ovaro.Services", "<p@id.ovaro.Services>"},
      {"primaryEmail", "p@id.ovaro.services.org", "<p@id.ovaro.services.org>"},
      {"primaryEmail", Data{"p@x.org"}, "<i@x.org>"},
      {"primaryEmail", "", "<>"},
      {"ovaroId", 7, "<i@x.org>"},
      {"ovaroId", "7", "<Primary <p@x.org>>"},
      {"ovaroId", 7.5, "<Primary <p@x.org>>"},
      {"ovaroId", true, "<Primary <p@x.org>>"},
  };
  for (const auto& [key, value, email] : rows) {
    account.properties = {all.begin(), all.end()};
    account.properties.insert_or_assign(key, value);
    EXPECT_EQ(parsed(account), email) << key;
  }
}

class AccountChangeAnalyzerTest : public EnvironmentTest {
 protected:
  AccountPtr account(bool isActive, bool hasMail, std::optional<std::string> username = {},
                     std::optional<std::string> type = "ovaro.account.IMAP") {
    Account made{"A1", AccountType{std::move(type)}, std::move(username), isActive,
                 {},   {{"firstName", "Ann"}}};
    if (hasMail) made.enabledDataclasses = {"mail"};
    made.accountStore = environment->accounts;
    return std::make_shared<const Account>(std::move(made));
  }
  static AccountPtr withoutStore(Account account) {
    account.accountStore.reset();
    return std::make_shared<const Account>(std::move(account));
  }

  // What is printed, then "donated identifiers: requests".
  std::string effectOf(const AccountPtr& from, const AccountPtr& to) {
    AccountChangeAnalyzer analyzer(from, to, store, logger);
    testing::internal::CaptureStdout();
    analyzer.collectRemovals();
    analyzer.collectDonations();
    analyzer.keepReDonatedIdentifiers();
    analyzer.applyChanges();
    const Date now = environment->schedulers.now();
    for (const auto& value : analyzer.donations) {
      EXPECT_EQ(value->decoded().origin.donationDate, now);
      EXPECT_EQ(value->decoded().origin.expirationDate, now.addingSeconds(7776000));
    }
    const std::string requests = store ? store->takeCalls() : "";
    return testing::internal::GetCapturedStdout() + identifiersOf(analyzer.donations) + ": " +
           requests;
  }

  std::shared_ptr<RecordingAgent> store = std::make_shared<RecordingAgent>();
  std::shared_ptr<AccountLogger> logger = environment->loggers->accountLogger();
};

TEST_F(AccountChangeAnalyzerTest, DonatesRelevantAccountsAndRemovesTheRest) {
  const AccountPtr both = account(false, true, "a@x.org");
  const AccountPtr unused = account(true, false);
  const AccountPtr smtp = account(true, true, {}, "ovaro.account.SMTP");
  const AccountPtr active = account(true, false, {}, "ovaro.account.MelodaStore");
  const AccountPtr off = account(false, true, {}, "ovaro.account.MelodaStore");
  const std::string removal = ": removeIdentifiers name:A1 email:A1;";
  const std::string name = "name:A1: donate 1;";
  const std::tuple<AccountPtr, AccountPtr, std::string> cases[] = {
      {both, both, "name:A1 email:A1: donate 2;"},
      {both, smtp, removal},
      {nullptr, account(true, true, {}, "ovaro.account.smtp"), name},
      {nullptr, account(false, true, {}, std::nullopt), name},
      {nullptr, active, name},
      {active, off, removal},
      {nullptr, unused, ": "},
      {nullptr, withoutStore(*unused),
       "Dead accountStore on account object! Ignoring account A1 of type ovaro.account.IMAP\n: "},
      {nullptr, withoutStore(*off), ": "},
      {nullptr, withoutStore(*both), "name:A1 email:A1: donate 2;"},
  };
  for (const auto& [from, to, effect] : cases) EXPECT_EQ(effectOf(from, to), effect);
}

TEST_F(AccountChangeAnalyzerTest, LeavesOutWhatCannotBeStoredAndSaysSo) {
  const AccountPtr both = account(false, true, "a@x.org");
  const std::string line = "quenlet: donation name:A1: left out, since it cannot be serialised";
  for (const std::string& name : {std::string("Ann\x01"), std::string(65537, 'a')}) {
    Account unstorable = *both;
    unstorable.properties = {{"firstName", name}};
    testing::internal::CaptureStderr();
    EXPECT_EQ(effectOf(both, std::make_shared<const Account>(unstorable)),
              "email:A1: donate 1;removeIdentifiers name:A1;");
    EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with(line)) << name.size();
  }
}

TEST_F(AccountChangeAnalyzerTest, TellsItsLoggerOfFailures) {
  const AccountPtr both = account(false, true, "a@x.org");
  const AccountPtr nameOnly = account(false, true);
  const std::string effect = "name:A1: donate 1;removeIdentifiers email:A1;";
  store->setError(makeError("domain", 7));
  EXPECT_EQ(effectOf(both, nameOnly), effect);
  EXPECT_EQ(takeTrace(), (Events{"caller: donationFailedWithError: domain 7",
                                 "caller: removalFailedWithError: domain 7"}));
  logger = nullptr;
  EXPECT_EQ(effectOf(both, nameOnly), effect);
  store = nullptr;
  EXPECT_EQ(effectOf(both, nameOnly), "name:A1: ");
  EXPECT_EQ(takeTrace(), Events{});
}

}  // namespace
}  // namespace quenlet
