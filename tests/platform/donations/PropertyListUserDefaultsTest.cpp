#include "platform/donations/PropertyListUserDefaults.h"

#include <thread>

#include "platform/files/LockFile.h"
#include "tests/platform/donations/FileFixture.h"

namespace quenlet {
namespace {

using PropertyListUserDefaultsTest = FileFixture;

// Each writer has a file layer of its own, as processes do.
TEST_F(PropertyListUserDefaultsTest, LosesNoKeyToAnotherWriter) {
  constexpr int keys = 20;
  std::vector<std::thread> writers;
  for (const std::string writer : {"a", "b", "c"}) {
    writers.emplace_back([this, writer] {
      PropertyListUserDefaults own(file, std::make_shared<PosixDataProxy>(),
                                   std::chrono::minutes(5));
      for (int key = 0; key < keys; ++key) {
        EXPECT_EQ(own.setObject(Date(key), writer + std::to_string(key)), nullptr);
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  PropertyListUserDefaults defaults(file, dataProxy);
  EXPECT_EQ(entries().size(), std::size_t{3 * keys});
  EXPECT_EQ(defaults.objectForKey("c7"), PropertyList(Date(7)));
  EXPECT_EQ(defaults.objectForKey("d"), std::nullopt);
}

// It shares the file with the owner's word on donations, of which nothing would be left.
TEST_F(PropertyListUserDefaultsTest, LeavesAFileThatIsDamagedOrAtWorkAsItIs) {
  writeBytes("<plist><dict><key>donations-enabled</key><false/>");
  PropertyListUserDefaults defaults(file, dataProxy, std::chrono::milliseconds(0));
  EXPECT_EQ(defaults.setObject(Date(1), "a")->domain(), PropertyListErrorDomain);
  EXPECT_EQ(readFile(file), "<plist><dict><key>donations-enabled</key><false/>");
  EXPECT_EQ(damagedCopies(), std::vector<std::string>());
  const auto lock = LockFile::tryLock(file.string() + ".lock").left();
  EXPECT_EQ(defaults.setObject(Date(1), "a")->code(), EWOULDBLOCK);
}

}  // namespace
}  // namespace quenlet
