#include "donors/mail/MailIdentities.h"

#include <gmock/gmock.h>

#include "donors/mail/PreferenceScript.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// What is not said to come from a program was made by hand after its documentation.

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

// As Evolution's server 3.46 writes it.
std::string source(const std::string& parent, const std::string& groups, bool isOn = true) {
  return "[Data Source]\nDisplayName=Work\nDisplayName[de]=Arbeit\nEnabled=" +
         std::string(isOn ? "true" : "false") + "\nParent=" + parent + "\n\n" + groups;
}

// Files "a.source", "b.source" and so on, and one beside them that is none.
std::vector<HomeFile> sources(const std::vector<std::string>& contents) {
  const std::string directory = "chosen/evolution/sources/";
  std::vector<HomeFile> files{{directory + "notes.txt", "no source"}};
  char name = 'a';
  for (const std::string& content : contents) {
    files.push_back({directory + name++ + ".source", content});
  }
  return files;
}

TEST(MailIdentitiesTest, FindsThoseOfEvolutionThatAreInUseAndNotOfOnlineAccounts) {
  const std::string address = "[Mail Identity]\nAddress=ann@example.org\n";
  const std::string ann = address +
                          "Aliases=berg@example.org, \"Berg, Ann\" <a.berg@example.org>\n"
                          "Name=Ann\\sBerg\nOrganization=\nReplyTo=\nSignatureUid=none\n";
  const std::string identity = source("", ann);
  const std::string online = "[GNOME Online Accounts]\nAccountId=account_17\n";
  const std::string collection = "[Collection]\nIdentity=ann\n";
  const std::string account = source("", "[Mail Account]\nIdentityUid=a\n");
  const std::string bare = "[Data Source]\nDisplayName=Set up by the office\n";
  const std::string lacking = " in evolution/sources: it lacks what all sources of mail have";
  expectFound(
      &evolutionIdentities,
      {{"nothing there", {}, ""},
       {"beside others", sources({identity, source("", "[Calendar]\nColor=#fff\n"), account}),
        "a|Ann Berg|ann@example.org|berg@example.org|\"Berg, Ann\" <a.berg@example.org>\n"},
       {"switched off", sources({source("", ann, false)}), ""},
       {"of an online account", sources({source("b", ann), source("", online)}), ""},
       {"of one that is off", sources({source("b", ann), source("", collection, false)}), ""},
       {"of a collection, and of one that is gone; with nothing typed in",
        sources({source("b", address + "Name=\n"), source("", collection),
                 source("gone", "[Mail Identity]\nAddress=\nName=C\n"),
                 source("", "[Mail Account]\nIdentityUid=gone\n")}),
        "a||ann@example.org\nc|C|\n"},
       {"one is damaged", sources({identity, source("", "Ena\n")}),
        "!file 2 in evolution/sources: line 7 has no \"=\""},
       {"one is another file", sources({ann}),
        "!file 1 in evolution/sources: it has no group \"Data Source\""},
       {"an identity that lacks it", sources({bare + ann}), "!file 1" + lacking},
       {"an account", sources({identity, bare + "[Mail Account]\n"}), "!file 2" + lacking},
       {"its parent", sources({identity, source("c", "[Mail Account]\n"), bare + collection}),
        "!file 3" + lacking},
       {"another source", sources({source("", address + "Name=\n"), bare + "[Calendar]\n"}),
        "a||ann@example.org\n"},
       {"cut before the identity", sources({source("", "")}),
        "!file 1 in evolution/sources: it lacks what all sources have"},
       {"cut within the identity", sources({source("", address)}),
        "!file 1 in evolution/sources: it lacks what all identities have"},
       {"cut between its groups", sources({source("", "[Mail Composition]\nBcc=\n"), account}),
        "!evolution/sources: an account's identity is not whole"}});
}

TEST(MailIdentitiesTest, TakesInABoundedNumberOfBytesOfEvolution) {
  const TemporaryDirectory home;
  const std::string large =
      source("", "[Collection]\n") + std::string(std::size_t{3} << 20, '#') + "\n";
  const auto found = [&] { return textOf(evolutionIdentities({home.path(), home.path()})); };
  for (const std::string name : {"a", "b"}) {
    home.write("evolution/sources/" + name + ".source", large);
  }
  EXPECT_EQ(found(), "");
  home.write("evolution/sources/c.source", large);
  EXPECT_EQ(found(),
            "!file 3 in evolution/sources: with it, the files are larger than 8 MiB together");
}

