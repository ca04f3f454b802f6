#include "foreign/OnlineAccounts.h"

#include "tests/support/GoldenFile.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class OnlineAccountsTest : public testing::Test {
 protected:
  // "identifier type username name class,class" for each; or "!" and the error's sentence.
  std::string found() const {
    const auto accounts = OnlineAccounts::read({home.path(), home / ".config"});
    if (!accounts.ok()) return "!" + accounts.error()->debugDescription();
    if (!accounts.value()) return "unknown";
    std::string text;
    for (const Account& account : *accounts.value()) {
      EXPECT_TRUE(account.isActive && OnlineAccounts::isOne(account));
      const std::string* name = findString(account.properties, "FullUserName");
      text += account.identifier + " " + *account.accountType->identifier + " " +
              *account.username + " " + (name ? *name : "-") + " ";
      for (const std::string& each : account.enabledDataclasses) text += each + ",";
      text += "\n";
    }
    return text;
  }
  std::string foundIn(const std::string& text) const {
    home.write(".config/goa-1.0/accounts.conf", text);
    return found();
  }

  const TemporaryDirectory home;
};

TEST_F(OnlineAccountsTest, TakesAddressesFromWhereTheDaemonDoes) {
  EXPECT_EQ(foundIn(goldenFile("tests/foreign/gnome-accounts.conf")),
            goldenFile("tests/foreign/gnome-accounts.txt"));
}

TEST_F(OnlineAccountsTest, TellsAccountsThatAreGoneFromAFileThatIsNotWhole) {
  EXPECT_EQ(found(), "unknown");
  std::filesystem::create_directories(home / ".config/goa-1.0");
  EXPECT_EQ(found(), "");
  const std::string whole =
      "[Account a_1]\nProvider=imap_smtp\nIdentity=x\nPresentationIdentity=y\nEnabled=true\n"
      "EmailAddress=ann@example.org\nName=";
  const std::string one = "gnome-a_1 org.gnome.OnlineAccounts.imap_smtp ann@example.org ";
  const auto with = [&](const std::string& from, const std::string& to) {
    return std::string(whole).replace(whole.find(from), from.size(), to) + "\n";
  };
  const std::string bad = "!goa-1.0/accounts.conf: ";
  const std::string unusable = bad + "an account has no usable identifier or provider";
  const std::string incomplete = bad + "an account lacks what all of its kind have";
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {"[Other]\nkey=1\n", ""},
      {whole + "Ann Berg\n", one + "Ann Berg mail,\n"},
      {whole + "ann\n", one + "- mail,\n"},
      {whole + "ann berg@example.org\n", one + "- mail,\n"},
      {with("ann@example.org", "ann at home"), ""},
      {with("ann@example.org", "noreply@example.org"), ""},
      {with("imap_smtp", "owncloud"), ""},
      {with("Enabled=true", "Enabled=false"), ""},
      {"[Account a_1]\nProvider=windows_live\nIdentity=x\nPresentationIdentity=ann@live.example\n"
       "MailEnabled=true\n",
       "gnome-a_1 org.gnome.OnlineAccounts.windows_live ann@live.example - mail,\n"},
      {whole, bad + "its last line is cut short"},
      {with("EmailAddress=", "Other="), incomplete},
      {with("Enabled=", "Other="), incomplete},
      {with("Name=", "Other="), incomplete},
      {with("PresentationIdentity=", "Other="), incomplete},
      {with("a_1", "../a"), unusable},
      {with("imap_smtp", "a b"), unusable},
      {with("[Account a_1]", "[Account a_1"), bad + "line 1 begins a group and does not end it"},
      {"\xFF\n", bad + "it is not UTF-8"},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(foundIn(text), expected) << text;
}

}  // namespace
}  // namespace quenlet
