#include "platform/preferences/PropertyListDonationPreferences.h"

#include "platform/preferences/PropertyListUserDefaults.h"
#include "tests/support/FakeServices.h"
#include "tests/support/FileFixture.h"

namespace quenlet {
namespace {

using Values = std::vector<bool>;

class PropertyListDonationPreferencesTest : public FileFixture {
 protected:
  Trace trace;
  const std::shared_ptr<FakeNotificationCenter> center =
      std::make_shared<FakeNotificationCenter>(trace);
  std::shared_ptr<PropertyListDonationPreferences> preferences = newPreferences();
  Values delivered;
  std::shared_ptr<Cancelable> token;

  ~PropertyListDonationPreferencesTest() override {
    if (token) token->cancel();
  }
  std::shared_ptr<PropertyListDonationPreferences> newPreferences() {
    return std::make_shared<PropertyListDonationPreferences>(file, dataProxy, loop, center);
  }
  void subscribe(std::function<void()> atFirst = [] {}) {
    token = preferences->observableWithPreferences(center, nullptr)
                ->subscribe(Observer<bool>::observerWithResultBlock([=, this](const bool& value) {
                  delivered.push_back(value);
                  if (delivered.size() == 1) atFirst();
                }));
  }
  Values deliveredAfterRun() {
    runLoop();
    return delivered;
  }
};

TEST_F(PropertyListDonationPreferencesTest, TakesOnlyABooleanForAnAnswer) {
  EXPECT_TRUE(preferences->isDonationsEnabled()) << "no file";
  for (const PropertyList& answer : {PropertyList(false), PropertyList(0), PropertyList("NO")}) {
    writeEntries({{"donations-enabled", answer}});
    EXPECT_EQ(preferences->isDonationsEnabled(), !answer.boolean()) << readFile(file);
  }
}

TEST_F(PropertyListDonationPreferencesTest, KeepsTheOtherKeysAndTellsOtherProcesses) {
  writeEntries({{"theirs", 7}});
  EXPECT_EQ(preferences->setDonationsEnabled(false), nullptr);
  const PropertyListDictionary expected{{"donations-enabled", false}, {"theirs", 7}};
  EXPECT_EQ(entries(), expected);
  const std::string post = std::string("caller: post ") + DonationPreferencesDidChangeNotification;
  EXPECT_EQ(trace.take(), std::vector{post});

  dataProxy->failsWrites = true;
  EXPECT_EQ(preferences->setDonationsEnabled(true)->code(), ENOSPC);
  EXPECT_EQ(entries(), expected);
  EXPECT_EQ(trace.take(), std::vector<std::string>());
}

TEST_F(PropertyListDonationPreferencesTest, DeliversTheValueAtOnceAndThenRealChanges) {
  subscribe();
  EXPECT_EQ(delivered, (Values{true}));
  runLoop();
  EXPECT_EQ(newPreferences()->setDonationsEnabled(false), nullptr);
  EXPECT_EQ(delivered, (Values{true})) << "only on the loop's thread";
  EXPECT_EQ(deliveredAfterRun(), (Values{true, false}));

  writeEntries({{"theirs", 7}});
  writeEntries({{"donations-enabled", false}});
  EXPECT_EQ(deliveredAfterRun(), (Values{true, false}));
  std::filesystem::remove(file);
  EXPECT_EQ(deliveredAfterRun(), (Values{true, false, true}));

  token->cancel();
  writeEntries({{"donations-enabled", false}});
  EXPECT_EQ(deliveredAfterRun(), (Values{true, false, true}));
}

TEST_F(PropertyListDonationPreferencesTest, DoesNotMissAChangeMadeDuringTheFirstDelivery) {
  subscribe([this] { writeEntries({{"donations-enabled", false}}); });
  EXPECT_EQ(deliveredAfterRun(), (Values{true, false}));
}

TEST_F(PropertyListDonationPreferencesTest, TakesADamagedFileForNoAnswerAndKeepsItAside) {
  writeBytes("<plist");
  testing::internal::CaptureStderr();
  subscribe();
  EXPECT_EQ(deliveredAfterRun(), Values());
  EXPECT_FALSE(preferences->isDonationsEnabled());
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  writeEntries({{"donations-enabled", false}});
  EXPECT_EQ(deliveredAfterRun(), (Values{false}));
  writeBytes("<plist ver");
  EXPECT_EQ(deliveredAfterRun(), (Values{false}));
  EXPECT_EQ(preferences->setDonationsEnabled(true), nullptr);
  EXPECT_EQ(deliveredAfterRun(), (Values{false, true}));
  EXPECT_EQ(damagedCopy(), "<plist ver");
}

using PropertyListUserDefaultsTest = FileFixture;

// Each writer has a file layer of its own, as processes do.
TEST_F(PropertyListUserDefaultsTest, LosesNoKeyToAnotherWriter) {
  constexpr int keys = 20;
  std::vector<std::jthread> writers;
  for (const std::string writer : {"a", "b", "c"}) {
    writers.emplace_back([this, writer] {
      PropertyListUserDefaults own(file, std::make_shared<PosixDataProxy>(), std::chrono::hours(1));
      for (int key = 0; key < keys; ++key) {
        EXPECT_EQ(own.setObject(Date(key), writer + std::to_string(key)), nullptr);
      }
    });
  }
  writers.clear();
  PropertyListUserDefaults defaults(file, dataProxy);
  EXPECT_EQ(entries().size(), std::size_t{3 * keys});
  EXPECT_EQ(defaults.objectForKey("c7"), PropertyList(Date(7)));
  EXPECT_EQ(defaults.objectForKey("d"), std::nullopt);
}

// It shares the file with the owner's word on donations, of which nothing would be left.
TEST_F(PropertyListUserDefaultsTest, LeavesAFileThatIsDamagedOrAtWorkAsItIs) {
  const std::string damage = "<plist><dict><key>donations-enabled</key><false/>";
  writeBytes(damage);
  PropertyListUserDefaults defaults(file, dataProxy, std::chrono::milliseconds(0));
  EXPECT_EQ(defaults.setObject(Date(1), "a")->domain(), PropertyListErrorDomain);
  EXPECT_EQ(readFile(file), damage);
  EXPECT_EQ(damagedCopy(), "");
  const auto lock = LockFile::tryLock(file.string() + ".lock").value();
  EXPECT_EQ(defaults.setObject(Date(1), "a")->code(), EWOULDBLOCK);
}

}  // namespace
}  // namespace quenlet