// The list of profiles and the preferences of one of them.
std::vector<HomeFile> thunderbird(const std::string& profiles, const std::string& preferences,
                                  const std::string& place = ".thunderbird/") {
  return {{place + "profiles.ini", profiles}, {place + "x.default/prefs.js", preferences}};
}

TEST(MailIdentitiesTest, FindsThoseOfThunderbirdThatAnAccountHas) {
  const std::string profiles = ".thunderbird/profiles.ini";
  const std::string general = "[General]\nStartWithLastProfile=1\nVersion=2\n\n";
  const std::string one = "[Profile0]\nName=default\nIsRelative=1\nPath=x.default\n\n" + general;
  const std::string list = R"(user_pref("mail.account.account1.identities", "id1,id2");
user_pref("mail.account.account1.server", "server1");
user_pref("mail.account.account2.identities", "id4");
user_pref("mail.account.account3.server", "server2");
)";
  const std::string accounts =
      list + "user_pref(\"mail.accountmanager.accounts\", \"account1,account3\");\n";
  const std::string id1 = R"(user_pref("mail.identity.id1.fullName", "Ann \u0042erg");
user_pref("mail.identity.id1.useremail", "ann@example.org");
)";
  const std::string rest = R"(user_pref("mail.identity.id2.fullName", "");
user_pref("mail.identity.id2.useremail", "berg@example.org");
user_pref("mail.identity.id4.useremail", "former@example.org");
)";
  const std::string whole = accounts + id1 + rest;
  const auto foundIn = [](const std::string& place) {
    const std::string key = "~/" + place + "x.default\n";
    return key + "id1|Ann Berg|ann@example.org\n" + key + "id2||berg@example.org\n";
  };
  const std::string found = foundIn(".thunderbird/");
  const std::string snap = "snap/thunderbird/common/.thunderbird/";
  const std::string flatpak = ".var/app/org.mozilla.Thunderbird/.thunderbird/";
  const std::string bad = "!prefs.js of profile 1: ";
  expectFound(
      &thunderbirdIdentities,
      {{"nothing there", {}, ""},
       {"relative", thunderbird(one, whole), found},
       {"snap", thunderbird(one, whole, snap), foundIn(snap)},
       {"Flatpak", thunderbird(one, whole, flatpak), foundIn(flatpak)},
       {"not used yet", {{profiles, one}, {".thunderbird/x.default/times.json", ""}}, ""},
       {"no account yet", thunderbird(one, "user_pref(\"a\", 1);\n"), ""},
       {"a profile that was deleted",
        thunderbird("[Profile1]\nPath=gone/y\n[Profile2]\nPath=z\n" + one, whole), found},
       {"on another disk", thunderbird(one + "[Profile12@]\nPath=/media/none/x\n", whole),
        "!profiles.ini: the directory of [Profile12] is not there"},
       {"one deleted there", thunderbird(one + "[Profile1]\nPath=../x\n", whole), found},
       {"a file in its place",
        {{profiles, one}, {".thunderbird/x.default", ""}},
        "!profiles.ini: the directory of [Profile0] is not there"},
       {"a list of profiles cut within one", thunderbird(general + one.substr(0, 37), whole),
        "!profiles.ini: [Profile0] has no path"},
       {"one cut between groups", thunderbird(one.substr(0, 52), whole),
        "!profiles.ini: it has no group \"General\""},
       {"a damaged one",
        {{profiles, one + "[Profile1\n"}},
        "!profiles.ini: line 10 begins a group and does not end it"},
       {"cut before the list of accounts", thunderbird(one, list),
        bad + "it has accounts and no list of them"},
       {"without an account", thunderbird(one, whole.substr(list.rfind("user_pref"))),
        bad + "it lists an account that is not there"},
       {"cut between identities", thunderbird(one, accounts + id1),
        bad + "an account has an identity without an address"},
       {"cut within one", thunderbird(one, accounts + id1 + rest.substr(0, rest.find('\n') + 1)),
        bad + "an account has an identity without an address"},
       {"cut within a line", thunderbird(one, accounts + id1.substr(0, 70)),
        bad + "its last line is cut short"},
       {"a line is damaged", thunderbird(one, whole + "user_pref(\"b\", \n"),
        bad + "line 11 begins a preference and is not one"}});
  const TemporaryDirectory home;
  home.write(profiles,
             general + "[Profile0]\nIsRelative=0\nPath=" + (home / "far").native() + "\n");
  home.write("far/prefs.js", whole);
  EXPECT_THAT(textOf(thunderbirdIdentities({home.path(), home.path()})),
              testing::StartsWith((home / "far").native() + "\nid1|Ann Berg|"))
      << "absolute";
  std::filesystem::create_directory_symlink("none", home / ".thunderbird/disk");
  home.write(profiles, general + "[Profile0]\nPath=disk/x\n");
  EXPECT_EQ(textOf(thunderbirdIdentities({home.path(), home.path()})),
            "!profiles.ini: the directory of [Profile0] is not there");
}

