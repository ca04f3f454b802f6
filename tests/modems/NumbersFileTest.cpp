#include "modems/NumbersFile.h"

#include <gmock/gmock.h>

#include "platform/files/PosixDataProxy.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using namespace testing;

class NumbersFileTest : public testing::Test {
 protected:
  // What it says on standard error.
  std::string take(const std::string& card, const std::string& number) {
    testing::internal::CaptureStderr();
    error = file.takeModems("m", {{"a", CardState::readable, {card, {number}}}});
    return testing::internal::GetCapturedStderr();
  }

  const TemporaryDirectory files;
  NumbersFile file{files / "telephony/sim.plist", std::make_shared<PosixDataProxy>()};
  SIMCardFile written{files / "telephony/sim.plist", std::make_shared<PosixDataProxy>()};
  ErrorPtr error;
};

TEST_F(NumbersFileTest, WritesWhatChangedAndKeepsADamagedFile) {
  EXPECT_EQ(take("8949", "111"), "quenlet-sim-numbers: the SIM cards have 1 number now\n");
  const SIMCardItem first{ModemCards::identifierOf("8949", "111"), "111"};
  EXPECT_THAT(written.read().value(), ElementsAre(first));
  std::filesystem::permissions(files / "telephony/sim.plist", std::filesystem::perms(0640));
  EXPECT_EQ(take("8949", "111"), "");
  EXPECT_EQ(modeOf(files / "telephony/sim.plist"), 0640U) << "not written for nothing";

  files.write("telephony/sim.plist", "<plist version='1.0'><array><string>111");
  EXPECT_THAT(take("8950", "222"), HasSubstr("the SIM cards have 1 number now\n"));
  EXPECT_EQ(error, nullptr);
  EXPECT_THAT(written.read().value(),
              ElementsAre(SIMCardItem{ModemCards::identifierOf("8950", "222"), "222"}));
  EXPECT_EQ(files.read("telephony/sim.plist.damaged-1"), "<plist version='1.0'><array><string>111");
}

TEST_F(NumbersFileTest, LeavesAFileThatCannotBeReadOrWritten) {
  files.write("telephony/sim.plist", std::string(std::size_t{2} << 20, ' '));
  take("8949", "111");
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), EFBIG);
  EXPECT_EQ(std::filesystem::file_size(files / "telephony/sim.plist"), std::size_t{2} << 20);
  std::filesystem::remove_all(files / "telephony");
  files.write("telephony", "a file in the way");
  take("8949", "111");
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), PosixErrorDomain);
}

}  // namespace
}  // namespace quenlet
