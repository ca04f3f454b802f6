#include "platform/donations/PropertyListUserDefaults.h"

#include <thread>

#include "tests/platform/donations/FileFixture.h"

namespace quenlet {
namespace {

class PropertyListUserDefaultsTest : public FileFixture {
 protected:
  PropertyListUserDefaults defaults{file, dataProxy};
};

TEST_F(PropertyListUserDefaultsTest, KeepsAnObjectOfAnyTypeBesideTheOthers) {
  EXPECT_EQ(defaults.objectForKey("attempt"), std::nullopt);
  EXPECT_EQ(defaults.setObject(Date(1000), "attempt"), nullptr);
  EXPECT_EQ(defaults.setObject(PropertyListArray{1, "two"}, "list"), nullptr);
  EXPECT_EQ(defaults.setObject(2.5, "list"), nullptr);
  PropertyListUserDefaults later(file, dataProxy);
  EXPECT_EQ(later.objectForKey("attempt"), PropertyList(Date(1000)));
  EXPECT_EQ(later.objectForKey("list"), PropertyList(2.5));
}

// Each writer has a file layer of its own, as processes do.
TEST_F(PropertyListUserDefaultsTest, LosesNoKeyToAnotherWriter) {
  constexpr int keys = 20;
  std::vector<std::thread> writers;
  for (const std::string writer : {"a", "b", "c"}) {
    writers.emplace_back([this, writer] {
      PropertyListUserDefaults own(file, std::make_shared<PosixDataProxy>());
      for (int key = 0; key < keys; ++key) {
        EXPECT_EQ(own.setObject(key, writer + std::to_string(key)), nullptr);
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_EQ(entries().size(), std::size_t{3 * keys});
}

}  // namespace
}  // namespace quenlet
