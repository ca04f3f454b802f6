#include "platform/files/LockFile.h"
#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using namespace testing;

// A home with the files of four mail programs.
class MailDonorsTest : public ProcessTest {
 protected:
  MailDonorsTest() {
    GoldenParts files("tests/process/mail-home.txt");
    for (const char* name : {".config/evolution/sources/a1.source", ".thunderbird/profiles.ini",
                             ".thunderbird/x.default/prefs.js", ".config/emailidentities",
                             ".config/geary/account_01/geary.ini"}) {
      writeFile(home / name, files.take(name));
    }
  }
  // The agent starts none below a directory that the group can write, as the build tree may be.
  void usePrivateCopies() {
    for (const std::string program : {"evolution", "thunderbird", "kmail", "geary"}) {
      const std::string name = "quenlet-" + program + "-donor";
      writeFile(temporary / name, readFile(bin.parent_path() / "libexec/quenlet" / name), 0755);
      const std::string bundle = "org.quenlet.donors." + program;
      EXPECT_THAT(readFile(extensions / (bundle + ".plist")), HasSubstr("libexec/quenlet/" + name));
      putInPlace(extensions / (bundle + ".plist"), donorManifest(bundle, temporary / name));
    }
  }

  const std::filesystem::path evolution = home / ".config/evolution/sources/a1.source";
};

TEST_F(MailDonorsTest, GiveWhatTheyHaveOnceAndTakeItBack) {
  startAgent();
  expect("collect", 0, {"No donor extension is installed."});
  expect("extension list", 0, {"kmail", "mail", "off", "emailidentities"});
  expect("extension enable mails", 1, {"no extension or group is called \"mails\""});
  expect("extension enable mail kmail", 0,
         {"Switched on thunderbird", ".thunderbird/profiles.ini", "quenlet collect"});
  expect("extension enable geary", 0, {"geary is on already."});
  usePrivateCopies();
  expect("collect", 0,
         {"org.quenlet.donors.evolution: 2 donations.", "thunderbird: 2 donations.",
          "kmail: 2 donations.", "geary: 2 donations."});
  for (const std::string program : {"evolution", "thunderbird", "kmail", "geary"}) {
    EXPECT_EQ(occurrences(card(), program + "@example.org"), 1) << card();
  }
  EXPECT_THAT(card(), HasSubstr("Anna Berg"));
  EXPECT_EQ(countDonations(), 8);

  writeFile(evolution, "[Data Source]\nEnabled=true\n\n[Mail Identity]\nAddr");
  std::filesystem::remove(home / ".config/emailidentities");
  expect("collect", 1,
         {"org.quenlet.donors.evolution keeps what it has given", "its last line is cut short",
          "kmail: nothing to donate"});
  expect("collect org.quenlet.donors.kmail", 0, {"kmail: nothing to donate."});
  expect("collect org.example.none", 1, {"no donor extension is installed for it"});
  EXPECT_TRUE(cardHas("evolution@example.org"));
  EXPECT_FALSE(cardHas("kmail@example.org"));

  expect("extension disable evolution", 0, {"Switched off evolution."});
  expect("collect", 0, {"geary: 2 donations."});
  EXPECT_FALSE(cardHas("evolution@example.org"));
  disableDonations();
  expect("collect", 1, {"quenlet enable"});
  expect("extension disable mail", 0, {"Switched off geary."});
  EXPECT_EQ(stopAgent(), 0);
  expect("extension disable geary", 3, {"quenlet forget org.quenlet.donors.geary"});
  expect("extension list --json", 0, {R"("bundle":"org.quenlet.donors.geary","enabled":false)"});
}

TEST_F(MailDonorsTest, AreSwitchedOffWhenNobodyCollectsAnyMore) {
  startAgent();
  expect("extension enable mail", 0, {"Switched on kmail"});
  usePrivateCopies();
  std::vector<std::unique_ptr<ChildProcess>> waiting;
  auto lock = LockFile::tryLock(donationsFile.parent_path() / "collect.lock");
  ASSERT_TRUE(lock.ok());
  waiting.push_back(start({bin / "quenlet", "collect"}));
  waiting.push_back(start({bin / "quenlet", "extension", "disable", "mail"}));
  for (const auto& each : waiting) {
    EXPECT_TRUE(eventually([&] { return each->says("Waiting for"); }));
    EXPECT_TRUE(each->isRunning());
  }
  EXPECT_TRUE(std::filesystem::exists(extensions / "org.quenlet.donors.kmail.plist"));
  lock = Result<std::shared_ptr<LockFile>>::failure(nullptr);
  for (const auto& each : waiting) EXPECT_TRUE(each->wait().has_value());
  EXPECT_FALSE(std::filesystem::exists(extensions / "org.quenlet.donors.kmail.plist"));
  EXPECT_EQ(countDonations(), 0);
}

TEST_F(MailDonorsTest, GoWithTheAccountsOfGNOMEWhereTheseAreSwitchedOn) {
  const std::filesystem::path file = home / ".config/goa-1.0/accounts.conf";
  writeFile(file,
            "[Account a_1]\nProvider=imap_smtp\nIdentity=x\nPresentationIdentity=x\n"
            "Enabled=true\nEmailAddress=gnome@example.org\nName=\n");
  const std::string bundle = "org.quenlet.sources.gnome-accounts";
  startAgent();
  expect("collect", 0, {"No donor extension is installed."});
  expect("collect " + bundle, 1, {"no donor extension is installed for it"});
  expect("extension enable gnome-accounts", 0, {"goa-1.0/accounts.conf"});
  expect("extension enable mail", 0);
  usePrivateCopies();
  expect("collect " + bundle, 0, {"Accounts of GNOME: 1 added"});
  EXPECT_EQ(countDonations(), 1) << "no other is asked";
  expect("collect", 0, {"accounts of GNOME have not changed", "geary: 2 donations."});
  EXPECT_TRUE(cardHas("gnome@example.org"));
  writeFile(extensions / "bad.plist", "damaged");
  mayRemark = true;  // should the agent look by then
  EXPECT_EQ(occurrences(quenlet("collect").err, "bad.plist"), 1);
  writeFile(file, "[Account a_1]\n");
  expect("collect", 1, {"stay as they are", "geary: 2 donations."});
  expect("extension disable gnome-accounts", 0, {"1 removed", "Switched off"});
  expect("collect", 0, {"geary: 2 donations."});
  EXPECT_FALSE(cardHas("gnome@example.org"));
  EXPECT_EQ(stopAgent(), 0);
  writeFile(file, "");
  expect("extension enable gnome-accounts", 0);
  expect("collect", 3, {"accounts of GNOME have not changed"});
}

TEST_F(MailDonorsTest, AreNotSwitchedOnOverAFileOfTheOwners) {
  const std::filesystem::path file = extensions / "org.quenlet.donors.kmail.plist";
  writeFile(file, donorManifest("org.example.own", "own"));
  const std::string before = readFile(file);
  expect("extension enable mail", 1, {file.native(), "Switched on evolution"});
  expect("extension disable kmail", 3, {"kmail is off"});
  EXPECT_EQ(readFile(file), before);
}

}  // namespace
}  // namespace quenlet
