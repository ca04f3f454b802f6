#include "client/DonorExtensionMain.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <limits>
#include <stdexcept>
#include <thread>

#include "platform/donations/DonationWire.h"
#include "platform/extensions/DonorExtensionInterface.h"
#include "platform/extensions/ExtensionError.h"
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
    return Result<Date>::left(value.origin().expirationDate.addingSeconds(1));
  }
  Result<DonationValues> allValues(std::uint64_t reason) override {
    if (reason == 2) throw std::runtime_error("personal");
    if (reason == 3) return Result<DonationValues>::left({nullptr});
    if (reason == ~std::uint64_t{0}) return Result<DonationValues>::left({});
    return Result<DonationValues>::left({email("a@example.org"), phone("+49 30 1234567")});
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

  // What is left of a reply is the error: "<result>/<domain> <code>".
  template <typename Read>
  std::string ask(const char* selector, WireEncoder arguments, Read read) {
    const auto reply = client->callSynchronously(selector, std::move(arguments).take());
    if (!reply.isLeft()) return "invalid";
    WireReader values(reply.left());
    std::string result = read(values);
    const ErrorPtr error = ErrorWire::decode(values);
    if (!error) return result;
    EXPECT_EQ(error->debugDescription().find("personal"), std::string::npos);
    return result + "/" + error->domain() + " " + std::to_string(error->code());
  }
  std::string renew(const std::string& wish) {
    WireEncoder encoder;
    DonationWire::encodeValue(encoder, *email("a@b.c", from("app", "id", {}, Date(6)), wish));
    return ask(DonorExtensionSelector::renew, std::move(encoder), [](WireReader& values) {
      const auto date = values.date();
      return date ? date->iso8601() : "-";
    });
  }
  std::string redonate(std::int64_t reason) {
    return ask(DonorExtensionSelector::redonate, std::move(WireEncoder().integer(reason)),
               [](WireReader& values) {
                 const bool isNull = values.nextType() == WireType::null;
                 WireReader list(values.skip());
                 return isNull ? "-" : identifiersOf(DonationWire::decode(list).left());
               });
  }

  ObedientDonor donor;
  std::shared_ptr<ServiceClient> client;
  std::thread extension;
};

TEST_F(DonorExtensionMainTest, PutsRequestsToTheDonorAndTurnsExceptionsIntoErrors) {
  EXPECT_EQ(renew("home"), "1970-01-01T00:00:07Z");
  EXPECT_EQ(renew("refuse"), "-/donor 5");
  EXPECT_EQ(renew("throw"), "-/ovaro.quenlet.extension-error 9");
  EXPECT_EQ(renew("throw 42"), "-/ovaro.quenlet.extension-error 9");
  EXPECT_EQ(renew("never"), "invalid");
  EXPECT_EQ(redonate(1), "email tel");
  EXPECT_EQ(redonate(2), "-/ovaro.quenlet.extension-error 9");
  EXPECT_EQ(redonate(3), "-/ovaro.quenlet.service-error 4");
  EXPECT_EQ(redonate(-1), "");
  WireEncoder noDonation;
  noDonation.object(DonationWire::className).dictionary(0);
  EXPECT_EQ(ask(DonorExtensionSelector::renew, std::move(noDonation),
                [](WireReader& values) { return std::to_string(values.skip().size()); }),
            "1/ovaro.quenlet.service-error 4");
}

}  // namespace
}  // namespace quenlet
