#include "platform/accounts/PropertyListAccountStore.h"

#include "platform/files/PosixDataProxy.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class PropertyListAccountStoreTest : public testing::Test {
 protected:
  // As the agent makes it: anew for each reading.
  [[nodiscard]] std::shared_ptr<PropertyListAccountStore> store() const {
    return std::make_shared<PropertyListAccountStore>(files / "Accounts", dataProxy, problems);
  }
  void write(const std::string& name, const std::string& entries) const {
    files.write("Accounts/" + name, "<plist version='1.0'><dict>" + entries + "</dict></plist>");
  }
  static std::string identifier(const std::string& text) {
    return "<key>identifier</key><string>" + text + "</string>";
  }

  std::string identifiers() const {
    std::string all;
    const auto accounts = store()->accounts();
    if (!accounts.ok()) return "error";
    for (const AccountPtr& account : accounts.value()) all += account->identifier + " ";
    return all;
  }
  std::string complaints() const {
    testing::internal::CaptureStderr();
    static_cast<void>(identifiers());
    return testing::internal::GetCapturedStderr();
  }
  static std::int64_t codeOf(const ErrorPtr& error) { return error ? error->code() : 0; }

  const TemporaryDirectory files;
  const std::shared_ptr<DataProxy> dataProxy = std::make_shared<PosixDataProxy>();
  const std::shared_ptr<AccountFileProblems> problems = std::make_shared<AccountFileProblems>();
};

TEST_F(PropertyListAccountStoreTest, ServesSoundFilesByNameAndSaysOnceWhatIsWrongWithOthers) {
  EXPECT_EQ(identifiers(), "") << "no directory";
  files.write("Accounts", "");
  EXPECT_EQ(identifiers(), "error") << "no directory to list";
  std::filesystem::remove(files / "Accounts");
  write("b.plist", "<!-- by hand -->" + identifier("b") + "<key>note</key><real>1</real>");
  write("a.plist", "<key>active</key><true/>" + identifier("a"));
  write("B.plist", identifier("B"));
  write(".hidden.plist", identifier(".hidden"));
  write("a.plist~", identifier("a"));
  EXPECT_EQ(complaints(), "");
  EXPECT_EQ(identifiers(), "B a b ");

  write("c.plist", identifier("other"));
  write("d.plist", identifier("d") + "<key>active</key><string>secret</string>");
  write("e.plist", identifier("e") + "secret");
  write("f.plist", identifier("f") + std::string(1 << 20, ' '));
  write("g\nquenlet: .plist", identifier("g"));
  ::mkfifo((files / "Accounts/h.plist").c_str(), 0600);
  std::filesystem::create_directory(files / "Accounts/i.plist");
  std::filesystem::create_symlink("j.plist", files / "Accounts/j.plist");
  std::filesystem::create_symlink("nowhere", files / "Accounts/k.plist");
  files.write("l", readFile(files / "Accounts/a.plist"));
  std::filesystem::create_symlink("../l", files / "Accounts/l.plist");
  write("m.plist", identifier("m"));
  const std::string said = complaints();
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 10) << said;
  EXPECT_EQ(said.find("secret"), said.npos) << said;
  EXPECT_EQ(identifiers(), "B a b m ");
  EXPECT_EQ(complaints(), "");
  write("c.plist", identifier("c"));
  EXPECT_EQ(complaints(), "");
  write("c.plist", identifier("other"));
  EXPECT_NE(complaints(), "") << "once more, since it was over";
}

TEST_F(PropertyListAccountStoreTest, KeepsWhatItDoesNotKnowAndSavesNothingThatCannotBeRead) {
  Account account{"\u00E9 1", AccountType{"jabber"}, "ann", true, {"mail"}, {{"a", 2}}};
  EXPECT_EQ(store()->save(account), nullptr);
  const std::string name = "\u00E9 1.plist";
  write(name, identifier("\u00E9 1") + "<key>note</key><real>1</real>");
  account.accountType.reset();
  EXPECT_EQ(store()->save(account), nullptr);
  const auto reader = store();
  const AccountPtr read = reader->accountWithIdentifier(account.identifier).value();
  EXPECT_EQ(*read, account);
  EXPECT_EQ(read->accountStore.lock(), reader);
  EXPECT_NE(files.read("Accounts/" + name).find("<key>note</key>"), std::string::npos);
  files.write("Accounts/" + name, "damage");
  EXPECT_EQ(store()->save(account), nullptr);
  EXPECT_EQ(files.read("Accounts/" + name + ".damaged-1"), "damage");
  account.properties.emplace("big", std::string(1 << 20, 'x'));
  EXPECT_EQ(codeOf(store()->save(account)), EFBIG) << "it could not be read again";
  account.properties = {{"many", PropertyListArray(Account::maximumValues, 1)}};
  EXPECT_EQ(codeOf(store()->save(account)), 5);
}

TEST_F(PropertyListAccountStoreTest, TakesOnlyIdentifiersThatCanBeFileNames) {
  files.write("victim.plist", "<plist version='1.0'><dict/></plist>");
  for (const std::string bad : {"", ".", "..", ".x", "../victim", "a/b", "a\nb", "\x7F", "\xFF"}) {
    const auto unusable = static_cast<std::int64_t>(AccountErrorCode::unusableIdentifier);
    EXPECT_EQ(codeOf(store()->save(Account{.identifier = bad})), unusable) << bad;
    EXPECT_EQ(codeOf(store()->remove(bad)), unusable) << bad;
    EXPECT_EQ(codeOf(store()->accountWithIdentifier(bad).error()), unusable) << bad;
  }
  EXPECT_NE(store()->save(Account{.identifier = std::string(201, 'a')}), nullptr);
  EXPECT_EQ(store()->save(Account{.identifier = std::string(200, 'a')}), nullptr);
}

TEST_F(PropertyListAccountStoreTest, LocksOthersOutWhileTheLockLasts) {
  const auto held = store()->lock();
  ASSERT_TRUE(held.ok()) << "which makes the directory";
  EXPECT_FALSE(LockFile::tryLock(files / "Accounts/.lock").ok());
  EXPECT_EQ(identifiers() + complaints(), "") << "the lock is not an account";
}

TEST(AccountTest, TakesOnlyWellFormedRecords) {
  const auto isTaken = [](const std::string& key, const PropertyList& entry) {
    PropertyListDictionary entries{{"identifier", "A1"}};
    entries.insert_or_assign(key, entry);
    return Account::initWithPropertyListRepresentation(entries).has_value();
  };
  EXPECT_TRUE(isTaken("unknown", 1));
  for (const auto key : {"identifier", "type", "username", "active", "dataClasses", "properties"}) {
    EXPECT_FALSE(isTaken(key, 1)) << key;
  }
  EXPECT_FALSE(isTaken("dataClasses", PropertyListArray{"mail", 1}));
  EXPECT_EQ(Account::initWithPropertyListRepresentation({}), std::nullopt);
}

}  // namespace
}  // namespace quenlet
