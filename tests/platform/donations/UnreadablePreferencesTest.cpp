#include "platform/donations/PropertyListDonationPreferences.h"
#include "platform/notifications/SocketNotificationCenter.h"
#include "tests/platform/donations/FileFixture.h"

namespace quenlet {
namespace {

TEST_F(FileFixture, DeliversAPreferenceThatCannotBeReadAtFirstOnceItCan) {
  const auto center = std::make_shared<SocketNotificationCenter>(loop, temporary.path() / "posts");
  const auto preferences =
      std::make_shared<PropertyListDonationPreferences>(file, dataProxy, loop, center);
  std::vector<bool> delivered;
  writeBytes("<plist");
  testing::internal::CaptureStderr();
  const auto token =
      preferences->observableWithPreferences(center, nullptr)
          ->subscribe({[&](const bool& value) { delivered.push_back(value); }, nullptr, nullptr});
  runLoop();
  EXPECT_FALSE(preferences->isDonationsEnabled());
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_EQ(delivered, std::vector<bool>());
  writeEntries({{"donations-enabled", false}});
  runLoop();
  EXPECT_EQ(delivered, std::vector<bool>{false});
  token->cancel();
}

}  // namespace
}  // namespace quenlet
