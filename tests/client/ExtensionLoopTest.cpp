#include <cmath>
#include <thread>

#include "client/ExtensionLoop.h"
#include "platform/extensions/DonorExtensionInterface.h"
#include "platform/ipc/ServiceClient.h"
#include "protocol/DonationWire.h"
#include "tests/platform/extensions/HostFixture.h"
#include "tests/platform/ipc/RawPeer.h"

namespace quenlet {
namespace {

class ObedientExtension final : public Extension {
 public:
  Result<Date> renew(const Donation& donation) override {
    const std::string wish = std::get<Email>(donation.content).label;
    if (wish == "throw") throw std::logic_error("personal");
    if (wish == "throw 42") throw 42;
    if (wish == "never") return Result<Date>::success(Date(HUGE_VAL));
    return Result<Date>::success(Date());
  }
  Result<std::vector<Donation>> allDonations(std::uint64_t reason) override {
    using Donations = Result<std::vector<Donation>>;
    if (reason == 2) throw std::logic_error("personal");
    if (reason == 3) return Donations::success({{Phone{"none", ""}, "app", "id"}});
    if (reason == 4) return Donations::failure(makeError("donor", 6, "not now"));
    EXPECT_EQ(reason, ~std::uint64_t{0});
    return Donations::success({});
  }
};

class ExtensionLoopTest : public testing::Test {
 protected:
  ExtensionLoopTest() {
    auto [ours, theirs] = connectedPair();
    client = ServiceClient::withConnectedSocket(std::move(ours), makeDonorExtensionInterface());
    thread = std::thread(
        [this, end = std::move(theirs)]() mutable { serveExtension(extension, std::move(end)); });
  }
  ~ExtensionLoopTest() override {
    client.reset();
    thread.join();  // the extension returns when its socket ends
  }

  std::string ask(const char* selector, const WireEncoder& arguments) {
    const auto reply = client->callAndWait(selector, arguments.bytes());
    if (!reply.ok()) return "invalid";
    WireReader values(reply.value());
    values.skip();
    const ErrorPtr error = ErrorWire::decode(values);
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

  ObedientExtension extension;
  std::shared_ptr<ServiceClient> client;
  std::thread thread;
};

TEST_F(ExtensionLoopTest, PutsRequestsToTheExtensionAndTurnsExceptionsIntoErrors) {
  const std::string threw = "ovaro.quenlet.extension-error 9: the donor threw an exception";
  EXPECT_EQ(renew("home"), "yes");
  EXPECT_EQ(renew("throw"), threw);
  EXPECT_EQ(renew("throw 42"), threw);
  EXPECT_EQ(renew("never"), "invalid");
  EXPECT_EQ(redonate(-1), "yes");
  EXPECT_EQ(redonate(2), threw);
  EXPECT_EQ(redonate(3), "ovaro.quenlet.service-error 4: donation 1: it holds no phone number");
  EXPECT_EQ(redonate(4), "donor 6: not now");
  EXPECT_EQ(
      ask(DonorExtensionSelector::renew, WireEncoder().object(DonationWire::className).list(0)),
      "ovaro.quenlet.service-error 4: the value is not a valid donation");
}

using BuiltExtensionTest = HostFixture;

// The programs as built, each installed under a bundle; the first donates for its own alone.
TEST_F(BuiltExtensionTest, DonatesForNoOtherBundleAndDoesWhatTheGuideSays) {
  ::setenv("HOME", root.c_str(), 1);
  write("Library/Contacts/Cards/ann.vcf", "BEGIN:VCARD\nVERSION:4.0\nFN:Ann Berg\nEND:VCARD\n");
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"org.example.other", "quenlet-vcard-extension",
       "quenlet: extension org.example.other: it donates for another bundle than its own\n"},
      {"com.example.mail", "guide-extension", ""},
  };
  for (const auto& [bundle, program, said] : rows) {
    // A copy that only the user can write, under any umask.
    const auto bin = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    write(program, readFile(bin / program), 0755);
    install(bundle, root / program);
    makeHost({.idleSeconds = 0.1});
    const DonorPtr donor = load(bundle);
    ASSERT_TRUE(donor) << bundle;
    testing::internal::CaptureStderr();
    donor->redonateAllValuesWithReason(1);
    runUntil([turn = 0]() mutable { return ++turn > 1; });
    renew(donor);  // answered after the re-donation
    EXPECT_LT(::atol(takeNotes().c_str()), ::time(nullptr)) << "withdrawn";
    EXPECT_EQ(testing::internal::GetCapturedStderr() + agent->takeCalls(), said);
  }
}

}  // namespace
}  // namespace quenlet