TEST(MailIdentitiesTest, FindsThoseOfKMailAndGeary) {
  const std::string file = "chosen/emailidentities";
  const auto kmail = [&](const std::string& identities) {
    const std::string general = "[$Version]\nupdate_info=x\n\n[General]\nDefault Identity=7\n\n";
    return std::vector<HomeFile>{{file, general + identities}};
  };
  const std::string work =
      "[Identity #0]\nEmail Address[$e]=ann@example.org\nEmail Aliases=a@example.org,"
      "b@example.org\nIdentity=Work\nName=Zo\\xc3\\xab Berg\nName[de]=Other\n";
  const std::string home = "[Identity #1][$i]\nIdentity=Home\nuoid=1234567\n\n";
  expectFound(&kmailIdentities,
              {{"nothing there", {}, ""},
               {"two, with flags and escapes", kmail(work + "uoid=7\n\n" + home),
                "7|Zo\u00EB Berg|ann@example.org|a@example.org|b@example.org\n1234567||\n"},
               {"emptied", {{file, ""}}, "!emailidentities: it is empty"},
               {"cut before all identities", kmail(""), "!emailidentities: it has no identity"},
               {"cut within one", kmail(work), "!emailidentities: an identity has no number"},
               {"no default", kmail(home), "!emailidentities: its default identity is not there"},
               {"edited by hand", kmail(work + "uoid=1234567\n\n" + home),
                "!emailidentities: two identities have one number"}});
  const std::string account =
      "[Metadata]\nversion=1\n\n[Account]\nordinal=1\n"
      "sender_mailboxes=Ann Berg <ann@example.org>;\"B\\; A\" <b@example.org>;\n";
  const std::string geary = "chosen/geary/account_01/geary.ini";
  const std::string lost = "!geary.ini in directory 1 of geary: it has no account with a mailbox";
  expectFound(&gearyIdentities,
              {{"nothing there", {}, ""},
               {"both places, and what is no account",
                {{geary, account},
                 {"chosen/geary/notes", "none"},
                 {".var/app/org.gnome.Geary/config/geary/account_02/geary.ini",
                  "[Account]\nsender_mailboxes=c@example.org\n"}},
                "~/chosen/geary/account_01|Ann Berg <ann@example.org>|Ann Berg <ann@example.org>|"
                "\"B; A\" <b@example.org>\n"
                "~/.var/app/org.gnome.Geary/config/geary/account_02|c@example.org|c@example.org\n"},
               {"cut between groups", {{geary, account.substr(0, 22)}}, lost},
               {"cut within the account", {{geary, account.substr(0, 42)}}, lost}});
}

TEST(PreferenceScriptTest, ReadsLinesOfOneFormAndRunsNothing) {
  auto rows = goldenPairs("tests/donors/mail/preferences.txt");
  rows.emplace_back(R"(user_pref("a", "\"\\\r\n\x41\u00eb\ud83d\ude00");)",
                    "\"\\\r\nA\u00EB\U0001F600");
  rows.emplace_back("user_pref(\"a\", \"text\");\r", "text");
  for (const auto& [line, value] : rows) {
    const auto script = PreferenceScript::parse(line);
    EXPECT_EQ(script.ok() ? script.value().text("a").value_or("none") : "!", value) << line;
  }
  EXPECT_EQ(PreferenceScript::parse("// one\nuser_pref(\"a\", 1\n").error()->debugDescription(),
            "line 2 begins a preference and is not one");
  const PreferenceScript script =
      PreferenceScript::parse(
          "user_pref(\"a.b\", 1);\nsomething else\nuser_pref(\"a.c\", false);\nuser_pref(\"a.\", "
          "1);\n"
          "user_pref(\"ab\", 1);\nuser_pref(\"b\", \"1\");\nuser_pref(\"b\", \"2\");\n")
          .takeValue();
  EXPECT_EQ(script.namesBelow("a."), std::vector<std::string>({"a.b", "a.c"}));
  EXPECT_EQ(script.text("b"), "2") << "the last one counts";
}

}  // namespace
}  // namespace quenlet
