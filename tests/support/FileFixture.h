#pragma once

#include "platform/foundation/PropertyListSerializer.h"
#include "platform/scheduling/EventLoop.h"
#include "tests/support/SteeredDataProxy.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {

// A property-list file that the subject keeps and that other programs change behind its back.
class FileFixture : public testing::Test {
 protected:
  TemporaryDirectory temporary;
  const std::filesystem::path file = temporary / "Library" / "Kept" / "file.plist";
  const std::shared_ptr<SteeredDataProxy> dataProxy = std::make_shared<SteeredDataProxy>();
  EventLoop loop;

  void writeBytes(const std::string& bytes) const { writeFile(file, bytes); }
  void writeEntries(const PropertyListDictionary& entries) const {
    writeBytes(PropertyListSerializer::dataWithObject(entries).value());
  }
  [[nodiscard]] PropertyListDictionary entries() const {
    return *PropertyListSerializer::objectWithData(readFile(file)).value().dictionary();
  }
  // The first damaged file that was kept aside.
  [[nodiscard]] std::string damagedCopy() const { return readFile(file.string() + ".damaged-1"); }

  // One round handles the changes of files so far, a second one what those handlers posted.
  void runLoop() {
    loop.post([this] { loop.post([this] { loop.post([this] { loop.stop(); }); }); });
    loop.run();
  }
};

}  // namespace quenlet
