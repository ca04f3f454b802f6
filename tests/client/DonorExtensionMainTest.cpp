#include "client/DonorExtensionMain.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <limits>
#include <stdexcept>
#include <thread>

#include "platform/donations/DonationWire.h"
#include "platform/extensions/DonorExtensionInterface.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/ServiceClient.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

// Does what the label of the value, or the reason, says.
class ObedientDonor final : public ExtensionDonor {
 public:
  Result<Date> renewExpirationDate(const DonationValue& value) override {
    const std::string& wish = value.emailEntry()->label;
    if (wish == "throw") throw std::runtime_error("personal");
    if (wish == "throw 42") throw 42;
    if (wish == "refuse") return Result<Date>::right(makeError("donor", 5, "no"));
    if (wish == "never") return Result<Date>::left(Date(std::numeric_limits<double>::infinity()));
    return Result<Date>::left(Date());
  }
  Result<DonationValues> allValues(std::uint64_t reason) override {
    if (reason == 2) throw std::runtime_error("personal");
    if (reason == 3) return Result<DonationValues>::left({nullptr});
    EXPECT_EQ(reason, ~std::uint64_t{0});
    return Result<DonationValues>::left({});
  }
};

class DonorExtensionMainTest : public testing::Test {
 protected:
  DonorExtensionMainTest() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    client =
        ServiceClient::withConnectedSocket(FileDescriptor(ends[0]), makeDonorExtensionInterface());
    extension = std::thread([this, end = ends[1]] { serveDonor(donor, FileDescriptor(end)); });
  }
  ~DonorExtensionMainTest() override {
    client.reset();
    extension.join();  // the extension returns when its socket ends
  }

  // "yes" for a result, else the error.
  std::string ask(const char* selector, const WireEncoder& arguments) {
    const auto reply = client->callSynchronously(selector, arguments.bytes());
    if (!reply.isLeft()) return "invalid";
    WireReader values(reply.left());
    const bool isNull = values.nextType() == WireType::null;
    values.skip();
    const ErrorPtr error = ErrorWire::decode(values);
    EXPECT_EQ(isNull, error != nullptr);
    return error ? error->description() : "yes";
  }
  std::string renew(const std::string& wish) {
    WireEncoder encoder;
    DonationWire::encodeValue(encoder, *email("a@b.c", from("app", "id"), wish));
    return ask(DonorExtensionSelector::renew, encoder);
  }
  std::string redonate(std::int64_t reason) {
    return ask(DonorExtensionSelector::redonate, WireEncoder().integer(reason));
  }

  ObedientDonor donor;
  std::shared_ptr<ServiceClient> client;
  std::thread extension;
};

TEST_F(DonorExtensionMainTest, PutsRequestsToTheDonorAndTurnsExceptionsIntoErrors) {
  const std::string threw = "ovaro.quenlet.extension-error 9: the donor threw an exception";
  EXPECT_EQ(renew("home"), "yes");
  EXPECT_EQ(renew("refuse"), "donor 5: no");
  EXPECT_EQ(renew("throw"), threw);
  EXPECT_EQ(renew("throw 42"), threw);
  EXPECT_EQ(renew("never"), "invalid");
  EXPECT_EQ(redonate(-1), "yes");
  EXPECT_EQ(redonate(2), threw);
  EXPECT_EQ(redonate(3), "ovaro.quenlet.service-error 4: the donor gave a null value");
  EXPECT_EQ(
      ask(DonorExtensionSelector::renew, WireEncoder().object(DonationWire::className).list(0)),
      "ovaro.quenlet.service-error 4: the value is no valid donation");
}

}  // namespace
}  // namespace quenlet
