#include "platform/logging/StructuredAgentLogger.h"

#include <gtest/gtest.h>

#include "tests/support/DonationFactory.h"
#include "tests/support/RecordingLog.h"

namespace quenlet {
namespace {

TEST(StructuredAgentLoggerTest, WritesEventsAsJSONWithoutDonatedContent) {
  Trace trace;
  const auto sink = std::make_shared<RecordingLog>(trace);
  StructuredAgentLogger logger(StructuredLog(sink, [] { return Date(0.5); }));
  logger.agentWillStart();
  logger.denyingRequestFromProcess(-7);
  logger.willRenewValues({email("secret@x", from("a\"b", "e")), image("secret", from("b", "i"))},
                         "donor");
  logger.didRenewValue(phone("+49 30 123456", from("b", "t")), Date(86400));
  logger.couldNotRejectDonationIdentifier("d", makeError("domain", 3, "why"));
  const std::string head = R"({"time":"1970-01-01T00:00:00Z","event":)";
  EXPECT_EQ(
      sink->lines,
      (std::vector<std::string>{
          head + R"("agentWillStart"})",
          head + R"("denyingRequestFromProcess:","arguments":[-7]})",
          head + R"("willRenewValues:withDonor:","arguments":[[)"
                 R"({"kind":"emailAddress","bundleIdentifier":"a\"b","donationIdentifier":"e"},)"
                 R"({"kind":"imageData","bundleIdentifier":"b","donationIdentifier":"i"}],)"
                 R"("donor"]})",
          head + R"("didRenewValue:untilDate:","arguments":[)"
                 R"({"kind":"phoneNumber","bundleIdentifier":"b","donationIdentifier":"t"},)"
                 R"("1970-01-02T00:00:00Z"]})",
          head + R"("couldNotRejectDonationIdentifier:error:","arguments":["d","domain 3: why"]})",
      }));
}

}  // namespace
}  // namespace quenlet
