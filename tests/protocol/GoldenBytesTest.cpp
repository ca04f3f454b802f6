// Today's code reads yesterday's bytes, and writes them again.

#include <thread>

#include "client/ExtensionLoop.h"
#include "protocol/AccountWire.h"
#include "protocol/ContactWire.h"
#include "protocol/DonationWire.h"
#include "tests/platform/extensions/HostFixture.h"
#include "tests/platform/ipc/RawPeer.h"
#include "tests/support/GoldenExchanges.h"

namespace quenlet {
namespace {

// The values of a message behind the header; of a request, behind the operation.
WireReader valuesOf(const std::string& message, bool isRequest) {
  WireReader values(std::string_view(message).substr(FrameHeader::sizeInBytes));
  if (isRequest) values.skip();
  return values;
}

// What only clients write, and what only they read: the agent's part is tested with the agent.
TEST(GoldenBytesTest, AreReadAndWrittenAgain) {
  int read = 0;
  for (const auto& [name, request, answer] : goldenExchanges(goldenFolder + "agent.txt")) {
    const bool isAccount = name == "new account:";
    if (!isAccount && name != "fetch:") continue;
    WireReader reader = valuesOf(isAccount ? request : answer, isAccount);
    std::string expected;
    for (WireReader bytes = reader; !bytes.atEnd();) expected += bytes.skip();
    WireEncoder encoder;
    if (isAccount) {
      AccountWire::encode(encoder, AccountWire::decode(reader, {}).value());
      AccountWire::encode(encoder, AccountWire::decode(reader, {}).value());
    } else {
      ContactWire::encode(encoder, *ContactWire::decode(reader));
      ErrorWire::encode(encoder, ErrorWire::decode(reader));
    }
    EXPECT_EQ(encoder.bytes(), expected) << name;
    ++read;
  }
  EXPECT_EQ(read, 2);
}

class GoldenExtension final : public Extension {
 public:
  Result<Date> renew(const Donation& donation) override {
    if (donation.bundleIdentifier == "com.example.mail") {
      return Result<Date>::success(Date(4102444807));
    }
    return Result<Date>::failure(makeError("com.example.donor", 5, "it is not known"));
  }
  Result<std::vector<Donation>> allDonations(std::uint64_t reason) override {
    EXPECT_EQ(reason, donationsEnabled);
    const Email content{"zoe@example.org", "home"};
    return Result<std::vector<Donation>>::success(
        {{content, "com.example.mail", "com.example.mail:mail", "work account", Date(1795532059.5),
          Date(4102444802)}});
  }
};

class GoldenExtensionTest : public HostFixture {
 protected:
  const std::vector<GoldenExchange> exchanges = goldenExchanges(goldenFolder + "extension.txt");
};

TEST_F(GoldenExtensionTest, AnswersYesterdaysAgent) {
  auto [ours, theirs] = connectedPair();
  std::thread thread([end = std::move(theirs)]() mutable {
    GoldenExtension extension;
    serveExtension(extension, std::move(end));
  });
  RawPeer peer(std::move(ours));
  for (const auto& [name, request, answer] : exchanges) {
    EXPECT_TRUE(peer.send(request)) << name;
    EXPECT_EQ(peer.receiveMessage(), answer) << name;
  }
  peer.close();
  thread.join();
}

TEST_F(GoldenExtensionTest, OfYesterdayIsAskedAndUnderstood) {
  for (std::size_t i = 0; i < 3; ++i) write("answer" + std::to_string(i), exchanges[i].answer);
  write("donor", donorScript(goldenFile(goldenFolder + "donor.py")), 0755);
  install("com.example.mail", root / "donor");
  makeHost({.idleSeconds = 0.1});
  const DonorPtr donor = load("com.example.mail");
  ASSERT_TRUE(donor);
  donor->redonateAllValuesWithReason(Extension::donationsEnabled);
  for (const std::size_t i : {1, 2}) {
    WireReader values = valuesOf(exchanges[i].request, true);
    renew(donor, DonationWire::decodeValue(values));
  }
  EXPECT_EQ(takeNotes(), "4102444807 com.example.donor:5");
  EXPECT_EQ(agent->takeCalls(), "donate 1;");
  EXPECT_EQ(readFile(root / "asked"),
            exchanges[0].request + exchanges[1].request + exchanges[2].request);
}

}  // namespace
}  // namespace quenlet
