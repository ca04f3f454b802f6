#include "donors/mail/MailIdentities.h"

#include <gmock/gmock.h>

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// "key|name|mailbox|mailbox" for each identity, or "!" and the error's sentence.
std::string textOf(const MailIdentities& identities) {
  if (!identities.ok()) return "!" + identities.error()->debugDescription();
  std::string text;
  for (const MailIdentity& identity : identities.value()) {
    text += identity.key + "|" + identity.name;
    for (const std::string& mailbox : identity.mailboxes) text += "|" + mailbox;
    text += "\n";
  }
  return text;
}

struct HomeFile final {
  std::string path;
  std::string content;
};

struct Home final {
  const char* name;
  std::vector<HomeFile> files;
  std::string found;
};

// A home for each row; "~" in what is found stands for it.
void expectFound(MailIdentities (*identities)(const UserPlaces&), const std::vector<Home>& rows) {
  for (const auto& [name, files, found] : rows) {
    const TemporaryDirectory home;
    for (const auto& [path, content] : files) home.write(path, content);
    std::string text = textOf(identities({home.path(), home / "chosen"}));
    for (auto at = text.find(home.path()); at != text.npos; at = text.find(home.path())) {
      text.replace(at, home.path().native().size(), "~");
    }
    EXPECT_EQ(text, found) << name;
  }
}

std::string source(const std::string& keys, const std::string& groups = "") {
  return "[Data Source]\nDisplayName=Work\nDisplayName[de]=Arbeit\n" + keys + "\n" + groups;
}

TEST(MailIdentitiesTest, FindsThoseOfEvolutionThatAreInUseAndNotOfOnlineAccounts) {
  const std::string directory = "chosen/evolution/sources/";
  const std::string ann =
      "[Mail Identity]\nAddress=ann@example.org\nName=Ann\\sBerg\n"
      "Aliases=berg@example.org, \"Berg, Ann\" <a.berg@example.org>\n";
  const std::string online = "[GNOME Online Accounts]\nAccountId=account_17\n";
  expectFound(
      &evolutionIdentities,
      {{"nothing there", {}, ""},
       {"other sources beside",
        {{directory + "a.source", source("Enabled=true", ann)},
         {directory + "b.source", source("", "[Calendar]\nColor=#fff\n")},
         {directory + "notes.txt", "no source"}},
        "a|Ann Berg|ann@example.org|berg@example.org|\"Berg, Ann\" <a.berg@example.org>\n"},
       {"switched off", {{directory + "a.source", source("Enabled=false", ann)}}, ""},
       {"of an online account",
        {{directory + "a.source", source("Parent=goa", ann)},
         {directory + "goa.source", source("", online)}},
        ""},
       {"of an account that is switched off",
        {{directory + "a.source", source("Parent=all", ann)},
         {directory + "all.source", source("Enabled=false")}},
        ""},
       {"of a collection, and of one that is gone",
        {{directory + "a.source", source("Parent=all", "[Mail Identity]\nAddress=a@example.org\n")},
         {directory + "all.source", source("Parent=")},
         {directory + "b.source", source("Parent=c", "[Mail Identity]\nName=B\n")}},
        "a||a@example.org\nb|B|\n"},
       {"one is damaged",
        {{directory + "a.source", source("", ann)}, {directory + "b.source", source("Ena\n")}},
        "!file 2 in evolution/sources: line 4 has no \"=\""},
       {"one is another file",
        {{directory + "a.source", "[Mail Identity]\nAddress=ann@example.org\n"}},
        "!file 1 in evolution/sources: it has no group \"Data Source\""}});
}

TEST(MailIdentitiesTest, FindsThoseOfThunderbirdThatAnAccountHas) {
  const std::string profiles = ".thunderbird/profiles.ini";
  const std::string one = "[Profile0]\nName=default\nIsRelative=1\nPath=x.default\n";
  const std::string accounts = R"(user_pref("mail.accountmanager.accounts", "account1,account3");
user_pref("mail.account.account1.identities", "id1,id2");
user_pref("mail.account.account2.identities", "id4");
user_pref("mail.account.account3.server", "server2");
)";
  const std::string id1 = R"(user_pref("mail.identity.id1.fullName", "Ann \u0042erg");
user_pref("mail.identity.id1.useremail", "ann@example.org");
)";
  const std::string rest = R"(user_pref("mail.identity.id2.useremail", "berg@example.org");
