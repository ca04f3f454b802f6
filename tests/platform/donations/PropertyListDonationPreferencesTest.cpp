#include "platform/donations/PropertyListDonationPreferences.h"

#include <map>
#include <vector>

#include "tests/platform/donations/FileFixture.h"

namespace quenlet {
namespace {

// Delivers within fire(), and only what the test fires.
class ManualNotificationCenter final : public DistributedNotificationCenter {
 public:
  std::vector<std::string> posts;

  std::shared_ptr<Cancelable> addObserver(const std::string& name,
                                          std::function<void()> callback) override {
    callbacks[name] = std::move(callback);
    return std::make_shared<CancelBlock>([this, name] { callbacks.erase(name); });
  }
  void post(const std::string& name) override { posts.push_back(name); }
  void fire(const std::string& name) { callbacks.at(name)(); }

 private:
  std::map<std::string, std::function<void()>> callbacks;
};

class PropertyListDonationPreferencesTest : public FileFixture {
 protected:
  using Values = std::vector<bool>;
  const std::shared_ptr<ManualNotificationCenter> center =
      std::make_shared<ManualNotificationCenter>();
  std::shared_ptr<PropertyListDonationPreferences> preferences = newPreferences();
  Values delivered;

  std::shared_ptr<PropertyListDonationPreferences> newPreferences() {
    return std::make_shared<PropertyListDonationPreferences>(file, dataProxy, loop, center);
  }
  std::shared_ptr<Cancelable> subscribe() {
    return preferences->observableWithPreferences(center, nullptr)
        ->subscribe(Observer<bool>::observerWithResultBlock(
            [this](const bool& value) { delivered.push_back(value); }));
  }
};

TEST_F(PropertyListDonationPreferencesTest, TakesOnlyABooleanForAnAnswer) {
  EXPECT_TRUE(preferences->isDonationsEnabled()) << "no file";
  const struct {
    PropertyListDictionary entries;
    bool expected;
  } rows[] = {
      {{{"donations-enabled", false}}, false}, {{{"donations-enabled", true}}, true},
      {{{"donations-enabled", 0}}, true},      {{{"donations-enabled", "NO"}}, true},
      {{{"Donations-Enabled", false}}, true},
  };
  for (const auto& row : rows) {
    writeEntries(row.entries);
    EXPECT_EQ(preferences->isDonationsEnabled(), row.expected) << bytesOf(file);
  }
}

TEST_F(PropertyListDonationPreferencesTest, KeepsTheOtherKeysAndTellsOtherProcesses) {
  writeEntries({{"theirs", 7}});
  EXPECT_EQ(preferences->setDonationsEnabled(false), nullptr);
  const PropertyListDictionary expected{{"donations-enabled", false}, {"theirs", 7}};
  EXPECT_EQ(entries(), expected);
  EXPECT_FALSE(newPreferences()->isDonationsEnabled());
  const std::vector<std::string> posted{DonationPreferencesDidChangeNotification};
  EXPECT_EQ(center->posts, posted);

  dataProxy->failsWrites = true;
  EXPECT_EQ(preferences->setDonationsEnabled(true)->code(), ENOSPC);
  EXPECT_EQ(entries(), expected);
  EXPECT_EQ(center->posts, posted);
}

TEST_F(PropertyListDonationPreferencesTest, DeliversTheValueAtOnceAndThenRealChanges) {
  const auto token = subscribe();
  EXPECT_EQ(delivered, (Values{true}));
  runLoop();
  EXPECT_EQ(newPreferences()->setDonationsEnabled(false), nullptr);
  EXPECT_EQ(delivered, (Values{true})) << "only on the loop's thread";
  runLoop();
  EXPECT_EQ(delivered, (Values{true, false}));

  writeEntries({{"donations-enabled", false}, {"theirs", 7}});
  writeEntries({{"theirs", 7}});
  writeEntries({{"donations-enabled", false}});
  runLoop();
  EXPECT_EQ(delivered, (Values{true, false}));
  std::filesystem::remove(file);
  runLoop();
  EXPECT_EQ(delivered, (Values{true, false, true}));

  token->cancel();
  writeEntries({{"donations-enabled", false}});
  runLoop();
  EXPECT_EQ(delivered, (Values{true, false, true}));
}

TEST_F(PropertyListDonationPreferencesTest, DoesNotMissAChangeMadeDuringTheFirstDelivery) {
  Values heard;
  const auto token = preferences->observableWithPreferences(center, nullptr)
                         ->subscribe(Observer<bool>::observerWithResultBlock([&](bool value) {
                           if (heard.empty()) writeEntries({{"donations-enabled", false}});
                           heard.push_back(value);
                         }));
  runLoop();
  EXPECT_EQ(heard, (Values{true, false}));
  token->cancel();
}

TEST_F(PropertyListDonationPreferencesTest, KeepsTheLastValueWhileTheFileIsDamaged) {
  writeEntries({{"donations-enabled", false}});
  const auto token = subscribe();
  writeBytes("<plist ver");
  runLoop();
  EXPECT_EQ(delivered, (Values{false}));
  EXPECT_FALSE(preferences->isDonationsEnabled());

  EXPECT_EQ(preferences->setDonationsEnabled(true), nullptr);
  runLoop();
  EXPECT_EQ(delivered, (Values{false, true}));
  EXPECT_EQ(damagedCopies(), std::vector<std::string>{"<plist ver"});
  token->cancel();
}

// As with a file that is kept elsewhere and linked to.
TEST_F(PropertyListDonationPreferencesTest,
       HearsByNotificationOfAChangeThatTheDirectoryDoesNotShow) {
  const auto target = temporary.path() / "elsewhere.plist";
  std::filesystem::create_directories(file.parent_path());
  std::filesystem::create_symlink(target, file);
  const auto token = subscribe();
  runLoop();
  std::ofstream(target) << PropertyListSerializer::dataWithObject(
                               PropertyListDictionary{{"donations-enabled", false}})
                               .left();
  runLoop();
  EXPECT_EQ(delivered, (Values{true}));
  center->fire(DonationPreferencesDidChangeNotification);
  EXPECT_EQ(delivered, (Values{true}));
  runLoop();
  EXPECT_EQ(delivered, (Values{true, false}));
  token->cancel();
}

}  // namespace
}  // namespace quenlet