user_pref("mail.identity.id4.useremail", "former@example.org");
)";
  const std::string prefs = ".thunderbird/x.default/prefs.js";
  expectFound(&thunderbirdIdentities,
              {{"nothing there", {}, ""},
               {"a profile that is gone", {{profiles, one}}, ""},
               {"relative",
                {{profiles, "[General]\nVersion=2\n" + one}, {prefs, accounts + id1 + rest}},
                "~/.thunderbird/x.default\nid1|Ann Berg|ann@example.org\n"
                "~/.thunderbird/x.default\nid2||berg@example.org\n"},
               {"snap and Flatpak",
                {{"snap/thunderbird/common/" + profiles, one},
                 {"snap/thunderbird/common/" + prefs, accounts + id1 + rest},
                 {".var/app/org.mozilla.Thunderbird/" + profiles, one}},
                "~/snap/thunderbird/common/.thunderbird/x.default\nid1|Ann Berg|ann@example.org\n"
                "~/snap/thunderbird/common/.thunderbird/x.default\nid2||berg@example.org\n"},
               {"no account yet", {{profiles, one}, {prefs, "user_pref(\"a\", 1);\n"}}, ""},
               {"cut before the list of accounts",
                {{profiles, one}, {prefs, accounts.substr(accounts.find('\n') + 1)}},
                "!prefs.js of profile 1: it has accounts and no list of them"},
               {"cut between identities",
                {{profiles, one}, {prefs, accounts + id1}},
                "!prefs.js of profile 1: an account has an identity that is not there"},
               {"cut within a line",
                {{profiles, one}, {prefs, accounts + id1.substr(0, 70)}},
                "!prefs.js of profile 1: its last line is cut short"},
               {"damaged list of profiles",
                {{profiles, one + "[Profile1\n"}},
                "!profiles.ini: line 5 begins a group and does not end it"}});
  const TemporaryDirectory home;
  home.write(profiles, "[Profile0]\nIsRelative=0\nPath=" + (home / "far").native() + "\n");
  home.write("far/prefs.js", accounts + id1 + rest);
  EXPECT_THAT(textOf(thunderbirdIdentities({home.path(), home.path()})),
              testing::StartsWith((home / "far").native() + "\nid1|Ann Berg|"))
      << "absolute";
}

TEST(MailIdentitiesTest, FindsThoseOfKMailAndGeary) {
  expectFound(&kmailIdentities,
              {{"nothing there", {}, ""},
               {"two, with flags and escapes",
                {{"chosen/emailidentities",
                  "[$Version]\nupdate_info=x\n\n[General]\nDefault Identity=7\n\n[Identity #0]\n"
                  "Email Address[$e]=ann@example.org\nEmail Aliases=a@example.org,b@example.org\n"
                  "Identity=Work\nName=Zo\\xc3\\xab Berg\nName[de]=Other\n\n"
                  "[Identity #1][$i]\nIdentity=Empty\n"}},
                "Identity #0|Zo\u00EB Berg|ann@example.org|a@example.org|b@example.org\n"
                "Identity #1||\n"},
               {"emptied", {{"chosen/emailidentities", ""}}, "!emailidentities: it is empty"}});
  const std::string account =
      "[Metadata]\nversion=1\n\n[Account]\nordinal=1\n"
      "sender_mailboxes=Ann Berg <ann@example.org>;\"B\\; A\" <b@example.org>;\n";
  expectFound(&gearyIdentities,
              {{"nothing there", {}, ""},
               {"both places, and what is no account",
                {{"chosen/geary/account_01/geary.ini", account},
                 {"chosen/geary/notes", "none"},
                 {".var/app/org.gnome.Geary/config/geary/account_02/geary.ini",
                  "[Account]\nsender_mailboxes=c@example.org\n"}},
                "~/chosen/geary/account_01|Ann Berg <ann@example.org>|Ann Berg <ann@example.org>|"
                "\"B; A\" <b@example.org>\n"
                "~/.var/app/org.gnome.Geary/config/geary/account_02|c@example.org|c@example.org\n"},
               {"cut between groups",
                {{"chosen/geary/account_01/geary.ini", account.substr(0, 22)}},
                "!geary.ini in directory 1 of geary: it has no group \"Account\""}});
}

}  // namespace
}  // namespace quenlet
